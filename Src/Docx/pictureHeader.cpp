#include "Docx/pictureHeader.h"

#include <QFile>
#include <QtEndian>
#include <limits>

namespace corv {
namespace {

quint32 bigEndian32(const QByteArray& bytes, int offset)
{
    return qFromBigEndian<quint32>(bytes.constData() + offset);
}

int bigEndian16(const QByteArray& bytes, int offset)
{
    return qFromBigEndian<quint16>(bytes.constData() + offset);
}

/// Walks the chunks, each a length, a type, its data and a checksum, up to the end mark.
std::optional<PictureHeader> readPng(QFile& file)
{
    constexpr int chunkHeadBytes = 8;
    constexpr int checksumBytes = 4;
    PictureHeader header{QStringLiteral("png")};
    bool hasData = false;
    if (!file.seek(8))
        return std::nullopt;
    for (;;) {
        const QByteArray head = file.read(chunkHeadBytes);
        if (head.size() < chunkHeadBytes)
            return std::nullopt;
        const qint64 lengthBytes = bigEndian32(head, 0);
        const QByteArray type = head.mid(4);
        const qint64 next = file.pos() + lengthBytes + checksumBytes;
        if (next > file.size())
            return std::nullopt;
        if (header.widthPx == 0) {
            const QByteArray size = file.read(8);
            if (type != "IHDR" || size.size() < 8)
                return std::nullopt;
            const quint32 largest = std::numeric_limits<qint32>::max();
            if (bigEndian32(size, 0) > largest || bigEndian32(size, 4) > largest)
                return std::nullopt;
            header.widthPx = static_cast<int>(bigEndian32(size, 0));
            header.heightPx = static_cast<int>(bigEndian32(size, 4));
            if (header.widthPx == 0 || header.heightPx == 0)
                return std::nullopt;
        }
        hasData = hasData || type == "IDAT";
        if (type == "IEND")
            return hasData ? std::optional(header) : std::nullopt;
        if (!file.seek(next))
            return std::nullopt;
    }
}

bool isStartOfFrame(int marker)
{
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

bool endsWithEndMark(QFile& file)
{
    if (!file.seek(qMax(qint64(0), file.size() - 64)))
        return false;
    QByteArray tail = file.readAll();
    while (tail.endsWith('\0')) // some cameras pad their files
        tail.chop(1);
    return tail.endsWith("\xff\xd9");
}

/// Walks the segments, each a marker and a length that includes itself, up to the start of frame.
std::optional<PictureHeader> readJpeg(QFile& file)
{
    qint64 position = 2;
    for (;;) {
        if (!file.seek(position))
            return std::nullopt;
        const QByteArray head = file.read(9);
        if (head.size() < 9 || head[0] != '\xff')
            return std::nullopt;
        const int marker = static_cast<uchar>(head[1]);
        if (marker == 0xff) { // a fill byte
            ++position;
            continue;
        }
        if (isStartOfFrame(marker)) {
            const PictureHeader header{QStringLiteral("jpeg"), bigEndian16(head, 7),
                                       bigEndian16(head, 5)};
            const bool sound = header.widthPx > 0 && header.heightPx > 0 && endsWithEndMark(file);
            return sound ? std::optional(header) : std::nullopt;
        }
        const int lengthBytes = bigEndian16(head, 2);
        if (lengthBytes < 2)
            return std::nullopt;
        position += 2 + lengthBytes;
    }
}

} // namespace

std::optional<PictureHeader> readPictureHeader(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly) || file.isSequential())
        return std::nullopt;
    const QByteArray magic = file.peek(8);
    std::optional<PictureHeader> header;
    if (magic == QByteArrayLiteral("\x89PNG\r\n\x1a\n"))
        header = readPng(file);
    else if (magic.startsWith("\xff\xd8\xff"))
        header = readJpeg(file);
    if (header)
        header->sizeBytes = file.size();
    return header;
}

} // namespace corv
