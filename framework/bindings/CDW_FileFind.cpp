#include "framework/bindings/CDW_FileFind.h"

#include "device_link/core/ErrTrap.h"
#include "framework/seam/UiSeam.h"

namespace zol {

void CDW_FileFind::AddFilter(const std::string& description, const std::string& extension) {
    if (extension.size() > 3) {
        ui().MsgBox("1 to 3 characters allowed for a file extension", vb::Critical,
                    std::string("CDW_FileFind.AddFilter"));
        return;
    }
    filters_.emplace_back(description, "." + extension);
}

void CDW_FileFind::AddOption(int32_t option) {
    if (option == ofn::SaveMode) {
        saveMode_ = true;
    } else {
        options_ |= option;
    }
}

std::string CDW_FileFind::FileName(int16_t index) const {
    if (index < 1 || static_cast<size_t>(index) > names_.size()) {
        throw RuntimeFault(rt::SubscriptOutOfRange, "Subscript out of range");
    }
    return names_[static_cast<size_t>(index) - 1];
}

bool CDW_FileFind::Search() {
    FileDialogRequest request;
    request.caption = caption_;
    for (const auto& [description, extension] : filters_) {
        request.filters.emplace_back(description, "*" + extension);
    }
    request.initialDir = filePath_;
    request.flags = options_;
    request.save = saveMode_;
    const FileDialogResult result = ui().FileDialog(request);
    if (!result.chosen) {
        return false;
    }
    filePath_ = result.folder;
    names_ = result.names;
    // Several names come with the folder ending in its separator; a single one without.
    if (names_.size() > 1 && (filePath_.empty() || filePath_.back() != '/')) {
        filePath_ += '/';
    }
    return true;
}

} // namespace zol
