#include "Log/logFailures.h"

#include <QByteArray>
#include <QFile>
#include <filesystem>

namespace corv {
namespace {

using Kind = Failure::Kind;

// A description begins with its root element or an XML declaration, after any byte order mark.
bool beginsLikeLog(const QByteArray& head)
{
    constexpr const char* kByteOrderMark = "\xef\xbb\xbf";
    const QByteArray text = (head.startsWith(kByteOrderMark) ? head.mid(3) : head).trimmed();
    return text.startsWith('<') && text.contains("<main");
}

Failure notALog(const QString& path)
{
    return {Kind::notRecognised, QStringLiteral("\"%1\" is not a flight log.").arg(path)};
}

} // namespace

Failure logOpenFailure(const QString& path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status =
        fs::status(fs::path(QFile::encodeName(path).toStdString()), error);
    if (status.type() == fs::file_type::not_found)
        return {Kind::notFound, QStringLiteral("The log \"%1\" does not exist.").arg(path)};
    if (error == std::errc::too_many_symbolic_link_levels)
        return {Kind::notFound,
                QStringLiteral("\"%1\" is a link that leads back to itself.").arg(path)};
    if (!error && status.type() != fs::file_type::regular)
        return {Kind::notAFile,
                QStringLiteral("\"%1\" is a folder or a device, not a flight log.").arg(path)};
    const QFile::Permissions permissions = QFile(path).permissions();
    if (error == std::errc::permission_denied || (!error && !(permissions & QFile::ReadUser)))
        return {
            Kind::noPermission,
            QStringLiteral("The log \"%1\" cannot be read: the system refuses access.").arg(path)};
    return logReadFailure(path, false);
}

Failure logReadFailure(const QString& path, bool cutShort)
{
    if (cutShort)
        return {Kind::cutShort,
                QStringLiteral("The log \"%1\" became shorter while it was read.").arg(path)};
    return {Kind::unreadable, QStringLiteral("Reading the log \"%1\" failed. The disk or card may "
                                             "be damaged or no longer there.")
                                  .arg(path)};
}

Failure logDescriptionFailure(const QString& path, const QByteArray& head, bool isComplete,
                              const QString& fault)
{
    if (head.isEmpty())
        return {Kind::cutShort, QStringLiteral("The log \"%1\" is empty.").arg(path)};
    if (!beginsLikeLog(head))
        return notALog(path);
    if (!isComplete)
        return {Kind::cutShort,
                QStringLiteral("The log \"%1\" ends within its description.").arg(path)};
    return {Kind::damaged,
            QStringLiteral("The description of the log \"%1\" is damaged: %2.").arg(path, fault)};
}

Failure logDescriptionTooLarge(const QString& path, const QByteArray& head, qint64 limitBytes)
{
    if (!beginsLikeLog(head))
        return notALog(path);
    return {Kind::tooLarge,
            QStringLiteral("The description of the log \"%1\" is larger than %2 MiB.")
                .arg(path, QString::number(limitBytes >> 20))};
}

Failure logNoMemory(const QString& path)
{
    return {Kind::noMemory,
            QStringLiteral("There is not enough memory for the log \"%1\".").arg(path)};
}

Failure logCancelled(const QString& path)
{
    return {Kind::cancelled, QStringLiteral("Reading the log \"%1\" was stopped.").arg(path)};
}

} // namespace corv
