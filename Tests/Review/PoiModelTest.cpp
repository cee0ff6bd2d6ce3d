#include "../Timeline/timelineSupport.h"

#include "Review/PoiModel.h"

#include <QAbstractItemModelTester>
#include <QUndoStack>
#include <random>

using namespace corv;
using namespace corv::test;

namespace {

/// A model with undo, whose frames the test delivers.
struct Pois
{
    Pois()
    {
        model.setVideoPlayer(&player);
        model.setUndoStack(&stack);
    }

    QStringList names() const
    {
        QStringList names;
        for (const Poi& poi : model.pois())
            names << QStringLiteral("%1 %2").arg(msOfTime(poi.time)).arg(poi.name);
        return names;
    }

    FramePlayer player;
    QUndoStack stack;
    PoiModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
};

QVariantMap entry(int ms, const QString& name)
{
    return {{"time", ms}, {"name", name}, {"comment", name + "!"}};
}

/// One at each of the first milliseconds.
QVariantList entries(size_t count)
{
    QVariantList list;
    for (size_t i = 0; i < count; ++i)
        list.append(entry(static_cast<int>(i), QStringLiteral("A")));
    return list;
}

LogBuilder logWithPois(const QList<int>& videoTimesMs)
{
    LogBuilder log = recordingLog(60000);
    log.addGroup("point_of_interest", 3, {{"point_of_interest", "UINT32", 1}});
    for (const int ms : videoTimesMs)
        log.addPacket(3, LogBuilder::u32(static_cast<unsigned>(videoStartInLogMs + ms)));
    return log;
}

} // namespace

/// The points of interest: sorted, undoable, and with a thumbnail once their frame has been read.
class PoiModelTest : public QObject
{
    Q_OBJECT

private slots:
    void sortsByTimeAndGivesRoles()
    {
        Pois pois;
        pois.model.setFromList({entry(3000, "B"), entry(1000, "A"), entry(3000, "C")});
        QCOMPARE(pois.names(), (QStringList{"1000 A", "3000 C"}));
        const QModelIndex second = pois.model.index(1);
        QCOMPARE(second.data(PoiModel::TimeRole).toInt(), 3000);
        QCOMPARE(second.data(PoiModel::CommentRole).toString(), QString("C!"));
        QCOMPARE(second.data(PoiModel::OriginRole).toInt(), static_cast<int>(PoiOrigin::project));
        QVERIFY(second.data(PoiModel::ThumbnailRole).value<QImage>().isNull());
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        QVERIFY(!second.data(PoiModel::ThumbnailRole).value<QImage>().isNull());
        QVERIFY(!pois.stack.canUndo());
    }

    void undoesAndRedoesEachStep()
    {
        Pois pois;
        pois.model.setFromList({entry(1000, "Hot cell"), entry(2000, "Rust")});
        const QStringList start = pois.names();

        pois.model.create(timeAt(1500));
        QCOMPARE(pois.stack.undoText(), QString("create 'New POI'"));
        pois.model.setTexts(timeAt(1500), "Crack", "deep");
        QCOMPARE(pois.stack.undoText(), QString("edit 'New POI'"));
        pois.model.move(timeAt(1500), timeAt(2000));
        QCOMPARE(pois.stack.undoText(), QString("move 'Crack'"));
        QCOMPARE(pois.names(), (QStringList{"1000 Hot cell", "2000 Crack"}));
        pois.model.remove(timeAt(1000));
        QCOMPARE(pois.stack.undoText(), QString("delete 'Hot cell'"));

        pois.stack.undo();
        pois.stack.undo();
        QCOMPARE(pois.names(), (QStringList{"1000 Hot cell", "1500 Crack", "2000 Rust"}));
        pois.stack.undo();
        pois.stack.undo();
        QCOMPARE(pois.names(), start);
        while (pois.stack.canRedo())
            pois.stack.redo();
        QCOMPARE(pois.names(), QStringList("2000 Crack"));
    }

    void undoingAMoveOntoItsOwnPlaceBringsItBack()
    {
        Pois pois;
        pois.model.setFromList({entry(1000, "A")});
        pois.model.move(timeAt(1000), timeAt(1000));
        QCOMPARE(pois.model.count(), 0);
        pois.stack.undo();
        QCOMPARE(pois.names(), QStringList("1000 A"));
    }

