#include "Batch/FlightManifest.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;

namespace {

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

} // namespace

class FlightManifestTest : public QObject
{
    Q_OBJECT

private slots:
    void stepIsDoneOnceItsFilesAreThere()
    {
        const QTemporaryDir folder;
        write(folder.filePath("report.docx"), "document");
        {
            FlightManifest manifest(folder.path());
            QVERIFY(!manifest.isDone("report", "f"));
            QVERIFY(manifest.setDone("report", "f", {"report.docx"}, "d").ok());
            QVERIFY(manifest.isDone("report", "f"));
        }
        const FlightManifest again(folder.path());
        QVERIFY(again.isDone("report", "f"));
        QVERIFY(again.hasMade("report", "d"));
        QVERIFY(!again.hasMade("report", "e"));
        QVERIFY(!again.hasMade("video", {}));
        QVERIFY(!again.isDone("report", "other"));
        QVERIFY(again.hasStep("report"));
        QVERIFY(!again.hasStep("video"));
    }

    void stepIsDoneAgainWhenAFileIsGoneOrCutShort()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("report.docx");
        write(path, "document");
        FlightManifest manifest(folder.path());
        QVERIFY(manifest.setDone("report", "f", {"report.docx"}).ok());
        write(path, "docu");
        QVERIFY(!manifest.isDone("report", "f"));
        QVERIFY(QFile::remove(path));
        QVERIFY(!manifest.isDone("report", "f"));
    }

    // A run can be killed while it replaces a result: both the old and the new file count as its
    // own.
    void resultThatWasAboutToBePutInPlaceIsKnown()
    {
        const QTemporaryDir folder;
        {
            FlightManifest manifest(folder.path());
            QVERIFY(manifest.setPending("project", "first").ok());
            QVERIFY(!manifest.hasStep("project"));
            QVERIFY(!manifest.isDone("project", "f"));
            QVERIFY(manifest.hasMade("project", "first"));
            QVERIFY(manifest.setDone("project", "f", {}, "first").ok());
            QVERIFY(manifest.setPending("project", "second").ok());
        }
        FlightManifest killed(folder.path());
        QVERIFY(killed.isDone("project", "f"));
        QVERIFY(killed.hasMade("project", "first"));
        QVERIFY(killed.hasMade("project", "second"));
        QVERIFY(killed.setDone("project", "g", {}, "third").ok());
        const FlightManifest again(folder.path());
        QVERIFY(!again.hasMade("project", "first"));
        QVERIFY(!again.hasMade("project", "second"));
        QVERIFY(again.hasMade("project", "third"));
    }

    void damagedManifestIsAnEmptyOne_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut short") << QByteArray("{\"version\":1,\"steps\":{\"report\":{\"fin");
        QTest::newRow("array") << QByteArray("[1,2]");
        QTest::newRow("other version") << QByteArray(
            "{\"version\":2,\"steps\":{\"report\":{\"fingerprint\":\"f\",\"files\":{}}}}");
        QTest::newRow("steps of another kind") << QByteArray("{\"version\":1,\"steps\":[7]}");
    }

    void damagedManifestIsAnEmptyOne()
    {
        QFETCH(QByteArray, text);
        const QTemporaryDir folder;
        write(folder.filePath("manifest.json"), text);
        FlightManifest manifest(folder.path());
        QVERIFY(!manifest.isDone("report", "f"));
        QVERIFY(manifest.setDone("report", "f", {}).ok());
        QVERIFY(FlightManifest(folder.path()).isDone("report", "f"));
    }

    void identityIsKept()
    {
        const QTemporaryDir folder;
        FlightManifest manifest(folder.path());
        QVERIFY(manifest.identity().isEmpty());
        QVERIFY(manifest.claimFor("flight").ok());
        QCOMPARE(FlightManifest(folder.path()).identity(), QByteArray("flight"));
    }

    void fingerprintChangesWithWordsAndFiles()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("video.mov");
        const QByteArray missing = fingerprintOf({"a"}, {path});
        write(path, "1234");
        const QByteArray there = fingerprintOf({"a"}, {path});
        QVERIFY(there != missing);
        QCOMPARE(fingerprintOf({"a"}, {path}), there);
        QVERIFY(fingerprintOf({"b"}, {path}) != there);
        write(path, "12345");
        QVERIFY(fingerprintOf({"a"}, {path}) != there);
        // The same card in another place.
        const QTemporaryDir other;
        QVERIFY(QFile::rename(path, other.filePath("video.mov")));
        QVERIFY(fingerprintOf({"a"}, {path}) == missing);
        QVERIFY(fingerprintOf({"a"}, {other.filePath("video.mov")}) != missing);
        QVERIFY(fingerprintOf({"a", "b"}, {}) != fingerprintOf({"ab"}, {}));
    }
};

QTEST_GUILESS_MAIN(FlightManifestTest)
#include "FlightManifestTest.moc"
