// The error catalogue, the handler's side of ErrTrap and the handler patterns.
#include "device_link/core/ErrTrap.h"

#include "tests/support/ScriptedDeviceLibrary.h"
#include "tests/support/ScriptedUi.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace zol::test {
namespace {

class ErrTrapTest : public ::testing::Test {
protected:
    void SetUp() override { ErrTrap::ResetForTest(); }
    ScriptedUi ui_;
};

// Runs `body` and returns the ZolError it throws (fails the test when it throws none).
template <typename Body> ZolError Thrown(Body body) {
    try {
        body();
    } catch (const ZolError& e) {
        return e;
    }
    ADD_FAILURE() << "no ZolError was thrown";
    return ZolError(0, "", "");
}

// ---- Raise and the composition of codes ----

TEST_F(ErrTrapTest, RaiseOf0x102WithEmptySourceThrowsDeviceMissingFromThePluginFile) {
    const ZolError e = Thrown([] { ErrTrap::Raise(0x102, ""); });
    EXPECT_EQ(e.Code(), 0x1102);
    EXPECT_EQ(e.Source(), "zol-plugin");
    EXPECT_EQ(e.Description(), "ErrAPI_DeviceMissig\r\n$102");
    EXPECT_EQ(ErrTrap::LastCode(), 0x1102);
}

TEST_F(ErrTrapTest, RaiseOf5GivesADescriptionEndingInDollar005) {
    const ZolError e = Thrown([] { ErrTrap::Raise(5, "Somewhere"); });
    EXPECT_EQ(e.Code(), 0x1005);
    EXPECT_EQ(e.Source(), "Somewhere");
    EXPECT_EQ(e.Description(), "ErrZOL_DataTooLong\r\n$005");
    EXPECT_TRUE(e.Description().ends_with("$005"));
}

TEST_F(ErrTrapTest, RaiseSetsTheBlockBitOnACodeThatAlreadyHasIt) {
    const ZolError e = Thrown([] { ErrTrap::Raise(0x1201, "X"); });
    EXPECT_EQ(e.Code(), 0x1201);
    EXPECT_EQ(e.Description(), "ErrSYS_Comms\r\n$201");
}

TEST_F(ErrTrapTest, RaiseOfAnUnknownCodeUsesTheUnelaboratedName) {
    const ZolError e = Thrown([] { ErrTrap::Raise(0x1A, "X"); });
    EXPECT_EQ(e.Code(), 0x101A);
    EXPECT_EQ(e.Description(), "Error Code not Elaborated\r\n$01A");
}

TEST_F(ErrTrapTest, RaiseOfTheUnexpectedLibraryErrorCarriesTheLibraryText) {
    ScriptedDeviceLibrary library;
    library.lastError = "cable chewed";
    const ZolError e = Thrown([] { ErrTrap::Raise(0x164); });
    EXPECT_EQ(e.Code(), 0x1164);
    EXPECT_EQ(e.Description(), "ErrAPI_Unexpected\r\ncable chewed\r\n$164");
}

TEST_F(ErrTrapTest, RaiseLocalThrowsTheLocalCodeWithItsMessage) {
    const ZolError e = Thrown([] { ErrTrap::RaiseLocal("Nothing to do"); });
    EXPECT_EQ(e.Code(), 0x1200);
    EXPECT_EQ(e.Source(), "Local Error");
    EXPECT_EQ(e.Description(), "Nothing to do");
    EXPECT_EQ(ErrTrap::LocalText(), "Nothing to do");
    EXPECT_EQ(ErrTrap::Message(0x1200), "Nothing to do");
}

// ---- The catalogue ----

TEST_F(ErrTrapTest, ErrorNameFollowsTheCatalogue) {
    EXPECT_EQ(ErrTrap::ErrorName(11), "DMX_RX_Timed_Out");
    EXPECT_EQ(ErrTrap::ErrorName(0x1001), "ErrZOL_Constraint");
    EXPECT_EQ(ErrTrap::ErrorName(0x100B), "ErrZOL_Incompatible");
    EXPECT_EQ(ErrTrap::ErrorName(0x1012), "RDM_Device_Response_Overflow");
    EXPECT_EQ(ErrTrap::ErrorName(0x101D), "ErrRDM_Response_UnExpected");
    EXPECT_EQ(ErrTrap::ErrorName(0x1029), "NR_SUB_DEVICE_OUT_OF_RANGE");
    EXPECT_EQ(ErrTrap::ErrorName(0x110E), "ErrAPI_PortStatus");
    EXPECT_EQ(ErrTrap::ErrorName(0x1200), "ErrSYS_Local");
    EXPECT_EQ(ErrTrap::ErrorName(0x1203), "ErrSYS_Device");
    EXPECT_EQ(ErrTrap::ErrorName(0x1009), "Error Code not Elaborated");
    EXPECT_EQ(ErrTrap::ErrorName(0x1204), "Error Code not Elaborated");
}

TEST_F(ErrTrapTest, CodesWithAMessageButNoNameGiveTheUnknownName) {
    EXPECT_EQ(ErrTrap::ErrorName(0x101A), "Error Code not Elaborated");
    EXPECT_EQ(ErrTrap::ErrorName(0x101C), "Error Code not Elaborated");
    EXPECT_EQ(ErrTrap::Message(0x101A), "Identity of responder not the same as was expected");
    EXPECT_EQ(ErrTrap::Message(0x101C), "A remote device is corrupting the discovery routine");
}

TEST_F(ErrTrapTest, ResponseCodesAndProxyRejectShowTheirOwnNameAsMessage) {
    EXPECT_EQ(ErrTrap::Message(0x1010), "RDM_Device_Response_Wait");
    EXPECT_EQ(ErrTrap::Message(0x1012), "RDM_Device_Response_Overflow");
    EXPECT_EQ(ErrTrap::Message(0x1023), "NR_PROXY_REJECT");
}

TEST_F(ErrTrapTest, MessagesAreVerbatimWithTheirLineBreaks) {
    EXPECT_EQ(ErrTrap::Message(0x1003),
              "An Option used with a command to the \r\nlocal device is not available");
    EXPECT_EQ(ErrTrap::Message(0x1013),
              "Unexpected response from remote device\r\nResponse transaction did not match the request");
    EXPECT_EQ(ErrTrap::Message(0x1014), "Response form remote device is from wrong subdevice ");
    EXPECT_EQ(ErrTrap::Message(0x1018), "Expected reponse from remote device not received");
    EXPECT_EQ(ErrTrap::Message(0x1022), "The remote device comand failed due to a Hardware Fault");
    EXPECT_EQ(ErrTrap::Message(0x1026), "The value submitted is out of range \r\n for the remote device");
    EXPECT_EQ(ErrTrap::Message(0x1028),
              "The remote device does not support the\r\nsize of request packet sent");
    EXPECT_EQ(ErrTrap::Message(0x1101),
              "Problem with connection to Equipment\r\nIf problem persists then check USB cables");
    EXPECT_EQ(ErrTrap::Message(0x1105), "Response from local device has incorect format");
    EXPECT_EQ(ErrTrap::Message(0x110C), "An erronious call was made to the API by the application");
    EXPECT_EQ(ErrTrap::Message(0x1201), "Communication error with Local Device");
    EXPECT_EQ(ErrTrap::Message(11), "DMX receive stream has timed out");
}

TEST_F(ErrTrapTest, TheUnexpectedLibraryErrorMessageEndsWithTheLibraryText) {
    ScriptedDeviceLibrary library;
    library.lastError = "port vanished";
    EXPECT_EQ(ErrTrap::ErrorName(0x1164), "ErrAPI_Unexpected\r\nport vanished");
    EXPECT_EQ(ErrTrap::Message(0x1164),
              "Unexpected Error returned from Application interface\r\nport vanished");
}

// ---- Report ----

TEST_F(ErrTrapTest, ReportOf0x1009ShowsErrorCode09NotElaborated) {
    try {
        ErrTrap::Raise(9, "Src");
    } catch (const ZolError&) {
        ErrTrap::Capture();
    }
    ui_.Expect("Error Code $09 not Elaborated in this version", vb::OK, "Title");
    EXPECT_FALSE(ErrTrap::Report("Title", false));
}

TEST_F(ErrTrapTest, ReportWithoutRetryIsAnInformationBoxWithOkTitledBySource) {
    try {
        ErrTrap::Raise(0x102, "");
    } catch (const ZolError&) {
        EXPECT_EQ(ErrTrap::Capture(), 0x1102);
    }
    ui_.Expect("Local device has been disconnected", vb::OK, "FDF_Port.Seize");
    EXPECT_FALSE(ErrTrap::Report("FDF_Port.Seize", false));
    ASSERT_EQ(ui_.boxes.size(), 1u);
    EXPECT_EQ(ui_.boxes[0].style, vb::Information | vb::OKOnly);
}

TEST_F(ErrTrapTest, ReportWithRetryIsAQuestionWithRetryAndCancelAndTrueOnRetry) {
    try {
        ErrTrap::Raise(0x101, "");
    } catch (const ZolError&) {
        ErrTrap::Capture();
    }
    ui_.Answer(vb::Retry);
    EXPECT_TRUE(ErrTrap::Report("Device Discovery", true));
    ASSERT_EQ(ui_.boxes.size(), 1u);
    EXPECT_EQ(ui_.boxes[0].style, vb::Question | vb::RetryCancel);
    EXPECT_EQ(ui_.boxes[0].title.value_or(""), "Device Discovery");
}

TEST_F(ErrTrapTest, ReportWithRetryReturnsFalseOnCancelAndOnClosingTheBox) {
    try {
        ErrTrap::Raise(0x103, "");
    } catch (const ZolError&) {
        ErrTrap::Capture();
    }
    ui_.Answer(vb::Cancel);
    EXPECT_FALSE(ErrTrap::Report("T", true));
    // A box closed from its title bar answers Cancel; anything but Retry is no retry.
    ui_.Answer(vb::Cancel);
    EXPECT_FALSE(ErrTrap::Retry("T"));
    ui_.Answer(vb::OK);
    EXPECT_FALSE(ErrTrap::Retry("T"));
    EXPECT_EQ(ui_.boxes.size(), 3u);
}

TEST_F(ErrTrapTest, ReportOutsideTheBlockShowsTheErrorsOwnDescription) {
    try {
        throw RuntimeFault(rt::Overflow, "Overflow");
    } catch (const std::exception&) {
        EXPECT_EQ(ErrTrap::Capture(), 0);
    }
    ui_.Expect("Overflow", vb::OK, "Calc");
    ErrTrap::Report("Calc", false);
}

TEST_F(ErrTrapTest, ReportOfTheLocalCodeShowsTheLocalText) {
    try {
        ErrTrap::RaiseLocal("Select a port first");
    } catch (const ZolError&) {
        EXPECT_EQ(ErrTrap::Capture(), 0x1200);
    }
    ui_.Expect("Select a port first", vb::OK, "User_Main - Connect");
    ErrTrap::Report("User_Main - Connect", false);
}

// ---- Capture ----

TEST_F(ErrTrapTest, CaptureAfterAnArithmeticOverflowReturnsZero) {
    try {
        throw RuntimeFault(rt::Overflow, "Overflow");
    } catch (const std::exception&) {
        EXPECT_EQ(ErrTrap::Capture(), 0);
    }
    EXPECT_EQ(ErrTrap::LastCode(), rt::Overflow);
    EXPECT_EQ(ErrTrap::LastText(), "Overflow");
    try {
        throw std::overflow_error("arithmetic overflow");
    } catch (const std::exception&) {
        EXPECT_EQ(ErrTrap::Capture(), 0);
    }
    EXPECT_EQ(ErrTrap::LastText(), "arithmetic overflow");
}

TEST_F(ErrTrapTest, CaptureOfAnyStandardExceptionTakesANumberOutsideTheBlock) {
    try {
        throw std::runtime_error("odd");
    } catch (const std::exception&) {
        EXPECT_EQ(ErrTrap::Capture(), 0);
    }
    EXPECT_TRUE(ErrTrap::LastCode() < 0x1000 || ErrTrap::LastCode() > 0x1FFF);
    EXPECT_NE(ErrTrap::LastCode(), 0);
}

TEST_F(ErrTrapTest, CaptureKeepsCodeSourceAndText) {
    try {
        throw ZolError(0x1203, "RDM_Device.Populate", "ErrSYS_Device\r\n$203");
    } catch (const ZolError&) {
        EXPECT_EQ(ErrTrap::Capture(), 0x1203);
    }
    EXPECT_EQ(ErrTrap::LastSource(), "RDM_Device.Populate");
    EXPECT_EQ(ErrTrap::LastText(), "ErrSYS_Device\r\n$203");
}

TEST_F(ErrTrapTest, CapturePassesOverTheViewUnloadedDuringLoadError) {
    try {
        ErrTrap::Raise(0x101, "Config_Port.Control (Set)");
    } catch (const ZolError&) {
        ErrTrap::Capture();
    }
    try {
        throw RuntimeFault(rt::ViewUnloaded, "Object was unloaded");
    } catch (const std::exception&) {
        EXPECT_EQ(ErrTrap::Capture(), 0x1101);
    }
    EXPECT_EQ(ErrTrap::LastCode(), 0x1101);
    EXPECT_EQ(ErrTrap::LastSource(), "Config_Port.Control (Set)");
}

TEST_F(ErrTrapTest, CaptureLetsAForeignExceptionThrough) {
    try {
        throw HaltSignal{};
    } catch (const HaltSignal&) {
        EXPECT_THROW(ErrTrap::Capture(), HaltSignal);
    }
}

TEST_F(ErrTrapTest, ReRaiseThrowsTheLastErrorAgain) {
    try {
        ErrTrap::Raise(0x1B, "Device_Select.Discover");
    } catch (const ZolError&) {
        ErrTrap::Capture();
    }
    const ZolError e = Thrown([] { ErrTrap::ReRaise(); });
    EXPECT_EQ(e.Code(), 0x101B);
    EXPECT_EQ(e.Source(), "Device_Select.Discover");
    EXPECT_EQ(e.Description(), "ErrRDM_Response_Mutex\r\n$01B");
}

TEST_F(ErrTrapTest, TrapFormRecordsCodeAndSourceAndClosesTheView) {
    bool closed = false;
    ErrTrap::TrapForm([&] { closed = true; }, 0x201, "Device_Lamp.Initialise");
    EXPECT_TRUE(closed);
    EXPECT_EQ(ErrTrap::LastCode(), 0x1201);
    EXPECT_EQ(ErrTrap::LastSource(), "Device_Lamp.Initialise");
}

// ---- The standard pattern ----

TEST_F(ErrTrapTest, StandardPatternShowsTheLocalErrorAndLeavesNormally) {
    ui_.Expect("Not now", vb::OK, "FDF_Port.Seize");
    bool ran = true;
    EXPECT_NO_THROW(ran = ErrTrap::Standard("FDF_Port.Seize", [] { ErrTrap::RaiseLocal("Not now"); }));
    EXPECT_FALSE(ran);
}

TEST_F(ErrTrapTest, StandardPatternShowsAnyOtherErrorAndRaisesItAgain) {
    ScriptedDeviceLibrary library;
    ui_.Expect("Local device has been disconnected", vb::OK, "UDC_Control.Begin");
    const ZolError e =
        Thrown([] { ErrTrap::Standard("UDC_Control.Begin", [] { ErrTrap::Raise(0x102, "USB-OpenPort"); }); });
    EXPECT_EQ(e.Code(), 0x1102);
    EXPECT_EQ(e.Source(), "USB-OpenPort");
    EXPECT_EQ(ui_.boxes.size(), 1u);
}

TEST_F(ErrTrapTest, StandardPatternRunsTheBodyOnceWhenItSucceeds) {
    int runs = 0;
    EXPECT_TRUE(ErrTrap::Standard("X", [&] { ++runs; }));
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(ui_.boxes.empty());
}

TEST_F(ErrTrapTest, StandardPatternShowsItsBoxOutsideTheHandler) {
    ui_.AnswerWith([](const ShownBox&) {
        EXPECT_EQ(std::current_exception(), nullptr) << "the box was shown inside a catch block";
        return vb::OK;
    });
    EXPECT_THROW(ErrTrap::Standard("X", [] { ErrTrap::Raise(0x8, "Y"); }), ZolError);
}

TEST_F(ErrTrapTest, StandardPatternLetsTheHaltThrough) {
    EXPECT_THROW(ErrTrap::Standard("X", [] { ui().Halt(); }), HaltSignal);
    EXPECT_TRUE(ui_.boxes.empty());
}

// ---- The device pattern ----

TEST_F(ErrTrapTest, DevicePatternRetryRunsTheStatementAgain) {
    ui_.Expect("Local device is not responding", vb::Retry, "DMX Frame Configuration");
    int runs = 0;
    const bool done = ErrTrap::Device("Config_Frame.Initialise", "DMX Frame Configuration", [&] {
        if (++runs == 1) {
            ErrTrap::Raise(0x103);
        }
    });
    EXPECT_TRUE(done);
    EXPECT_EQ(runs, 2);
    ASSERT_EQ(ui_.boxes.size(), 1u);
    EXPECT_EQ(ui_.boxes[0].style, vb::Question | vb::RetryCancel);
}

TEST_F(ErrTrapTest, DevicePatternCancelClosesTheViewWithTheCommsError) {
    ui_.Expect("Problem with connection to Equipment\r\nIf problem persists then check USB cables",
               vb::Cancel, "Connection Port");
    int runs = 0;
    std::vector<int32_t> bugOuts;
    const bool done = ErrTrap::Device(
        "Config_Port.Control (Set)", "Connection Port",
        [&] {
            ++runs;
            ErrTrap::Raise(0x101);
        },
        [&](int32_t code) { bugOuts.push_back(code); });
    EXPECT_FALSE(done);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(bugOuts, std::vector<int32_t>{0x1201});
}

TEST_F(ErrTrapTest, DevicePatternCancelWithoutAViewRaisesTheCommsError) {
    ui_.Answer(vb::Cancel);
    const ZolError e =
        Thrown([] { ErrTrap::Device("DEV_Status.Probe", "Probe", [] { ErrTrap::Raise(0x103); }); });
    EXPECT_EQ(e.Code(), 0x1201);
}

TEST_F(ErrTrapTest, DevicePatternClosesSilentlyWhenTheDeviceIsGone) {
    std::vector<int32_t> bugOuts;
    ErrTrap::Device(
        "Device_Clock.Timer_Tick", "Clock", [] { ErrTrap::Raise(0x102); },
        [&](int32_t code) { bugOuts.push_back(code); });
    EXPECT_EQ(bugOuts, std::vector<int32_t>{0x1102});
    EXPECT_TRUE(ui_.boxes.empty());
}

TEST_F(ErrTrapTest, DevicePatternWithoutAViewRaisesTheDeviceGoneErrorSilently) {
    const ZolError e =
        Thrown([] { ErrTrap::Device("X", "T", [] { ErrTrap::Raise(0x102, "USB-OpenPort"); }); });
    EXPECT_EQ(e.Code(), 0x1102);
    EXPECT_EQ(e.Source(), "USB-OpenPort");
    EXPECT_TRUE(ui_.boxes.empty());
}

TEST_F(ErrTrapTest, DevicePatternShowsTheLocalErrorAndKeepsTheView) {
    ui_.Expect("Bad value", vb::OK, "Device_DMX - Apply Click");
    std::vector<int32_t> bugOuts;
    ErrTrap::Device(
        "Device_DMX - Apply Click", "DMX", [] { ErrTrap::RaiseLocal("Bad value"); },
        [&](int32_t code) { bugOuts.push_back(code); });
    EXPECT_TRUE(bugOuts.empty());
}

TEST_F(ErrTrapTest, DevicePatternShowsOtherErrorsAndClosesWithNoCode) {
    ui_.Expect("The remote device is write protected", vb::OK, "Device_Lamp.Initialise");
    std::vector<int32_t> bugOuts;
    ErrTrap::Device(
        "Device_Lamp.Initialise", "Lamp", [] { ErrTrap::Raise(0x24); },
        [&](int32_t code) { bugOuts.push_back(code); });
    EXPECT_EQ(bugOuts, std::vector<int32_t>{0});
}

TEST_F(ErrTrapTest, DevicePatternWithoutAViewShowsOtherErrorsAndRaisesThem) {
    ui_.Expect("The local device is Busy", vb::OK, "X");
    const ZolError e = Thrown([] { ErrTrap::Device("X", "T", [] { ErrTrap::Raise(0x8); }); });
    EXPECT_EQ(e.Code(), 0x1008);
}

TEST_F(ErrTrapTest, RangePatternHandsTheConstraintCodeToItsOwnCase) {
    std::vector<int32_t> special;
    std::vector<int32_t> bugOuts;
    const auto handler = [&](int32_t code) {
        if (code != 0x1001) {
            return false;
        }
        special.push_back(code);
        ui().MsgBox("Setting out of range", vb::Exclamation);
        return true;
    };
    ui_.Expect("Setting out of range", vb::OK);
    ErrTrap::Device(
        "Config_Frame - Apply", "DMX Frame Configuration", [] { ErrTrap::Raise(0x1); },
        [&](int32_t code) { bugOuts.push_back(code); }, handler);
    EXPECT_EQ(special, std::vector<int32_t>{0x1001});
    EXPECT_TRUE(bugOuts.empty());
    // Other codes still follow the device pattern.
    ui_.Expect("The local device is Busy", vb::OK);
    ErrTrap::Device(
        "Config_Frame - Apply", "DMX Frame Configuration", [] { ErrTrap::Raise(0x8); },
        [&](int32_t code) { bugOuts.push_back(code); }, handler);
    EXPECT_EQ(bugOuts, std::vector<int32_t>{0});
}

TEST_F(ErrTrapTest, DevicePatternShowsItsBoxesOutsideTheHandler) {
    ui_.AnswerWith([](const ShownBox&) {
        EXPECT_EQ(std::current_exception(), nullptr);
        return vb::Cancel;
    });
    ErrTrap::Device(
        "X", "T", [] { ErrTrap::Raise(0x101); }, [](int32_t) {});
}

} // namespace
} // namespace zol::test
