#include "Project/ProjectFileLoader.h"
#include "Review/RecoveryStore.h"
#include "Support/TestVideo.h"
#include "Support/trustRow.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <random>

using namespace corv;
using namespace corv::test;

namespace {

constexpr int parts = 3;

/// How many points of interest a list has, if they are those that were made first, each as it was
/// made; -1 if not.
int wholeCount(const QVariantList& pois)
{
    for (int i = 0; i < pois.size(); ++i) {
        const QVariantMap poi = pois[i].toMap();
        const QString name = poi["name"].toString();
        // The last one may have been caught between its making and its naming.
        const bool isNamed = name == QString::number(i) && poi["comment"].toString().size() == 200;
        if (poi["time"].toInt() != i || (!isNamed && i + 1 < pois.size()))
            return -1;
    }
    return pois.size();
}

} // namespace

/// A program that is killed while it edits, saves and copies leaves whole projects, whole copies
/// and almost all of its work. VISTREL_KILLS says how often; the moments are random, and
/// VISTREL_SEED chooses others.
class SurvivalTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_media;

    QString video() const { return m_media.filePath("CORV0001.MOV"); }

    void checkFolder(const QString& folder) const
    {
        const QDir all(folder);
        // The next program that opens or saves something here clears up.
        ProjectFileLoader().loadProject(all.filePath("p.ecor"));
        for (const QString& name :
             all.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
            const bool isCopy = name.endsWith("_video");
            QVERIFY2(name.endsWith(".ecor") || isCopy || name == "recovery", qPrintable(name));
            QVERIFY2(!isCopy || all.exists(name.chopped(6) + ".ecor"), qPrintable(name));
            if (name.endsWith("_video"))
                QCOMPARE(QDir(all.filePath(name)).entryList(QDir::Files | QDir::Hidden).size(),
                         parts);
            if (!name.endsWith(".ecor"))
                continue;
            ProjectFileLoader loader;
            loader.loadProject(all.filePath(name));
            QVERIFY2(!loader.loadProblem(), qPrintable(name));
            QCOMPARE(all.entryList({'.' + name + ".*"}, QDir::Files | QDir::Hidden), QStringList());
            QVERIFY(wholeCount(*loader.contents().pois) >= 0);
            QVERIFY(loader.contents().missingFiles().isEmpty());
        }
    }

    static int keptIn(const QString& folder)
    {
        ProjectFileLoader loader;
        int kept = 0;
        if (QFile::exists(folder + "/p.ecor")) {
            loader.loadProject(folder + "/p.ecor");
            kept = wholeCount(loader.contents().pois.value_or(QVariantList()));
        }
        for (const RecoveredReview& review : RecoveryStore(folder + "/recovery").found()) {
            if (review.problem)
                return -1;
            kept = std::max(kept, wholeCount(review.contents.pois.value_or(QVariantList())));
        }
        return kept;
    }

private slots:
    void initTestCase()
    {
        for (int number = 1; number <= parts; ++number) {
            TestVideo clip;
            clip.frames = 5;
            clip.size = QSize(160, 120);
            QVERIFY(clip.write(m_media.filePath(QString("CORV000%1.MOV").arg(number))));
        }
    }

    void killedAtAnyMomentItKeepsItsWork()
    {
        bool isNumber = false;
        const int given = qEnvironmentVariableIntValue("VISTREL_KILLS", &isNumber);
        const int kills = isNumber ? given : 20;
        const unsigned seed = qgetenv("VISTREL_SEED").toUInt();
        std::mt19937 random(20261121 + seed);
        int mostKept = 0;
        for (int round = 0; round < kills; ++round) {
            const QTemporaryDir folder;
            QProcess driver;
            driver.start(
                VISTREL_REVIEW_DRIVER,
                {video(), folder.path(), QString::number(seed + static_cast<unsigned>(round))});
            QVERIFY(driver.waitForStarted());
            QByteArray printed;
            // The first sign of work, and then a random moment: that is what is tested.
            while (!printed.contains('\n') && driver.waitForReadyRead(20000))
                printed += driver.readAll();
            QElapsedTimer clock;
            clock.start();
            // The first of every four lives long enough to lose something.
            const int lifeMs = static_cast<int>(random() % (round % 4 == 0 ? 3500 : 900));
            int madeLongAgo = 0;
            while (clock.elapsed() < lifeMs) {
                driver.waitForReadyRead(10);
                printed += driver.readAll();
                // Writing may take as long on a machine that is held up.
                if (lifeMs - clock.elapsed() >= 2000)
                    madeLongAgo = printed.count('\n');
            }
            driver.kill();
            QVERIFY(driver.waitForFinished());
            checkFolder(folder.path());
            if (QTest::currentTestFailed())
                return;
            const int kept = keptIn(folder.path());
            QVERIFY2(kept >= madeLongAgo,
                     qPrintable(QString("%1 kept of %2").arg(kept).arg(madeLongAgo)));
            mostKept = std::max(mostKept, kept);
        }
        QVERIFY2(mostKept > 0, "nothing was ever kept: nothing was tested");
        trustRow(QStringLiteral("Kills of a review that edits, saves and copies"),
                 QStringLiteral("kills after which all files were whole and all but the last "
                                "moments of the work was kept"),
                 QStringLiteral("%1 of %1").arg(kills));
    }
};

QTEST_GUILESS_MAIN(SurvivalTest)
#include "SurvivalTest.moc"
