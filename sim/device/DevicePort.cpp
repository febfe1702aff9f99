#include "sim/device/DevicePort.h"

#include "sim/line/RdmLine.h"

#include <algorithm>
#include <cmath>

namespace zol::sim {
namespace {

// Checks a request of exactly `n` data bytes.
int32_t Length(const std::string& data, size_t n) {
    if (data.size() < n) {
        return status::kMissingData;
    }
    if (data.size() > n) {
        return status::kTooLong;
    }
    return status::kDone;
}

uint8_t Byte(const std::string& data, size_t i) {
    return static_cast<uint8_t>(data[i]);
}

uint32_t Le16(const std::string& data, size_t i) {
    return static_cast<uint32_t>(Byte(data, i)) | (static_cast<uint32_t>(Byte(data, i + 1)) << 8);
}

void PutLe(std::string& out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
    }
}

// The largest block a read of memory or registers answers.
constexpr uint32_t kMaxRead = 512;
constexpr uint32_t kMemorySize = 0x10000;
constexpr uint32_t kRegisterSize = 0x1000;
constexpr uint32_t kStatusBlock = 0xE00;
// Modelled time is a sum of floating steps; a moment less than this short of a mark counts as on it.
constexpr double kTimeSlack = 1e-9;

} // namespace

DevicePort::DevicePort(PortSpec setup, int number) : spec_(std::move(setup)), number_(number) {
#if defined(ZOL_SIM_HAVE_LINE)
    line_ = RdmLine::FromJson(spec_.responders, spec_.respondersWhere, spec_.seed);
    // The firmware's RDM requests come from the interface's own UID.
    uint64_t controller = 0;
    for (uint8_t byte : spec_.uid) {
        controller = (controller << 8) | byte;
    }
    line_->SetControllerUid(controller);
#endif
    ResetToRig();
}

DevicePort::~DevicePort() = default;

void DevicePort::ResetToRig() {
    firmware_ = spec_.firmware;
    build_ = spec_.build;
    factoryMode_ = spec_.factoryMode;
    input_ = spec_.input;
    uploadSeconds_ = spec_.uploadSeconds;
    configureSeconds_ = spec_.configureSeconds;
    uploading_ = false;
    failPercent_ = 0;
    failError_ = 0;
    finalState_ = 0;
    txFrames_ = 0;
    rxTotal_ = 0;
    commands_ = 0;
    inputReads_ = 0;
    if (line_) {
        line_->Reset();
    }
    PowerUp();
}

void DevicePort::PowerUp() {
    rate_ = spec_.frameRate.def;
    breakUs_ = spec_.breakUs.def;
    markUs_ = spec_.markUs.def;
    rxTimeout_ = spec_.rxTimeoutMs.def;
    breakIsDefault_ = true;
    markIsDefault_ = true;
    mode_ = LineMode::Idle;
    startCode_ = 0;
    frame_.fill(0);
    rxFrames_ = 0;
    rxSeen_ = 0;
    hadSignal_ = false;
    lossReported_ = false;
    haveLastRead_ = false;
    lastLevels_.clear();
    derogation_.fill(0);
}

bool DevicePort::SignalPresent() const {
    switch (input_.source) {
    case InputSource::Generated:
    case InputSource::Alternate:
    case InputSource::Faulty:
        return true;
    case InputSource::Loopback:
        return loopSource_ != nullptr && loopSource_->Mode() == LineMode::Transmit;
    case InputSource::None:
    case InputSource::Lost:
        break;
    }
    return false;
}

double DevicePort::InputRate() const {
    if (input_.source == InputSource::Loopback) {
        return loopSource_ != nullptr ? loopSource_->FrameRate() : 0.0;
    }
    return input_.rate;
}

void DevicePort::Advance(double dt, double now) {
    if (dt > 0) {
        if (mode_ == LineMode::Transmit) {
            txFrames_ += dt * rate_;
        }
        if (SignalPresent() && mode_ == LineMode::Receive) {
            const double frames = dt * InputRate();
            rxFrames_ += frames;
            rxTotal_ += frames;
        }
        if (line_) {
            line_->Advance(dt);
        }
    }
    if (!uploading_) {
        return;
    }
    const double elapsed = now - uploadStart_ + kTimeSlack;
    if (failPercent_ > 0) {
        // Progress p is reached at (p - 1) / 98 of the upload time.
        const double failAt = uploadSeconds_ * (failPercent_ - 1) / 98.0;
        if (elapsed >= failAt) {
            AbortUpload(failError_);
            return;
        }
    }
    if (elapsed >= uploadSeconds_ + configureSeconds_) {
        // The device restarts on its new firmware.
        uploading_ = false;
        finalState_ = 0;
        firmware_ = image_.version;
        build_ = image_.build;
        PowerUp();
    }
}

