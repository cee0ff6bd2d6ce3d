#pragma once

#include <QByteArray>
#include <QString>

namespace corv {

/// A text as a field of comma-separated values, in UTF-8 and in quotes where it needs them.
///
/// A spreadsheet takes a text that begins with "=", "+", "-", "@", a tab or a line end for a
/// formula. Such a text, and one that begins with an apostrophe, gets an apostrophe before it: a
/// reader who takes one leading apostrophe away has the text as it was. Any thread.
QByteArray csvText(const QString& text);

} // namespace corv
