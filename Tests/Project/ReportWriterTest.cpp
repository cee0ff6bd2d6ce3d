#include "Project/ReportWriter.h"

#include "ScriptedPlayer.h"
#include "Support/MessageLog.h"
#include "Support/WordPackage.h"

#include <QDateTime>
#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>
#include <thread>

using corv::ReportWriter;
using corv::VideoPlayer;
using namespace corv::test;

namespace {

using Steps = QList<QPair<int, int>>;

QVariantMap poi(int timeMs, const QString& name = "Name", const QString& comment = "Comment")
{
    return {{"time", timeMs}, {"name", name}, {"comment", comment}};
}

QVariantMap naming()
{
    return {{"undefined", false},
            {"missionName", "North coast"},
            {"flightName", "Turbine 12"},
            {"flightNumber", 3}};
}

/// A picture as wide as the time it was asked for.
QImage frameAt(int timeMs)
{
    QImage image(timeMs + 1, 20, QImage::Format_RGB32);
    image.fill(Qt::darkMagenta);
    return image;
}

} // namespace

class ReportWriterTest : public QObject
{
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> m_folder;
    std::atomic<bool> m_abort{false};
    Steps m_steps;

    QString path(const QString& name) const { return m_folder->filePath(name); }

    bool write(VideoPlayer* player, const QVariantList& pois,
               const QVariantMap& flightNaming = naming(),
               const QString& templateFile = VISTREL_REPORT_TEMPLATE)
    {
        ReportWriter writer(&m_abort, templateFile);
        return writer.writeWordReport(
            path("out.docx"), player, pois, flightNaming,
            [this](int done, int total) { m_steps << qMakePair(done, total); });
    }