void DevicePort::StartUpload(const FirmwareImage& image, double now) {
    image_ = image;
    uploading_ = true;
    uploadStart_ = now;
    finalState_ = 0;
    // The transfer takes the line: output and input stop.
    mode_ = LineMode::Idle;
}

int32_t DevicePort::UploadState(double now) const {
    if (!uploading_) {
        return finalState_;
    }
    const double elapsed = now - uploadStart_ + kTimeSlack;
    if (elapsed < uploadSeconds_) {
        const int p = 1 + static_cast<int>(std::floor(98.0 * elapsed / uploadSeconds_));
        return std::clamp(p, 1, 99);
    }
    return 100;
}

void DevicePort::AbortUpload(int error) {
    if (uploading_) {
        uploading_ = false;
        failPercent_ = 0;
        finalState_ = 100 + error;
    }
}

void DevicePort::SetUploadTimes(double uploadSeconds, double configureSeconds) {
    uploadSeconds_ = uploadSeconds;
    configureSeconds_ = configureSeconds;
}

void DevicePort::ArmUploadFailure(int percent, int error) {
    failPercent_ = percent;
    failError_ = error;
}

bool DevicePort::LineControl(const std::string& command, std::string& reply) {
    return line_ && line_->Control(command, reply);
}

int32_t DevicePort::SetFrameRate(int value) {
    const Limits& l = spec_.frameRate;
    const int rate = value == 0 ? l.def : value;
    if (rate < l.min || rate > l.max) {
        return status::kConstraint;
    }
    rate_ = rate;
    // A faster rate leaves less of the frame period for an RDM reply: the time-out shrinks to fit.
    const int room = 1000 / rate_ - spec_.frameReserveMs;
    if (rxTimeout_ > room) {
        rxTimeout_ = std::max(spec_.rxTimeoutMs.min, room);
    }
    return status::kDone;
}

int32_t DevicePort::SetRxTimeout(int value) {
    if (mode_ == LineMode::Receive && SignalPresent()) {
        return status::kWrongMode;
    }
    const Limits& l = spec_.rxTimeoutMs;
    const int timeout = value == 0 ? l.def : value;
    if (timeout < l.min || timeout > l.max) {
        return status::kConstraint;
    }
    rxTimeout_ = timeout;
    // A longer time-out needs a longer frame period: the rate falls to fit.
    const int fastest = 1000 / (rxTimeout_ + spec_.frameReserveMs);
    if (rate_ > fastest) {
        rate_ = std::max(spec_.frameRate.min, fastest);
    }
    return status::kDone;
}

void DevicePort::InputFrame(double now, uint8_t& startCode, std::string& levels) const {
    levels.clear();
    if (input_.source == InputSource::Loopback) {
        startCode = loopSource_->StartCode();
        levels.assign(loopSource_->Frame().begin(), loopSource_->Frame().end());
        return;
    }
    startCode = input_.source == InputSource::Alternate ? static_cast<uint8_t>(input_.startCode) : 0;
    // The generated universe: slot s (from 1) holds (s - 1 + 8k) mod 256 in step k.
    const auto step = static_cast<uint64_t>(std::floor(now / input_.stepSeconds));
    for (int s = 1; s <= input_.slots; ++s) {
        levels += static_cast<char>((static_cast<uint64_t>(s - 1) + 8 * step) & 0xFF);
    }
}

int32_t DevicePort::ReadInput(std::string& response, double now) {
    ++inputReads_;
    if (mode_ != LineMode::Receive) {
        // The line turns round to listen; nothing has been received yet.
        mode_ = LineMode::Receive;
        rxFrames_ = 0;
        rxSeen_ = 0;
        hadSignal_ = false;
        lossReported_ = false;
        haveLastRead_ = false;
    }
    if (!SignalPresent()) {
        // A loss is news once: when a signal went away, or when the line never had one.
        const bool news = hadSignal_ || (input_.source == InputSource::Lost && !lossReported_);
        hadSignal_ = false;
        if (news) {
            lossReported_ = true;
            response.assign(1, static_cast<char>(3));
        }
        return status::kDone;
    }
    hadSignal_ = true;
    lossReported_ = false;
    const auto received = Whole(rxFrames_);
    if (received == rxSeen_) {
        return status::kDone; // no frame since the last read
    }
    rxSeen_ = received;
    if (input_.source == InputSource::Faulty) {
        response.assign(1, static_cast<char>(2));
        return status::kDone;
    }
    uint8_t startCode = 0;
    std::string levels;
    InputFrame(now, startCode, levels);
    const bool changed = !haveLastRead_ || startCode != lastStartCode_ || levels != lastLevels_;
    haveLastRead_ = true;
    lastStartCode_ = startCode;
    lastLevels_ = levels;
    response += static_cast<char>(changed ? 1 : 0);
    response += static_cast<char>(startCode);
    response += levels;
    return status::kDone;
}

