#include "ManualDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <QUrl>
#include <stdexcept>
#include <vector>

namespace corv {
namespace {

// All lengths in points, at 72 to the inch, fonts included: the document is laid out with a point
// to the pixel and scaled onto the page as a whole.
constexpr double pageWidth = 595;
constexpr double pageHeight = 842;
constexpr double sideMargin = 62;
constexpr double topMargin = 62;
constexpr double bottomMargin = 72;
constexpr double textWidth = pageWidth - 2 * sideMargin;
constexpr double footerHeight = 20;
constexpr double listIndent = 18;
constexpr int pdfDotsPerInch = 600;

constexpr double coverBandHeight = 360;
constexpr double coverLogoWidth = 330;
constexpr double coverLogoTop = 150;
constexpr double coverPictureTop = 300;
constexpr double contentsLineHeight = 20;
constexpr double contentsSectionIndent = 16;

// The cover and the contents.
constexpr int pagesBeforeText = 2;

// Positions that differ by less are one.
constexpr double tolerance = 1;

// Pictures of the screen are smaller than there, and never wider than the text.
constexpr double pointsPerPicturePixel = 0.45;

constexpr int bodySize = 10;
constexpr int codeSize = 9;
constexpr int captionSize = 8;
constexpr int footerSize = 8;
const QString bodyFamily = QStringLiteral("DejaVu Sans");
const QString codeFamily = QStringLiteral("DejaVu Sans Mono");
const QColor inkColor(0x20, 0x24, 0x28);
const QColor accentColor(0x1d, 0x7a, 0x3c);
const QColor quietColor(0x70, 0x76, 0x7c);
const QColor codeBackColor(0xee, 0xf1, 0xef);
const QColor headerRowColor(0xe8, 0xef, 0xea);
const QColor ruleColor(0xc8, 0xcc, 0xd0);
const QColor coverColor(0x1a, 0x1a, 0x1a);

int headingSize(int level)
{
    return level == 2 ? 18 : 13;
}

QFont fontOfSize(int size, QFont::Weight weight = QFont::Normal)
{
    QFont font(bodyFamily);
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

QImage readImage(const QString& path)
{
    const QImage image = QImageReader(path).read();
    if (image.isNull())
        throw std::runtime_error("cannot read " + path.toStdString());
    return image;
}

// With a thin line around it, which tells a white picture from the page.
QImage framed(const QImage& picture)
{
    QImage image = picture.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setPen(ruleColor);
    painter.drawRect(image.rect().adjusted(0, 0, -1, -1));
    return image;
}

QTextCursor textOf(const QTextBlock& block)
{
    QTextCursor cursor(block);
    cursor.setPosition(block.position() + block.length() - 1, QTextCursor::KeepAnchor);
    return cursor;
}

QTextTable* tableOf(const QTextBlock& block)
{
    return QTextCursor(block).currentTable();
}

// Headings, and lines that announce what follows them, do not end a page.
bool leadsOn(const QTextBlock& block)
{
    return block.blockFormat().headingLevel() > 0 || block.text().endsWith(QLatin1Char(':'));
}

// The picture that a paragraph consists of; without a name if it is text.
QTextImageFormat pictureOf(const QTextBlock& block)
{
    const auto part = block.begin();
    return part.atEnd() ? QTextImageFormat() : part.fragment().charFormat().toImageFormat();
}

void removeBlock(const QTextBlock& block)
{
    QTextCursor cursor = textOf(block);
    cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

QTextBlock lastOfTable(QTextTable* table)
{
    return table->lastCursorPosition().block();
}

bool isCode(const QTextBlock& block)
{
    return block.blockFormat().hasProperty(QTextFormat::BlockCodeFence);
}

// The same manual has the same bytes whenever it is made. The time takes no other place in the
// file, whose parts are found by their positions.
QByteArray withoutTime(QByteArray pdf)
{
    const QByteArray key = "/CreationDate (";
    const int begin = pdf.indexOf(key) + key.size();
    const int end = pdf.indexOf(')', begin);
    if (begin < key.size() || end < 0)
        throw std::runtime_error("the manual has no time of its making");
    const QByteArray fixed = "D:19800101000000Z";
    return pdf.replace(begin, end - begin, fixed.leftJustified(end - begin));
}

} // namespace

ManualDocument::ManualDocument(const QString& markdownFile, const QString& logoFile,
                               const QString& version)
    : m_name(QStringLiteral("Vistrel ") + version), m_version(version), m_logo(readImage(logoFile))
{
    QFile file(markdownFile);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + markdownFile.toStdString());
    m_document.setDefaultFont(fontOfSize(bodySize));
    m_document.setIndentWidth(listIndent);
    m_document.setMarkdown(QString::fromUtf8(file.readAll()), QTextDocument::MarkdownDialectGitHub);
    const QString folder = QFileInfo(markdownFile).absolutePath();
    takeTitle();
    takeCoverPicture(folder);
    styleBlocks();
    styleCode();
    styleTables();
    fitPictures(folder);
    layOut();
    paginate();
}

void ManualDocument::takeTitle()
{
    const QTextBlock first = m_document.begin();
    if (first.blockFormat().headingLevel() != 1)
        throw std::runtime_error("the manual does not begin with its title");
    m_title = first.text();
    removeBlock(first);
}

void ManualDocument::takeCoverPicture(const QString& folder)
{
    QTextBlock block = m_document.begin();
    while (block.isValid() && pictureOf(block).name().isEmpty())
        block = block.next();
    if (!block.isValid())
        throw std::runtime_error("the manual has no picture for its cover");
    m_coverPicture = readImage(QDir(folder).filePath(pictureOf(block).name()));
    removeBlock(block);
}

void ManualDocument::styleBlocks()
{
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        const int level = format.headingLevel();
        QTextCharFormat text;
        text.setForeground(inkColor);
        if (level > 0) {
            text.setProperty(QTextFormat::FontPixelSize, headingSize(level));
            text.setFontWeight(QFont::Bold);
            text.setForeground(level == 2 ? accentColor : inkColor);
            format.setTopMargin(level == 2 ? 22 : 14);
            format.setBottomMargin(level == 2 ? 8 : 5);
        } else if (isCode(block)) {
            format.setLeftMargin(12);
            format.setBackground(codeBackColor);
            const bool isLast = !block.next().isValid() || !isCode(block.next());
            format.setBottomMargin(isLast ? 9 : 0);
        } else if (block.length() == 1 && !tableOf(block)) {
            // What the import leaves behind a table.
            format.setLineHeight(1, QTextBlockFormat::FixedHeight);
        } else {
            format.setLineHeight(128, QTextBlockFormat::ProportionalHeight);
            format.setTopMargin(0);
            format.setBottomMargin(tableOf(block) ? 0 : block.textList() ? 4 : 8);
        }
        QTextCursor cursor = textOf(block);
        cursor.setBlockFormat(format);
        cursor.mergeCharFormat(text);
    }
}

void ManualDocument::styleCode()
{
    QTextCharFormat code;
    code.setFontFamily(codeFamily);
    code.setProperty(QTextFormat::FontPixelSize, codeSize);
    code.setForeground(inkColor);
    code.setBackground(codeBackColor);
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        const auto ranges = block.textFormats();
        for (const QTextLayout::FormatRange& range : ranges) {
            // The import gives code the system's fixed font, and nothing else a font of its own.
            if (!range.format.hasProperty(QTextFormat::FontFamily))
                continue;
            QTextCursor cursor(block);
            cursor.setPosition(block.position() + range.start);
            cursor.setPosition(block.position() + range.start + range.length,
                               QTextCursor::KeepAnchor);
            cursor.setCharFormat(code);
        }
    }
}

