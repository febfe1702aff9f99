// RDM_Call, catalogue half: naming and classification of PIDs, manufacturer PIDs described by the
// device, and the byte arithmetic helpers.

#include "rdm/RdmBytes.h"
#include "rdm/tables/RdmTables.h"
#include "tests/rdm/RdmTestSupport.h"

namespace zol::rdm::testing {
namespace {

using Catalogue = RdmTest;

std::shared_ptr<RDM_Call> Standard(int32_t pidNumber) {
    auto call = std::make_shared<RDM_Call>();
    call->Initialise(3, 0, pidNumber, false);
    return call;
}

TEST_F(Catalogue, ReservedPids7FE0AndFFE0ReadEstaReservedAndAreNotSetable) {
    for (int32_t number : {0x7FE0, 0xFFE0}) {
        auto call = Standard(number);
        EXPECT_EQ(call->Description(), "ESTA Reserved Future RDM Development");
        EXPECT_FALSE(call->Setable());
    }
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(Catalogue, Pids8000AndFFDFAreManSpecButNot7FFFAndFFE0) {
    for (int32_t number : {0x8000, 0xFFDF}) {
        lib.Expect(Get(3, 0, pid::PARAMETER_DESCRIPTION, Word(number)), 0,
                   ParameterDescription(number, 3, 0, 100, 50, "Speed"));
        auto call = Standard(number);
        EXPECT_TRUE(call->ManSpec()) << number;
    }
    for (int32_t number : {0x7FFF, 0xFFE0}) {
        EXPECT_FALSE(Standard(number)->ManSpec()) << number;
    }
    EXPECT_EQ(lib.Commands().size(), 2u);
}

TEST_F(Catalogue, Pid0123IsNotInStandardAndSetable) {
    auto call = Standard(0x0123);
    EXPECT_EQ(call->Description(), "Not in standard \"$0123\"");
    EXPECT_TRUE(call->Setable());
}

TEST_F(Catalogue, Pid0IsNotInStandard) {
    auto call = Standard(0);
    EXPECT_EQ(call->Description(), "Not in standard \"$0000\"");
    EXPECT_TRUE(call->Setable());
}

TEST_F(Catalogue, ManufacturerPidWith20ByteDescriptionHasNoDescriptionAvailable) {
    const Bytes answer = ParameterDescription(0x8123, 0x02, 1, 2, 3, "");
    ASSERT_EQ(answer.size(), 20u);
    lib.Expect(Get(3, 0, 0x51, B({0x81, 0x23})), 0, answer);
    auto call = Standard(0x8123);
    EXPECT_EQ(call->Description(), "No description available");
    EXPECT_FALSE(call->Getable());
    EXPECT_TRUE(call->Setable());
}

TEST_F(Catalogue, ManufacturerPidWith19ByteDescriptionRaisesResponseFormat) {
    const Bytes answer = ParameterDescription(0x8123, 0x03, 1, 2, 3, "").substr(0, 19);
    lib.Expect(Get(3, 0, 0x51, B({0x81, 0x23})), 0, answer);
    ui.Expect("Error in received RDM Frame format", vb::OK, "RDM_Call.LoadProprietoryPID");
    ui.Expect("Error in received RDM Frame format", vb::OK, "RDM_Call.Initialise");
    auto call = std::make_shared<RDM_Call>();
    const ZolError error = Thrown([&] { call->Initialise(3, 0, 0x8123, false); });
    EXPECT_EQ(error.Code(), err::ErrRDM_Response_Format);
    EXPECT_EQ(ui.boxes.size(), 2u);
}

TEST_F(Catalogue, GetableIsFalseForEveryStandardPid) {
    for (const auto& row : tables::PidCatalogue()) {
        EXPECT_FALSE(Standard(row.pid)->Getable()) << row.description;
    }
    for (int32_t number : {0x0000, 0x0123, 0x7FE0, 0x7FFF, 0xFFE0, 0xFFFF}) {
        EXPECT_FALSE(Standard(number)->Getable()) << number;
    }
    EXPECT_TRUE(lib.calls.empty());
}

TEST_F(Catalogue, TableRowGivesDescriptionAndSetable) {
    auto label = Standard(0x0082);
    EXPECT_EQ(label->Description(), "DEVICE_LABEL");
    EXPECT_TRUE(label->Setable());
    auto info = Standard(0x0060);
    EXPECT_EQ(info->Description(), "DEVICE_INFO");
    EXPECT_FALSE(info->Setable());
    EXPECT_EQ(info->DataClass(), "RDM_Call");
    EXPECT_EQ(info->Token(), 3);
    EXPECT_EQ(info->PID(), 0x0060);
    EXPECT_EQ(info->Self(), info);
}

TEST_F(Catalogue, RequiredIsWhatTheCallerPassed) {
    auto call = std::make_shared<RDM_Call>();
    call->Initialise(1, 0, 0x1000, true);
    EXPECT_TRUE(call->Required());
    EXPECT_FALSE(Standard(0x1000)->Required());
}

TEST_F(Catalogue, ManufacturerPidReadsCommandClassAndKeepsDescriptionBytes) {
    Bytes text("Fan mode\0", 9);
    lib.Expect(Get(7, 2, 0x51, B({0x90, 0x01})), 0, ParameterDescription(0x9001, 0x01, 0, 0, 0, text));
    auto call = std::make_shared<RDM_Call>();
    call->Initialise(7, 2, 0x9001, false);
    EXPECT_TRUE(call->Getable());
    EXPECT_FALSE(call->Setable());
    EXPECT_EQ(call->Description(), text); // the trailing NUL stays
}

TEST_F(Catalogue, ManufacturerPidNackFormatErrorLeavesErrorDescription) {
    lib.Expect(Get(3, 0, 0x51, B({0x81, 0x00})), 0x21);
    ui.Expect("The remote device reports a request format error", vb::OK, "Device Parameter Description");
    auto call = Standard(0x8100);
    EXPECT_EQ(call->Description(), "Manufacturer-Spesific PID (Error)");
}

TEST_F(Catalogue, ManufacturerPidMissingResponseRetriesThenGivesUp) {
    lib.Expect(Get(3, 0, 0x51, B({0x81, 0x00})), 0x18);
    lib.Expect(Get(3, 0, 0x51, B({0x81, 0x00})), 0x18);
    ui.Expect("Expected reponse from remote device not received", vb::Retry,
              "Device - PARAMETER_DESCRIPTION");
    ui.Expect("Expected reponse from remote device not received", vb::Cancel,
              "Device - PARAMETER_DESCRIPTION");
    auto call = Standard(0x8100);
    EXPECT_EQ(call->Description(), "Manufacturer-Spesific PID (Error)");
    EXPECT_FALSE(call->Getable());
    EXPECT_FALSE(call->Setable());
    EXPECT_EQ(ui.boxes[0].Buttons(), vb::RetryCancel);
}

TEST_F(Catalogue, ManufacturerPidChecksumErrorReachesCallerAfterInitialiseReport) {
    lib.Expect(Get(3, 0, 0x51, B({0x81, 0x00})), 0x16);
    ui.Expect("Bad Check Sum in RDM response from remote device", vb::OK, "RDM_Call.Initialise");
    auto call = std::make_shared<RDM_Call>();
    EXPECT_EQ(Thrown([&] { call->Initialise(3, 0, 0x8100, false); }).Code(), err::ErrRDM_Response_ChkSum);
}

// ---- Byte arithmetic ----

TEST(RdmBytes, Str2LngNegativePathIsComplementMinusOne) {
    EXPECT_EQ(bytes::Str2Lng(H("FFFFFFFF"), 1), -1);
    EXPECT_EQ(bytes::Str2Lng(H("FFFFFFFE"), 1), 0);
    EXPECT_EQ(bytes::Str2Lng(H("FFFFFFFD"), 1), 1);
    EXPECT_EQ(bytes::Str2Lng(H("80000000"), 1), 0x7FFFFFFE);
    EXPECT_EQ(bytes::Str2Lng(H("7FFFFFFF"), 1), 0x7FFFFFFF);
    EXPECT_EQ(bytes::Str2Lng(H("AA01020304"), 2), 0x01020304);
}

TEST(RdmBytes, Int2StrAdds65535ToNegativeValues) {
    EXPECT_EQ(bytes::Int2Str(-1), H("FFFE"));
    EXPECT_EQ(bytes::Int2Str(-32768), H("7FFF"));
    EXPECT_EQ(bytes::Int2Str(512), H("0200"));
    EXPECT_EQ(bytes::Int2Str(32767), H("7FFF"));
    EXPECT_THROW(bytes::Int2Str(32768), RuntimeFault);
}

TEST(RdmBytes, Str2IntOverflowsOnHighByte80) {
    EXPECT_EQ(bytes::Str2Int(H("7FFF"), 1), 32767);
    EXPECT_THROW(bytes::Str2Int(H("8000"), 1), RuntimeFault);
    EXPECT_EQ(bytes::Str2Int(H("12"), 1), 0x1200);
}

} // namespace
} // namespace zol::rdm::testing
