#pragma once

#include <QImage>
#include <QString>
#include <QTextDocument>

class QPainter;

namespace corv {

/// A manual written in Markdown, laid out on A4 pages: a cover, the contents, then the text with
/// its pictures, each with its description below it. The first line of the text, its only heading
/// of the first level, is the title and stands on the cover, and so does the first picture.
class ManualDocument
{
public:
    /// Reads the text; pictures are looked for beside it. The cover shows the logo and the
    /// version as well. Throws std::runtime_error if the text or a picture cannot be read, or the
    /// title or the picture for the cover is missing.
    ManualDocument(const QString& markdownFile, const QString& logoFile, const QString& version);

    /// Throws std::runtime_error if the file cannot be written.
    void savePdf(const QString& file);

private:
    void paintPages(QIODevice* target);
    void takeTitle();
    void takeCoverPicture(const QString& folder);
    void styleCode();
    void styleBlocks();
    void styleTables();
    void fitPictures(const QString& folder);
    void layOut();
    void paginate();
    void breakPageBefore(const QTextBlock& block);
    int pageOf(const QTextBlock& block) const;
    /// Where a block stands, in points from the top of the first page; all of the table it is in.
    QRectF placeOf(const QTextBlock& block) const;
    void paintCover(QPainter* painter) const;
    void paintContents(QPainter* painter) const;
    void paintFooter(QPainter* painter, int page) const;
    void paintText(QPainter* painter, int page);

    QTextDocument m_document;
    QString m_name;
    QString m_title;
    QString m_version;
    QImage m_logo;
    QImage m_coverPicture;
};

} // namespace corv
