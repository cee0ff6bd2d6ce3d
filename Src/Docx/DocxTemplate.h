#pragma once

#include "Docx/zipParts.h"

#include <QString>
#include <map>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <vector>

namespace corv {

/// Lengths in a document are counted in English Metric Units, 914400 to the inch.
using Emu = long long;

/// The blocks of an item: `first`, and what follows it up to `behind`. Both null: there is none.
struct DocxItem
{
    pugi::xml_node first;
    pugi::xml_node behind;
};

/// A template read from its file: the package of a Word document, whose body holds items.
///
/// An item is a block content control, named by its tag, or by its title if it has none. A word
/// processor that does not keep block content controls drops them when it saves; a bookmark of the
/// item's name that spans the same blocks then still shows where the item begins and ends. What
/// is outside of all items is no part of the documents made.
class DocxTemplate
{
public:
    /// Throws std::runtime_error, with a text for the user, if the file is no usable template.
    explicit DocxTemplate(const QString& fileName);

    /// The item of that name; nothing if there is none.
    std::optional<DocxItem> item(const QString& name) const;

    /// All parts as they are in the package, the main document among them.
    const std::vector<ZipPart>& parts() const { return m_parts; }
    bool hasPart(const QString& name) const;

    /// The main document's name in the package, such as "word/document.xml", and of its
    /// relationships.
    const QString& documentName() const { return m_documentName; }
    QString relationshipsName() const;

    /// The main document up to its first block and from its last section on: UTF-8 to be put
    /// before and after the blocks of a document made.
    const std::string& documentHead() const { return m_documentHead; }
    const std::string& documentTail() const { return m_documentTail; }

    /// Size of the text area of the last section's pages.
    Emu textWidth() const { return m_textWidth; }
    Emu textHeight() const { return m_textHeight; }

private:
    void findDocument();
    void readPageSize(const pugi::xml_node& section);
    void collectControls(const pugi::xml_node& blocks);
    void collectBookmarks(const pugi::xml_node& body);
    void splitDocument();
    const QByteArray* part(const QString& name) const;

    QString m_fileName;
    std::vector<ZipPart> m_parts;
    QString m_documentName;
    std::string m_documentHead;
    std::string m_documentTail;
    pugi::xml_document m_document;
    std::map<QString, DocxItem> m_items;
    Emu m_textWidth = 0;
    Emu m_textHeight = 0;
};

/// The name of a content control: its tag, or else its title; empty if it has neither.
QString controlName(const pugi::xml_node& control);

/// Parses a part so that blanks between tags survive. Throws std::runtime_error if it is not
/// well-formed, or nested more deeply than any word processor writes.
void parsePart(pugi::xml_document& document, const QByteArray& text, const QString& name);

} // namespace corv
