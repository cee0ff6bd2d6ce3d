#pragma once

#include "Docx/DocxTemplate.h"
#include "Docx/PictureSpool.h"
#include "Docx/pictureHeader.h"

#include <QSet>
#include <QString>
#include <string>

namespace corv {

/// The document in the making: the blocks so far and the pictures they show, on top of the parts of
/// the template that they came from.
class DocxWriter
{
public:
    explicit DocxWriter(const DocxTemplate& source);

    /// Takes a copy of the picture into the document and returns the id of the relationship that
    /// shows it. Throws std::runtime_error if the copy cannot be made.
    std::string addPicture(const QString& fileName, const PictureHeader& header);

    /// Appends blocks, given as UTF-8. Throws std::runtime_error if the document becomes larger
    /// than any word processor opens.
    void appendBlocks(const std::string& blocks);

    /// Writes the document beside `fileName` and renames it over, so that a failure leaves the
    /// earlier file as it was; only where the folder forbids a second file is it written directly.
    /// Throws std::runtime_error on failure.
    void save(const QString& fileName);

private:
    std::string documentText() const;
    QByteArray relationshipsText(const std::string& document, QSet<QString>& unused) const;
    QByteArray contentTypesText(const QSet<QString>& unused) const;
    bool isShownElsewhere(const QString& partName) const;

    const DocxTemplate& m_source;
    QString m_pictureName; // what the names and ids of pictures begin with; new in the package
    PictureSpool m_pictures;
    std::string m_blocks;
};

} // namespace corv
