#pragma once

#include <QString>
#include <map>
#include <memory>

namespace corv {

class DocxTemplate;
class DocxWriter;

/// Makes Word documents from a template: `load` it, set the fields of an item, `paste` the item,
/// and so on; `save` writes what has been pasted.
///
/// A template is a file `.dfw`, a zip of a Word document. Each block content control in it whose
/// tag (or else title) is a name is an item of that name; each content control inside is a field.
/// So a template is edited in any word processor that knows content controls, also one that keeps
/// them only inside paragraphs, if a bookmark of the item's name spans the item.
///
/// Every operation throws std::runtime_error with a clear text, in UTF-8, when it cannot be done.
/// The object is used by one thread at a time.
class DocxMerger
{
public:
    DocxMerger();
    ~DocxMerger();
    DocxMerger(const DocxMerger&) = delete;
    DocxMerger& operator=(const DocxMerger&) = delete;

    /// Opens a template and begins an empty document with it; an earlier one is given up. What a
    /// broken or hostile file can take of the memory is bounded.
    void load(const QString& fileName);

    /// Sets a field of an item for its next `paste`. A field that the template does not have is
    /// left out, since a company may have taken it out of its own; an item must be there.
    ///
    /// A field that is a picture takes the path of a PNG or JPEG file, which is shown in proportion
    /// across the width of its control. What cannot be read leaves the field empty.
    void setClipboardValue(const QString& itemName, const QString& fieldName, const QString& text);
    void setClipboardValue(const QString& itemName, const QString& fieldName, double number);

    /// Appends the item with the values set for it and clears them. A field without a value is
    /// left empty. Files named by values are no longer needed afterwards.
    void paste(const QString& itemName);

    /// Writes the document, replacing an existing file atomically: a failure leaves it as it was.
    void save(const QString& fileName);

    /// Gives up the template and the document; nothing happens if there are none.
    void close();

private:
    void requireItem(const QString& itemName) const;

    std::unique_ptr<DocxTemplate> m_template;
    std::unique_ptr<DocxWriter> m_writer;
    std::map<QString, std::map<QString, QString>> m_clipboard;
    int m_nextDrawingId = 1;
};

} // namespace corv
