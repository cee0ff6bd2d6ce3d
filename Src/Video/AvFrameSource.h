#pragma once

#include "Base/Result.h"
#include "Video/ByteSource.h"
#include "Video/VideoBackend.h"

#include <QString>
#include <memory>

namespace corv {

/// Opens a video with the libraries that read and decode it. MP4, MOV and 3GP are described in one
/// place, from which the true times of all frames are taken; other containers are read through
/// beside the caller.
///
/// Times and numbers come from the index of the container alone, and each decoded picture is known
/// by the number of its packet: a picture is never taken for another one. A frame that the decoder
/// had to guess parts of is given up, and so are those that are built on it, up to the next
/// keyframe (of a group of pictures that is very long, only the first of them).
Result<std::unique_ptr<FrameSource>> openAvFrameSource(const QString& file,
                                                       const ByteSourceFactory& openBytes);

/// Rate, promised frames and length of a file. The length is exact where the container describes
/// its packets in one place, else as its head states it. Decodes nothing but what shows the rate.
Result<VideoInfo> readVideoInfo(const QString& file, const ByteSourceFactory& openBytes);

} // namespace corv
