#pragma once

#include <QString>

namespace corv::cli {

/// The columns of a terminal that a text takes: two for the wide characters of East Asia and for
/// pictures, none for marks on the letter before.
int columnsOf(const QString& text);

/// The beginning of a text that fits into so many columns.
QString clippedToColumns(const QString& text, int columns);

} // namespace corv::cli
