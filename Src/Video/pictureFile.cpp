#include "Video/pictureFile.h"

#include "Base/FileReplacement.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>

namespace corv {
Status savePictureFile(const QImage& picture, const QString& fileName)
{
    // Into memory first: Qt's picture writer empties an existing file before it checks whether it
    // knows the format, and on a full disk it reports success for a picture that was not written.
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
