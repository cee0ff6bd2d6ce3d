#pragma once

#include <QObject>
#include <QString>

namespace corv {

/// The version of the program, fixed when it is built, and its comparison with another. Interface
/// singleton; may also be a local variable. Any thread.
class AppInfo : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString versionString READ versionString CONSTANT)

public:
    using QObject::QObject;

    /// The four numbers joined by ".": major, minor, patch, build.
    QString versionString() const;

    /// Whether `other`, four numbers joined by ".", counts as newer than this program: when any one
    /// of its numbers is above its counterpart here, none taking precedence over another. A text
    /// of any other shape is logged as "Invalid version:" and is never newer; a part that is no
    /// number reads as 0.
    bool isLowerThan(QString other) const;

    /// Whether the build carries no version and so has nothing to update from. False in a release.
    bool isUnversioned() const;
};

} // namespace corv
