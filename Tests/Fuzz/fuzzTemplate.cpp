#include "Docx/DocxMerger.h"
#include "ScratchFile.h"

#include <cstring>
#include <quazip/quazip.h>
#include <quazip/quazipfile.h>
#include <stdexcept>

namespace {

void add(QuaZip& zip, const char* name, const QByteArray& content)
{
    QuaZipFile part(&zip);
    if (!part.open(QIODevice::WriteOnly, QuaZipNewInfo(QString::fromLatin1(name)), nullptr, 0, 0))
        qFatal("cannot pack the input");
    part.write(content);
}

/// A checksum keeps a fuzzer from what is inside a zip: the document is packed here.
void packDocument(const QString& path, const QByteArray& document)
{
    QuaZip zip(path);
    if (!zip.open(QuaZip::mdCreate))
        qFatal("cannot write the input");
    add(zip, "[Content_Types].xml", "<Types/>");
    add(zip, "_rels/.rels",
        "<Relationships><Relationship Id='a' Type='x/officeDocument' Target='d.xml'/>"
        "</Relationships>");
    add(zip, "_rels/d.xml.rels",
        "<Relationships><Relationship Id='i' Type='x/image' Target='i.png'/></Relationships>");
    add(zip, "i.png", "");
    add(zip, "d.xml", document);
}

} // namespace

/// A template of any content is used or refused: as a zip, if it begins like one, or else as the
/// document inside of one.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static corv::fuzz::ScratchFile source(QStringLiteral("t.dfw"));
    static corv::fuzz::ScratchFile output(QStringLiteral("o.docx"));
    if (size > 1 && std::memcmp(data, "PK", 2) == 0)
        source.hold(data, size);
    else
        packDocument(source.path(),
                     QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    corv::DocxMerger merger;
    try {
        merger.load(source.path());
        for (const char* item : {"Cover", "Page"}) {
            const QString name = QString::fromLatin1(item);
            merger.setClipboardValue(name, QStringLiteral("Name"), QStringLiteral("a\nb"));
            merger.setClipboardValue(name, QStringLiteral("Time"), 1.5);
            merger.paste(name);
        }
        merger.save(output.path());
    } catch (const std::runtime_error&) {
        // reported, and so fine
    }
    return 0;
}
