#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSaveFile>
#include <QStringList>
#include <cstdio>
#include <pugixml.hpp>
#include <quazip/quazip.h>
#include <quazip/quazipfile.h>
#include <quazip/quazipnewinfo.h>

namespace {

bool fail(const QString& text)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    return false;
}

/// The order is the same on every machine; what a package has to begin with comes first.
QStringList partNames(const QDir& folder)
{
    QStringList names;
    QDirIterator files(folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext())
        names << folder.relativeFilePath(files.next());
    names.sort();
    const QString first = QStringLiteral("[Content_Types].xml");
    if (names.removeOne(first))
        names.prepend(first);
    return names;
}

/// Adds a file to the package; XML only if it is well-formed, so that a slip in the sources ends
/// the build and not the word processor of a client.
bool addPart(QuaZip& zip, const QString& source, const QString& name)
{
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("%1: %2").arg(source, file.errorString()));
    const QByteArray content = file.readAll();
    if (!name.endsWith(QLatin1String(".png"))) {
        pugi::xml_document document;
        const pugi::xml_parse_result result =
            document.load_buffer(content.constData(), static_cast<size_t>(content.size()));
        if (!result)
            return fail(QStringLiteral("%1: %2 at byte %3")
                            .arg(source, QLatin1String(result.description()))
                            .arg(result.offset));
    }
    QuaZipNewInfo info(name);
    info.dateTime = QDateTime(QDate(1980, 1, 1), QTime(0, 0)); // equal sources, equal template
    QuaZipFile part(&zip);
    if (!part.open(QIODevice::WriteOnly, info) || part.write(content) != content.size())
        return fail(QStringLiteral("cannot pack %1").arg(name));
    part.close();
    return part.getZipError() == ZIP_OK || fail(QStringLiteral("cannot pack %1").arg(name));
}

bool buildTemplate(const QString& output, const QDir& sources, const QStringList& pictures)
{
    QSaveFile file(output);
    if (!file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("%1: %2").arg(output, file.errorString()));
    QuaZip zip(&file);
    zip.setAutoClose(false);
    if (!zip.open(QuaZip::mdCreate))
        return fail(QStringLiteral("cannot begin %1").arg(output));
    for (const QString& name : partNames(sources)) {
        if (!addPart(zip, sources.filePath(name), name))
            return false;
    }
    for (const QString& picture : pictures) {
        const QString name = QStringLiteral("word/media/") + QFileInfo(picture).fileName();
        if (!addPart(zip, picture, name))
            return false;
    }
    zip.close();
    return file.commit() || fail(QStringLiteral("%1: %2").arg(output, file.errorString()));
}

} // namespace

/// vistrel-template-builder OUTPUT.dfw SOURCE_FOLDER PICTURE.png...: packs the readable sources of
/// the report's template.
int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QFile::decodeName(argv[i]);
    if (arguments.size() < 2) {
        std::fprintf(stderr, "usage: vistrel-template-builder OUTPUT.dfw SOURCE_FOLDER "
                             "PICTURE.png...\n");
        return 2;
    }
    return buildTemplate(arguments[0], QDir(arguments[1]), arguments.mid(2)) ? 0 : 1;
}
