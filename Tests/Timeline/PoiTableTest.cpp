#include "headUpPanel.h"

#include "Base/csv.h"
#include "Timeline/instruments.h"
#include "Timeline/poiTable.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

using namespace corv;
using namespace corv::test;

/// Points of interest as a table for spreadsheets and programs.
class PoiTableTest : public QObject
{
    Q_OBJECT

private slots:
    void textsAreSafeInSpreadsheets_data();
    void textsAreSafeInSpreadsheets();
    void csvHasUnitsInItsHeading();
    void jsonHasValuesAndUnits();
    void withoutALogThereAreNoValues();
    void textsComeBackFromTheTable();
    void fileIsOfTheFormatThatIsAskedFor();

private:
    static QVariantMap poi(int timeMs, const QString& name, const QString& comment)
    {
        return {{"time", timeMs}, {"name", name}, {"comment", comment}};
    }
};

namespace {

LogBuilder flightLog()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    State state;
    state.time = start;
    state.pitch = radians(-3);
    state.altitude = 12.5F;
    addState(log, state);
    return log;
}

// The rows of a table of comma-separated values, by a reader of its own.
QList<QStringList> readCsv(const QByteArray& text)
{
    QList<QStringList> rows;
    QStringList row;
    QByteArray field;
    bool isQuoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"' && isQuoted && i + 1 < text.size() && text[i + 1] == '"') {
            field += text[++i];
        } else if (c == '"') {
            isQuoted = !isQuoted;
        } else if (!isQuoted && (c == ',' || c == '\n')) {
            row << QString::fromUtf8(field);
            field.clear();
            if (c == '\n') {
                rows << row;
                row.clear();
            }
        } else if (isQuoted || c != '\r') {
            field += c;
        }
    }
    return rows;
}

} // namespace

void PoiTableTest::textsAreSafeInSpreadsheets_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("field");
    QTest::newRow("plain") << "Hot cell" << QByteArray("Hot cell");
    QTest::newRow("empty") << "" << QByteArray("");
    QTest::newRow("other letters") << QStringLiteral("Dach ü") << QByteArray("Dach ü");
    QTest::newRow("comma") << "a,b" << QByteArray("\"a,b\"");
    QTest::newRow("quotes") << "a \"b\"" << QByteArray("\"a \"\"b\"\"\"");
    QTest::newRow("two lines") << "a\nb" << QByteArray("\"a\nb\"");
    QTest::newRow("formula") << "=1+1" << QByteArray("'=1+1");
    QTest::newRow("call") << "=HYPERLINK(\"http://x\",1)"
                          << QByteArray("\"'=HYPERLINK(\"\"http://x\"\",1)\"");
    QTest::newRow("plus") << "+1" << QByteArray("'+1");
    QTest::newRow("minus") << "-1" << QByteArray("'-1");
    QTest::newRow("at") << "@SUM(A1)" << QByteArray("'@SUM(A1)");
    QTest::newRow("tab") << "\t=1" << QByteArray("\"'\t=1\"");
    QTest::newRow("line end") << "\r=1" << QByteArray("\"'\r=1\"");
    QTest::newRow("apostrophe") << "'a" << QByteArray("''a");
    QTest::newRow("within") << "a=1" << QByteArray("a=1");
}

void PoiTableTest::textsAreSafeInSpreadsheets()
{
    QFETCH(QString, text);
    QTEST(csvText(text), "field");
}

void PoiTableTest::csvHasUnitsInItsHeading()
{
    LogParser parser;
    QVERIFY(parse(parser, flightLog(), durationMs));
    const QVariantList pois{poi(1500, "Hot, cell", "=A1")};
    const QByteArray csv = poiTableCsv(poiTable(pois, parser, false));
    QVERIFY2(csv.startsWith("time (ms),time,log time (ms),name,description,"), csv);
    QVERIFY2(csv.contains("\r\n1500,00:00:01.500," + QByteArray::number(start + 1500) +
                          ",\"Hot, cell\",'=A1,"),
             csv);
    QVERIFY2(csv.endsWith(",\r\n"), csv);
    const QList<QStringList> rows = readCsv(csv);
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows[0].size(), 6 + static_cast<int>(hudInstruments().size()));
    QCOMPARE(rows[0].last(), QString("picture"));
    QCOMPARE(rows[1].size(), rows[0].size());
    const auto valueBelow = [&rows](const char* heading) {
        const int column = rows[0].indexOf(heading);
        return column < 0 ? QString("no such column") : rows[1][column];
    };
    QCOMPARE(valueBelow("pitch (deg)"), QString("-3"));
    QCOMPARE(valueBelow("roll (deg)"), QString("0"));
    QCOMPARE(valueBelow("heading (deg)"), QString("0"));
    QCOMPARE(valueBelow("altitude (m)"), QString("12.5"));
    QCOMPARE(valueBelow("cam pitch (deg)"), QString());
    const QByteArray feet = poiTableCsv(poiTable(pois, parser, true));
    QVERIFY(feet.contains(",altitude (ft),"));
    QVERIFY(feet.contains(",41.0,"));
    // The heading is there without a row.
    QCOMPARE(poiTableCsv(poiTable({}, parser, false)).count("\r\n"), 1);
}

