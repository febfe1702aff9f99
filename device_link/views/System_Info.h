#pragma once
// System_Info: the view "  Device Information", which shows the connected local device's
// identity: name, serial number, hardware and firmware revisions and its own UID. Its data object
// is the port's DEV_Status.

#include "framework/form/FormView.h"

#include <array>
#include <memory>
#include <string>

class QGroupBox;
class QLabel;

namespace zol {

class DEV_Status;

class System_Info : public FormView {
    Q_OBJECT
public:
    explicit System_Info(QWidget* parent = nullptr);

    static constexpr const char* kName = "System_Info";

    // The first fill, from the device.
    void Initialise();

protected:
    void OnControl() override;

private:
    QGroupBox* frameId_ = nullptr;
    std::array<QLabel*, 5> labelName_{};
    std::array<QLabel*, 5> labelInfo_{};
    std::shared_ptr<DEV_Status> iState_;
};

// The number at the start of `text`, read as the classic Val reads it (leading blanks skipped,
// digits up to the first other character; none gives 0), written back as a number.
std::string SerialAsNumber(const std::string& text);
// A UID as hexadecimal pairs with blanks, the first two pairs and the rest parted by " : ".
std::string FormatUniqueId(const std::string& uid);

} // namespace zol
