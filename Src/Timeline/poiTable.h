#pragma once

#include "Base/Result.h"
#include "Log/LogParser.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <optional>
#include <vector>

namespace corv {

/// A point of interest with all that is known of its moment.
struct PoiTableRow
{
    int timeMs = 0;                  ///< from the start of the video
    std::optional<qint64> logTimeMs; ///< on the clock of the log; none without one
    QString name;
    QString description;
    QStringList numbers; ///< by instrument, as the head-up display shows them; "" without a value
    QString picture;     ///< its file, relative to the table; empty for none
};

/// Points of interest for spreadsheets and other programs.
struct PoiTable
{
    QStringList instruments; ///< their names: "Pitch"
    QStringList units;       ///< by instrument: "deg", "m" or "ft"
    QList<PoiTableRow> rows;
};

/// The table of points of interest in list form, in the order given, with what the log of `parser`
/// says of their moments. On the thread of the parser.
PoiTable poiTable(const QVariantList& pois, const LogParser& parser, bool imperialUnits);

/// Comma-separated values with a heading: "time (ms)", "time", "log time (ms)", "name",
/// "description", one column an instrument ("pitch (deg)"), "picture". UTF-8; lines end in CR LF;
/// texts as csvText() has them.
QByteArray poiTableCsv(const PoiTable& table);

/// An array of objects with "timeMs", "logTimeMs" (null without a log), "name", "description",
/// "instruments" (by name an object with "value", null without one, and "unit") and "picture".
QByteArray poiTableJson(const PoiTable& table);

/// A kind of file that such a table can be written as.
struct PoiTableFormat
{
    QString suffix; ///< "csv"
    QString name;   ///< as a file dialog lists it: "CSV table"
    QByteArray (*text)(const PoiTable& table);
};

/// All of them. To add one, add its row: window, command and the review of cards write it.
const std::vector<PoiTableFormat>& poiTableFormats();

/// The format of files with this name; the first one where no suffix fits.
const PoiTableFormat& poiTableFormatOf(const QString& path);

/// Writes the table to a file, atomically.
Status writePoiTable(const PoiTable& table, const QString& path, const PoiTableFormat& format);

} // namespace corv
