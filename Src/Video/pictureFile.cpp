#include "Video/pictureFile.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

namespace corv {
namespace {

Failure failureOf(const QSaveFile& file)
{
    if (file.error() == QFileDevice::ResourceError)
        return {Failure::Kind::noRoom,
                QCoreApplication::translate("pictureFile", "The disk has no room for %1.")
                    .arg(file.fileName())};
    const bool isForbidden = file.error() == QFileDevice::PermissionsError;
    return {isForbidden ? Failure::Kind::noPermission : Failure::Kind::notWritable,
            QCoreApplication::translate("pictureFile", "%1 cannot be written: %2.")
                .arg(file.fileName(), file.errorString())};
}

} // namespace

Status savePictureFile(const QImage& picture, const QString& fileName)
{
    // Into memory first: on a file the picture writer empties what is there before it finds that it
    // knows no such format, and on a full disk it takes a picture that was lost for a written one.
    QBuffer buffer;
    const QByteArray format = QFileInfo(fileName).suffix().toLatin1();
    if (format.isEmpty() || !buffer.open(QIODevice::WriteOnly) ||
        !picture.save(&buffer, format.constData()))
        return Failure{
            Failure::Kind::notPossible,
            QCoreApplication::translate("pictureFile", "%1 has not the suffix of a picture format.")
                .arg(fileName)};
    // An earlier picture of that name stays until this one is whole. Flushed by hand: a commit
    // takes what was still in its buffer for written.
    QSaveFile file(fileName);
    file.setDirectWriteFallback(true);
    if (file.open(QIODevice::WriteOnly) && file.write(buffer.data()) == buffer.size() &&
        file.flush() && file.commit())
        return {};
    return failureOf(file);
}

} // namespace corv
