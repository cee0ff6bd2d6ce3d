#include "Project/PoiReportExporter.h"

#include "ScriptedPlayer.h"
#include "Support/MessageLog.h"
#include "Support/WordPackage.h"

#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <chrono>
#include <random>
#include <thread>

using corv::PoiReportExporter;
using namespace corv::test;

namespace {

QVariantList pois(int count)
{
    QVariantList list;
    for (int i = 0; i < count; ++i)
        list << QVariantMap{{"time", 40 * i}, {"name", QString("POI %1").arg(i)}};
    return list;
}

const QVariantMap& naming()
{
    static const QVariantMap map{{"undefined", true}};
    return map;
}

QImage frame(int)
{
    QImage image(32, 18, QImage::Format_RGB32);
    image.fill(Qt::darkRed);
    return image;
}

} // namespace

class PoiReportExporterTest : public QObject
{
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> m_folder;

    QString path(const QString& name) const { return m_folder->filePath(name); }

    static QString deliveredTemplate()
    {
        return QCoreApplication::applicationDirPath() + "/docx_export_template.dfw";
    }

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        QFile::remove(deliveredTemplate());
        QVERIFY(QFile::copy(VISTREL_REPORT_TEMPLATE, deliveredTemplate()));
    }

    void cleanupTestCase() { QFile::remove(deliveredTemplate()); }

    void thePlayerIsAProperty()
    {
        ScriptedPlayer player(frame);
        PoiReportExporter exporter;
        QVERIFY(
            exporter.setProperty("videoPlayer", QVariant::fromValue<corv::VideoPlayer*>(&player)));
        QCOMPARE(exporter.property("videoPlayer").value<corv::VideoPlayer*>(), &player);
        QCOMPARE(exporter.metaObject()
                     ->property(exporter.metaObject()->indexOfProperty("videoPlayer"))
                     .hasNotifySignal(),
                 false);
    }

    void emitsProgressAndThenTheEnd()
    {
        ScriptedPlayer player(frame);
        PoiReportExporter exporter;
        exporter.setVideoPlayer(&player);
        QStringList events;
        connect(&exporter, &PoiReportExporter::exportProgress, &exporter, [&](int done, int total) {
            QCOMPARE(QThread::currentThread(), thread());
            events << QString("%1/%2").arg(done).arg(total);
        });
        connect(&exporter, &PoiReportExporter::exportComplete, &exporter, [&](bool result) {
            QCOMPARE(QThread::currentThread(), thread());
            events << (result ? "written" : "failed");
        });
        exporter.createPoiReport(pois(3), path("out.docx"), naming());
        QTRY_COMPARE(events, QStringList({"1/3", "2/3", "3/3", "written"}));
        QVERIFY(documentText(readZip(path("out.docx"))).contains("POI 2"));
    }

    void aSecondReportIsIgnoredWhileOneIsWritten()
    {
        ScriptedPlayer player(frame);
        player.hold();
        PoiReportExporter exporter;
        exporter.setVideoPlayer(&player);
        QSignalSpy complete(&exporter, &PoiReportExporter::exportComplete);
        exporter.createPoiReport(pois(1), path("first.docx"), naming());
        QTRY_COMPARE(player.requests(), 1);
        exporter.createPoiReport(pois(1), path("second.docx"), naming());
        player.release();
        QTRY_COMPARE(complete.count(), 1);
        QVERIFY(QFileInfo::exists(path("first.docx")));
        QVERIFY(!QFileInfo::exists(path("second.docx")));
    }

    void theEndOfOneMayStartTheNext()
    {
        ScriptedPlayer player(frame);
        PoiReportExporter exporter;
        exporter.setVideoPlayer(&player);
        int completed = 0;
        connect(&exporter, &PoiReportExporter::exportComplete, &exporter, [&](bool result) {
            QVERIFY(result);
            if (++completed < 20)
                exporter.createPoiReport({}, path(QString("%1.docx").arg(completed)), naming());
        });
        exporter.createPoiReport({}, path("0.docx"), naming());
        QTRY_COMPARE(completed, 20);
        QVERIFY(QFileInfo::exists(path("19.docx")));
    }

    void abortedItEndsWithoutAFile()
    {
        ScriptedPlayer player(frame);
        player.hold();
        PoiReportExporter exporter;
        exporter.setVideoPlayer(&player);
        QSignalSpy complete(&exporter, &PoiReportExporter::exportComplete);
        QSignalSpy progress(&exporter, &PoiReportExporter::exportProgress);
        exporter.createPoiReport(pois(3), path("out.docx"), naming());
        QTRY_COMPARE(player.requests(), 1);
        exporter.abortExportOperation();
        QTRY_COMPARE(complete.count(), 1);
        QCOMPARE(complete[0][0].toBool(), false);
        QCOMPARE(progress.count(), 0);
        QVERIFY(!QFileInfo::exists(path("out.docx")));

        player.release(); // the frame comes after the end, and the next report goes through
        exporter.createPoiReport(pois(2), path("out.docx"), naming());
        QTRY_COMPARE(complete.count(), 2);
        QCOMPARE(complete[1][0].toBool(), true);
    }

    void aMissingTemplateIsAFailure()
    {
        QVERIFY(QFile::remove(deliveredTemplate()));
        ScriptedPlayer player(frame);
        PoiReportExporter exporter;
        exporter.setVideoPlayer(&player);
        QSignalSpy complete(&exporter, &PoiReportExporter::exportComplete);
        MessageLog log;
        exporter.createPoiReport(pois(1), path("out.docx"), naming());
        QTRY_COMPARE(complete.count(), 1);
        QCOMPARE(complete[0][0].toBool(), false);
        QVERIFY(log.contains("DFW export template not found at:"));
    }

    void itsEndGivesUpTheReportAndWaits()
    {
        ScriptedPlayer player(frame);
        player.hold();
        {
            PoiReportExporter exporter;
            exporter.setVideoPlayer(&player);
            exporter.createPoiReport(pois(3), path("out.docx"), naming());
            QTRY_COMPARE(player.requests(), 1);
        }
        QVERIFY(!QFileInfo::exists(path("out.docx")));
        player.release();
        QTRY_COMPARE(player.releases(), 1);
    }

    void theEndOfThePlayerGivesUpTheReport()
    {
        auto player = std::make_unique<ScriptedPlayer>(frame);
        player->hold();
        PoiReportExporter exporter;
        exporter.setVideoPlayer(player.get());
        QSignalSpy complete(&exporter, &PoiReportExporter::exportComplete);
        exporter.createPoiReport(pois(3), path("out.docx"), naming());
        QTRY_COMPARE(player->requests(), 1);
        player.reset();
        QCOMPARE(exporter.videoPlayer(), nullptr);
        QTRY_COMPARE(complete.count(), 1);
        QCOMPARE(complete[0][0].toBool(), false);
    }

    void abortedAtAnyMomentItEndsOnce()
    {
        ScriptedPlayer player(frame);
        std::mt19937 random(11);
        for (int round = 0; round < 30; ++round) {
            PoiReportExporter exporter;
            exporter.setVideoPlayer(&player);
            QSignalSpy complete(&exporter, &PoiReportExporter::exportComplete);
            exporter.createPoiReport(pois(2), path("out.docx"), naming());
            // The random moment is what is tested, so this is no wait for a condition.
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 150000));
            if (round % 3 == 0)
                continue; // the destructor gives it up
            exporter.abortExportOperation();
            QTRY_COMPARE(complete.count(), 1);
        }
    }
};

QTEST_MAIN(PoiReportExporterTest)
#include "PoiReportExporterTest.moc"
