#pragma once

#include <QString>
#include <optional>

namespace corv {

/// What a document has to know of a picture file.
struct PictureHeader
{
    QString suffix;   ///< "png" or "jpeg"
    int widthPx = 0;  ///< above 0
    int heightPx = 0; ///< above 0
    qint64 sizeBytes = 0;
};

/// The header of a PNG or JPEG file; nothing for any other file, and for one that has been cut off.
/// `QImageReader` takes a JPEG that has been cut off for whole, and reads each picture to its end.
std::optional<PictureHeader> readPictureHeader(const QString& fileName);

} // namespace corv
