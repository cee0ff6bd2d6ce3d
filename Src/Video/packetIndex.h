#pragma once

#include "Video/ByteSource.h"
#include "Video/FrameIndex.h"

#include <atomic>
#include <functional>

namespace corv {

class AvInput;

/// The bytes of an MP4, MOV or 3GP file with zeros for its pictures and sounds, which are not read:
/// the parts that describe the packets alone cost time. Of another file, its bytes.
std::unique_ptr<ByteSource> withoutPayload(std::unique_ptr<ByteSource> bytes);

/// Lists all packets of a video in `index`; finish() is left to the caller. `progress` gets the
/// part of the file that is done, from 0 to 1; true from it ends the reading. What was listed
/// before a failure of the medium stays. Where the pictures are read, too, their heads say what the
/// container does not: which packets are halves of one frame, in which order frames without times
/// are shown, and which packets are keyframes where the container says that all are.
Status readPacketIndex(AvInput& input, FrameIndex& index, bool arePicturesRead,
                       const std::function<bool(double)>& progress);

} // namespace corv
