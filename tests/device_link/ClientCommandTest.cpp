// The exchange: request and poll buffers, statuses 0, 16, 17, 18 and errors, waits on a fake clock.
#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "tests/support/FakeClock.h"
#include "tests/support/ScriptedDeviceLibrary.h"
#include "tests/support/ScriptedUi.h"

#include <gtest/gtest.h>

namespace zol::test {
namespace {

class ClientCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        ErrTrap::ResetForTest();
        Client::ResetStateForTest();
    }
    ScriptedUi ui_;
    ScriptedDeviceLibrary library_;
    FakeClock clock_;
};

int32_t CodeOf(const std::function<void()>& body) {
    try {
        body();
    } catch (const ZolError& e) {
        return e.Code();
    }
    ADD_FAILURE() << "no ZolError was thrown";
    return 0;
}

TEST_F(ClientCommandTest, SimpleCommandSendsCodeThenDataAndReturnsTheWholeResponse) {
    library_.Expect(H("25 01 00 FF"), 0);
    EXPECT_EQ(Client::Command(37, H("01 00 FF")), "");
    library_.Expect(H("00"), 0, "ZOL MK1");
    EXPECT_EQ(Client::Command(0), "ZOL MK1");
    EXPECT_TRUE(ui_.pointerHistory.empty()) << "a plain exchange leaves the pointer alone";
}

TEST_F(ClientCommandTest, Status16With000AWaitsOneSecondThenPollsWithColonAndTheFirstDataByte) {
    const double start = clock_.now;
    double polledAt = -1;
    library_.Expect(H("38 05 00 00 00 60"), 16, H("00 0A"));
    library_.SetFallback([&](const Bytes& request, Bytes& response) {
        polledAt = clock_.now;
        EXPECT_EQ(Hex(request), "3A 05");
        response = H("00 60 12 34");
        return 0;
    });
    EXPECT_EQ(Client::RdmGet(5, 0, 0x60), H("12 34"));
    EXPECT_GE(polledAt - start, 1.0 - 0.005);
    EXPECT_LT(polledAt - start, 1.0 + 0.05);
    EXPECT_GT(clock_.pumps, 90) << "the message loop runs on each turn of the wait";
    EXPECT_EQ(ui_.pointerHistory, (std::vector<int>{kPointerHourglass, kPointerDefault}));
}

TEST_F(ClientCommandTest, PollReplyOfStatus0AndLength2YieldsAnEmptyResponse) {
    library_.Expect(H("38 01 00 00 10 00"), 16, H("00 01"));
    library_.Expect(H("3A 01"), 0, H("10 00"));
    EXPECT_EQ(Client::RdmGet(1, 0, 0x1000), "");
}

TEST_F(ClientCommandTest, Status18WithEmptyDataRaises0x1015) {
    library_.Expect(H("38 01 00 00 00 50"), 18, "");
    EXPECT_EQ(CodeOf([] { Client::RdmGet(1, 0, 0x50); }), 0x1015);
}

TEST_F(ClientCommandTest, Status18TwiceAndThen0YieldsTheThreePartsJoined) {
    const Bytes request = H("38 02 00 00 00 50");
    library_.Expect(request, 18, H("00 01 00 02"));
    library_.Expect(request, 18, H("00 03"));
    library_.Expect(request, 0, H("00 04"));
    EXPECT_EQ(Client::RdmGet(2, 0, 0x50), H("00 01 00 02 00 03 00 04"));
}

TEST_F(ClientCommandTest, Status18WhileWaitingSendsThePollAgain) {
    library_.Expect(H("38 02 00 03 00 E0"), 16, H("00 00"));
    library_.Expect(H("3A 02"), 18, H("AA"));
    library_.Expect(H("3A 02"), 0, H("00 E0 BB CC"));
    // The part of an overflow is taken whole; only the final poll reply loses its PID.
    EXPECT_EQ(Client::RdmGet(2, 3, 0xE0), H("AA BB CC"));
}