void PoiTableTest::jsonHasValuesAndUnits()
{
    LogParser parser;
    QVERIFY(parse(parser, flightLog(), durationMs));
    PoiTable table = poiTable({poi(1500, "Hot", "line 1\nline 2")}, parser, false);
    table.rows[0].picture = "pictures/POI001.jpg";
    const auto instrument = [](const QJsonValue& value, const char* unit) {
        return QJsonObject{{"value", value}, {"unit", unit}};
    };
    const QJsonArray rows = QJsonDocument::fromJson(poiTableJson(table)).array();
    QCOMPARE(rows.size(), 1);
    QJsonObject row = rows[0].toObject();
    const QJsonObject instruments = row.take("instruments").toObject();
    QCOMPARE(row, (QJsonObject{{"timeMs", 1500},
                               {"logTimeMs", double(start + 1500)},
                               {"name", "Hot"},
                               {"description", "line 1\nline 2"},
                               {"picture", "pictures/POI001.jpg"}}));
    QCOMPARE(instruments.size(), static_cast<int>(hudInstruments().size()));
    QCOMPARE(instruments["Pitch"].toObject(), instrument(-3, "deg"));
    QCOMPARE(instruments["Roll"].toObject(), instrument(0, "deg"));
    QCOMPARE(instruments["Heading"].toObject(), instrument(0, "deg"));
    QCOMPARE(instruments["Altitude"].toObject(), instrument(12.5, "m"));
    QCOMPARE(instruments["Cam pitch"].toObject(), instrument(QJsonValue(), "deg"));
}

void PoiTableTest::withoutALogThereAreNoValues()
{
    const LogParser parser;
    const PoiTable table = poiTable({poi(20, "a", "b")}, parser, false);
    QVERIFY(!table.rows[0].logTimeMs);
    const QByteArray noNumbers(static_cast<int>(hudInstruments().size()), ',');
    QVERIFY(poiTableCsv(table).endsWith("\r\n20,00:00:00.020,,a,b," + noNumbers + "\r\n"));
    QVERIFY(
        QJsonDocument::fromJson(poiTableJson(table)).array()[0].toObject()["logTimeMs"].isNull());
}

// A text that is read back from the table equals the one written, but for one leading apostrophe.
void PoiTableTest::textsComeBackFromTheTable()
{
    const QStringList texts{"=1+1",         "'quoted'", "a,\"b\"\nc", "-5",         "plain",
                            QString("ü 😀"), "@x",       "''two",      "tab\tinside"};
    QVariantList pois;
    for (const QString& text : texts)
        pois << poi(0, text, text);
    const QList<QStringList> rows = readCsv(poiTableCsv(poiTable(pois, LogParser(), false)));
    QCOMPARE(rows.size(), texts.size() + 1);
    for (int i = 0; i < texts.size(); ++i) {
        QCOMPARE(rows[i + 1].size(), rows[0].size());
        for (const int column : {3, 4}) {
            QString read = rows[i + 1][column];
            if (read.startsWith('\''))
                read.remove(0, 1);
            QCOMPARE(read, texts[i]);
        }
    }
}

void PoiTableTest::fileIsOfTheFormatThatIsAskedFor()
{
    const QTemporaryDir folder;
    const PoiTable table = poiTable({}, LogParser(), false);
    const QString path = folder.filePath("points");
    const auto contents = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    for (const PoiTableFormat& format : poiTableFormats()) {
        QVERIFY(writePoiTable(table, path, format));
        QCOMPARE(contents(), format.text(table));
        QCOMPARE(poiTableFormatOf("a." + format.suffix.toUpper()).suffix, format.suffix);
    }
    QVERIFY(poiTableFormatOf("a.json").text == poiTableJson);
    for (const char* name : {"a.csv", "json", "a.txt", ""})
        QVERIFY(poiTableFormatOf(name).text == poiTableCsv);
    QVERIFY(!writePoiTable(table, folder.filePath("none/points"), poiTableFormats().front()));
}

QTEST_MAIN(PoiTableTest)
#include "PoiTableTest.moc"
