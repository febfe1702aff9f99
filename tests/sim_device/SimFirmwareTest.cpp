// Firmware transfer: image checks, the progress sequence, failures on the way, and zol-fud.

#include "SimHarness.h"
#include "sim/device/FirmwareImage.h"

#include <cstdlib>
#include <vector>

namespace zol::sim::test {
namespace {

std::string Sample(const std::string& name) {
    return DataDir() + "/" + name;
}

TEST(SimFirmware, ProgressRunsFromOneTo99Then100ThenZero) {
    SimHarness h;
    h.Ctl("upload-time 1 1");
    EXPECT_EQ(h.sim.ProgState(), 0); // nothing begun
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    EXPECT_EQ(h.sim.ProgState(), 1);
    std::vector<int32_t> seen;
    for (int i = 0; i < 30; ++i) {
        h.Ctl("advance 0.1");
        seen.push_back(h.sim.ProgState());
    }
    // 0.1 s steps over a one-second upload and a one-second configuration.
    const std::vector<int32_t> upload = {10, 20, 30, 40, 50, 59, 69, 79, 89};
    EXPECT_EQ(std::vector<int32_t>(seen.begin(), seen.begin() + 9), upload);
    for (size_t i = 9; i < 19; ++i) {
        EXPECT_EQ(seen[i], 100) << i;
    }
    for (size_t i = 19; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i], 0) << i;
    }
}

TEST(SimFirmware, SuccessInstallsTheImagesVersionAndBuild) {
    SimHarness h;
    h.Ctl("upload-time 0.5 0.5");
    ASSERT_EQ(h.Cmd({0x12, 20}).status, 0);
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    h.Ctl("advance 1.5");
    EXPECT_EQ(h.sim.ProgState(), 0);
    EXPECT_EQ(h.Cmd({0x02, 0x01}).data, std::string("1.5.0\0", 6));
    EXPECT_EQ(h.Cmd({0x4F}).data, B({0xE2, 0x04, 0, 0})); // 1250
    EXPECT_EQ(h.Cmd({0x11}).data[0], 40);                 // the device restarted
}

TEST(SimFirmware, CommandsDuringTheTransferFindTheDeviceBusy) {
    SimHarness h;
    h.Ctl("upload-time 1 1");
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    EXPECT_EQ(h.Cmd({0x01}).status, 8);
    h.Ctl("advance 1.5");
    EXPECT_EQ(h.Cmd({0x01}).status, 8); // configuring
    h.Ctl("advance 1");
    EXPECT_EQ(h.Cmd({0x01}).status, 0);
}

TEST(SimFirmware, ProgressRunsInRealTime) {
    SimHarness h;
    h.Ctl("upload-time 0.2 0.1");
    h.Ctl("clock real");
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    std::vector<int32_t> seen{h.sim.ProgState()};
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (seen.back() != 0 && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        seen.push_back(h.sim.ProgState());
    }
    ASSERT_EQ(seen.back(), 0);
    EXPECT_GE(seen.front(), 1);
    bool configured = false;
    for (size_t i = 1; i + 1 < seen.size(); ++i) {
        EXPECT_GE(seen[i], seen[i - 1]);
        EXPECT_LE(seen[i], 100);
        configured = configured || seen[i] == 100;
    }
    EXPECT_TRUE(configured);
}

TEST(SimFirmware, IncompatibleModelIsMinus7) {
    SimHarness h;
    EXPECT_EQ(h.sim.Reprogram(Sample("model1.fud").c_str()), -7);
    EXPECT_NE(h.LastError().find("model 1"), std::string::npos);
    EXPECT_EQ(h.sim.ProgState(), 0);
}

TEST(SimFirmware, AModel1ImageSuitsTheOlderInterface) {
    SimHarness h("default", 2);
    h.Ctl("upload-time 0.1 0.1");
    ASSERT_EQ(h.sim.Reprogram(Sample("model1.fud").c_str()), 0);
    h.Ctl("advance 1");
    EXPECT_EQ(h.sim.ProgState(), 0);
    EXPECT_EQ(h.Cmd({0x02, 0x01}).data, std::string("0.3.10\0", 7));
}

TEST(SimFirmware, BadChecksumIsMinus8) {
    SimHarness h;
    EXPECT_EQ(h.sim.Reprogram(Sample("bad.fud").c_str()), -8);
    EXPECT_NE(h.LastError().find("integrity"), std::string::npos);
}

TEST(SimFirmware, TruncatedOrForeignFilesAreMinus8) {
    SimHarness h;
    FirmwareImage image{2, "1.6.0", 7, "payload"};
    const std::string good = EncodeImage(image);
    EXPECT_EQ(h.sim.Reprogram(WriteTemp("short.fud", good.substr(0, good.size() - 1)).c_str()), -8);
    EXPECT_EQ(h.sim.Reprogram(WriteTemp("empty.fud", "").c_str()), -8);
    EXPECT_EQ(h.sim.Reprogram(WriteTemp("text.fud", "this is not an image at all, just text").c_str()), -8);
    image.version = "1.6";
    EXPECT_EQ(h.sim.Reprogram(WriteTemp("version.fud", EncodeImage(image)).c_str()), -8);
    EXPECT_EQ(h.sim.Reprogram(WriteTemp("good.fud", good).c_str()), 0);
}