TEST_F(ClientCommandTest, StatusMinus2Raises0x1102) {
    library_.Expect(H("25 01 00 FF"), -2);
    EXPECT_EQ(CodeOf([] { Client::SendChannel(1, 255); }), 0x1102);
    EXPECT_EQ(ErrTrap::LastCode(), 0x1102);
}

TEST_F(ClientCommandTest, Status8Raises0x1008) {
    library_.Expect(H("23"), 8);
    EXPECT_EQ(CodeOf([] { Client::StopOutput(); }), 0x1008);
}

TEST_F(ClientCommandTest, ErrorStatusesMapToTheCatalogue) {
    library_.Expect(H("33"), 0x24); // NACK write protect
    EXPECT_EQ(CodeOf([] { Client::DiscoveryStart(); }), 0x1024);
    library_.Expect(H("33"), -1);
    EXPECT_EQ(CodeOf([] { Client::DiscoveryStart(); }), 0x1101);
    library_.Expect(H("33"), 0x13);
    EXPECT_EQ(CodeOf([] { Client::DiscoveryStart(); }), 0x1013);
}

TEST_F(ClientCommandTest, AnErrorRaisedByCommandComesFromThePluginFile) {
    library_.Expect(H("23"), -3);
    try {
        Client::StopOutput();
        FAIL();
    } catch (const ZolError& e) {
        EXPECT_EQ(e.Source(), "zol-plugin");
        EXPECT_EQ(e.Description(), "ErrAPI_Response_Missing\r\n$103");
    }
}

TEST_F(ClientCommandTest, AnErrorSetsThePointerBackToTheDefault) {
    library_.Expect(H("38 01 00 00 00 60"), 16, H("00 01"));
    library_.Expect(H("3A 01"), -2);
    EXPECT_EQ(CodeOf([] { Client::RdmGet(1, 0, 0x60); }), 0x1102);
    EXPECT_EQ(ui_.pointerHistory, (std::vector<int>{kPointerHourglass, kPointerDefault}));
}

TEST_F(ClientCommandTest, Status17ReturnsAllBytesAndSetsTheQueueFlags) {
    library_.Expect(H("38 01 00 00 00 60"), 17, H("01 02"));
    EXPECT_EQ(Client::RdmGet(1, 0, 0x60), H("01 02"));
    EXPECT_TRUE(Client::LastQueued());
    EXPECT_TRUE(Client::QueueLatch());
    EXPECT_TRUE(Client::QueuePending());
    // The next exchange clears LastQueued but leaves the latch.
    library_.Expect(H("23"), 0);
    Client::StopOutput();
    EXPECT_FALSE(Client::LastQueued());
    EXPECT_TRUE(Client::QueueLatch());
}

TEST_F(ClientCommandTest, Status17AfterAWaitLeavesTheHourglass) {
    library_.Expect(H("38 01 00 00 00 60"), 16, H("00 01"));
    library_.Expect(H("3A 01"), 17, H("00 60 07"));
    EXPECT_EQ(Client::RdmGet(1, 0, 0x60), H("00 60 07"));
    EXPECT_EQ(ui_.pointerHistory, (std::vector<int>{kPointerHourglass}));
}

TEST_F(ClientCommandTest, AWaitThatCrossesMidnightStillEnds) {
    clock_.now = 86399.5;
    clock_.step = 0.05;
    library_.Expect(H("38 01 00 00 00 60"), 16, H("00 0A")); // one second, past midnight
    double polledAt = -1;
    library_.SetFallback([&](const Bytes& request, Bytes& response) {
        polledAt = clock_.now;
        EXPECT_EQ(Hex(request), "3A 01");
        response = H("00 60 01");
        return 0;
    });
    EXPECT_EQ(Client::RdmGet(1, 0, 0x60), H("01"));
    EXPECT_GE(polledAt, 0.5 - 0.06);
    EXPECT_LT(polledAt, 1.0);
}

TEST_F(ClientCommandTest, ALongWaitIsMeasuredInTenthsOfASecondBigEndian) {
    const double start = clock_.now;
    clock_.step = 0.5;
    library_.Expect(H("38 01 00 00 00 60"), 16, H("01 2C")); // 300 tenths
    double polledAt = -1;
    library_.SetFallback([&](const Bytes&, Bytes& response) {
        polledAt = clock_.now;
        response = H("00 60");
        return 0;
    });
    Client::RdmGet(1, 0, 0x60);
    EXPECT_GE(polledAt - start, 30.0);
    EXPECT_LE(polledAt - start, 30.5 + 1e-9);
}

