#include "ReviewFixture.h"
#include "Support/ProgramRun.h"
#include "Support/WordPackage.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <memory>

using namespace corv::test;

/// A report made by `vistrel-cli` is the one that the window makes of the same project, part for
/// part, but for the moment at which it was made.
class SameReportTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void windowAndCommandAgree_data();
    void windowAndCommandAgree();

private:
    std::unique_ptr<ReviewFixture> m_ui;
};

namespace {

QString writeProject(const QByteArray& poi, const QByteArray& properties)
{
    const FlightMedia& media = FlightMedia::instance();
    const QString path = media.newFolder() + "/flight.ecor";
    QFile file(path);
    const QJsonObject flight{{"files", QJsonObject{{"video", media.video()}, {"log", media.log()}}},
                             {"poi", QJsonDocument::fromJson(poi).array()},
                             {"properties", QJsonDocument::fromJson(properties).object()}};
    const QJsonObject contents{{"flights", QJsonArray{flight}}};
    if (file.open(QIODevice::WriteOnly))
        file.write(QJsonDocument(QJsonObject{{"contents", contents}}).toJson());
    return path;
}

Parts withoutDate(Parts parts)
{
    static const QRegularExpression date("\\w{3} \\w{3} +\\d+ \\d\\d:\\d\\d:\\d\\d \\d{4}");
    QString document = QString::fromUtf8(parts["word/document.xml"]);
    parts["word/document.xml"] = document.replace(date, "DATE").toUtf8();
    return parts;
}

} // namespace

void SameReportTest::initTestCase()
{
    UiFixture::prepare();
    const QString name = "/docx_export_template.dfw";
    const QString beside = QCoreApplication::applicationDirPath() + name;
    QFile::remove(beside);
    QVERIFY(QFile::link(QFileInfo(VISTREL_CLI).path() + name, beside));
}

void SameReportTest::init()
{
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
}

void SameReportTest::cleanup()
{
    m_ui.reset();
}

void SameReportTest::windowAndCommandAgree_data()
{
    QTest::addColumn<QByteArray>("poi");
    QTest::addColumn<QByteArray>("properties");
    QTest::addColumn<int>("pois"); // two more than those of the project are in the log
    const auto row = [](const char* name, const QByteArray& poi, const QByteArray& properties,
                        int pois) { QTest::newRow(name) << poi << properties << pois; };
    row("points of interest of the log alone", "[]", "{}", 2);
    row("points of interest and a naming", R"([{"time":500,"name":"Rust","comment":"a\nb"}])",
        R"({"designation":{"mission_name":"<&>","flight_name":"\u05e9\u05dc","flight_number":12}})",
        3);
    row("a naming without a number", "[]",
        R"({"designation":{"mission_name":"Dam","flight_name":"East"}})", 2);
    row("a naming of other kinds", "[]",
        R"({"designation":{"mission_name":5,"flight_name":null,"flight_number":"7"}})", 2);
    row("the point of interest of a log renamed", R"([{"time":1000,"name":"Mine","comment":""}])",
        "{}", 2);
    row("times that are none", R"([{"name":"lost"},{"time":"x","name":"text"},{"time":"250"},
        {"time":2.6,"name":"half"},{"time":true,"name":"true"},null,5])",
        "{}", 6);
    row("times outside", R"([{"time":-1,"name":"before"},{"time":5999,"name":"last"},
        {"time":6000,"name":"end"},{"time":86400100,"name":"next day"},
        {"time":1e308,"name":"never"}])",
        "{}", 7);
    row("picture settings", R"([{"time":40,"name":"n"}])",
        R"({"display":{"contrast":1.4,"brightness":-20},
            "thermal_video":{"visible":true,"colormap_auto":false,"colormap_min":1}})",
        3);
    row("settings of other kinds", R"([{"time":40,"name":"n"}])",
        R"({"display":{"contrast":"2","brightness":null},"correction":{"log_offset":1e300}})", 3);
}

void SameReportTest::windowAndCommandAgree()
{
    QFETCH(QByteArray, poi);
    QFETCH(QByteArray, properties);
    QFETCH(int, pois);
    const QString project = writeProject(poi, properties);
    m_ui->call("loadProject", {project});
    QTRY_VERIFY(m_ui->hasVideo());
    QTRY_VERIFY(m_ui->log().contains("Log parsing complete"));
    QTRY_COMPARE(m_ui->evaluate("timelineContent.getPOIs()").toList().size(), pois);

    const QString folder = FlightMedia::instance().newFolder();
    m_ui->call("doCreatePoiReport", {folder + "/window.docx"});
    QTRY_VERIFY(QFile::exists(folder + "/window.docx"));
    QTRY_VERIFY(!UiFixture::visibleWindow("exportProgressWindow"));

    const ProgramRun command =
        runProgram(VISTREL_CLI, {"report", project, "--out", folder + "/command.docx"});
    QCOMPARE(command.error, QByteArray());
    QCOMPARE(command.status, 0);

    const Parts shown = withoutDate(readZip(folder + "/window.docx"));
    const Parts written = withoutDate(readZip(folder + "/command.docx"));
    QCOMPARE(brokenRules(shown).join('\n'), QString());
    QCOMPARE(documentText(written), documentText(shown));
    QCOMPARE(written.keys(), shown.keys());
    for (const QString& name : shown.keys())
        QVERIFY2(written[name] == shown[name], qPrintable(name));
}

QTEST_MAIN(SameReportTest)
#include "SameReportTest.moc"
