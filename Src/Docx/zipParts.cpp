#include "Docx/zipParts.h"

#include <quazip/quazip.h>
#include <quazip/quazipfile.h>
#include <quazip/quazipfileinfo.h>
#include <stdexcept>

namespace corv {
namespace {

constexpr int mostParts = 2000;
constexpr qint64 mostBytes = 64 * 1024 * 1024;
constexpr qint64 chunkBytes = 64 * 1024;

[[noreturn]] void fail(const QString& fileName, const char* reason)
{
    throw std::runtime_error(
        QStringLiteral("%1: %2").arg(fileName, QLatin1String(reason)).toStdString());
}

QByteArray readPart(QuaZip& zip, const QString& fileName, qint64& bytesLeft)
{
    QuaZipFile file(&zip);
    if (!file.open(QIODevice::ReadOnly))
        fail(fileName, "a part of the template cannot be read");
    QByteArray content;
    QByteArray chunk(chunkBytes, Qt::Uninitialized);
    for (;;) {
        const qint64 read = file.read(chunk.data(), chunk.size());
        if (read < 0)
            fail(fileName, "a part of the template is damaged");
        if (read == 0)
            break;
        bytesLeft -= read;
        if (bytesLeft < 0)
            fail(fileName, "the template is too large");
        content.append(chunk.constData(), static_cast<int>(read));
    }
    file.close(); // compares the checksum
    if (file.getZipError() != UNZ_OK)
        fail(fileName, "a part of the template is damaged");
    return content;
}

} // namespace

std::vector<ZipPart> readZipParts(const QString& fileName)
{
    QuaZip zip(fileName);
    zip.setFileNameCodec("UTF-8");
    if (!zip.open(QuaZip::mdUnzip))
        fail(fileName, "this is no template, it cannot be unpacked");
    std::vector<ZipPart> parts;
    qint64 bytesLeft = mostBytes;
    for (bool more = zip.goToFirstFile(); more; more = zip.goToNextFile()) {
        if (parts.size() == mostParts)
            fail(fileName, "the template has too many parts");
        const QString name = zip.getCurrentFileName();
        if (!name.endsWith(QLatin1Char('/')))
            parts.push_back({name, readPart(zip, fileName, bytesLeft)});
    }
    if (zip.getZipError() != UNZ_OK)
        fail(fileName, "the template is damaged");
    return parts;
}

} // namespace corv
