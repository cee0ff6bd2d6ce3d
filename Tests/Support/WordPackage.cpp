#include "Support/WordPackage.h"

#include <QDir>
#include <QSet>
#include <QXmlStreamReader>
#include <functional>
#include <pugixml.hpp>
#include <quazip/quazip.h>
#include <quazip/quazipfile.h>

namespace corv::test {
namespace {

const QByteArray office = "http://schemas.openxmlformats.org/officeDocument/2006/";
const QByteArray packages = "http://schemas.openxmlformats.org/package/2006/";
const QByteArray word = "application/vnd.openxmlformats-officedocument.wordprocessingml.";

QByteArray relationship(const QByteArray& id, const QByteArray& type, const QByteArray& target)
{
    return "<Relationship Id=\"" + id + "\" Type=\"" + office + "relationships/" + type +
           "\" Target=\"" + target + "\"/>";
}

bool isXml(const QString& name)
{
    return name.endsWith(".xml") || name.endsWith(".rels");
}

/// The part that a target means, for the relationships in `relationshipsName`.
QString targetPart(const QString& relationshipsName, const QString& target)
{
    if (target.startsWith('/'))
        return target.mid(1);
    const QString folder = relationshipsName.left(relationshipsName.indexOf("_rels/"));
    return QDir::cleanPath(folder + target);
}

void checkWellFormed(const QString& name, const QByteArray& content, QStringList& broken)
{
    QXmlStreamReader reader(content);
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError())
        broken << name + ": " + reader.errorString();
}

void checkType(const QString& name, const pugi::xml_node& types, QStringList& broken)
{
    const QByteArray partName = '/' + name.toUtf8();
    const QByteArray suffix = name.mid(name.lastIndexOf('.') + 1).toLower().toUtf8();
    const bool declared =
        types.find_child_by_attribute("Override", "PartName", partName.constData()) ||
        types.find_child_by_attribute("Default", "Extension", suffix.constData());
    if (!declared)
        broken << name + ": no content type";
}

void checkRelationships(const QString& name, const Parts& parts, QStringList& broken)
{
    pugi::xml_document document;
    document.load_string(parts[name].constData());
    QSet<QString> ids;
    for (const pugi::xml_node& node : document.child("Relationships")) {
        const QString id = node.attribute("Id").value();
        if (ids.contains(id))
            broken << name + ": " + id + " twice";
        ids.insert(id);
        const QString target =
            targetPart(name, QString::fromUtf8(node.attribute("Target").value()));
        if (QByteArray(node.attribute("TargetMode").value()) != "External" &&
            !parts.contains(target))
            broken << name + ": no part " + target;
    }
}

/// Ids that must be there only once, and references that must lead to a relationship.
void checkDocument(const Parts& parts, QStringList& broken)
{
    pugi::xml_document document;
    document.load_string(parts["word/document.xml"].constData());
    pugi::xml_document relationships;
    relationships.load_string(parts["word/_rels/document.xml.rels"].constData());
    QSet<QString> used;
    struct Walker : pugi::xml_tree_walker
    {
        std::function<void(const pugi::xml_node&)> check;
        bool for_each(pugi::xml_node& node) override
        {
            check(node);
            return true;
        }
    } walker;
    walker.check = [&](const pugi::xml_node& node) {
        const QString name = node.name();
        QString id;
        if (name == "wp:docPr" || name == "pic:cNvPr")
            id = name + ' ' + node.attribute("id").value();
        else if (name == "w:bookmarkStart")
            id = name + ' ' + node.attribute("w:id").value();
        else if (name == "w:sdt")
            id = name + ' ' + node.child("w:sdtPr").child("w:id").attribute("w:val").value();
        if (!id.isEmpty() && used.contains(id))
            broken << "id twice: " + id;
        used.insert(id);
        for (const char* reference : {"r:embed", "r:id", "r:link"}) {
            const char* target = node.attribute(reference).value();
            if (*target && !relationships.child("Relationships")
                                .find_child_by_attribute("Relationship", "Id", target))
                broken << QString("no relationship ") + target;
        }
    };
    document.traverse(walker);
}

} // namespace

QByteArray control(const QByteArray& name, const QByteArray& content, const QByteArray& properties)
{
    return "<w:sdt><w:sdtPr><w:tag w:val=\"" + name + "\"/>" + properties +
           "</w:sdtPr><w:sdtContent>" + content + "</w:sdtContent></w:sdt>";
}

QByteArray paragraph(const QByteArray& content)
{
    return "<w:p>" + content + "</w:p>";
}

QByteArray run(const QByteArray& text)
{
    return "<w:r><w:t xml:space=\"preserve\">" + text + "</w:t></w:r>";
}