    void aDeletedOneComesBackWithItsThumbnail()
    {
        Pois pois;
        pois.model.setFromList({entry(1000, "A")});
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        pois.model.remove(timeAt(1000));
        pois.stack.undo();
        QVERIFY(!pois.model.find(timeAt(1000))->thumbnail.isNull());
        QVERIFY(pois.player.requests.empty());
    }

    void undoingAnEditKeepsTheThumbnailThatCameSince()
    {
        Pois pois;
        pois.model.setFromList({entry(1000, "A")});
        pois.model.setTexts(timeAt(1000), "B", "");
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        pois.stack.undo();
        QVERIFY(!pois.model.find(timeAt(1000))->thumbnail.isNull());
        QCOMPARE(pois.names(), QStringList("1000 A"));
    }

    void aThousandRandomStepsComeBack()
    {
        Pois pois;
        std::mt19937 random(7);
        const auto anyTime = [&random] { return timeAt(static_cast<int>(random() % 40) * 100); };
        std::vector<QStringList> states{pois.names()};
        while (states.size() <= 1000) {
            const int before = pois.stack.count();
            const QTime time = anyTime();
            switch (random() % 4) {
            case 0:
                if (!pois.model.find(time))
                    pois.model.create(time);
                break;
            case 1:
                pois.model.remove(time);
                break;
            case 2:
                pois.model.setTexts(time, QString::number(random() % 1000), "");
                break;
            default:
                if (pois.model.find(time))
                    pois.model.move(time, anyTime());
            }
            if (pois.stack.count() > before)
                states.push_back(pois.names());
        }
        QCOMPARE(pois.stack.count(), 1000);
        for (size_t i = states.size() - 1; i > 0; --i) {
            QCOMPARE(pois.names(), states[i]);
            pois.stack.undo();
        }
        QCOMPARE(pois.names(), states.front());
        for (size_t i = 1; i < states.size(); ++i) {
            pois.stack.redo();
            QCOMPARE(pois.names(), states[i]);
        }
    }

    void deletingSeveralIsOneStep()
    {
        Pois pois;
        pois.model.setFromList({entry(1000, "a"), entry(2000, "b"), entry(3000, "c")});
        const QStringList all = pois.names();
        pois.model.removeAll({timeAt(3000), timeAt(1000), timeAt(3000), timeAt(7000), QTime()});
        QCOMPARE(pois.names(), QStringList("2000 b"));
        QCOMPARE(pois.stack.count(), 1);
        QCOMPARE(pois.stack.undoText(), QString("delete 2 points of interest"));
        pois.stack.undo();
        QCOMPARE(pois.names(), all);
        pois.model.removeAll({timeAt(2000)});
        QCOMPARE(pois.stack.undoText(), QString("delete 'b'"));
        pois.model.removeAll({timeAt(2000)});
        QCOMPARE(pois.stack.count(), 1);
    }

    void aRestoreFromTheLogIsOneStep()
    {
        Pois pois;
        LogParser parser;
        pois.model.setLogParser(&parser);
        QVERIFY(parse(parser, logWithPois({-5, 1000, 2000, 70000}), 60000));
        QCOMPARE(pois.model.addableFromLog(60000), 2);
        pois.model.addAllFromLog([] { return 60000; });
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        QCOMPARE(pois.names(), (QStringList{"1000 POI 2", "2000 POI 3"}));
        QCOMPARE(pois.model.pois().front().origin, PoiOrigin::log);
        QCOMPARE(pois.model.missingInLog(60000), 0);
        QCOMPARE(pois.stack.count(), 1);
        QCOMPARE(pois.stack.undoText(), QString("restore from the log"));
        pois.stack.undo();
        QCOMPARE(pois.model.count(), 0);
        QCOMPARE(pois.model.missingInLog(60000), 2);
    }

    void loadingFromTheLogIsNoStep()
    {
        Pois pois;
        LogParser parser;
        pois.model.setLogParser(&parser);
        QVERIFY(parse(parser, logWithPois({1000}), 60000));
        pois.model.addMissingFromLog(PoiModel::As::loading);
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        QCOMPARE(pois.model.count(), 1);
        QVERIFY(!pois.stack.canUndo());
    }