uint8_t DevicePort::Memory(uint32_t address) const {
    // The start of flash holds the identity block; the rest is erased.
    std::string block = "ZOL1";
    PutLe(block, static_cast<uint32_t>(spec_.model), 2);
    PutLe(block, build_, 4);
    block.append(spec_.uid.begin(), spec_.uid.end());
    std::string serial = spec_.serial;
    serial.resize(16, '\0');
    std::string firmware = firmware_;
    firmware.resize(16, '\0');
    block += serial + firmware;
    if (address < block.size()) {
        return static_cast<uint8_t>(block[address]);
    }
    return 0xFF;
}

uint8_t DevicePort::Register(uint32_t address) const {
    // The status block at 0xE00 mirrors the live state; every other register reads 0.
    if (address < kStatusBlock || address >= kStatusBlock + 0x100) {
        return 0;
    }
    std::string block;
    block += static_cast<char>(rate_);
    block += static_cast<char>(rxTimeout_);
    PutLe(block, static_cast<uint32_t>(breakUs_), 2);
    PutLe(block, static_cast<uint32_t>(markUs_), 2);
    block += static_cast<char>(mode_ == LineMode::Idle ? 0 : mode_ == LineMode::Transmit ? 1 : 2);
    block += static_cast<char>((factoryMode_ ? 1 : 0) | (SignalPresent() ? 2 : 0) | (uploading_ ? 4 : 0));
    PutLe(block, static_cast<uint32_t>(FramesSent()), 4);
    PutLe(block, static_cast<uint32_t>(FramesReceived()), 4);
    block.append(spec_.uid.begin(), spec_.uid.end());
    PutLe(block, static_cast<uint32_t>(spec_.model), 2);
    block.append(derogation_.begin(), derogation_.end());
    block += static_cast<char>(startCode_);
    block.resize(0x20, '\0');
    block.append(frame_.begin(), frame_.begin() + 0xE0); // slots 1 to 224 of the output frame
    const uint32_t offset = address - kStatusBlock;
    return static_cast<uint8_t>(block[offset]);
}

