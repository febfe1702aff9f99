#include "device_link/status/SYS_Status.h"

#include "device_link/core/ErrTrap.h"
#include "device_link/status/DEV_Status.h"
#include "framework/seam/Product.h"
#include "services/settings/AUF_Registry.h"
#include "services/strings/StrFormat.h"

#include <QLocale>
#include <QStringList>
#include <QSysInfo>

namespace zol {
namespace {

std::string PlatformVersion() {
    if (QSysInfo::productType() == QLatin1String("windows")) {
        const QStringList parts = QSysInfo::kernelVersion().split(QLatin1Char('.'));
        const int major = !parts.isEmpty() ? parts[0].toInt() : 0;
        const int minor = parts.size() > 1 ? parts[1].toInt() : 0;
        return SYS_Status::WindowsVersionName(major, minor, 2);
    }
    return QSysInfo::prettyProductName().toStdString();
}

std::string PlatformServiceLevel() {
    if (QSysInfo::productType() == QLatin1String("windows")) {
        return {};
    }
    return (QSysInfo::kernelType() + QLatin1Char(' ') + QSysInfo::kernelVersion()).toStdString();
}

std::string CountryName(const QLocale& locale) {
    if (locale.language() == QLocale::C || locale.territory() == QLocale::AnyTerritory) {
        return {};
    }
    return QLocale::territoryToString(locale.territory()).toStdString();
}

std::string LanguageName(const QLocale& locale) {
    if (locale.language() == QLocale::C || locale.language() == QLocale::AnyLanguage) {
        return {};
    }
    return QLocale::languageToString(locale.language()).toStdString();
}

} // namespace

SYS_Status::SYS_Status()
    : winVersion_(PlatformVersion()), appVersion_(product::Version()), servicePack_(PlatformServiceLevel()),
      productCode_(product::kProductCode) {
    const QLocale locale = QLocale::system();
    country_ = CountryName(locale);
    language_ = LanguageName(locale);
}

std::string SYS_Status::LongName() const {
    return std::string(product::kCompany) + " " + product::kTitle;
}

bool SYS_Status::Updates() {
    if (hushed_) {
        return false;
    }
    bool found = false;
    ErrTrap::Standard("SYS_Status.Updates (Get)", [&] {
        const std::string latest = AUF_Registry::ReadString("Latest_Software");
        if (latest.empty() || !Text::IsVersion(latest)) { // a value no compare can read counts as absent
            return;
        }
        found = Versions::AnyFieldGreater(latest, appVersion_);
    });
    return found;
}

std::string SYS_Status::WindowsVersionName(int major, int minor, int platformId) {
    switch (major) {
    case 3:
        return std::string("Windows ") + (platformId == 1 ? "NT 3.x" : "3.x");
    case 4:
        if (platformId == 2) {
            return "Windows NT 4.0";
        }
        // "95" would need a major version of 0 here, so it never shows.
        return std::string("Windows ") + (major == 0 ? "95" : "98");
    case 5:
        if (minor == 0) {
            return "Windows 2000";
        }
        if (minor == 1) {
            return "Windows XP";
        }
        if (minor == 2) {
            return "Windows Server 2003";
        }
        break;
    case 6:
        if (minor == 0) {
            return "Windows Vista";
        }
        if (minor == 1) {
            return "Windows 7";
        }
        break;
    default:
        break;
    }
    return "Windows " + std::to_string(major) + "." + std::to_string(minor);
}

} // namespace zol
