#pragma once

#include "Docx/DocxTemplate.h"
#include "Docx/pictureHeader.h"

#include <QString>
#include <functional>
#include <map>
#include <pugixml.hpp>
#include <string>

namespace corv {

/// One copy of a template's item on its way into a document: its content controls are replaced by
/// the values of their fields, and what a document may contain only once (bookmarks, comments,
/// paragraph marks) is taken out.
class ItemCopy
{
public:
    /// Takes a picture into the document and returns the id of the relationship to it.
    using AddPicture =
        std::function<std::string(const QString& fileName, const PictureHeader& header)>;

    /// `name` is the item's name, `nextDrawingId` the document's counter of drawings, which moves
    /// on.
    ItemCopy(const DocxTemplate& source, const DocxItem& item, const QString& name,
             int& nextDrawingId);

    /// Replaces every control by the value of its field, or by nothing if there is none. A control
    /// that holds a picture, or is called "Image", takes the value for the path of a picture and
    /// shows it across its own width; a picture that cannot be read leaves the control empty.
    void fill(const std::map<QString, QString>& values, const AddPicture& addPicture);

    /// The blocks as UTF-8.
    std::string text() const;

private:
    void fillControl(const pugi::xml_node& control, const std::map<QString, QString>& values,
                     const AddPicture& addPicture);
    void fillPicture(const pugi::xml_node& control, const QString& fileName,
                     const AddPicture& addPicture);
    Emu columnWidth(const pugi::xml_node& control) const;
    void numberDrawings();

    const DocxTemplate& m_source;
    QString m_name;
    int& m_nextDrawingId;
    pugi::xml_document m_copy;
};

/// The value as a document may contain it: line ends are "\n", and what XML forbids is dropped
/// (control characters but the tab, halves of a surrogate pair).
QString documentText(const QString& value);

} // namespace corv