int32_t DevicePort::Command(uint8_t code, const std::string& data, std::string& response, double now) {
    response.clear();
    ++commands_;
    if (uploading_) {
        return status::kBusy;
    }
    if (std::find(spec_.unsupported.begin(), spec_.unsupported.end(), code) != spec_.unsupported.end()) {
        return status::kCommandUnknown;
    }
    int32_t rc = status::kDone;
    switch (code) {
    case 0x00: // device name; with option byte 1, the model number
        if (data.empty()) {
            response = spec_.deviceName;
            return status::kDone;
        }
        if (!spec_.optionByte || data.size() > 1) {
            return status::kTooLong;
        }
        if (Byte(data, 0) != 1) {
            return status::kNotAnOption;
        }
        PutLe(response, static_cast<uint32_t>(spec_.model), 2);
        return status::kDone;
    case 0x01: // hardware revision
        if ((rc = Length(data, 0)) != status::kDone) {
            return rc;
        }
        response = spec_.hardwareRev;
        return status::kDone;
    case 0x02: // firmware revision
    case 0x03: // serial number
        if ((rc = Length(data, 1)) != status::kDone) {
            return rc;
        }
        if (Byte(data, 0) != 1) {
            return status::kNotAnOption;
        }
        response = (code == 0x02 ? firmware_ : spec_.serial);
        response += '\0';
        return status::kDone;
    case 0x04: // unique id
        if ((rc = Length(data, 0)) != status::kDone) {
            return rc;
        }
        response.assign(spec_.uid.begin(), spec_.uid.end());
        return status::kDone;
    case 0x11: // frame rate
    case 0x17: // RX time-out
    {
        if ((rc = Length(data, 0)) != status::kDone) {
            return rc;
        }
        const Limits& l = code == 0x11 ? spec_.frameRate : spec_.rxTimeoutMs;
        response += static_cast<char>(code == 0x11 ? rate_ : rxTimeout_);
        response += static_cast<char>(l.min);
        response += static_cast<char>(l.max);
        return status::kDone;
    }
    case 0x12:
        if ((rc = Length(data, 1)) != status::kDone) {
            return rc;
        }
        return SetFrameRate(Byte(data, 0));
    case 0x18:
        if ((rc = Length(data, 1)) != status::kDone) {
            return rc;
        }
        return SetRxTimeout(Byte(data, 0));
    case 0x13: // mark
    case 0x15: // break
    {
        if ((rc = Length(data, 0)) != status::kDone) {
            return rc;
        }
        const bool mark = code == 0x13;
        const Limits& l = mark ? spec_.markUs : spec_.breakUs;
        // The top bit of the current value flags a value the device chose itself.
        const bool isDefault = mark ? markIsDefault_ : breakIsDefault_;
        PutLe(response, static_cast<uint32_t>(mark ? markUs_ : breakUs_) | (isDefault ? 0x8000u : 0u), 2);
        PutLe(response, static_cast<uint32_t>(l.min), 2);
        PutLe(response, static_cast<uint32_t>(l.max), 2);
        return status::kDone;
    }
    case 0x14:
    case 0x16: {
        if ((rc = Length(data, 2)) != status::kDone) {
            return rc;
        }
        const bool mark = code == 0x14;
        const Limits& l = mark ? spec_.markUs : spec_.breakUs;
        const auto requested = static_cast<int>(Le16(data, 0));
        const int value = requested == 0 ? l.def : requested;
        if (value < l.min || value > l.max) {
            return status::kConstraint;
        }
        (mark ? markUs_ : breakUs_) = value;
        (mark ? markIsDefault_ : breakIsDefault_) = requested == 0;
        return status::kDone;
    }
    case 0x22: // block of levels: a zero byte, the start code, then slots from 1
        if (data.size() < 2) {
            return status::kMissingData;
        }
        if (data.size() > 2 + kSlots) {
            return status::kTooLong;
        }
        if (Byte(data, 0) != 0) {
            return status::kFrameFormat;
        }
        startCode_ = Byte(data, 1);
        std::copy(data.begin() + 2, data.end(), frame_.begin());
        mode_ = LineMode::Transmit;
        return status::kDone;
    case 0x23: // stop output; the line goes idle
        if ((rc = Length(data, 0)) != status::kDone) {
            return rc;
        }
        mode_ = LineMode::Idle;
        return status::kDone;
    case 0x25: { // one slot
        if ((rc = Length(data, 3)) != status::kDone) {
            return rc;
        }
        const uint32_t slot = Le16(data, 0);
        if (slot < 1 || slot > kSlots) {
            return status::kConstraint;
        }
        frame_[slot - 1] = Byte(data, 2);
        return status::kDone;
    }
    case 0x28:
        if ((rc = Length(data, 1)) != status::kDone) {
            return rc;
        }
        if (Byte(data, 0) != 1) {
            return status::kNotAnOption;
        }
        return ReadInput(response, now);
    case 0x48:
        if ((rc = Length(data, 3)) != status::kDone) {
            return rc;
        }
        std::copy(data.begin(), data.end(), derogation_.begin());
        return status::kDone;
    case 0x4F:
        if ((rc = Length(data, 0)) != status::kDone) {
            return rc;
        }
        PutLe(response, build_, 4);
        return status::kDone;
    case 0xE0:
    case 0xE2: {
        if (code == 0xE0 && !factoryMode_) {
            return status::kCommandUnknown; // only the factory firmware reads memory
        }
        if ((rc = Length(data, 4)) != status::kDone) {
            return rc;
        }
        const uint32_t address = Le16(data, 0);
        const uint32_t length = Le16(data, 2);
        const uint32_t size = code == 0xE0 ? kMemorySize : kRegisterSize;
        if (length > kMaxRead || address + length > size) {
            return status::kConstraint;
        }
        for (uint32_t a = address; a < address + length; ++a) {
            response += static_cast<char>(code == 0xE0 ? Memory(a) : Register(a));
        }
        return status::kDone;
    }
    default:
        break;
    }
#if defined(ZOL_SIM_HAVE_LINE)
    if (line_ && RdmLine::Handles(code)) {
        return line_->Handle(code, data, response);
    }
#endif
    return status::kCommandUnknown;
}

} // namespace zol::sim
