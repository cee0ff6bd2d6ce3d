#include "Docx/DocxMerger.h"

#include "Docx/DocxTemplate.h"
#include "Docx/DocxWriter.h"
#include "Docx/ItemCopy.h"

#include <stdexcept>

namespace corv {

DocxMerger::DocxMerger() = default;
DocxMerger::~DocxMerger() = default;

void DocxMerger::load(const QString& fileName)
{
    close();
    m_template = std::make_unique<DocxTemplate>(fileName);
    m_writer = std::make_unique<DocxWriter>(*m_template);
}

void DocxMerger::setClipboardValue(const QString& itemName, const QString& fieldName,
                                   const QString& text)
{
    requireItem(itemName);
    m_clipboard[itemName][fieldName] = text;
}

void DocxMerger::setClipboardValue(const QString& itemName, const QString& fieldName, double number)
{
    setClipboardValue(itemName, fieldName, QString::number(number, 'g', 15));
}

void DocxMerger::paste(const QString& itemName)
{
    requireItem(itemName);
    const std::map<QString, QString> values = std::move(m_clipboard[itemName]);
    m_clipboard.erase(itemName);
    ItemCopy copy(*m_template, *m_template->item(itemName), itemName, m_nextDrawingId);
    copy.fill(values, [this](const QString& fileName, const PictureHeader& header) {
        return m_writer->addPicture(fileName, header);
    });
    m_writer->appendBlocks(copy.text());
}

void DocxMerger::save(const QString& fileName)
{
    if (!m_template)
        throw std::runtime_error("no template is open");
    m_writer->save(fileName);
}

void DocxMerger::close()
{
    m_clipboard.clear();
    m_nextDrawingId = 1;
    m_writer.reset();
    m_template.reset();
}

void DocxMerger::requireItem(const QString& itemName) const
{
    if (!m_template)
        throw std::runtime_error("no template is open");
    if (!m_template->item(itemName))
        throw std::runtime_error(
            QStringLiteral("the template has no item \"%1\"").arg(itemName).toStdString());
}

} // namespace corv