QByteArray drawing(qint64 width, const QByteArray& relationship)
{
    const QByteArray size = "cx=\"" + QByteArray::number(width) + "\" cy=\"1000\"";
    return "<w:r><w:drawing><wp:inline><wp:extent " + size +
           "/><wp:docPr id=\"1\" name=\"p\"/><a:graphic><a:graphicData><pic:pic><pic:nvPicPr>"
           "<pic:cNvPr id=\"1\" name=\"p\"/></pic:nvPicPr><pic:blipFill><a:blip r:embed=\"" +
           relationship + "\"/><a:srcRect l=\"5\"/></pic:blipFill><pic:spPr><a:xfrm><a:ext " +
           size +
           "/></a:xfrm></pic:spPr></pic:pic></a:graphicData></a:graphic></wp:inline>"
           "</w:drawing></w:r>";
}

Parts templateParts(const QByteArray& blocks)
{
    Parts parts;
    parts["[Content_Types].xml"] =
        "<Types xmlns=\"" + packages +
        "content-types\"><Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-"
        "package.relationships+xml\"/><Default Extension=\"gif\" ContentType=\"image/gif\"/>"
        "<Override PartName=\"/word/document.xml\" ContentType=\"" +
        word + "template.main+xml\"/></Types>";
    parts["_rels/.rels"] = "<Relationships xmlns=\"" + packages + "relationships\">" +
                           relationship("r1", "officeDocument", "word/document.xml") +
                           "</Relationships>";
    parts["word/_rels/document.xml.rels"] =
        "<Relationships xmlns=\"" + packages + "relationships\">" +
        relationship("sample", "image", "media/sample.gif") + "</Relationships>";
    parts["word/media/sample.gif"] = "GIF89a";
    parts["word/document.xml"] =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><w:document"
        " xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\""
        " xmlns:w14=\"http://schemas.microsoft.com/office/word/2010/wordml\""
        " xmlns:r=\"" +
        office +
        "relationships\""
        " xmlns:wp=\"http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing\""
        " xmlns:a=\"http://schemas.openxmlformats.org/drawingml/2006/main\""
        " xmlns:pic=\"http://schemas.openxmlformats.org/drawingml/2006/picture\"><w:body>" +
        blocks +
        "<w:sectPr><w:pgSz w:w=\"10000\" w:h=\"16000\"/><w:pgMar w:left=\"500\" w:right=\"500\""
        " w:top=\"500\" w:bottom=\"500\"/></w:sectPr></w:body></w:document>";
    return parts;
}

void writeZip(const QString& fileName, const Parts& parts)
{
    QuaZip zip(fileName);
    if (!zip.open(QuaZip::mdCreate))
        qFatal("cannot write %s", qPrintable(fileName));
    for (auto part = parts.begin(); part != parts.end(); ++part) {
        QuaZipFile file(&zip);
        if (!file.open(QIODevice::WriteOnly, QuaZipNewInfo(part.key())) ||
            file.write(part.value()) != part.value().size())
            qFatal("cannot pack %s", qPrintable(part.key()));
    }
}

Parts readZip(const QString& fileName)
{
    Parts parts;
    QuaZip zip(fileName);
    zip.open(QuaZip::mdUnzip);
    for (bool more = zip.goToFirstFile(); more; more = zip.goToNextFile()) {
        QuaZipFile file(&zip);
        if (!file.open(QIODevice::ReadOnly) || parts.contains(zip.getCurrentFileName()))
            qFatal("a broken or double part %s", qPrintable(zip.getCurrentFileName()));
        parts[zip.getCurrentFileName()] = file.readAll();
    }
    return parts;
}

QStringList brokenRules(const Parts& parts)
{
    QStringList broken;
    pugi::xml_document types;
    types.load_string(parts["[Content_Types].xml"].constData());
    for (const QString& name : parts.keys()) {
        if (isXml(name))
            checkWellFormed(name, parts[name], broken);
        if (name != "[Content_Types].xml")
            checkType(name, types.child("Types"), broken);
        if (name.endsWith(".rels"))
            checkRelationships(name, parts, broken);
    }
    for (const pugi::xml_node& type : types.child("Types").children("Override")) {
        const QString name = QString::fromUtf8(type.attribute("PartName").value()).mid(1);
        if (!parts.contains(name))
            broken << "type of no part: " + name;
    }
    checkDocument(parts, broken);
    return broken;
}

QString documentText(const Parts& parts)
{
    QString text;
    QXmlStreamReader reader(parts["word/document.xml"]);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement() && reader.name() == QLatin1String("t"))
            text += reader.readElementText();
        else if (reader.isStartElement() && reader.name() == QLatin1String("tab"))
            text += '\t';
        else if ((reader.isStartElement() && reader.name() == QLatin1String("br")) ||
                 (reader.isEndElement() && reader.name() == QLatin1String("p")))
            text += '\n';
    }
    return text;
}

} // namespace corv::test
