#include "Cli/terminalText.h"

#include <QChar>
#include <QVector>
#include <algorithm>
#include <iterator>

namespace corv::cli {
namespace {

struct Range
{
    uint first;
    uint last;
};

// Where the wide characters are: the blocks of East Asian scripts, full-width forms and pictures.
constexpr Range kWide[] = {
    {0x1100, 0x115f},   {0x2e80, 0x303e},   {0x3041, 0xa4cf},  {0xa960, 0xa97c}, {0xac00, 0xd7a3},
    {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},  {0xffe0, 0xffe6}, {0x1f300, 0x1f64f},
    {0x1f680, 0x1f6ff}, {0x1f900, 0x1faff}, {0x20000, 0x3fffd}};

int columnsOf(uint code)
{
    const QChar::Category category = QChar::category(code);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing ||
        category == QChar::Other_Format)
        return 0;
    const bool isWide = std::any_of(std::begin(kWide), std::end(kWide), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
    return isWide ? 2 : 1;
}

} // namespace

int columnsOf(const QString& text)
{
    int columns = 0;
    for (const uint code : text.toUcs4())
        columns += columnsOf(code);
    return columns;
}

QString clippedToColumns(const QString& text, int columns)
{
    QString clipped;
    for (const uint code : text.toUcs4()) {
        columns -= columnsOf(code);
        if (columns < 0)
            break;
        clipped += QString::fromUcs4(&code, 1);
    }
    return clipped;
}

} // namespace corv::cli
