#pragma once
// Points $XDG_CONFIG_HOME at a fresh temporary folder for the lifetime of the object, so tests
// never touch the user's real settings.

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

namespace zol::test {

class ScopedConfigDir {
public:
    ScopedConfigDir() {
        const char* old = std::getenv("XDG_CONFIG_HOME");
        if (old != nullptr) {
            previous_ = old;
        }
        std::random_device rd;
        path_ = std::filesystem::temp_directory_path() / ("zol-test-" + std::to_string(rd()) + std::to_string(rd()));
        std::filesystem::create_directories(path_);
        setenv("XDG_CONFIG_HOME", path_.c_str(), 1);
    }
    ~ScopedConfigDir() {
        if (previous_) {
            setenv("XDG_CONFIG_HOME", previous_->c_str(), 1);
        } else {
            unsetenv("XDG_CONFIG_HOME");
        }
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    ScopedConfigDir(const ScopedConfigDir&) = delete;
    ScopedConfigDir& operator=(const ScopedConfigDir&) = delete;
    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
    std::optional<std::string> previous_;
};

} // namespace zol::test
