#include "Shell/AppInfo.h"

#include "Shell/logCategory.h"
#include "Shell/version.h"

#include <QDebug>
#include <QStringList>
#include <array>

namespace corv {
namespace {

constexpr std::array<int, 4> ownVersion = {VISTREL_VERSION_MAJOR, VISTREL_VERSION_MINOR,
                                           VISTREL_VERSION_PATCH, VISTREL_VERSION_BUILD};

}

QString AppInfo::versionString() const
{
    QStringList parts;
    for (const int part : ownVersion)
        parts << QString::number(part);
    return parts.join(QLatin1Char('.'));
}

bool AppInfo::isLowerThan(QString other) const
{
    const QStringList parts = other.split(QLatin1Char('.'), Qt::KeepEmptyParts);
    if (parts.size() != static_cast<int>(ownVersion.size())) {
        qCInfo(lcShell) << "Invalid version:" << other;
        return false;
    }
    for (int i = 0; i < parts.size(); ++i) {
        if (parts[i].toInt() > ownVersion[static_cast<size_t>(i)])
            return true;
    }
    return false;
}

bool AppInfo::isUnversioned() const
{
    return false;
}

} // namespace corv