TEST(SimFirmware, MissingFolderIsMinus9) {
    SimHarness h;
    EXPECT_EQ(h.sim.Reprogram("/no/such/folder/image.fud"), -9);
}

TEST(SimFirmware, MissingFileIsMinus10) {
    SimHarness h;
    EXPECT_EQ(h.sim.Reprogram((DataDir() + "/absent.fud").c_str()), -10);
    EXPECT_EQ(h.sim.Reprogram(DataDir().c_str()), -10); // a folder is no file
}

TEST(SimFirmware, AFailureDuringTheTransferIsAbove100) {
    SimHarness h;
    h.Ctl("upload-time 1 1");
    h.Ctl("upload-fail 30 3");
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    h.Ctl("advance 0.2");
    EXPECT_EQ(h.sim.ProgState(), 20);
    h.Ctl("advance 0.1");
    EXPECT_EQ(h.sim.ProgState(), 103);
    h.Ctl("advance 5");
    EXPECT_EQ(h.sim.ProgState(), 103);
    EXPECT_EQ(h.Cmd({0x02, 0x01}).data, std::string("1.0.4\0", 6));
    // The failure was for one transfer; the next one goes through.
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    h.Ctl("advance 3");
    EXPECT_EQ(h.sim.ProgState(), 0);
}

TEST(SimFirmware, UnpluggingDuringTheTransferBreaksIt) {
    SimHarness h;
    h.Ctl("upload-time 1 1");
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    h.Ctl("advance 0.5");
    h.Ctl("unplug");
    EXPECT_EQ(h.sim.ProgState(), -2);
    h.Ctl("replug");
    EXPECT_EQ(h.sim.ProgState(), 102);
    EXPECT_EQ(h.Cmd({0x02, 0x01}).data, std::string("1.0.4\0", 6));
}

TEST(SimFirmware, ReprogramNeedsAnOpenPortAndOneTransferAtATime) {
    SimHarness h("default", 0);
    EXPECT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), -14);
    EXPECT_EQ(h.sim.ProgState(), -14);
    ASSERT_EQ(h.sim.OpenPort(1), 0);
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    EXPECT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), -14);
    EXPECT_EQ(h.sim.Reprogram(nullptr), -12);
}

TEST(SimFirmware, UploadTimeComesFromTheRig) {
    const std::string rig = WriteTemp("fast.json", R"({"ports": [{"name": "F",
        "options": {"upload_seconds": 0.01, "configure_seconds": 0.01}}]})");
    SimHarness h(rig);
    ASSERT_EQ(h.sim.Reprogram(Sample("good.fud").c_str()), 0);
    h.Ctl("advance 0.015");
    EXPECT_EQ(h.sim.ProgState(), 100);
    h.Ctl("advance 0.01");
    EXPECT_EQ(h.sim.ProgState(), 0);
}

TEST(SimFirmware, ImageFormatRoundTrips) {
    FirmwareImage image{513, "12.0.345", 0xDEADBEEF, std::string("\x00\x01\xFF", 3)};
    const std::string bytes = EncodeImage(image);
    EXPECT_EQ(bytes.size(), kImageHeaderSize + 3 + 4);
    EXPECT_EQ(bytes.substr(0, 4), "ZFUD");
    const auto back = DecodeImage(bytes);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->model, 513);
    EXPECT_EQ(back->version, "12.0.345");
    EXPECT_EQ(back->build, 0xDEADBEEFu);
    EXPECT_EQ(back->payload, image.payload);
    EXPECT_EQ(Crc32("123456789", 9), 0xCBF43926u); // the check value of CRC-32
}

TEST(SimFirmware, ZolFudWritesImagesTheDeviceTakes) {
    const std::string out = WriteTemp("tool.fud", "");
    const std::string bad = WriteTemp("tool_bad.fud", "");
    const std::string tool = ZOL_FUD_TOOL;
    ASSERT_EQ(
        std::system((tool + " write --model 2 --version 2.0.1 --build 99 --size 100 " + out + " > /dev/null")
                        .c_str()),
        0);
    ASSERT_EQ(
        std::system((tool + " write --model 2 --version 2.0.1 --corrupt " + bad + " > /dev/null").c_str()),
        0);
    EXPECT_EQ(std::system((tool + " info " + out + " > /dev/null").c_str()), 0);
    EXPECT_NE(std::system((tool + " info " + bad + " > /dev/null").c_str()), 0);
    EXPECT_NE(std::system((tool + " write --version 1.0.0 " + out + " 2> /dev/null").c_str()), 0); // no model
    SimHarness h;
    h.Ctl("upload-time 0.1 0.1");
    EXPECT_EQ(h.sim.Reprogram(bad.c_str()), -8);
    ASSERT_EQ(h.sim.Reprogram(out.c_str()), 0);
    h.Ctl("advance 1");
    EXPECT_EQ(h.Cmd({0x02, 0x01}).data, std::string("2.0.1\0", 6));
    EXPECT_EQ(h.Cmd({0x4F}).data, B({99, 0, 0, 0}));
}

} // namespace
} // namespace zol::sim::test
