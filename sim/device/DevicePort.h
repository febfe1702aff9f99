#pragma once
// One simulated interface: its command set, DMX output and input, frame timing and firmware
// transfer, and the RDM line behind it. Time is handed in by the owner; nothing here reads a clock.

#include "sim/device/FirmwareImage.h"
#include "sim/device/Rig.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace zol::sim {

class RdmLine;

enum class LineMode { Idle, Transmit, Receive };

// Device status codes of KDI_Command.
namespace status {
inline constexpr int32_t kDone = 0;
inline constexpr int32_t kConstraint = 1;
inline constexpr int32_t kCommandUnknown = 2;
inline constexpr int32_t kNotAnOption = 3;
inline constexpr int32_t kFrameFormat = 4;
inline constexpr int32_t kTooLong = 5;
inline constexpr int32_t kMissingData = 6;
inline constexpr int32_t kWrongMode = 7;
inline constexpr int32_t kBusy = 8;
} // namespace status

inline constexpr int kSlots = 512;

class DevicePort {
public:
    DevicePort(PortSpec setup, int number);
    ~DevicePort();
    DevicePort(const DevicePort&) = delete;
    DevicePort& operator=(const DevicePort&) = delete;

    const PortSpec& Spec() const { return spec_; }
    int Number() const { return number_; }
    // Loopback input: the port whose output arrives here.
    void SetLoopSource(const DevicePort* source) { loopSource_ = source; }
    bool HasLine() const { return line_ != nullptr; }

    // Back to what the rig describes: firmware, input source, options, line, and a power-up.
    void ResetToRig();
    // The device starting up (plugged in, or after new firmware): default timing, line idle,
    // a blank frame, nothing received, no derogation. Flash (firmware) is kept.
    void PowerUp();

    // One command of the command set; `data` follows the code. Returns the status.
    int32_t Command(uint8_t code, const std::string& data, std::string& response, double now);
    // Lets `dt` seconds pass; `now` is the time at the end.
    void Advance(double dt, double now);

    // Firmware transfer. StartUpload assumes the image has been checked.
    void StartUpload(const FirmwareImage& image, double now);
    bool Uploading() const { return uploading_; }
    // The progress value of KDI_ProgState.
    int32_t UploadState(double now) const;
    // The transfer breaks off with error `error` (ProgState 100 + error).
    void AbortUpload(int error);
    void SetUploadTimes(double uploadSeconds, double configureSeconds);
    void ArmUploadFailure(int percent, int error);

    // Run-time changes of the rig's choices.
    void SetInput(const InputSpec& input) { input_ = input; }
    const InputSpec& Input() const { return input_; }
    void SetFactoryMode(bool on) { factoryMode_ = on; }
    bool FactoryMode() const { return factoryMode_; }

    // What the device holds, for queries.
    LineMode Mode() const { return mode_; }
    uint8_t StartCode() const { return startCode_; }
    const std::array<uint8_t, kSlots>& Frame() const { return frame_; }
    uint64_t FramesSent() const { return Whole(txFrames_); }
    uint64_t FramesReceived() const { return Whole(rxTotal_); }
    uint64_t Commands() const { return commands_; }
    uint64_t InputReads() const { return inputReads_; }
    int FrameRate() const { return rate_; }
    int BreakUs() const { return breakUs_; }
    int MarkUs() const { return markUs_; }
    int RxTimeoutMs() const { return rxTimeout_; }
    const std::string& Firmware() const { return firmware_; }
    uint32_t Build() const { return build_; }
    const std::array<uint8_t, 3>& Derogation() const { return derogation_; }
    // A DMX signal is on this port's input (whether or not the port listens).
    bool SignalPresent() const;

    // The RDM line's own run-time commands ("line ...", "responder ...").
    bool LineControl(const std::string& command, std::string& reply);

private:
    // Frames counted from a sum of floating steps: a hair short of a whole frame is that frame.
    static uint64_t Whole(double frames) { return static_cast<uint64_t>(frames + 1e-6); }
    int32_t SetFrameRate(int value);
    int32_t SetRxTimeout(int value);
    int32_t ReadInput(std::string& response, double now);
    void InputFrame(double now, uint8_t& startCode, std::string& levels) const;
    double InputRate() const;
    uint8_t Register(uint32_t address) const;
    uint8_t Memory(uint32_t address) const;

    PortSpec spec_;
    int number_;
    std::unique_ptr<RdmLine> line_;
    const DevicePort* loopSource_ = nullptr;

    // Flash and options.
    std::string firmware_;
    uint32_t build_ = 0;
    bool factoryMode_ = false;
    InputSpec input_;
    double uploadSeconds_ = 4.0;
    double configureSeconds_ = 2.0;

    // Frame timing. The default flags mark a break or mark chosen by the device itself.
    int rate_ = 0;
    int breakUs_ = 0;
    int markUs_ = 0;
    int rxTimeout_ = 0;
    bool breakIsDefault_ = true;
    bool markIsDefault_ = true;

    // Output.
    LineMode mode_ = LineMode::Idle;
    uint8_t startCode_ = 0;
    std::array<uint8_t, kSlots> frame_{};
    double txFrames_ = 0;

    // Input.
    double rxFrames_ = 0; // frames received since listening began
    double rxTotal_ = 0;  // frames received since power-up
    uint64_t rxSeen_ = 0; // rxFrames_ at the last read that delivered one
    bool hadSignal_ = false;
    bool lossReported_ = false;
    bool haveLastRead_ = false;
    uint8_t lastStartCode_ = 0;
    std::string lastLevels_;
    uint64_t inputReads_ = 0;

    std::array<uint8_t, 3> derogation_{};
    uint64_t commands_ = 0;

    // Firmware transfer.
    bool uploading_ = false;
    double uploadStart_ = 0;
    FirmwareImage image_;
    int failPercent_ = 0; // 0: no failure armed
    int failError_ = 0;
    int32_t finalState_ = 0;
};

} // namespace zol::sim
