#include "Docx/DocxTemplate.h"

#include "Base/limits.h"

#include <QHash>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace corv {
namespace {

constexpr int deepestNesting = 200;
constexpr Emu emuPerTwip = 635;

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(text.toStdString());
}

struct DepthCheck : pugi::xml_tree_walker
{
    bool for_each(pugi::xml_node&) override { return depth() < deepestNesting; }
};

bool isNamed(const pugi::xml_node& node, const char* name)
{
    return std::strcmp(node.name(), name) == 0;
}

/// The part that a relationship's target means, seen from the root of the package.
QString fromRoot(const char* target)
{
    QString name = QString::fromUtf8(target);
    while (name.startsWith(QLatin1Char('/')))
        name.remove(0, 1);
    return name;
}

pugi::xml_node blockOf(pugi::xml_node node, const pugi::xml_node& body)
{
    while (node && node.parent() != body)
        node = node.parent();
    return node;
}

bool hasContentBefore(const pugi::xml_node& mark)
{
    for (pugi::xml_node node = mark.previous_sibling(); node; node = node.previous_sibling()) {
        if (!isNamed(node, "w:pPr") && !isNamed(node, "w:bookmarkStart") &&
            !isNamed(node, "w:bookmarkEnd"))
            return true;
    }
    return false;
}

/// The block behind the last one of a bookmark. An end mark at the very start of a paragraph
/// belongs to what is before it.
pugi::xml_node blockBehind(const pugi::xml_node& end, const pugi::xml_node& first,
                           const pugi::xml_node& body)
{
    const pugi::xml_node last = blockOf(end, body);
    const bool excluded =
        last == end || (last != first && end.parent() == last && !hasContentBefore(end));
    return excluded ? last : last.next_sibling();
}

/// The text area along one axis, of the page and its two margins in twentieths of a point.
Emu textLength(int page, int before, int after)
{
    const Emu length = Emu(page) - std::abs(Emu(before)) - std::abs(Emu(after));
    return (length > 0 ? length : Emu(9000)) * emuPerTwip;
}

} // namespace

QString controlName(const pugi::xml_node& control)
{
    const pugi::xml_node properties = control.child("w:sdtPr");
    const char* tag = properties.child("w:tag").attribute("w:val").value();
    return QString::fromUtf8(*tag ? tag : properties.child("w:alias").attribute("w:val").value());
}

void parsePart(pugi::xml_document& document, const QByteArray& text, const QString& name)
{
    if (text.size() > limits::templateDocumentBytes)
        fail(QStringLiteral("%1 in the template is too large").arg(name));
    const pugi::xml_parse_result result =
        document.load_buffer(text.constData(), static_cast<size_t>(text.size()),
                             pugi::parse_default | pugi::parse_ws_pcdata_single);
    if (!result)
        fail(QStringLiteral("%1 in the template is damaged: %2")
                 .arg(name, QLatin1String(result.description())));
    DepthCheck depth;
    if (!document.traverse(depth))
        fail(QStringLiteral("%1 in the template is nested too deeply").arg(name));
}

DocxTemplate::DocxTemplate(const QString& fileName)
    : m_fileName(fileName), m_parts(readZipParts(fileName))
{
    findDocument();
    parsePart(m_document, *part(m_documentName), m_documentName);
    const pugi::xml_node body = m_document.child("w:document").child("w:body");
    if (!body)
        fail(QStringLiteral("%1: the template has no Word document in it").arg(fileName));
    readPageSize(body.child("w:sectPr"));
    collectControls(body);
    collectBookmarks(body);
    splitDocument();
}

std::optional<DocxItem> DocxTemplate::item(const QString& name) const
{
    const auto found = m_items.find(name);
    return found == m_items.end() ? std::nullopt : std::optional(found->second);
}

bool DocxTemplate::hasPart(const QString& name) const
{
    return part(name) != nullptr;
}

QString DocxTemplate::relationshipsName() const
{
    const auto slash = m_documentName.lastIndexOf(QLatin1Char('/')) + 1;
    return m_documentName.left(slash) + QLatin1String("_rels/") + m_documentName.mid(slash) +
           QLatin1String(".rels");
}

