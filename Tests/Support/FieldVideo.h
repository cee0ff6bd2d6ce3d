#pragma once

#include <QSize>
#include <QString>

namespace corv::test {

/// Writes a bare H.264 stream in which every frame is coded as two fields, each a picture of its
/// own, as camcorders write it and no program at hand does. Each frame carries its number; every
/// tenth is a keyframe. The sides of `size` are multiples of 16 and of 32 pixels. False if the file
/// cannot be written.
bool writeFieldPairs(const QString& path, int frames, QSize size);

} // namespace corv::test
