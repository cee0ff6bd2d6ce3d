#pragma once

#include "Base/Result.h"

class QImage;
class QString;

namespace corv {

/// Saves a picture in the format of the name's suffix. If it fails, for want of room or because the
/// suffix is that of no format, a file of that name is as it was before. Any thread.
Status savePictureFile(const QImage& picture, const QString& fileName);

} // namespace corv
