#include "Video/ExportTarget.h"

#include "Base/FileReplacement.h"
#include "Video/fileNames.h"
#include "Video/logCategory.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <filesystem>
#include <system_error>
#include <utility>

namespace corv {
namespace {

// A container needs about this much for its end.
constexpr qint64 leastRoomBytes = qint64{64} * 1024;

QString text(const char* source)
{
    return QCoreApplication::translate("ExportTarget", source);
}

// The suffix picks the container, so it stays the last.
QString nameBeside(const QString& target)
{
    const QFileInfo info(target);
    QString name = QStringLiteral("%1/%2.part.%3")
                       .arg(info.absolutePath(), info.completeBaseName(), info.suffix());
    while (QFileInfo::exists(name))
        name = differentFileName(name);
    return name;
}

} // namespace

ExportTarget::ExportTarget(const VideoBackend& backend, QString target)
    : m_backend(backend), m_target(std::move(target))
{
}

ExportTarget::~ExportTarget()
{
    if (m_writer) { // not finished
        m_writer.reset();
        if (m_file != m_target)
            QFile::remove(m_file);
    }
}

Status ExportTarget::open(double fps, QSize size)
{
    if (QFileInfo(m_target).isDir())
        return Failure{
            Failure::Kind::notAFile,
            text("The video %1 cannot be written: a folder has this name.").arg(m_target)};
    // A link is written through, not replaced.
    const QFileInfo info(m_target);
    const QString beside = nameBeside(info.exists() ? info.canonicalFilePath() : m_target);
    for (const QString& file : {beside, m_target}) {
        Result<std::unique_ptr<FrameWriter>> writer = m_backend.openWriter(file, fps, size);
        if (writer) {
            m_file = file;
            m_writer = std::move(*writer);
            return {};
        }
        QFile::remove(beside); // what a failed attempt left behind
        if (file == m_target)
            return whyNotWritten(writer.failure());
    }
    return {};
}

// The back-end knows suffixes, and nothing of folders and disks.
Failure ExportTarget::whyNotWritten(const Failure& ofBackend)
{
    FileReplacement file(m_target, FileReplacement::InLockedFolder::refuse);
    if (const Status opened = file.open(); !opened)
        return opened.failure();
    if (isDiskFull())
        return {Failure::Kind::noRoom,
                text("The disk has no room for the video %1.").arg(m_target)};
    if (ofBackend.kind == Failure::Kind::notPossible)
        return ofBackend;
    return {Failure::Kind::notWritable,
            text("The disk has no room for the video %1, or cannot be written.").arg(m_target)};
}

void ExportTarget::write(const Frame& frame)
{
    m_writer->write(frame);
    ++m_written;
}

bool ExportTarget::isDiskFull()
{
    const qint64 room = QStorageInfo(QFileInfo(m_target).absolutePath()).bytesAvailable();
    m_wasFull = m_wasFull || (room >= 0 && room < leastRoomBytes);
    return m_wasFull;
}

Status ExportTarget::finish()
{
    const bool wasFull = isDiskFull();
    const Status ended = m_writer->finish();
    m_writer.reset();
    const int readable = readableFrames();
    if (readable >= m_written)
        return ended ? rename() : ended;
    qCWarning(lcVideo) << "Exported video is incomplete: frames" << readable << "of" << m_written;
    const Failure::Kind kind = wasFull ? Failure::Kind::noRoom : Failure::Kind::notWritable;
    if (readable == 0) {
        QFile::remove(m_file);
        const QString reason =
            wasFull ? text("The disk has no room for the video %1.")
                    : text("The disk has no room for the video %1, or cannot be written.");
        return Failure{kind, reason.arg(m_target) + text(" Nothing was kept of it.")};
    }
    const Status renamed = rename();
    if (!renamed)
        return renamed;
    const QString reason = wasFull ? text("it is full") : text("it is full, or cannot be written");
    return Failure{
        kind, text("The disk took only %1 of %2 frames of the video %3: %4.")
                  .arg(QString::number(readable), QString::number(m_written), m_target, reason)};
}

// The encoder says nothing of a full disk. Containers number their frames at their end, which is
// not written once something was lost; only where the number falls short is it worth counting.
int ExportTarget::readableFrames() const
{
    const auto info = m_backend.info(m_file);
    if (info && info->promisedFrames >= m_written)
        return info->promisedFrames;
    const auto source = m_backend.openSource(m_file);
    return source ? (*source)->frameCount() : 0;
}

Status ExportTarget::rename()
{
    if (m_file == m_target)
        return {};
    const QFileInfo info(m_target);
    const QString target = info.exists() ? info.canonicalFilePath() : m_target;
    std::error_code failed;
    std::filesystem::rename(QFile::encodeName(m_file).toStdString(),
                            QFile::encodeName(target).toStdString(), failed);
    if (!failed)
        return {};
    return Failure{
        Failure::Kind::notWritable,
        text("The video is in %1: the name %2 cannot be written.").arg(m_file, m_target)};
}

} // namespace corv
