#pragma once

class QImage;
class QString;

namespace corv {

/// Saves a picture in the format that the name's suffix tells. False if it could not be written: a
/// suffix of no format leaves a file of that name as it was, a full disk leaves none. Any thread.
bool savePictureFile(const QImage& picture, const QString& fileName);

} // namespace corv
