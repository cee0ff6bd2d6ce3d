#include "Docx/zipParts.h"

#include "Base/limits.h"

#include <QRegularExpression>
#include <QSet>
#include <quazip/quazip.h>
#include <quazip/quazipfile.h>
#include <quazip/quazipfileinfo.h>
#include <stdexcept>

namespace corv {
namespace {

constexpr qint64 chunkBytes = qint64(64) * 1024;

[[noreturn]] void fail(const QString& fileName, const char* reason)
{
    throw std::runtime_error(
        QStringLiteral("%1: %2").arg(fileName, QLatin1String(reason)).toStdString());
}

// The names of a template's parts become those of the report's. One that leads out of the folder in
// which somebody unpacks the report, or that only some programs can read, does not get there.
bool isPartName(const QString& name)
{
    constexpr int longestName = 255;
    static const QRegularExpression forbidden(QStringLiteral("[\\\\:*?\"<>|\\x00-\\x1f\\x7f]"));
    if (name.size() > longestName || forbidden.match(name).hasMatch())
        return false;
    for (const QString& element : name.split(QLatin1Char('/'))) {
        if (element.isEmpty() || element.endsWith(QLatin1Char('.')))
            return false;
    }
    return true;
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
    QSet<QString> names;
    qint64 bytesLeft = limits::templateUnpackedBytes;
    for (bool more = zip.goToFirstFile(); more; more = zip.goToNextFile()) {
        if (parts.size() == limits::templateParts)
            fail(fileName, "the template has too many parts");
        const QString name = zip.getCurrentFileName();
        if (name.endsWith(QLatin1Char('/')))
            continue;
        if (!isPartName(name))
            fail(fileName, "a part of the template has a name that no document may have");
        if (names.contains(name.toCaseFolded()))
            fail(fileName, "two parts of the template have one name");
        names.insert(name.toCaseFolded());
        parts.push_back({name, readPart(zip, fileName, bytesLeft)});
    }
    if (zip.getZipError() != UNZ_OK)
        fail(fileName, "the template is damaged");
    return parts;
}

} // namespace corv
