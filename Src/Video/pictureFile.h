#pragma once

class QImage;
class QString;

namespace corv {

/// Saves a picture in the format that the name's suffix tells. False if it could not be written,
/// for want of room or because the suffix is that of no format; a file of that name is then as it
/// was. Any thread.
bool savePictureFile(const QImage& picture, const QString& fileName);

} // namespace corv
