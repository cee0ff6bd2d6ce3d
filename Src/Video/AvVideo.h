#pragma once

#include "Base/Result.h"
#include "Video/AvDecoder.h"
#include "Video/AvInput.h"
#include "Video/ByteSource.h"
#include "Video/FrameIndexTask.h"
#include "Video/avPicture.h"

#include <QSize>
#include <QString>
#include <memory>

struct AVCodecParameters;

namespace corv {

struct AvParametersDelete
{
    void operator()(AVCodecParameters* parameters) const;
};

/// What all sources on one file share. Does not change once the first source is open.
struct AvVideo
{
    QString file;
    ByteSourceFactory openBytes;
    std::unique_ptr<AVCodecParameters, AvParametersDelete> parameters;
    bool packetsAsStored = false;
    bool isReadThrough = false; ///< for the index: the container alone does not say enough
    double fps = 0.0;
    QSize pixelAspectRatio{1, 1};
    PictureForm form;
    std::unique_ptr<FrameIndexTask> index;

    /// A cursor of its own on the file.
    Result<std::unique_ptr<AvInput>> openInput() const;

    /// A decoder of its own for the pictures. After describe().
    Result<std::unique_ptr<AvDecoder>> openDecoder() const;

    /// Why reading from the start to the end gave no picture.
    Failure whyNoPicture(const AvInput& input, const AvDecoder& decoder) const;

    /// Takes what the head of the file says, and its first packets where the head does not say all.
    Status describe(AvInput& input);

    /// The size of the pictures as decoded.
    void setSize(QSize whole);

    /// The same for what describes the packets: of an MP4, MOV or 3GP file no picture is read.
    Result<std::unique_ptr<AvInput>> openDescription() const;

    /// The packets of a container that describes them; finish() is left to the caller.
    Result<FrameIndex> readStoredIndex() const;

    /// The same from what openDescription() gave, once.
    Result<FrameIndex> readStoredIndex(AvInput& description) const;

    /// Whether the container says that all packets are keyframes, or that frames are shown in the
    /// order of their packets, and the pictures know better: all of them have to be read. Looks at
    /// a few pictures where the container says so.
    bool doPicturesKnowBetter(const FrameIndex& packets) const;
};

} // namespace corv
