#pragma once

#include "Log/clocks.h"
#include "Timeline/HeadUpPainter.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QVariantList>
#include <optional>

namespace corv {

/// A point of interest with all that is known of its moment: for tables and other programs.
struct PoiTableRow
{
    int timeMs = 0;                  ///< from the start of the video
    std::optional<qint64> logTimeMs; ///< on the clock of the log; none without one
    QString name;
    QString description;
    QList<QPair<QString, QString>> instruments; ///< label and value as shown, "" without one
    QString picture;                            ///< its file, relative to the table; empty for none
};

/// The rows of points of interest in list form, in the order given. `clock` may be null; `painter`
/// has the flight's log and clock. Call on the thread of the painter.
QList<PoiTableRow> poiTableRows(const QVariantList& pois, const HeadUpPainter& painter,
                                const FlightClock* clock);

/// Comma-separated values with a heading, in UTF-8: "time_ms", "time", "log_time_ms", "name",
/// "description", one column an instrument, "picture". Lines end in CR LF, fields with commas,
/// quotes or line ends are quoted, as spreadsheets expect.
QByteArray poiTableCsv(const QList<PoiTableRow>& rows);

/// An array of objects with "timeMs", "logTimeMs" (null without a log), "name", "description",
/// "instruments" (an object of texts by label) and "picture".
QByteArray poiTableJson(const QList<PoiTableRow>& rows);

} // namespace corv
