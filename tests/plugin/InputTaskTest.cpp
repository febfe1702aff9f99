// The DMX input task: each tick reads the device's input and hands the levels to the host.
#include "plugin/core/IO_Tasks.h"
#include "plugin/core/UDC_Control.h"
#include "plugin/core/UDC_Interface.h"
#include "services/settings/AUF_Registry.h"
#include "tests/plugin/PluginTestSupport.h"
#include "tests/support/QtTestEnvironment.h"

#include <utility>
#include <vector>

namespace zol {
namespace {

using namespace test;

// The host's callback object: records every level it is handed.
class RecordingHost : public HostHelper {
public:
    void DMXC_DMXIn_SetChannel(int32_t& slot, int32_t& level) override { received.emplace_back(slot, level); }
    std::vector<std::pair<int32_t, int32_t>> received;
};

const Bytes kReadInput = B({0x28, 0x01});

class InputTaskTest : public PluginFixture {
protected:
    InputTaskTest() {
        task = static_cast<IO_Tasks*>(Forms::Add(IO_Tasks::kName));
        host = std::make_shared<RecordingHost>();
    }
    IO_Tasks* task;
    std::shared_ptr<RecordingHost> host;
};

TEST_F(InputTaskTest, TheTaskIsAHiddenViewCalledTransmitterWithA200msTimerOffAtStart) {
    EXPECT_EQ(task->Name(), "IO_Tasks");
    EXPECT_EQ(task->windowTitle(), "Transmitter");
    EXPECT_FALSE(task->isVisible());
    EXPECT_EQ(task->Task_IP()->interval(), 200);
    EXPECT_FALSE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, ATickDeliversEverySlotOfTheFrameThroughTheHostsCallback) {
    task->Begin(host);
    EXPECT_TRUE(task->Task_IP()->isActive());
    lib.Expect(kReadInput, 0, B({0, 0, 10, 11, 12}));
    task->Tick();
    const std::vector<std::pair<int32_t, int32_t>> expected{{1, 10}, {2, 11}, {3, 12}};
    EXPECT_EQ(host->received, expected);
    EXPECT_TRUE(task->Task_IP()->isActive());
    // No change filter: the same frame is delivered again on the next tick.
    lib.Expect(kReadInput, 0, B({1, 0, 10, 11, 12}));
    task->Tick();
    EXPECT_EQ(host->received.size(), 6u);
}

TEST_F(InputTaskTest, TheTimerPollsEvery200msUntilFinish) {
    lib.SetFallback([](const Bytes& request, Bytes& response) {
        EXPECT_EQ(request, kReadInput);
        response = B({0, 0, 1, 2});
        return 0;
    });
    task->Begin(host);
    PumpFor(700);
    const size_t ticks = lib.Commands().size();
    EXPECT_GE(ticks, 1u);
    EXPECT_LE(ticks, 4u);
    EXPECT_EQ(host->received.size(), 2 * ticks);
    task->Finish();
    PumpFor(450);
    EXPECT_FALSE(task->Task_IP()->isActive());
    EXPECT_FALSE(task->StopRequested());
    // One tick that was already due may run; then nothing more.
    const size_t after = lib.Commands().size();
    EXPECT_LE(after, ticks + 1);
    PumpFor(450);
    EXPECT_EQ(lib.Commands().size(), after);
}

TEST_F(InputTaskTest, AOneByteReplyWithState0Or1IsAFaultThatEndsTheTick) {
    for (int state : {0, 1}) {
        task->Begin(host);
        lib.Expect(kReadInput, 0, B({state}));
        ui.Expect("Invalid procedure call or argument", vb::OK,
                  std::string("KARN DMX-ZOL MK1 Plugin - Input"));
        try {
            task->Tick();
            ADD_FAILURE() << "no error";
        } catch (const ZolError& e) {
            EXPECT_EQ(e.Code(), rt::InvalidCall);
        }
        EXPECT_FALSE(task->Task_IP()->isActive());
    }
    EXPECT_TRUE(host->received.empty());
}

TEST_F(InputTaskTest, ATwoByteReplyWithStartCode0DeliversNothingAndTheTaskGoesOn) {
    task->Begin(host);
    lib.Expect(kReadInput, 0, B({0, 0}));
    task->Tick();
    EXPECT_TRUE(host->received.empty());
    EXPECT_TRUE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, AFrameWithStartCode0x17ShowsTheBoxWith23InItsTitleAndDeliversNothing) {
    task->Begin(host);
    lib.Expect(kReadInput, 0, B({0, 0x17, 0x01, 0xAB, 0x0F}));
    ui.Expect("01 AB 0F", vb::OK, std::string("Alternate Start Code (23)"));
    task->Tick();
    EXPECT_TRUE(host->received.empty());
    EXPECT_TRUE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, State3Delivers512Zeros) {
    task->Begin(host);
    lib.Expect(kReadInput, 0, B({3}));
    task->Tick();
    ASSERT_EQ(host->received.size(), 512u);
    for (int32_t i = 0; i < 512; ++i) {
        EXPECT_EQ(host->received[static_cast<size_t>(i)], std::make_pair(i + 1, 0));
    }
    EXPECT_TRUE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, State2AndAnEmptyReplyDeliverNothing) {
    task->Begin(host);
    lib.Expect(kReadInput, 0, B({2, 0, 5, 5}));
    task->Tick();
    lib.Expect(kReadInput, 0, Bytes());
    task->Tick();
    EXPECT_TRUE(host->received.empty());
    EXPECT_TRUE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, FinishAndALaterBeginBeforeTheTickFiresLetPollingGoOnWithoutABreak) {
    task->Begin(host);
    task->Finish();
    EXPECT_TRUE(task->StopRequested());
    task->Begin(host);
    EXPECT_FALSE(task->StopRequested());
    lib.Expect(kReadInput, 0, B({0, 0, 9}));
    task->Tick();
    EXPECT_TRUE(task->Task_IP()->isActive());
    EXPECT_EQ(host->received.size(), 1u);
}

TEST_F(InputTaskTest, AfterFinishTheNextTickStillRunsOnceAndThenTheTimerStaysOff) {
    task->Begin(host);
    task->Finish();
    EXPECT_TRUE(task->Task_IP()->isActive());
    lib.Expect(kReadInput, 0, B({0, 0, 9}));
    task->Tick();
    EXPECT_EQ(host->received.size(), 1u);
    EXPECT_FALSE(task->Task_IP()->isActive());
    EXPECT_FALSE(task->StopRequested());
}

TEST_F(InputTaskTest, ANotRespondingDeviceAsksForRetryAndRetryReadsAgain) {
    task->Begin(host);
    lib.Expect(kReadInput, -3);
    lib.Expect(kReadInput, 0, B({0, 0, 4}));
    ui.AnswerWith([](const ShownBox& box) {
        EXPECT_EQ(box.prompt, "Local device is not responding");
        EXPECT_EQ(box.title.value_or(""), "KARN DMX-ZOL MK1 Plugin - Input");
        EXPECT_EQ(box.Buttons(), vb::RetryCancel);
        return vb::Retry;
    });
    task->Tick();
    EXPECT_EQ(host->received.size(), 1u);
    EXPECT_TRUE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, CancelOnAConnectionFailureRaises0x1201OutOfTheTick) {
    task->Begin(host);
    lib.Expect(kReadInput, -1);
    ui.Answer(vb::Cancel);
    EXPECT_EQ(CodeOf([&] { task->Tick(); }), err::ErrSYS_Comms);
    EXPECT_FALSE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, ALostDeviceIsRaisedOutOfTheTickWithNoMessage) {
    task->Begin(host);
    lib.Expect(kReadInput, -2);
    EXPECT_EQ(CodeOf([&] { task->Tick(); }), err::ErrAPI_DeviceMissig);
    EXPECT_TRUE(ui.boxes.empty());
    EXPECT_FALSE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, AnErrorThatLeavesATimerTickStopsThePoll) {
    lib.Expect(kReadInput, -2);
    task->Begin(host);
    PumpFor(450);
    EXPECT_EQ(task->LastEscapedCode(), err::ErrAPI_DeviceMissig);
    EXPECT_FALSE(task->Task_IP()->isActive());
    EXPECT_EQ(lib.Commands().size(), 1u);
}

// A host whose callback fails with a local error.
class RefusingHost : public HostHelper {
public:
    void DMXC_DMXIn_SetChannel(int32_t&, int32_t&) override { ErrTrap::RaiseLocal("Host refused the level"); }
};

TEST_F(InputTaskTest, ALocalErrorIsShownAndEndsTheTickWithTheTimerOff) {
    task->Begin(std::make_shared<RefusingHost>());
    lib.Expect(kReadInput, 0, B({0, 0, 1}));
    ui.Expect("Host refused the level", vb::OK, std::string("KARN DMX-ZOL MK1 Plugin - Input"));
    EXPECT_NO_THROW(task->Tick());
    EXPECT_FALSE(task->Task_IP()->isActive());
}

TEST_F(InputTaskTest, AHostWithoutTheCallbackIsAFaultShownAndRaised) {
    task->Begin(nullptr);
    lib.Expect(kReadInput, 0, B({0, 0, 1}));
    ui.Expect("Object variable or With block variable not set", vb::OK);
    EXPECT_EQ(CodeOf([&] { task->Tick(); }), rt::ObjectNotSet);
}

TEST_F(InputTaskTest, InMode1TheSessionStartsAndStopsTheTask) {
    AppSettings::SaveSetting("Host", "Plugins\\zol-plugin", "DMXInActive", "True");
    UDC_Control control;
    control.Initialise(host, "Host", "Plugins\\zol-plugin");
    ASSERT_EQ(control.Mode(), 1);
    control.Begin();
    EXPECT_TRUE(control.Active());
    EXPECT_TRUE(task->Task_IP()->isActive());
    EXPECT_EQ(task->Host(), host);
    control.Pause();
    EXPECT_TRUE(task->StopRequested());
    control.Finish();
    EXPECT_FALSE(control.Active());
    EXPECT_TRUE(lib.Commands().empty());
}

TEST_F(InputTaskTest, InMode1WithoutTheTaskLoadedBeginShowsFormNotFound) {
    task->Unload();
    AppSettings::SaveSetting("Host", "Plugins\\zol-plugin", "DMXInActive", "True");
    UDC_Control control;
    control.Initialise(host, "Host", "Plugins\\zol-plugin");
    ui.Expect("Form \"IO_Tasks\" not found", vb::OK);
    ui.Expect("Object variable or With block variable not set", vb::OK,
              std::string("KARN DMX-ZOL MK1 Plugin - Start Function"));
    EXPECT_EQ(CodeOf([&] { control.Begin(); }), rt::ObjectNotSet);
    EXPECT_FALSE(control.Active());
}

TEST_F(InputTaskTest, EnableInMode1PollsTheInputAndDeliversItToTheHost) {
    AppSettings::SaveSetting("Host", "Plugins\\zol-plugin", "DMXInActive", "True");
    AUF_Registry::WriteValue("PortUsed", std::string("ZOL USB 1"));
    UDC_Interface iface;
    iface.Init("Host", "zol-plugin", host);
    ExpectProbe(lib);
    ASSERT_TRUE(iface.Enable());
    lib.SetFallback([](const Bytes& request, Bytes& response) {
        EXPECT_EQ(request, kReadInput);
        response = B({0, 0, 0x20, 0x40});
        return 0;
    });
    PumpFor(300);
    ASSERT_GE(host->received.size(), 2u);
    EXPECT_EQ(host->received[0], std::make_pair(1, 0x20));
    EXPECT_EQ(host->received[1], std::make_pair(2, 0x40));
    EXPECT_TRUE(iface.Disable());
    PumpFor(300);
    EXPECT_FALSE(task->Task_IP()->isActive());
}

} // namespace
} // namespace zol
