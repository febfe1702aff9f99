#pragma once
// CDW_FileFind: the open and save file dialogs. A caller adds filters and options, sets a caption
// and a start folder, calls Search, and reads back the folder and the chosen names. The dialog
// itself is the UI seam's FileDialog (a QFileDialog in the product).

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zol {

// Option flags with a meaning here (the classic dialog's values).
namespace ofn {
inline constexpr int32_t OverwritePrompt = 0x2;
inline constexpr int32_t HideReadOnly = 0x4;
inline constexpr int32_t AllowMultiSelect = 0x200;
inline constexpr int32_t PathMustExist = 0x800;
inline constexpr int32_t FileMustExist = 0x1000;
inline constexpr int32_t Explorer = 0x80000;
// Not a flag: AddOption with this value selects the save dialog.
inline constexpr int32_t SaveMode = 3;
} // namespace ofn

class CDW_FileFind {
public:
    // Extensions of 1 to 3 characters, without the point ("FUD"); a longer one is refused with a
    // stop box "1 to 3 characters allowed for a file extension".
    void AddFilter(const std::string& description, const std::string& extension);
    void Caption(const std::string& caption) { caption_ = caption; }
    // 3 selects save mode; any other value is joined to the option flags.
    void AddOption(int32_t option);
    // The folder: the start folder before Search, the chosen folder after.
    void FilePath(const std::string& path) { filePath_ = path; }
    const std::string& FilePath() const { return filePath_; }
    int16_t FileCount() const { return static_cast<int16_t>(names_.size()); }
    // Chosen name `index`, from 1. Outside the array: run-time error 9.
    std::string FileName(int16_t index) const;
    // True when the user confirmed.
    bool Search();

    const std::vector<std::pair<std::string, std::string>>& Filters() const { return filters_; }
    int32_t Options() const { return options_; }
    bool SaveMode() const { return saveMode_; }

private:
    std::vector<std::pair<std::string, std::string>> filters_; // description, ".ext"
    std::string caption_;
    int32_t options_ = 0;
    std::string filePath_;
    std::vector<std::string> names_;
    bool saveMode_ = false;
};

} // namespace zol