    QStringList framesInUse() const
    {
        QStringList names;
        for (const QString& folder : QDir(path("tmp")).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            names << QDir(path("tmp/" + folder)).entryList(QDir::Files, QDir::Name);
        return names;
    }

    QString text() const { return documentText(readZip(path("out.docx"))); }
    QStringList media() const { return readZip(path("out.docx")).keys().filter("/frame"); }

private slots:
    void init()
    {
        qunsetenv("TMPDIR"); // of the test before
        m_folder.reset(new QTemporaryDir);
        QVERIFY(QDir().mkpath(path("tmp")));
        qputenv("TMPDIR", QFile::encodeName(path("tmp")));
        m_abort = false;
        m_steps.clear();
    }

    void writesTimesAsStated_data()
    {
        QTest::addColumn<int>("timeMs");
        QTest::addColumn<QString>("text");
        QTest::newRow("start") << 0 << "00:00.0";
        QTest::newRow("no zeros in front of the last part") << 65007 << "01:05.7";
        QTest::newRow("before the minute") << 59999 << "00:59.999";
        QTest::newRow("no hours") << 3600000 << "60:00.0";
        QTest::newRow("many minutes") << 86399050 << "1439:59.50";
    }

    void writesTimesAsStated()
    {
        QFETCH(int, timeMs);
        QTEST(corv::reportTime(timeMs), "text");
    }

    void writesACoverAndAPageForEachPoi()
    {
        ScriptedPlayer player(frameAt);
        MessageLog log;
        QVERIFY(write(&player, {poi(7, "First", "one\ntwo"), poi(65007, "Second", "three")}));
        QVERIFY(
            log.contains("Vistrel will create a POI report at path: \"" + path("out.docx") + '"'));
        QCOMPARE(log.messages(QtWarningMsg), QStringList());
        QCOMPARE(m_steps, Steps({{1, 2}, {2, 2}}));
        const Parts parts = readZip(path("out.docx"));
        QCOMPARE(brokenRules(parts).join('\n'), QString());
        const QString all = documentText(parts);
        int position = 0;
        for (const char* piece : {"North coast\n", "Turbine 12\n", "3\n", "First\n", "00:00.7\n",
                                  "one\ntwo\n", "Second\n", "01:05.7\n", "three\n"}) {
            const int found = all.indexOf(piece, position);
            QVERIFY2(found >= 0, qPrintable(piece + all));
            position = found + 1;
        }
        QCOMPARE(media().size(), 2);
        QCOMPARE(QImage::fromData(parts[media()[0]]), frameAt(7));
        QCOMPARE(QImage::fromData(parts[media()[1]]).width(), 65008);
        QCOMPARE(QDir(path("tmp")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList());
    }

    void theCoverCarriesTheDateOfToday()
    {
        ScriptedPlayer player(frameAt);
        const QString before = QDateTime::currentDateTime().toString(Qt::TextDate);
        QVERIFY(write(&player, {}));
        const QString after = QDateTime::currentDateTime().toString(Qt::TextDate);
        QVERIFY2(text().contains(before) || text().contains(after), qPrintable(text()));
    }

    void anEmptyListGivesTheCoverAlone()
    {
        ScriptedPlayer player(frameAt);
        QVERIFY(write(&player, {}));
        QCOMPARE(m_steps, Steps());
        QVERIFY(text().contains("North coast"));
        QVERIFY(!text().contains("Video time"));
    }

    void anUndefinedNamingLeavesTheCoverUnset()
    {
        ScriptedPlayer player(frameAt);
        QVariantMap flightNaming = naming();
        flightNaming["undefined"] = true;
        QVERIFY(write(&player, {}, flightNaming));
        QVERIFY(!text().contains("North coast"));
        QVERIFY(!text().contains("Turbine 12"));
        QVERIFY2(text().contains("Flight number\n\nDate\n"), qPrintable(text()));
        QVERIFY(text().contains(QString::number(QDate::currentDate().year())));
    }

    void skipsLeadingPoisWithoutUsableTime()
    {
        QStringList frames;
        ScriptedPlayer player([&](int timeMs) {
            frames = framesInUse();
            return frameAt(timeMs);
        });
        const QVariantList pois = {poi(-2, "A"), poi(-1, "B"), poi(1, "C"), poi(2, "D"),
                                   poi(3, "E")};
        QVERIFY(write(&player, pois));
        QCOMPARE(m_steps, Steps({{1, 3}, {2, 3}, {3, 3}}));
        QCOMPARE(player.requests(), 3);
        // As the last frame was asked for, the two before it were there, numbered by their places.
        QCOMPARE(frames, QStringList({"generated_image_2.png", "generated_image_3.png"}));
        QVERIFY(!text().contains("B\n"));
        QVERIFY(text().contains("C\n"));
    }

    void anEntryWithoutTimeInTheMiddleCountsButHasNoPage()
    {
        ScriptedPlayer player(frameAt);
        QVERIFY(write(&player, {poi(1, "A"), QVariantMap{{"name", "B"}}, poi(2, "C")}));
        QCOMPARE(m_steps, Steps({{1, 2}, {2, 2}}));
        QVERIFY(!text().contains("B\n"));
        QVERIFY(text().contains("C\n"));
    }

    void aListOfAnythingIsSurvived()
    {
        ScriptedPlayer player(frameAt);
        QVERIFY(write(&player, {QVariant(), "text", 5, QVariantMap{{"time", "x"}, {"name", 7}}}));
        QCOMPARE(m_steps, Steps({{1, 1}}));
    }

    void aNullFrameLeavesThePageWithoutPicture()
    {
        ScriptedPlayer player([](int) { return QImage(); });
        MessageLog log;
        QVERIFY(write(&player, {poi(65007, "Lost")}));
        QCOMPARE(log.messages(QtWarningMsg), QStringList({"Failed to extract frame at ms 65007"}));
        QVERIFY(text().contains("Lost\n"));
        QCOMPARE(media(), QStringList());
        QCOMPARE(m_steps, Steps({{1, 1}}));
    }

    void unsavedFrameIsReported()
    {
        ScriptedPlayer player([this](int timeMs) {
            QDir(path("tmp")).removeRecursively();
            return frameAt(timeMs);
        });
        MessageLog log;
        QVERIFY(write(&player, {poi(5, "Lost")}));
        QCOMPARE(log.messages(QtWarningMsg).size(), 1);
        const QString warning = log.messages(QtWarningMsg).first();
        QVERIFY2(warning.startsWith("Failed to save frame to file \"" + path("tmp")) &&
                     warning.endsWith("/generated_image_0.png\""),
                 qPrintable(warning));
        QVERIFY(text().contains("Lost\n"));
    }

    void withoutATemporaryFolderThePathStaysEmpty()
    {
        QFile file(path("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        qputenv("TMPDIR", QFile::encodeName(path("file")));
        ScriptedPlayer player(frameAt);
        MessageLog log;
        QVERIFY(write(&player, {poi(5)}));
        QVERIFY(log.messages(QtWarningMsg).contains("Failed to save frame to file \"\""));
        QCOMPARE(media(), QStringList());
    }

    void aRequestThatIsRefusedIsNotWaitedFor()
    {
        VideoPlayer withoutVideo;
        MessageLog log;
        QVERIFY(write(&withoutVideo, {poi(5, "A")}));
        QVERIFY(log.contains("Failed to extract frame at ms 5"));
        QVERIFY(write(nullptr, {poi(6, "A")}));
        QVERIFY(log.contains("Failed to extract frame at ms 6"));
    }

    void abortedInTheWaitNothingIsSaved()
    {
        ScriptedPlayer player([this](int timeMs) {
            m_abort = true;
            return frameAt(timeMs);
        });
        MessageLog log;
        QVERIFY(!write(&player, {poi(5), poi(6), poi(7)}));
        QCOMPARE(player.requests(), 1);
        QCOMPARE(m_steps, Steps());
        QVERIFY(!QFileInfo::exists(path("out.docx")));
        QCOMPARE(log.messages(QtWarningMsg), QStringList());
    }

    void abortedBeforehandNoFrameIsAskedFor()
    {
        m_abort = true;
        ScriptedPlayer player(frameAt);
        QVERIFY(!write(&player, {poi(5)}));
        QCOMPARE(player.requests(), 0);
        QVERIFY(!QFileInfo::exists(path("out.docx")));
    }

    void aFrameThatComesAfterTheEndIsHarmless()
    {
        ScriptedPlayer player(frameAt);
        player.hold();
        std::thread aborting([this, &player] {
            while (player.requests() == 0)
                std::this_thread::yield();
            m_abort = true;
        });
        MessageLog log;
        QVERIFY(!write(&player, {poi(5)}));
        aborting.join();
        QCOMPARE(framesInUse(), QStringList());
        player.release();
        QTRY_COMPARE(player.releases(), 1);
        QCOMPARE(log.messages(QtWarningMsg), QStringList());
        QTRY_COMPARE(QDir(path("tmp")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                     QStringList());
    }

    void missingTemplateIsReported()
    {
        ScriptedPlayer player(frameAt);
        MessageLog log;
        QVERIFY(!write(&player, {poi(5)}, naming(), path("none.dfw")));
        QCOMPARE(log.messages(QtWarningMsg),
                 QStringList({"DFW export template not found at: \"" + path("none.dfw") + '"'}));
    }

    void theTemplateIsBesideTheProgram()
    {
        QCOMPARE(ReportWriter::deliveredTemplatePath(),
                 QCoreApplication::applicationDirPath() + "/docx_export_template.dfw");
    }

    void brokenTemplateIsReported()
    {
        QFile broken(path("broken.dfw"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("no zip") == 6);
        broken.close();
        ScriptedPlayer player(frameAt);
        MessageLog log;
        QVERIFY(!write(&player, {poi(5)}, naming(), path("broken.dfw")));
        QVERIFY(log.contains("Exception: "));
        QVERIFY(log.contains("cannot be unpacked"));
    }

    void templateWithoutCoverIsReported()
    {
        writeZip(path("t.dfw"), templateParts(control("Page", paragraph(run("p")))));
        ScriptedPlayer player(frameAt);
        MessageLog log;
        QVERIFY(!write(&player, {poi(5)}, naming(), path("t.dfw")));
        QCOMPARE(log.messages(QtWarningMsg),
                 QStringList({"Exception: the template has no item \"Cover\""}));
    }

    void withoutPagesTheReportGoesOn()
    {
        writeZip(path("t.dfw"), templateParts(control("Cover", paragraph(run("c")))));
        ScriptedPlayer player(frameAt);
        MessageLog log;
        QVERIFY(write(&player, {poi(5), poi(6)}, naming(), path("t.dfw")));
        QVERIFY(log.contains("the template has no item \"Page\""));
        QCOMPARE(m_steps, Steps());
        QCOMPARE(text(), QString("c\n"));
    }

    void unwritableDocumentIsReported()
    {
        QVERIFY(QDir().mkpath(path("out.docx")));
        ScriptedPlayer player(frameAt);
        MessageLog log;
        QVERIFY(!write(&player, {poi(5)}));
        QVERIFY(log.contains("Exception: cannot write"));
    }
};

QTEST_MAIN(ReportWriterTest)
#include "ReportWriterTest.moc"
