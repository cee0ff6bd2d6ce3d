#include "Timeline/poiTable.h"

#include <QByteArrayList>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTime>
#include <QVariantMap>

namespace corv {
namespace {

QByteArray csvField(const QString& text)
{
    const bool needsQuotes = text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"')) ||
                             text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
    if (!needsQuotes)
        return text.toUtf8();
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return '"' + quoted.toUtf8() + '"';
}

QByteArray csvLine(const QStringList& fields)
{
    QByteArrayList cells;
    for (const QString& field : fields)
        cells << csvField(field);
    return cells.join(',') + "\r\n";
}

// A heading as programs like it: "Cam pitch" gives "cam_pitch".
QString columnName(const QString& label)
{
    return label.toLower().replace(QLatin1Char(' '), QLatin1Char('_'));
}

QString clockText(int timeMs)
{
    return QTime(0, 0).addMSecs(timeMs).toString(QStringLiteral("HH:mm:ss.zzz"));
}

} // namespace

QList<PoiTableRow> poiTableRows(const QVariantList& pois, const HeadUpPainter& painter,
                                const FlightClock* clock)
{
    QList<PoiTableRow> rows;
    for (const QVariant& entry : pois) {
        const QVariantMap poi = entry.toMap();
        PoiTableRow row;
        row.timeMs = poi.value(QStringLiteral("time")).toInt();
        row.name = poi.value(QStringLiteral("name")).toString();
        row.description = poi.value(QStringLiteral("comment")).toString();
        if (clock && clock->synced)
            row.logTimeMs = static_cast<quint32>(logTimeOfVideo(row.timeMs, *clock));
        for (size_t i = 0; i < painter.rows().size(); ++i)
            row.instruments.append(
                {QString::fromUtf8(painter.rows()[i].label), painter.textAt(i, row.timeMs)});
        rows.append(row);
    }
    return rows;
}

QByteArray poiTableCsv(const QList<PoiTableRow>& rows)
{
    QStringList heading{QStringLiteral("time_ms"), QStringLiteral("time"),
                        QStringLiteral("log_time_ms"), QStringLiteral("name"),
                        QStringLiteral("description")};
    if (!rows.isEmpty())
        for (const auto& instrument : rows.first().instruments)
            heading << columnName(instrument.first);
    QByteArray text = csvLine(heading << QStringLiteral("picture"));
    for (const PoiTableRow& row : rows) {
        QStringList fields{QString::number(row.timeMs), clockText(row.timeMs),
                           row.logTimeMs ? QString::number(*row.logTimeMs) : QString(), row.name,
                           row.description};
        for (const auto& instrument : row.instruments)
            fields << instrument.second;
        text += csvLine(fields << row.picture);
    }
    return text;
}

QByteArray poiTableJson(const QList<PoiTableRow>& rows)
{
    QJsonArray array;
    for (const PoiTableRow& row : rows) {
        QJsonObject instruments;
        for (const auto& instrument : row.instruments)
            instruments.insert(instrument.first, instrument.second);
        array.append(QJsonObject{
            {QStringLiteral("timeMs"), row.timeMs},
            {QStringLiteral("logTimeMs"),
             row.logTimeMs ? QJsonValue(static_cast<double>(*row.logTimeMs)) : QJsonValue()},
            {QStringLiteral("name"), row.name},
            {QStringLiteral("description"), row.description},
            {QStringLiteral("instruments"), instruments},
            {QStringLiteral("picture"), row.picture}});
    }
    return QJsonDocument(array).toJson();
}

} // namespace corv
