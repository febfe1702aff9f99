// Whatever a device library answers, Client turns it into a result, a numbered error or the
// program stop its table names, and never reads or writes outside its buffers or hangs.
#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "framework/seam/LoopClock.h"
#include "framework/seam/UiSeam.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct Halted {};

class QuietUi final : public zol::Ui {
public:
    int MsgBox(const std::string&, int, const std::optional<std::string>&) override {
        return zol::vb::Cancel;
    }
    std::optional<std::string> InputBox(const std::string&, const std::string&, const std::string&) override {
        return std::nullopt;
    }
    void Beep() override {}
    void SetMousePointer(int pointer) override { pointer_ = pointer; }
    int MousePointer() const override { return pointer_; }
    bool OpenUrl(const std::string&) override { return false; }
    zol::FileDialogResult FileDialog(const zol::FileDialogRequest&) override { return {}; }
    [[noreturn]] void Halt() override { throw Halted{}; }

private:
    int pointer_ = 0;
};

// Time runs ten seconds a turn of the loop, so even the longest delayed answer ends at once.
class FastClock final : public zol::LoopClock {
public:
    std::unique_ptr<zol::ClockTimer> MakeTimer(std::function<void()>) override { return nullptr; }
    double TimeOfDay() override { return now_; }
    void WaitEvents(double /*seconds*/) override {
        now_ += 10.0;
        if (now_ >= 86400.0) {
            now_ -= 86400.0;
        }
    }

private:
    double now_ = 86000.0;
};

// Answers each command from the fuzz input: a status byte, a length byte, then that many bytes.
class FuzzLibrary final : public zol::DeviceLibrary {
public:
    FuzzLibrary(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    int32_t Command(uint8_t* buffer, int32_t* length) override {
        if (++calls_ > 16 || pos_ + 2 > size_) {
            *length = 0;
            return 0;
        }
        static const int32_t statuses[] = {0, 0, 0, 16, 17, 18, 18, 1, 5, 8, 0x13, 0x18, 0x25, -2, -3, -100};
        const int32_t status = statuses[data_[pos_] % 16];
        // Lengths beyond the buffer and below zero are what a broken library might say.
        int32_t n = static_cast<int32_t>(data_[pos_ + 1]) * 3 - 40;
        pos_ += 2;
        const size_t copy = std::min<size_t>(std::clamp<int32_t>(n, 0, 528), size_ - pos_);
        std::memcpy(buffer, data_ + pos_, copy);
        pos_ += copy;
        *length = n;
        return status;
    }
    int32_t OpenPort(int32_t) override { return 0; }
    int32_t FreePort() override { return 0; }
    int32_t PortCount() override { return 1; }
    int32_t PortName(int32_t, char* buffer, int32_t size) override { return Text("fuzz", buffer, size); }
    int32_t LastError(char* buffer, int32_t size) override { return Text("fuzz error", buffer, size); }
    int32_t Version(char* buffer, int32_t size) override { return Text("fuzz 1.0", buffer, size); }
    int32_t Reprogram(const char*) override { return 0; }
    int32_t ProgState() override { return 0; }

private:
    static int32_t Text(const char* text, char* buffer, int32_t size) {
        auto n = static_cast<int32_t>(std::min<size_t>(std::strlen(text), static_cast<size_t>(size)));
        std::memcpy(buffer, text, static_cast<size_t>(n));
        return n;
    }
    const uint8_t* data_;
    size_t size_;
    size_t pos_ = 0;
    int calls_ = 0;
};

} // namespace

std::vector<std::string> ZolFuzzSeeds() {
    return {
        std::string("\x00\x0E\x01\x02\x03", 5),
        std::string("\x01\x00\x00\x0E\x01\x02", 6),
        std::string("\x03\x0E\x00\x0A\x00\x0E\x00\x51\x41\x42", 10),
        std::string("\x05\x0F\x41\x42\x43\x05\x0F\x44\x45\x46\x00\x0E", 12),
    };
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) {
        return 0;
    }
    QuietUi ui;
    FastClock clock;
    FuzzLibrary library(data + 1, size - 1);
    zol::Ui* oldUi = zol::SetUi(&ui);
    zol::LoopClock* oldClock = zol::SetLoopClock(&clock);
    zol::DeviceLibrary* oldLibrary = zol::Client::SetLibrary(&library);
    try {
        switch (data[0] % 8) {
        case 0:
            (void)zol::Client::RdmGet(1, 0, 0x0060);
            break;
        case 1:
            (void)zol::Client::GetFrameRate(1);
            break;
        case 2:
            (void)zol::Client::GetBreakTime(2);
            break;
        case 3:
            (void)zol::Client::DiscoveryStatus();
            break;
        case 4:
            (void)zol::Client::FirmwareBuild();
            break;
        case 5:
            (void)zol::Client::DeviceModel();
            break;
        case 6:
            (void)zol::Client::ReadInput();
            break;
        default:
            (void)zol::Client::RdmQueued(1, 0);
            break;
        }
    } catch (const zol::ZolError&) {
    } catch (const zol::RuntimeFault&) {
    } catch (const Halted&) {
    }
    zol::Client::SetLibrary(oldLibrary);
    zol::SetLoopClock(oldClock);
    zol::SetUi(oldUi);
    return 0;
}
