#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace corv {

/// One file of a package, by its name inside the zip and without a leading slash.
struct ZipPart
{
    QString name;
    QByteArray content;
};

/// Reads all files of a zip in their order. Throws std::runtime_error if it is no zip, is damaged,
/// has parts whose names are not usable or not unique, or holds more than a template reasonably
/// does: what it unpacks to is counted as it is unpacked, so that a small file which claims to be
/// small cannot fill the memory either.
std::vector<ZipPart> readZipParts(const QString& fileName);

} // namespace corv