    void lateFramesOfAnEarlierFlightAreDropped()
    {
        Pois pois;
        LogParser parser;
        pois.model.setLogParser(&parser);
        QVERIFY(parse(parser, logWithPois({1000}), 60000));
        pois.model.addMissingFromLog(PoiModel::As::loading);
        pois.model.clear();
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        QCOMPARE(pois.model.count(), 0);
    }

    void heldThumbnailsAreAskedForOnceReleased()
    {
        Pois pois;
        pois.model.holdThumbnails();
        pois.model.setFromList({entry(1000, "A"), entry(2000, "B")});
        QVERIFY(pois.player.requests.empty());
        pois.model.releaseThumbnails();
        QCOMPARE(pois.player.requestedTimes(), (std::vector<QTime>{timeAt(1000), timeAt(2000)}));
    }

    void refreshesOneThumbnailAfterTheOther()
    {
        Pois pois;
        pois.model.setFromList({entry(1000, "A"), entry(2000, "B"), entry(3000, "C")});
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        const auto colour = [&pois](int ms) {
            return QColor(pois.model.find(timeAt(ms))->thumbnail.pixel(5, 5));
        };
        const auto asked = [&pois] { return pois.player.requestedTimes(); };
        const auto one = [](int ms) { return std::vector<QTime>{timeAt(ms)}; };

        pois.model.refreshThumbnails();
        QCOMPARE(asked(), one(1000));
        QCOMPARE(colour(1000), QColor(Qt::green)); // the old one, until the new one is there
        pois.player.answer(frameOf(Qt::red));
        deliver();
        QCOMPARE(colour(1000), QColor(Qt::red));
        QCOMPARE(asked(), one(2000));
        // Another change begins again, behind the one that is on its way.
        pois.model.refreshThumbnails();
        QCOMPARE(asked(), one(2000));
        pois.player.answer(frameOf(Qt::red));
        deliver();
        QCOMPARE(asked(), one(1000));
        pois.player.answer(frameOf(Qt::blue));
        deliver();
        // Neither one that cannot be read nor one that is gone ends it.
        pois.player.answer(QImage());
        deliver();
        QCOMPARE(colour(2000), QColor(Qt::red));
        QCOMPARE(asked(), one(3000));
        pois.model.remove(timeAt(3000));
        pois.player.answer(frameOf(Qt::blue));
        deliver();
        QVERIFY(asked().empty());
        QCOMPARE(colour(1000), QColor(Qt::blue));
        pois.model.refreshThumbnails();
        QCOMPARE(asked(), one(1000));
    }

    void aRefreshEndsWithItsFlight()
    {
        Pois pois;
        pois.model.setFromList({entry(1000, "A"), entry(2000, "B")});
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        pois.model.refreshThumbnails();
        pois.model.clear();
        pois.model.setFromList({entry(1000, "C")});
        pois.player.answer(frameOf(Qt::red));
        deliver();
        QCOMPARE(pois.player.requestedTimes(), std::vector<QTime>{timeAt(1000)});
        QVERIFY(pois.model.find(timeAt(1000))->thumbnail.isNull());
        pois.player.answer(frameOf(Qt::green));
        deliver();
        // The next flight's is not held up by it.
        pois.model.refreshThumbnails();
        QCOMPARE(pois.player.requestedTimes(), std::vector<QTime>{timeAt(1000)});
    }

    void thumbnailsOfManyAreFetchedOnceShown()
    {
        Pois pois;
        QSignalSpy changed(&pois.model, &PoiModel::changed);
        pois.model.holdThumbnails();
        pois.model.setFromList(entries(PoiModel::fetchedUnseen + 1));
        changed.clear();
        pois.model.releaseThumbnails();
        QCOMPARE(changed.count(), 1); // what shows them asks for them now
        QVERIFY(pois.player.requests.empty());

        pois.model.showThumbnails({timeAt(7), QTime(), timeAt(5), timeAt(99999999), timeAt(7)});
        QCOMPARE(pois.player.requestedTimes(), (std::vector<QTime>{timeAt(7), timeAt(5)}));
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        QVERIFY(!pois.model.find(timeAt(5))->thumbnail.isNull());
        pois.model.showThumbnails({timeAt(5), timeAt(7)});
        QVERIFY(pois.player.requests.empty());
        pois.model.showThumbnail(timeAt(9));
        QCOMPARE(pois.player.requestedTimes(), std::vector<QTime>{timeAt(9)});
    }

