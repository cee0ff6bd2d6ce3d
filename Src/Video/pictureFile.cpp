#include "Video/pictureFile.h"

#include <QFileInfo>
#include <QImage>
#include <QImageWriter>

namespace corv {

bool savePictureFile(const QImage& picture, const QString& fileName)
{
    // Asked first: the picture writer empties the file before it finds that it knows no such
    // format.
    const QByteArray suffix = QFileInfo(fileName).suffix().toLower().toLatin1();
    return QImageWriter::supportedImageFormats().contains(suffix) && picture.save(fileName);
}

} // namespace corv
