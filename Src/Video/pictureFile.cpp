#include "Video/pictureFile.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImage>

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
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const bool isWritten = file.write(buffer.data()) == buffer.size() && file.flush();
    file.close();
    if (!isWritten)
        QFile::remove(fileName); // the open file would refuse to go for the same reason
    return isWritten;
}

} // namespace corv
