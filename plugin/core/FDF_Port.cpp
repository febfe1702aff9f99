#include "plugin/core/FDF_Port.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "framework/seam/UiSeam.h"
#include "services/settings/AUF_Registry.h"
#include "services/strings/StrFormat.h"

namespace zol {

FDF_Port::FDF_Port() : iState_(std::make_shared<DEV_Status>()) {}

FDF_Port::~FDF_Port() {
    if (inUse_) {
        try {
            Client::ClosePort();
        } catch (const std::exception&) {
            // The port goes with its object whatever the device says.
        }
        inUse_ = false;
    }
}

void FDF_Port::SetIndex(int16_t index) {
    ErrTrap::Standard("FDF_Port.Index (Let)", [&] {
        if (inUse_) {
            ErrTrap::RaiseLocal("The elected conection may not be change while active");
        }
        if (index == 0 || index == index_) {
            return;
        }
        index_ = index;
        portName_ = Client::GetPortName(index);
        stored_ = false;
        ready_ = true;
    });
}

bool FDF_Port::Ready() {
    if (!ready_) {
        ready_ = FindLast();
    }
    return ready_;
}

bool FDF_Port::FindLast() {
    bool result = false;
    ErrTrap::Standard("FDF_Port.FindLast", [&] {
        if (inUse_) {
            ErrTrap::RaiseLocal("Search method not available while port is in use");
        }
        const std::string last = AUF_Registry::ReadString("PortUsed");
        const int32_t count = Client::GetPortCount();
        for (int32_t i = 1; i <= count; ++i) {
            if (Client::GetPortName(i) == last) {
                index_ = static_cast<int16_t>(i);
                ready_ = true;
                stored_ = true;
                break;
            }
        }
        result = stored_;
    });
    return result;
}

void FDF_Port::Seize() {
    const std::string source = "FDF_Port.Seize";
    int32_t code = 0;
    bool opened = false;
    try {
        if (!ready_) {
            ErrTrap::RaiseLocal("No port elected to enguage");
        }
        Client::OpenPort(index_);
        opened = true;
        iState_->Probe(false);
        std::string derogationText = AUF_Registry::ReadString("DerogationCode");
        if (derogationText.size() == 6) {
            const Bytes derogation = StrFormat::HexToBytes(derogationText);
            const int answer = ui().MsgBox(
                std::string("A Standard Derogation is currently active") + kCrLf + "Do you want to re-aply",
                vb::YesNoCancel | vb::Question, std::string("Standard Derogation"));
            if (answer == vb::Yes) {
                Client::ApplyDerogation(derogation);
            } else {
                // Off for this connection; Cancel turns it off for good.
                Client::ApplyDerogation(derogation.substr(0, 2) + std::string(1, '\0'));
                if (answer == vb::Cancel) {
                    AUF_Registry::WriteValue("DerogationCode", std::string());
                }
            }
        }
        inUse_ = true;
        if (!stored_) {
            AUF_Registry::WriteValue("PortUsed", portName_);
            stored_ = true;
        }
        return;
    } catch (const std::exception&) {
        code = ErrTrap::Capture(std::current_exception());
    }
    if (opened) {
        // The port was opened but never came into use: the library must not go on holding it, or
        // every later connect would find it in the wrong mode. A device that has gone away cannot
        // be closed either; the error in hand is the one that counts.
        try {
            Client::ClosePort();
        } catch (const std::exception&) {
        }
    }
    switch (code) {
    case err::ErrAPI_Connection:
        ErrTrap::ReRaise();
    case err::ErrSYS_Local:
        ErrTrap::Report(source, false);
        return;
    case err::ErrSYS_Comms:
        ErrTrap::Report("Connection Port", false);
        ErrTrap::ReRaise();
    default:
        ErrTrap::Report(source, false);
        ErrTrap::ReRaise();
    }
}

void FDF_Port::Release() {
    ErrTrap::Standard("FDF_Port.Release", [&] {
        Client::ClosePort();
        inUse_ = false;
    });
}

int32_t FDF_Port::Items() {
    const int32_t count = Client::GetPortCount();
    names_.clear();
    for (int32_t i = 1; i <= count; ++i) {
        names_.push_back(Client::GetPortName(i));
    }
    if (count <= 0) {
        ready_ = false;
    }
    return count;
}

std::string FDF_Port::Item(int32_t n) const {
    if (n < 1 || static_cast<size_t>(n) > names_.size()) {
        return {};
    }
    return names_[static_cast<size_t>(n) - 1];
}

} // namespace zol
