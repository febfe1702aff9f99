#pragma once
// SYS_Status: the facts of this computer that the update request tells the maker's server, and
// whether a newer plug-in is known, with a hush for the update question.

#include "framework/seam/DataObject.h"

#include <string>

namespace zol {

class SYS_Status : public DataObject {
public:
    // Reads the platform's name and version, the user's locale and the plug-in's version.
    SYS_Status();

    std::string DataClass() const override { return "SYS_Status"; }
    void Probe() { hushed_ = false; }
    void Hush() { hushed_ = true; }
    const std::string& WinVersion() const { return winVersion_; }
    const std::string& AppVersion() const { return appVersion_; }
    const std::string& ServicePack() const { return servicePack_; }
    const std::string& Country() const { return country_; }
    const std::string& Language() const { return language_; }
    std::string LongName() const;
    const std::string& ProductCode() const { return productCode_; }
    // True when "Latest_Software" names a newer plug-in and the question is not hushed.
    bool Updates();

    // The name of a Windows version by its major and minor number and platform id.
    static std::string WindowsVersionName(int major, int minor, int platformId);

private:
    std::string winVersion_;
    std::string appVersion_;
    std::string servicePack_;
    std::string country_;
    std::string language_;
    std::string productCode_;
    bool hushed_ = false;
};

} // namespace zol
