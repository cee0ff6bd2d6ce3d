#include "Docx/ItemCopy.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <sstream>
#include <vector>

namespace corv {
namespace {

using pugi::xml_node;

constexpr Emu emuPerTwip = 635;
constexpr Emu emuPerPixel = 9525;

bool isNamed(const xml_node& node, const char* name)
{
    return std::strcmp(node.name(), name) == 0;
}

std::vector<xml_node> descendants(const xml_node& root, const char* name)
{
    struct Walker : pugi::xml_tree_walker
    {
        const char* wanted = nullptr;
        std::vector<xml_node> found;
        bool for_each(xml_node& node) override
        {
            if (isNamed(node, wanted))
                found.push_back(node);
            return true;
        }
    } walker;
    walker.wanted = name;
    xml_node(root).traverse(walker);
    return std::move(walker.found);
}

xml_node firstDescendant(const xml_node& root, const char* name)
{
    return root.find_node([name](const xml_node& node) { return isNamed(node, name); });
}

/// Adds an empty child before the first one named in `later`, since the format prescribes the order
/// of children; as the last one if there is none of these.
template <size_t Count>
void addOrdered(xml_node parent, const char* name, const char* const (&later)[Count])
{
    if (parent.child(name))
        return;
    for (const xml_node& child : parent) {
        const bool isLater =
            std::any_of(std::begin(later), std::end(later),
                        [&child](const char* other) { return isNamed(child, other); });
        if (isLater) {
            parent.insert_child_before(name, child);
            return;
        }
    }
    parent.append_child(name);
}

void readFromRight(xml_node runProperties)
{
    static const char* const later[] = {
        "w:cs", "w:em", "w:lang", "w:eastAsianLayout", "w:specVanish", "w:oMath", "w:rPrChange"};
    addOrdered(runProperties, "w:rtl", later);
}

void alignFromRight(xml_node paragraph)
{
    static const char* const later[] = {"w:adjustRightInd",
                                        "w:snapToGrid",
                                        "w:spacing",
                                        "w:ind",
                                        "w:contextualSpacing",
                                        "w:mirrorIndents",
                                        "w:suppressOverlap",
                                        "w:jc",
                                        "w:textDirection",
                                        "w:textAlignment",
                                        "w:textboxTightWrap",
                                        "w:outlineLvl",
                                        "w:divId",
                                        "w:cnfStyle",
                                        "w:rPr",
                                        "w:sectPr",
                                        "w:pPrChange"};
    xml_node properties = paragraph.child("w:pPr");
    if (!properties)
        properties = paragraph.prepend_child("w:pPr");
    addOrdered(properties, "w:bidi", later);
}

/// How the text of a field looks: as the first letter in its control, unless that is a grey hint.
xml_node runPropertiesOf(const xml_node& control)
{
    const xml_node properties = control.child("w:sdtPr");
    if (!properties.child("w:showingPlcHdr")) {
        const xml_node run = firstDescendant(control.child("w:sdtContent"), "w:r");
        if (run.child("w:rPr"))
            return run.child("w:rPr");
    }
    return properties.child("w:rPr");
}

void appendRun(xml_node target, const QString& text, const xml_node& properties)
{
    xml_node run = target.append_child("w:r");
    if (properties)
        run.append_copy(properties);
    if (text.isRightToLeft())
        readFromRight(run.child("w:rPr") ? run.child("w:rPr") : run.prepend_child("w:rPr"));
    const auto appendText = [&run](const QString& piece) {
        xml_node node = run.append_child("w:t");
        node.append_attribute("xml:space") = "preserve";
        node.text().set(piece.toUtf8().constData());
    };
    QString piece;
    for (const QChar letter : text) {
        if (letter != QLatin1Char('\n') && letter != QLatin1Char('\t')) {
            piece += letter;
            continue;
        }
        if (!piece.isEmpty())
            appendText(piece);
        piece.clear();
        run.append_child(letter == QLatin1Char('\n') ? "w:br" : "w:tab");
    }
    if (!piece.isEmpty())
        appendText(piece);
}

/// Empties the content of a control. The cell of a control about a cell stays, and the first
/// paragraph of one about paragraphs. Returns the node to put the value into.
xml_node emptied(xml_node content)
{
    const xml_node paragraph = firstDescendant(content, "w:p");
    if (!paragraph) {
        content.remove_children();
        return content;
    }
    for (xml_node kept = paragraph; kept != content; kept = kept.parent()) {
        xml_node parent = kept.parent();
        const std::string properties = parent.name() + std::string("Pr");
        for (xml_node other = parent.first_child(); other;) {
            const xml_node next = other.next_sibling();
            if (other != kept && properties != other.name() && !isNamed(other, "w:tblGrid"))
                parent.remove_child(other);
            other = next;
        }
    }
    xml_node target = paragraph;
    for (xml_node child = target.first_child(); child;) {
        const xml_node next = child.next_sibling();
        if (!isNamed(child, "w:pPr"))
            target.remove_child(child);
        child = next;
    }
    return target;
}

void fillText(const xml_node& control, const QString& value)
{
    pugi::xml_document kept;
    const xml_node properties = kept.append_copy(runPropertiesOf(control));
    const xml_node target = emptied(control.child("w:sdtContent"));
    const QString text = documentText(value);
    if (text.isEmpty())
        return;
    appendRun(target, text, properties);
    const xml_node paragraph = isNamed(target, "w:p") ? target : control.parent();
    const auto isContent = [](const xml_node& node) { return !isNamed(node, "w:pPr"); };
    const bool alone = std::count_if(paragraph.begin(), paragraph.end(), isContent) == 1;
    if (text.isRightToLeft() && alone && isNamed(paragraph, "w:p"))
        alignFromRight(paragraph);
}

/// The control goes, what is in it stays.
void unwrap(const xml_node& control)
{
    xml_node parent = control.parent();
    xml_node content = control.child("w:sdtContent");
    while (const xml_node child = content.first_child())
        parent.insert_move_before(child, control);
    parent.remove_child(control);
}

void setAttribute(xml_node node, const char* name, long long value)
{
    pugi::xml_attribute attribute = node.attribute(name);
    if (!attribute)
        attribute = node.append_attribute(name);
    attribute.set_value(value);
}

/// A drawing of nothing yet, in the line of the text.
xml_node appendDrawing(xml_node target)
{
    static const char drawing[] =
        "<w:r><w:drawing><wp:inline"
        " xmlns:wp='http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing'"
        " distT='0' distB='0' distL='0' distR='0'><wp:extent/><wp:docPr id='1' name='Picture'/>"
        "<wp:cNvGraphicFramePr><a:graphicFrameLocks"
        " xmlns:a='http://schemas.openxmlformats.org/drawingml/2006/main' noChangeAspect='1'/>"
        "</wp:cNvGraphicFramePr>"
        "<a:graphic xmlns:a='http://schemas.openxmlformats.org/drawingml/2006/main'>"
        "<a:graphicData uri='http://schemas.openxmlformats.org/drawingml/2006/picture'>"
        "<pic:pic xmlns:pic='http://schemas.openxmlformats.org/drawingml/2006/picture'>"
        "<pic:nvPicPr><pic:cNvPr id='1' name='Picture'/><pic:cNvPicPr/></pic:nvPicPr>"
        "<pic:blipFill><a:blip"
        " xmlns:r='http://schemas.openxmlformats.org/officeDocument/2006/relationships'/>"
        "<a:stretch><a:fillRect/></a:stretch></pic:blipFill>"
        "<pic:spPr><a:xfrm><a:off x='0' y='0'/><a:ext/></a:xfrm>"
        "<a:prstGeom prst='rect'><a:avLst/></a:prstGeom></pic:spPr>"
        "</pic:pic></a:graphicData></a:graphic></wp:inline></w:drawing></w:r>";
    target.append_buffer(drawing, sizeof drawing - 1);
    return firstDescendant(target, "w:drawing");
}

void showPicture(const xml_node& drawing, const std::string& relationship, Emu width, Emu height)
{
    const xml_node extent = firstDescendant(drawing, "wp:extent");
    setAttribute(extent, "cx", width);
    setAttribute(extent, "cy", height);
    xml_node blip = firstDescendant(drawing, "a:blip");
    blip.remove_children(); // a vector form of the earlier picture would go on being shown
    blip.remove_attribute("r:link");
    if (!blip.attribute("r:embed"))
        blip.append_attribute("r:embed");
    blip.attribute("r:embed") = relationship.c_str();
    blip.parent().remove_child("a:srcRect");
    const xml_node size = firstDescendant(drawing, "pic:spPr").child("a:xfrm").child("a:ext");
    setAttribute(size, "cx", width);
    setAttribute(size, "cy", height);
}

} // namespace

QString documentText(const QString& value)
{
    QString text;
    text.reserve(value.size());
    for (int i = 0; i < value.size(); ++i) {
        const QChar letter = value[i];
        if (letter == QLatin1Char('\r')) {
            if (i + 1 == value.size() || value[i + 1] != QLatin1Char('\n'))
                text += QLatin1Char('\n');
        } else if (letter == QChar::LineSeparator || letter == QChar::ParagraphSeparator) {
            text += QLatin1Char('\n');
        } else if (letter.isHighSurrogate() && i + 1 < value.size() &&
                   value[i + 1].isLowSurrogate()) {
            text += letter;
            text += value[++i];
        } else if (!letter.isSurrogate() && letter < QChar(0xfffe) &&
                   (letter >= QLatin1Char(' ') || letter == QLatin1Char('\n') ||
                    letter == QLatin1Char('\t'))) {
            text += letter;
        }
    }
    return text;
}

ItemCopy::ItemCopy(const DocxTemplate& source, const DocxItem& item, const QString& name,
                   int& nextDrawingId)
    : m_source(source), m_name(name), m_nextDrawingId(nextDrawingId)
{
    for (xml_node block = item.first; block && block != item.behind; block = block.next_sibling()) {
        if (!isNamed(block, "w:sectPr"))
            m_copy.append_copy(block);
    }
    for (const char* once : {"w:bookmarkStart", "w:bookmarkEnd", "w:commentRangeStart",
                             "w:commentRangeEnd", "w:commentReference"}) {
        for (const xml_node& node : descendants(m_copy, once))
            node.parent().remove_child(node);
    }
    for (const xml_node& found : descendants(m_copy, "w:p")) {
        xml_node paragraph = found;
        paragraph.remove_attribute("w14:paraId");
        paragraph.remove_attribute("w14:textId");
    }
}

void ItemCopy::fill(const std::map<QString, QString>& values, const AddPicture& addPicture)
{
    std::vector<xml_node> controls = descendants(m_copy, "w:sdt");
    // From the last to the first, so that a control inside another one comes before it.
    std::reverse(controls.begin(), controls.end());
    for (const xml_node& control : controls) {
        fillControl(control, values, addPicture);
        unwrap(control);
    }
    numberDrawings();
}

void ItemCopy::fillControl(const xml_node& control, const std::map<QString, QString>& values,
                           const AddPicture& addPicture)
{
    const QString field = controlName(control);
    if (field.isEmpty() || field == m_name)
        return;
    const auto found = values.find(field);
    const QString value = found == values.end() ? QString() : found->second;
    const bool isPicture = field == QLatin1String("Image") ||
                           control.child("w:sdtPr").child("w:picture") ||
                           firstDescendant(control, "a:blip");
    if (isPicture)
        fillPicture(control, value, addPicture);
    else
        fillText(control, value);
}

void ItemCopy::fillPicture(const xml_node& control, const QString& fileName,
                           const AddPicture& addPicture)
{
    const xml_node content = control.child("w:sdtContent");
    const auto header = fileName.isEmpty() ? std::nullopt : readPictureHeader(fileName);
    if (!header) {
        emptied(content);
        return;
    }
    xml_node drawing = firstDescendant(content, "w:drawing");
    if (!firstDescendant(drawing, "a:blip"))
        drawing = xml_node();
    Emu width = firstDescendant(drawing, "wp:extent").attribute("cx").as_llong();
    if (width <= 0)
        width = columnWidth(control);
    // A frame of a turned camera would otherwise run off the page.
    const Emu highest = std::max(m_source.textHeight() * 2 / 3, emuPerPixel);
    double scale = double(width) / header->widthPx;
    scale = std::min(scale, double(highest) / header->heightPx);
    const std::string relationship = addPicture(fileName, *header);
    if (!drawing)
        drawing = appendDrawing(emptied(content));
    showPicture(drawing, relationship,
                std::max(emuPerPixel, Emu(std::llround(scale * header->widthPx))),
                std::max(emuPerPixel, Emu(std::llround(scale * header->heightPx))));
}

Emu ItemCopy::columnWidth(const xml_node& control) const
{
    for (xml_node node = control; node; node = node.parent()) {
        const xml_node width = node.child("w:tcPr").child("w:tcW");
        if (isNamed(node, "w:tc") && !std::strcmp(width.attribute("w:type").value(), "dxa"))
            return std::max(1, width.attribute("w:w").as_int()) * emuPerTwip;
    }
    return m_source.textWidth();
}

void ItemCopy::numberDrawings()
{
    for (const xml_node& drawing : descendants(m_copy, "wp:docPr"))
        setAttribute(drawing, "id", m_nextDrawingId++);
    for (const xml_node& picture : descendants(m_copy, "pic:cNvPr"))
        setAttribute(picture, "id", m_nextDrawingId++);
}

std::string ItemCopy::text() const
{
    std::ostringstream text;
    m_copy.save(text, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return text.str();
}

} // namespace corv