void ManualDocument::styleTables()
{
    for (QTextFrame* frame : m_document.rootFrame()->childFrames()) {
        auto* table = qobject_cast<QTextTable*>(frame);
        if (!table)
            continue;
        QTextTableFormat format = table->format();
        format.setBorder(0.5);
        format.setBorderBrush(ruleColor);
        format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBorderCollapse(true);
        format.setCellPadding(3);
        format.setCellSpacing(0);
        format.setTopMargin(4);
        format.setBottomMargin(12);
        format.setHeaderRowCount(1);
        format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        table->setFormat(format);
        for (int column = 0; column < table->columns(); ++column) {
            QTextTableCell cell = table->cellAt(0, column);
            QTextCharFormat header = cell.format();
            header.setBackground(headerRowColor);
            cell.setFormat(header);
            QTextCharFormat text;
            text.setFontWeight(QFont::Bold);
            textOf(cell.firstCursorPosition().block()).mergeCharFormat(text);
        }
    }
}

void ManualDocument::fitPictures(const QString& folder)
{
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        QTextImageFormat picture = pictureOf(block);
        if (picture.name().isEmpty())
            continue;
        const QImage image = framed(readImage(QDir(folder).filePath(picture.name())));
        m_document.addResource(QTextDocument::ImageResource, QUrl(picture.name()), image);
        const double width = qMin(textWidth, image.width() * pointsPerPicturePixel);
        picture.setWidth(width);
        picture.setHeight(width * image.height() / image.width());
        QTextCursor cursor = textOf(block);
        cursor.setCharFormat(picture);
        QTextBlockFormat format = block.blockFormat();
        format.setLineHeight(0, QTextBlockFormat::SingleHeight);
        format.setAlignment(Qt::AlignHCenter);
        format.setTopMargin(6);
        format.setBottomMargin(14);
        cursor.setBlockFormat(format);
        QTextCharFormat caption;
        caption.setProperty(QTextFormat::FontPixelSize, captionSize);
        caption.setForeground(quietColor);
        const QString description = picture.property(QTextFormat::ImageAltText).toString();
        cursor.movePosition(QTextCursor::EndOfBlock);
        cursor.insertText(QString(QChar::LineSeparator) + description, caption);
    }
}