TEST_F(ClientCommandTest, TheWaitRunsTheMessageLoopSoOtherExchangesCanRunInside) {
    library_.Expect(H("38 01 00 00 00 60"), 16, H("00 02"));
    library_.Expect(H("25 05 00 10"), 0); // sent by a "timer" during the wait
    library_.Expect(H("3A 01"), 0, H("00 60 09"));
    bool sent = false;
    clock_.onPump = [&] {
        if (!sent) {
            sent = true;
            Client::SendChannel(5, 16);
        }
    };
    EXPECT_EQ(Client::RdmGet(1, 0, 0x60), H("09"));
}

TEST_F(ClientCommandTest, TheLengthHandedToTheLibraryIsTheDataPlusOne) {
    Bytes levels(512, '\x7F');
    library_.Expect(Bytes(1, '\x22') + Bytes(1, '\0') + levels, 0);
    Client::SendBlock(levels);
    ASSERT_EQ(library_.Commands().size(), 1u);
    EXPECT_EQ(library_.Commands()[0].size(), 514u);
}

TEST_F(ClientCommandTest, DataThatCannotFitTheBufferIsAnInvalidCallAndSendsNothing) {
    EXPECT_THROW(Client::Command(34, Bytes(528, '\0')), RuntimeFault);
    EXPECT_TRUE(library_.calls.empty());
    library_.ExpectAny(0);
    EXPECT_NO_THROW(Client::Command(34, Bytes(527, '\0')));
}

// A library that reports a response length it cannot have written.
class LyingLibrary : public ScriptedDeviceLibrary {
public:
    int32_t reportedLength = 0;
    int32_t status = 0;
    int32_t Command(uint8_t* buffer, int32_t* length) override {
        ScriptedDeviceLibrary::Command(buffer, length);
        *length = reportedLength;
        return status;
    }
};

TEST_F(ClientCommandTest, AResponseLongerThanTheBufferIsAFormatErrorNotAnOverread) {
    LyingLibrary lying;
    lying.ExpectAny(0);
    lying.reportedLength = 100000;
    EXPECT_EQ(CodeOf([] { Client::Command(0); }), 0x1105);
}

TEST_F(ClientCommandTest, ANegativeResponseLengthIsATruncatedResponse) {
    LyingLibrary lying;
    lying.ExpectAny(0);
    lying.reportedLength = -5;
    EXPECT_EQ(CodeOf([] { Client::Command(0); }), 0x1104);
    lying.ExpectAny(18);
    lying.status = 18;
    EXPECT_EQ(CodeOf([] { Client::Command(0); }), 0x1104);
}

TEST_F(ClientCommandTest, ADelayedAnswerWithoutItsWaitTimeIsATruncatedResponse) {
    library_.Expect(H("38 01 00 00 00 60"), 16, H("05"));
    EXPECT_EQ(CodeOf([] { Client::RdmGet(1, 0, 0x60); }), 0x1104);
}

TEST_F(ClientCommandTest, APollReplyShorterThanItsPidIsATruncatedResponse) {
    library_.Expect(H("38 01 00 00 00 60"), 16, H("00 00"));
    library_.Expect(H("3A 01"), 0, H("00"));
    EXPECT_EQ(CodeOf([] { Client::RdmGet(1, 0, 0x60); }), 0x1104);
}

TEST_F(ClientCommandTest, TheUnusableLibraryResultIsTheUnexpectedLibraryError) {
    library_.lastError = "no such library";
    library_.Expect(H("00"), kLibraryUnavailable);
    try {
        Client::DeviceName();
        FAIL();
    } catch (const ZolError& e) {
        EXPECT_EQ(e.Code(), 0x1164);
        EXPECT_EQ(e.Description(), "ErrAPI_Unexpected\r\nno such library\r\n$164");
    }
}

} // namespace
} // namespace zol::test
