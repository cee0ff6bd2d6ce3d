#include "Docx/DocxWriter.h"

#include "Base/FileReplacement.h"
#include "Base/limits.h"

#include <QDir>
#include <QSet>
#include <algorithm>
#include <quazip/quazip.h>
#include <quazip/quazipfile.h>
#include <quazip/quazipnewinfo.h>
#include <sstream>
#include <stdexcept>

namespace corv {
namespace {

const char declaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
const char documentType[] =
    "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml";
const QString contentTypesName = QStringLiteral("[Content_Types].xml");

[[noreturn]] void fail(const QString& fileName, const QString& reason)
{
    throw std::runtime_error(
        QStringLiteral("cannot write %1: %2").arg(fileName, reason).toStdString());
}

QByteArray serialised(const pugi::xml_document& document)
{
    std::ostringstream text;
    document.save(text, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return declaration + QByteArray::fromStdString(text.str());
}

QByteArray contentOf(const DocxTemplate& source, const QString& name)
{
    for (const ZipPart& part : source.parts()) {
        if (part.name == name)
            return part.content;
    }
    return {};
}

bool isImage(const pugi::xml_node& relationship)
{
    return QByteArray(relationship.attribute("Type").value()).endsWith("/image");
}

QString folderOf(const QString& partName)
{
    return partName.left(partName.lastIndexOf(QLatin1Char('/')) + 1);
}

/// The part of the package that a relationship of the document leads to.
QString partOf(const pugi::xml_node& relationship, const QString& documentName)
{
    const QString target = QString::fromUtf8(relationship.attribute("Target").value());
    return target.startsWith(QLatin1Char('/')) ? target.mid(1)
                                               : QDir::cleanPath(folderOf(documentName) + target);
}

/// One zip on its way to a device that can still be thrown away.
class ZipWriter
{
public:
    explicit ZipWriter(FileReplacement& file) : m_file(file), m_zip(&file.device())
    {
        m_zip.setAutoClose(false);
        m_zip.setFileNameCodec("UTF-8");
        if (!m_zip.open(QuaZip::mdCreate))
            fail(file.fileName(), QStringLiteral("the package cannot be begun"));
    }

    void add(const QString& name, const QByteArray& content)
    {
        QuaZipFile part(&m_zip);
        open(part, name, Z_DEFLATED, Z_DEFAULT_COMPRESSION);
        if (part.write(content) != content.size())
            failUnfinished();
        close(part);
    }

    /// Pictures are packed already: doing it again would cost time and gain nothing.
    void addPicture(const QString& name, PictureSpool& pictures, int index)
    {
        QuaZipFile part(&m_zip);
        open(part, name, 0, 0);
        if (!pictures.copyTo(index, part))
            failUnfinished();
        close(part);
    }

    void finish()
    {
        m_zip.close();
        if (m_zip.getZipError() != ZIP_OK)
            failUnfinished();
    }

private:
    // The layers below forget the reason, and there is hardly another.
    [[noreturn]] void failUnfinished() const
    {
        fail(m_file.fileName(), QStringLiteral("it could not be written to its end, the disk may "
                                               "be full"));
    }

    void open(QuaZipFile& part, const QString& name, int method, int level)
    {
        QuaZipNewInfo info(name);
        info.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                            QFile::ReadOther);
        if (!part.open(QIODevice::WriteOnly, info, nullptr, 0, method, level))
            failUnfinished();
    }

    void close(QuaZipFile& part)
    {
        part.close();
        if (part.getZipError() != ZIP_OK)
            failUnfinished();
    }

    FileReplacement& m_file;
    QuaZip m_zip;
};

} // namespace

DocxWriter::DocxWriter(const DocxTemplate& source)
    : m_source(source), m_pictureName(QStringLiteral("frame"))
{
    const auto isTaken = [this] {
        if (contentOf(m_source, m_source.relationshipsName()).contains(m_pictureName.toUtf8()))
            return true;
        const auto& parts = m_source.parts();
        return std::any_of(parts.begin(), parts.end(), [this](const ZipPart& part) {
            return part.name.contains(m_pictureName, Qt::CaseInsensitive);
        });
    };
    while (isTaken())
        m_pictureName += QLatin1Char('_');
}

std::string DocxWriter::addPicture(const QString& fileName, const PictureHeader& header)
{
    const QString id = m_pictureName + QString::number(m_pictures.count() + 1);
    m_pictures.append(fileName, folderOf(m_source.documentName()) + QLatin1String("media/") + id +
                                    QLatin1Char('.') + header.suffix);
    return id.toStdString();
}

void DocxWriter::appendBlocks(const std::string& blocks)
{
    if (m_blocks.size() + blocks.size() > size_t(limits::reportDocumentBytes))
        throw std::runtime_error("the document becomes too large");
    m_blocks += blocks;
}

std::string DocxWriter::documentText() const
{
    std::string text = declaration + m_source.documentHead() + m_blocks;
    const std::string table = "</w:tbl>";
    const bool endsWithTable =
        m_blocks.size() >= table.size() &&
        m_blocks.compare(m_blocks.size() - table.size(), table.size(), table) == 0;
    if (m_blocks.empty() || endsWithTable)
        text += "<w:p/>"; // a body wants a paragraph at its end
    return text + m_source.documentTail();
}

bool DocxWriter::isShownElsewhere(const QString& partName) const
{
    const QByteArray name = partName.mid(folderOf(partName).size()).toUtf8();
    const auto& parts = m_source.parts();
    return std::any_of(parts.begin(), parts.end(), [this, &name](const ZipPart& part) {
        return part.name.endsWith(QLatin1String(".rels")) &&
               part.name != m_source.relationshipsName() && part.content.contains(name);
    });
}

/// Adds the pictures, and drops the placeholders of the template: `unused` gets the parts
/// that nothing shows any more.
QByteArray DocxWriter::relationshipsText(const std::string& document, QSet<QString>& unused) const
{
    const QString name = m_source.relationshipsName();
    pugi::xml_document relationships;
    if (m_source.hasPart(name))
        parsePart(relationships, contentOf(m_source, name), name);
    pugi::xml_node root = relationships.child("Relationships");
    if (!root) {
        root = relationships.append_child("Relationships");
        root.append_attribute("xmlns") =
            "http://schemas.openxmlformats.org/package/2006/relationships";
    }
    QSet<QString> shown;
    for (pugi::xml_node child = root.first_child(); child;) {
        const pugi::xml_node next = child.next_sibling();
        const QString target = partOf(child, m_source.documentName());
        const std::string id = '"' + std::string(child.attribute("Id").value()) + '"';
        if (!isImage(child) || document.find(id) != std::string::npos) {
            shown.insert(target);
        } else {
            unused.insert(target);
            root.remove_child(child);
        }
        child = next;
    }
    for (const QString& target : QSet<QString>(unused)) {
        if (shown.contains(target) || isShownElsewhere(target))
            unused.remove(target);
    }
    for (int i = 0; i < m_pictures.count(); ++i) {
        pugi::xml_node relationship = root.append_child("Relationship");
        relationship.append_attribute("Id") =
            (m_pictureName + QString::number(i + 1)).toUtf8().constData();
        relationship.append_attribute("Type") =
            "http://schemas.openxmlformats.org/officeDocument/2006/relationships/image";
        relationship.append_attribute("Target") = m_pictures.partName(i)
                                                      .mid(folderOf(m_source.documentName()).size())
                                                      .toUtf8()
                                                      .constData();
    }
    return serialised(relationships);
}

QByteArray DocxWriter::contentTypesText(const QSet<QString>& unused) const
{
    pugi::xml_document document;
    parsePart(document, contentOf(m_source, contentTypesName), contentTypesName);
    pugi::xml_node root = document.child("Types");
    for (const QString& name : unused) {
        const QByteArray partName = '/' + name.toUtf8();
        root.remove_child(root.find_child_by_attribute("PartName", partName.constData()));
    }
    QSet<QByteArray> suffixes;
    for (const pugi::xml_node& type : root.children("Default"))
        suffixes.insert(QByteArray(type.attribute("Extension").value()).toLower());
    for (const char* suffix : {"png", "jpeg"}) {
        if (suffixes.contains(suffix))
            continue;
        pugi::xml_node type = root.prepend_child("Default");
        type.append_attribute("Extension") = suffix;
        type.append_attribute("ContentType") = (std::string("image/") + suffix).c_str();
    }
    // A company may have saved its template as a template of its word processor.
    const QByteArray partName = '/' + m_source.documentName().toUtf8();
    pugi::xml_node type =
        root.find_child_by_attribute("Override", "PartName", partName.constData());
    if (!type) {
        type = root.append_child("Override");
        type.append_attribute("PartName") = partName.constData();
        type.append_attribute("ContentType");
    }
    type.attribute("ContentType") = documentType;
    return serialised(document);
}

void DocxWriter::save(const QString& fileName)
{
    FileReplacement file(fileName);
    if (!file.open())
        fail(fileName, file.errorString());
    const std::string document = documentText();
    QSet<QString> unused;
    const QByteArray relationships = relationshipsText(document, unused);
    ZipWriter zip(file);
    zip.add(contentTypesName, contentTypesText(unused));
    for (const ZipPart& part : m_source.parts()) {
        if (part.name == m_source.documentName())
            zip.add(part.name, QByteArray::fromStdString(document));
        else if (part.name != contentTypesName && part.name != m_source.relationshipsName() &&
                 !unused.contains(part.name))
            zip.add(part.name, part.content);
    }
    zip.add(m_source.relationshipsName(), relationships);
    for (int i = 0; i < m_pictures.count(); ++i)
        zip.addPicture(m_pictures.partName(i), m_pictures, i);
    zip.finish();
    if (!file.commit())
        fail(fileName, file.errorString());
}

} // namespace corv