void ManualDocument::layOut()
{
    m_document.setPageSize(QSizeF(pageWidth, pageHeight));
    QTextFrameFormat frame = m_document.rootFrame()->frameFormat();
    frame.setLeftMargin(sideMargin);
    frame.setRightMargin(sideMargin);
    frame.setTopMargin(topMargin);
    frame.setBottomMargin(bottomMargin);
    m_document.rootFrame()->setFrameFormat(frame);
}

int ManualDocument::pageOf(const QTextBlock& block) const
{
    return static_cast<int>(placeOf(block).top() / pageHeight);
}

QRectF ManualDocument::placeOf(const QTextBlock& block) const
{
    if (QTextTable* table = tableOf(block))
        return m_document.documentLayout()->frameBoundingRect(table);
    return m_document.documentLayout()->blockBoundingRect(block);
}

void ManualDocument::breakPageBefore(const QTextBlock& block)
{
    if (QTextTable* table = tableOf(block)) {
        QTextTableFormat format = table->format();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        table->setFormat(format);
    } else {
        QTextBlockFormat format = block.blockFormat();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        QTextCursor(block).setBlockFormat(format);
    }
    // The layout goes on from the changed block only, and loses text behind a page that grew.
    m_document.markContentsDirty(0, m_document.characterCount());
}

// Paragraphs, tables, and pictures with their captions stay whole, and what leads on stays with
// what it leads to. From the top, because every break moves what stands below it.
void ManualDocument::paginate()
{
    QTextBlock first = m_document.begin();
    while (first.isValid()) {
        QTextBlock last = first;
        while (leadsOn(last) && !tableOf(last) && last.next().isValid())
            last = last.next();
        if (QTextTable* table = tableOf(last))
            last = lastOfTable(table);
        const double pageStart = pageOf(first) * pageHeight;
        const double pageEnd = pageStart + pageHeight - bottomMargin;
        const bool startsPage = placeOf(first).top() <= pageStart + topMargin + tolerance;
        if (placeOf(last).bottom() > pageEnd + tolerance && !startsPage)
            breakPageBefore(first);
        first = last.next();
    }
}

