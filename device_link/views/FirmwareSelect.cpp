#include "device_link/views/FirmwareSelect.h"

#include "device_link/core/Client.h"
#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "framework/bindings/CDW_FileFind.h"
#include "framework/form/HCF_Form.h"
#include "framework/seam/UiSeam.h"
#include "services/settings/AUF_Registry.h"

#include <string>

namespace zol {

namespace {

constexpr const char* kSource = "User_Main.SelectProgFile";
constexpr const char* kTitle = "Firmware Upload";
constexpr char kSeparator = '/';

using ErrTrap::Outcome;

// The handler of the selection, for the error in hand.
Outcome Handle(int32_t code, const std::function<void()>& disconnect) {
    switch (code) {
    case err::ErrAPI_ProgFile_Compat:
    case err::ErrAPI_ProgFile_Corrupt:
        // The menu handler shows these.
        ErrTrap::ReRaise();
    case err::ErrAPI_Connection:
    case err::ErrAPI_Response_Missing:
        if (ErrTrap::Report(kTitle, true)) {
            return Outcome::Retry;
        }
        disconnect();
        return Outcome::Stop;
    case err::ErrAPI_DeviceMissig:
    case err::ErrSYS_Comms:
        ErrTrap::Report(kTitle, false);
        disconnect();
        return Outcome::Stop;
    case err::ErrSYS_Local:
        ErrTrap::Report(kSource, false);
        return Outcome::Stop;
    default:
        ErrTrap::Report(kSource, false);
        ErrTrap::ReRaise();
    }
}

// Runs one statement of the selection under its handler; false when the selection is to stop.
bool Guarded(const std::function<void()>& statement, const std::function<void()>& disconnect) {
    return ErrTrap::Attempt(statement, [&](int32_t code) { return Handle(code, disconnect); });
}

} // namespace

void SelectProgFile(HCF_Form& panelForm, const std::shared_ptr<DEV_Status>& iState,
                    const std::function<void()>& disconnect) {
    CDW_FileFind finder;
    bool chosen = false;
    std::string path;
    bool go = Guarded(
        [&] {
            const std::string folder = AUF_Registry::ReadString("SourceDir", Client::PluginFolder());
            finder.AddFilter("Flash Files ", "FUD");
            finder.AddFilter("All Files ", "*");
            for (int32_t option : kProgFileOptionList) {
                finder.AddOption(option);
            }
            finder.Caption("Firmware Program File");
            finder.FilePath(folder);
            chosen = finder.Search();
        },
        disconnect);
    if (!go || !chosen) {
        return;
    }
    go = Guarded(
        [&] {
            AUF_Registry::WriteValue("SourceDir", SettingValue(finder.FilePath()));
            path = finder.FilePath();
            if (path.empty() || path.back() != kSeparator) {
                path += kSeparator;
            }
            path += finder.FileName(1);
        },
        disconnect);
    if (!go) {
        return;
    }
    if (!Guarded([&] { Client::ReProgram(path); }, disconnect)) {
        return;
    }
    if (!Guarded([&] { panelForm.OpenForm("Config_Prog", true); }, disconnect)) {
        return;
    }
    // A new firmware clears the update notice.
    Guarded(
        [&] {
            if (iState) {
                iState->Probe(false);
            }
        },
        disconnect);
}

} // namespace zol
