#pragma once

#include "Base/Result.h"

#include <QString>
#include <functional>
#include <memory>

namespace corv {

/// The bytes of one file, read at any position. A test puts a slow or a vanishing medium here. Used
/// by one thread at a time.
class ByteSource
{
public:
    virtual ~ByteSource() = default;

    /// The size when the file was opened; what is appended later is not read.
    virtual qint64 sizeBytes() const = 0;

    /// Reads up to `count` bytes (at least 1) from `position`, and returns how many came: 0 at the
    /// end, -1 if the medium failed.
    virtual qint64 readAt(qint64 position, uchar* bytes, qint64 count) = 0;
};

/// Reads exactly `count` bytes from `position`; false if fewer come.
bool readWhole(ByteSource& bytes, qint64 position, uchar* target, qint64 count);

/// Opens the bytes of a file. Any thread.
using ByteSourceFactory = std::function<Result<std::unique_ptr<ByteSource>>(const QString& file)>;

/// The bytes of a regular file on a disk or card.
Result<std::unique_ptr<ByteSource>> openFileBytes(const QString& file);

} // namespace corv