    void thumbnailsOfFewAreFetchedUnseen()
    {
        Pois pois;
        pois.model.setFromList(entries(PoiModel::fetchedUnseen));
        QCOMPARE(pois.player.requests.size(), PoiModel::fetchedUnseen);
        QVERIFY(!pois.model.hasUnseen());
    }

    void whatIsShownLastIsFetchedFirst()
    {
        Pois pois;
        pois.model.setFromList(entries(3000));
        std::vector<QTime> left;
        for (int ms = 0; ms < 100; ++ms)
            left.push_back(timeAt(ms));
        pois.model.showThumbnails(left);
        const size_t onTheirWay = pois.player.requests.size();
        QVERIFY2(onTheirWay < 20, qPrintable(QString::number(onTheirWay)));
        pois.model.showThumbnails({timeAt(2500), timeAt(50)});
        QCOMPARE(pois.player.requests.size(), onTheirWay);
        // One that is missing makes room for the next as well.
        pois.player.answer(QImage());
        pois.player.answer(frameOf(Qt::green));
        deliver();
        QCOMPARE(pois.player.requests.at(onTheirWay - 2).time, timeAt(2500));
        QCOMPARE(pois.player.requests.back().time, timeAt(50));
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        QVERIFY(pois.player.requests.empty());
        QVERIFY(pois.model.isUnseen(timeAt(51)));
    }

    void thumbnailsOfManyAreRefreshedOnceShown()
    {
        Pois pois;
        pois.model.setFromList(entries(3000));
        pois.model.showThumbnails({timeAt(5)});
        pois.player.answerAll(frameOf(Qt::green));
        deliver();
        QSignalSpy changed(&pois.model, &PoiModel::changed);
        pois.model.refreshThumbnails();
        QCOMPARE(changed.count(), 1);
        QVERIFY(pois.player.requests.empty());
        QVERIFY(!pois.model.find(timeAt(5))->thumbnail.isNull()); // the old one, until then
        pois.model.showThumbnails({timeAt(5)});
        QCOMPARE(pois.player.requestedTimes(), std::vector<QTime>{timeAt(5)});
    }

    void whatIsShownOfAnEarlierFlightIsForgotten()
    {
        Pois pois;
        pois.model.setFromList(entries(3000));
        pois.model.showThumbnails({timeAt(1), timeAt(2)});
        pois.model.clear();
        QVERIFY(!pois.model.hasUnseen());
        pois.model.setFromList(entries(3000));
        pois.player.answerAll(frameOf(Qt::red));
        deliver();
        QVERIFY(pois.model.find(timeAt(1))->thumbnail.isNull());
        pois.model.showThumbnails({timeAt(1)});
        QCOMPARE(pois.player.requestedTimes(), std::vector<QTime>{timeAt(1)});
    }

    void deletingManyAndUndoingItFetchesNone()
    {
        // Without the tester of Pois, which looks at all rows after each change.
        FramePlayer player;
        QUndoStack stack;
        PoiModel model;
        model.setVideoPlayer(&player);
        model.setUndoStack(&stack);
        model.setFromList(entries(3000));
        std::vector<QTime> all;
        for (const Poi& poi : model.pois())
            all.push_back(poi.time);
        model.removeAll(all);
        stack.undo();
        QCOMPARE(model.count(), 3000);
        QVERIFY(player.requests.empty());
        QVERIFY(model.isUnseen(timeAt(2999)));
    }

    void aHundredThousandFromAListTakeNoMinutes()
    {
        Pois pois;
        QVariantList list;
        for (int i = 0; i < 100000; ++i)
            list.append(entry((i * 7919) % 80000000, "A"));
        pois.model.holdThumbnails();
        pois.model.setFromList(list);
        QCOMPARE(pois.model.count(), 100000);
    }
};

QTEST_MAIN(PoiModelTest)
#include "PoiModelTest.moc"
