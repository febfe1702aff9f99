#pragma once
// The firmware file selection of the main panel (Menu_File_Open, PopUp_Reprogram): the user picks
// an image file, the device library starts the upload, Config_Prog follows it, and afterwards the
// device is probed again so that a new firmware clears the update notice.

#include <cstdint>
#include <functional>
#include <memory>

namespace zol {

class DEV_Status;
class HCF_Form;

// Runs the selection from the panel whose controller is `panelForm`. `iState` is the port's
// DEV_Status; `disconnect` is the panel's disconnect action, run when the link to the device has
// failed. An incompatible or corrupt image (0x1107, 0x1108) is thrown on to the caller with no
// message of its own.
void SelectProgFile(HCF_Form& panelForm, const std::shared_ptr<DEV_Status>& iState,
                    const std::function<void()>& disconnect);

// The dialog's options, in the order they are added.
inline constexpr int32_t kProgFileOptionList[] = {0x80000, 0x200000, 2, 0x100000, 4, 512, 0x1000000};

} // namespace zol
