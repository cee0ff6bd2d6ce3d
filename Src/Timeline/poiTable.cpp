#include "Timeline/poiTable.h"

#include "Base/FileReplacement.h"
#include "Base/csv.h"
#include "Log/clocks.h"
#include "Timeline/HeadUpPainter.h"

#include <QByteArrayList>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QTime>
#include <QVariantMap>
#include <algorithm>

namespace corv {
namespace {

QByteArray csvLine(const QByteArrayList& fields)
{
    return fields.join(',') + "\r\n";
}

QByteArray clockText(int timeMs)
{
    const QTime time = QTime(0, 0).addMSecs(timeMs);
    return QLocale::c().toString(time, QStringLiteral("HH:mm:ss.zzz")).toLatin1();
}

QJsonValue numberJson(const QString& number)
{
    return number.isEmpty() ? QJsonValue() : QJsonValue(number.toDouble());
}

} // namespace

PoiTable poiTable(const QVariantList& pois, const LogParser& parser, bool imperialUnits)
{
    HeadUpPainter painter;
    painter.setLog(parser.log());
    painter.setClock(parser.clock());
    painter.setImperialUnits(imperialUnits);
    PoiTable table;
    for (size_t i = 0; i < painter.rows().size(); ++i) {
        table.instruments << QString::fromUtf8(painter.rows()[i].label);
        table.units << painter.unitOf(i);
    }
    for (const QVariant& entry : pois) {
        const QVariantMap poi = entry.toMap();
        PoiTableRow row;
        row.timeMs = poi.value(QStringLiteral("time")).toInt();
        row.name = poi.value(QStringLiteral("name")).toString();
        row.description = poi.value(QStringLiteral("comment")).toString();
        if (parser.isSynced())
            row.logTimeMs = static_cast<quint32>(logTimeOfVideo(row.timeMs, *parser.clock()));
        for (size_t i = 0; i < painter.rows().size(); ++i)
            row.numbers << painter.numberAt(i, row.timeMs);
        table.rows.append(row);
    }
    return table;
}

QByteArray poiTableCsv(const PoiTable& table)
{
    QByteArrayList heading{"time (ms)", "time", "log time (ms)", "name", "description"};
    for (int i = 0; i < table.instruments.size(); ++i)
        heading << csvText(
            QStringLiteral("%1 (%2)").arg(table.instruments[i].toLower(), table.units[i]));
    QByteArray text = csvLine(heading << "picture");
    for (const PoiTableRow& row : table.rows) {
        QByteArrayList fields{QByteArray::number(row.timeMs), clockText(row.timeMs),
                              row.logTimeMs ? QByteArray::number(*row.logTimeMs) : QByteArray(),
                              csvText(row.name), csvText(row.description)};
        for (const QString& number : row.numbers)
            fields << number.toLatin1();
        text += csvLine(fields << csvText(row.picture));
    }
    return text;
}

QByteArray poiTableJson(const PoiTable& table)
{
    QJsonArray array;
    for (const PoiTableRow& row : table.rows) {
        QJsonObject instruments;
        for (int i = 0; i < table.instruments.size(); ++i)
            instruments.insert(table.instruments[i],
                               QJsonObject{{QStringLiteral("value"), numberJson(row.numbers[i])},
                                           {QStringLiteral("unit"), table.units[i]}});
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

const std::vector<PoiTableFormat>& poiTableFormats()
{
    static const std::vector<PoiTableFormat> formats{
        {QStringLiteral("csv"), QStringLiteral("CSV table"), poiTableCsv},
        {QStringLiteral("json"), QStringLiteral("JSON"), poiTableJson},
    };
    return formats;
}

const PoiTableFormat& poiTableFormatOf(const QString& path)
{
    const std::vector<PoiTableFormat>& formats = poiTableFormats();
    const auto found =
        std::find_if(formats.begin(), formats.end(), [&path](const PoiTableFormat& format) {
            return path.endsWith(QLatin1Char('.') + format.suffix, Qt::CaseInsensitive);
        });
    return found != formats.end() ? *found : formats.front();
}

Status writePoiTable(const PoiTable& table, const QString& path, const PoiTableFormat& format)
{
    return replaceFile(path, format.text(table));
}

} // namespace corv
