#include "Video/pictureFile.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

namespace corv {

bool savePictureFile(const QImage& picture, const QString& fileName)
{
    // Into memory first: on a file the picture writer empties what is there before it finds that it
    // knows no such format, and on a full disk it takes a picture that was lost for a written one.
    QBuffer buffer;
    const QByteArray format = QFileInfo(fileName).suffix().toLatin1();
    if (format.isEmpty() || !buffer.open(QIODevice::WriteOnly) ||
        !picture.save(&buffer, format.constData()))
        return false;
    // An earlier picture of that name stays until this one is whole. Flushed by hand: a commit
    // takes what was still in its buffer for written.
    QSaveFile file(fileName);
    file.setDirectWriteFallback(true);
    return file.open(QIODevice::WriteOnly) && file.write(buffer.data()) == buffer.size() &&
           file.flush() && file.commit();
}

} // namespace corv