void DocxTemplate::findDocument()
{
    const QString rootName = QStringLiteral("_rels/.rels");
    const QByteArray* root = part(rootName);
    if (!root || !part(QStringLiteral("[Content_Types].xml")))
        fail(QStringLiteral("%1: this is no template, it is no Word document").arg(m_fileName));
    pugi::xml_document relationships;
    parsePart(relationships, *root, rootName);
    for (const pugi::xml_node& relationship : relationships.child("Relationships")) {
        const QString type = QString::fromUtf8(relationship.attribute("Type").value());
        if (type.endsWith(QLatin1String("/officeDocument")))
            m_documentName = fromRoot(relationship.attribute("Target").value());
    }
    if (!part(m_documentName))
        fail(QStringLiteral("%1: the template has no Word document in it").arg(m_fileName));
}

void DocxTemplate::readPageSize(const pugi::xml_node& section)
{
    const pugi::xml_node size = section.child("w:pgSz");
    const pugi::xml_node margin = section.child("w:pgMar");
    m_textWidth =
        textLength(size.attribute("w:w").as_int(11906), margin.attribute("w:left").as_int(1440),
                   margin.attribute("w:right").as_int(1440));
    m_textHeight =
        textLength(size.attribute("w:h").as_int(16838), margin.attribute("w:top").as_int(1440),
                   margin.attribute("w:bottom").as_int(1440));
}

void DocxTemplate::collectControls(const pugi::xml_node& blocks)
{
    for (const pugi::xml_node& control : blocks.children("w:sdt")) {
        const QString name = controlName(control);
        const pugi::xml_node content = control.child("w:sdtContent");
        if (name.isEmpty())
            collectControls(content);
        else
            m_items.insert({name, {content.first_child(), {}}});
    }
}

/// A bookmark that spans blocks can come back from a word processor in pieces of one name, the
/// first of them without an end: what counts is the first start and the last end of the name.
void DocxTemplate::collectBookmarks(const pugi::xml_node& body)
{
    struct Range
    {
        pugi::xml_node start;
        pugi::xml_node end;
    };
    std::map<QString, Range> ranges;
    QHash<QByteArray, QString> namesById;
    for (const pugi::xpath_node& found : body.select_nodes(".//w:bookmarkStart")) {
        const pugi::xml_node start = found.node();
        const QString name = QString::fromUtf8(start.attribute("w:name").value());
        namesById.insert(start.attribute("w:id").value(), name);
        ranges.insert({name, {start, {}}});
    }
    for (const pugi::xpath_node& found : body.select_nodes(".//w:bookmarkEnd")) {
        const auto range = ranges.find(namesById.value(found.node().attribute("w:id").value()));
        if (range != ranges.end())
            range->second.end = found.node();
    }
    for (const auto& [name, range] : ranges) {
        if (!range.end)
            continue;
        pugi::xml_node first = blockOf(range.start, body);
        if (first == range.start)
            first = first.next_sibling();
        m_items.insert({name, {first, blockBehind(range.end, first, body)}});
    }
}

void DocxTemplate::splitDocument()
{
    const char* const mark = "blocks-go-here";
    const pugi::xml_node root = m_document.child("w:document");
    pugi::xml_document shell;
    pugi::xml_node shellRoot = shell.append_child("w:document");
    for (const pugi::xml_attribute& attribute : root.attributes())
        shellRoot.append_copy(attribute);
    shellRoot.append_copy(root.child("w:background"));
    pugi::xml_node body = shellRoot.append_child("w:body");
    body.append_child(mark);
    body.append_copy(root.child("w:body").child("w:sectPr"));
    std::ostringstream text;
    shell.save(text, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    const std::string whole = text.str();
    const std::string element = std::string("<") + mark + "/>";
    const size_t position = whole.find(element);
    m_documentHead = whole.substr(0, position);
    m_documentTail = whole.substr(position + element.size());
}

const QByteArray* DocxTemplate::part(const QString& name) const
{
    for (const ZipPart& candidate : m_parts) {
        if (candidate.name == name)
            return &candidate.content;
    }
    return nullptr;
}

} // namespace corv
