#include "plugin/core/IO_Tasks.h"

#include "device_link/core/ErrTrap.h"
#include "framework/form/Forms.h"
#include "framework/seam/Product.h"
#include "framework/seam/UiSeam.h"
#include "services/strings/StrFormat.h"

namespace zol {
namespace {

constexpr int32_t kSlots = 512;

std::string InputSource() {
    return std::string(product::kProductName) + " - Input";
}

int32_t ByteAt(const Bytes& data, size_t offset) {
    return static_cast<uint8_t>(data[offset]);
}

} // namespace

IO_Tasks::IO_Tasks(QWidget* parent) : FormView(kName, parent) {
    setWindowTitle(QStringLiteral("Transmitter"));
    taskIP_.setObjectName(QStringLiteral("Task_IP"));
    taskIP_.setInterval(kIntervalMs);
    connect(&taskIP_, &QTimer::timeout, this, &IO_Tasks::OnTaskIP);
}

void IO_Tasks::Begin(const HostRef& host) {
    stopRequested_ = false;
    host_ = host;
    taskIP_.start();
}

void IO_Tasks::Finish() {
    stopRequested_ = true;
}

void IO_Tasks::OnTaskIP() {
    try {
        Tick();
    } catch (const ZolError& e) {
        // No caller but the timer: the poll stays stopped, the session flags stay as they were.
        lastEscapedCode_ = e.Code();
    } catch (const RuntimeFault& e) {
        lastEscapedCode_ = e.Number();
    } catch (const std::exception&) {
        lastEscapedCode_ = ErrTrap::LastCode();
    }
}

void IO_Tasks::Tick() {
    // Off while the tick runs, so that a slow tick cannot overlap itself.
    taskIP_.stop();
    Bytes reply;
    if (!Guarded([&] { reply = Client::ReadInput(); })) {
        return;
    }
    if (!Guarded([&] { Deliver(reply); })) {
        return;
    }
    if (!stopRequested_) {
        taskIP_.start();
    } else {
        stopRequested_ = false;
    }
}

bool IO_Tasks::Guarded(const std::function<void()>& statement) {
    const std::string source = InputSource();
    return ErrTrap::Attempt(statement, [&](int32_t code) -> ErrTrap::Outcome {
        if (code == err::ErrAPI_Connection || code == err::ErrAPI_Response_Missing) {
            if (ErrTrap::Report(source, true)) {
                return ErrTrap::Outcome::Retry;
            }
            ErrTrap::Raise(err::ErrSYS_Comms, source);
        }
        if (code == err::ErrAPI_DeviceMissig) {
            ErrTrap::ReRaise();
        }
        ErrTrap::Report(source, false);
        if (code == err::ErrSYS_Local) {
            return ErrTrap::Outcome::Stop;
        }
        ErrTrap::ReRaise();
    });
}

void IO_Tasks::Deliver(const Bytes& reply) {
    if (reply.empty()) {
        return;
    }
    const int32_t state = ByteAt(reply, 0);
    if (state == 0 || state == 1) {
        if (reply.size() < 2) {
            throw RuntimeFault(rt::InvalidCall, "Invalid procedure call or argument");
        }
        const int32_t startCode = ByteAt(reply, 1);
        const Bytes levels = reply.substr(2);
        if (startCode == 0) {
            for (size_t i = 0; i < levels.size(); ++i) {
                SendToHost(static_cast<int32_t>(i) + 1, ByteAt(levels, i));
            }
        } else {
            ui().MsgBox(StrFormat::BytesToHex(levels, " "), vb::OKOnly,
                        "Alternate Start Code (" + std::to_string(startCode) + ")");
        }
    } else if (state == 3) {
        // The input is lost: the host's inputs go to zero.
        for (int32_t slot = 1; slot <= kSlots; ++slot) {
            SendToHost(slot, 0);
        }
    }
}

void IO_Tasks::SendToHost(int32_t slot, int32_t level) {
    if (!host_) {
        throw RuntimeFault(rt::ObjectNotSet, "Object variable or With block variable not set");
    }
    host_->DMXC_DMXIn_SetChannel(slot, level);
}

void RegisterIoTasks() {
    Forms::Register(IO_Tasks::kName, [] { return new IO_Tasks(); });
}

} // namespace zol