void ManualDocument::paintCover(QPainter* painter) const
{
    painter->fillRect(QRectF(0, 0, pageWidth, coverBandHeight), coverColor);
    const double logoHeight = coverLogoWidth * m_logo.height() / m_logo.width();
    painter->drawImage(QRectF(sideMargin, coverLogoTop, coverLogoWidth, logoHeight), m_logo);
    painter->setPen(Qt::white);
    painter->setFont(fontOfSize(15));
    painter->drawText(QPointF(sideMargin + 4, coverLogoTop + logoHeight + 28), m_title);

    const double height = textWidth * m_coverPicture.height() / m_coverPicture.width();
    const QRectF place(sideMargin, coverPictureTop, textWidth, height);
    painter->drawImage(place, m_coverPicture);
    painter->setPen(QPen(ruleColor, 0.5));
    painter->drawRect(place);
    painter->setPen(quietColor);
    painter->setFont(fontOfSize(11));
    painter->drawText(QPointF(sideMargin, pageHeight - bottomMargin),
                      QStringLiteral("Version ") + m_version);
}

void ManualDocument::paintContents(QPainter* painter) const
{
    painter->setPen(accentColor);
    painter->setFont(fontOfSize(headingSize(2), QFont::Bold));
    painter->drawText(QPointF(sideMargin, topMargin + headingSize(2)), QStringLiteral("Contents"));
    double y = topMargin + 3 * contentsLineHeight;
    for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next()) {
        const int level = block.blockFormat().headingLevel();
        if (level == 0)
            continue;
        const double indent = level > 2 ? contentsSectionIndent : 0;
        if (level == 2)
            y += contentsLineHeight / 3;
        const QRectF line(sideMargin + indent, y, textWidth - indent, contentsLineHeight);
        painter->setPen(inkColor);
        painter->setFont(fontOfSize(bodySize, level == 2 ? QFont::Bold : QFont::Normal));
        painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter, block.text());
        painter->drawText(line, Qt::AlignRight | Qt::AlignVCenter,
                          QString::number(pageOf(block) + pagesBeforeText + 1));
        painter->setPen(QPen(ruleColor, 0.5));
        painter->drawLine(line.bottomLeft(), line.bottomRight());
        y += contentsLineHeight;
    }
}

void ManualDocument::paintFooter(QPainter* painter, int page) const
{
    const QRectF footer(sideMargin, pageHeight - bottomMargin + footerHeight, textWidth,
                        footerHeight);
    painter->setFont(fontOfSize(footerSize));
    painter->setPen(quietColor);
    painter->drawText(footer, Qt::AlignLeft | Qt::AlignVCenter,
                      m_name + QStringLiteral(": ") + m_title);
    painter->drawText(footer, Qt::AlignRight | Qt::AlignVCenter, QString::number(page + 1));
    painter->setPen(QPen(ruleColor, 0.5));
    painter->drawLine(footer.topLeft(), footer.topRight());
}

void ManualDocument::paintText(QPainter* painter, int page)
{
    const QRectF view(0, page * pageHeight, pageWidth, pageHeight);
    painter->translate(0, -view.top());
    m_document.drawContents(painter, view);
}

void ManualDocument::savePdf(const QString& file)
{
    QBuffer pdf;
    pdf.open(QIODevice::WriteOnly);
    paintPages(&pdf);
    QSaveFile target(file);
    const QByteArray bytes = withoutTime(pdf.data());
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size() ||
        !target.commit())
        throw std::runtime_error("cannot write " + file.toStdString());
}

void ManualDocument::paintPages(QIODevice* target)
{
    QPdfWriter writer(target);
    writer.setTitle(m_name + QStringLiteral(": ") + m_title);
    writer.setCreator(m_name);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setPageMargins(QMarginsF());
    writer.setResolution(pdfDotsPerInch);
    QPainter painter;
    if (!painter.begin(&writer))
        throw std::runtime_error("cannot paint the manual");
    const double scale = pdfDotsPerInch / 72.0;
    for (int page = 0; page < m_document.pageCount() + pagesBeforeText; ++page) {
        if (page > 0)
            writer.newPage();
        painter.save();
        painter.scale(scale, scale);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        if (page > 0)
            paintFooter(&painter, page);
        if (page == 0)
            paintCover(&painter);
        else if (page < pagesBeforeText)
            paintContents(&painter);
        else
            paintText(&painter, page - pagesBeforeText);
        painter.restore();
    }
    if (!painter.end())
        throw std::runtime_error("cannot paint the manual");
}

} // namespace corv
