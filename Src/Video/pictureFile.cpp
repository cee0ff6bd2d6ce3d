#include "Video/pictureFile.h"

#include "Base/FileReplacement.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>

namespace corv {
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
    return replaceFile(fileName, buffer.data());
}

} // namespace corv
