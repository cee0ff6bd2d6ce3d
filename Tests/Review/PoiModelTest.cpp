#include "../Timeline/timelineSupport.h"

#include "Review/PoiModel.h"

#include <QAbstractItemModelTester>
#include <QUndoStack>
#include <random>

using namespace corv;
using namespace corv::test;

namespace {

/// A model with undo, whose frames the test delivers.
struct Marks
{
    Marks()
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
        Marks marks;
        marks.model.setFromList({entry(3000, "B"), entry(1000, "A"), entry(3000, "C")});
        QCOMPARE(marks.names(), (QStringList{"1000 A", "3000 C"}));
        const QModelIndex second = marks.model.index(1);
        QCOMPARE(second.data(PoiModel::TimeRole).toInt(), 3000);
        QCOMPARE(second.data(PoiModel::CommentRole).toString(), QString("C!"));
        QCOMPARE(second.data(PoiModel::OriginRole).toInt(), static_cast<int>(PoiOrigin::project));
        QVERIFY(second.data(PoiModel::ThumbnailRole).value<QImage>().isNull());
        marks.player.answerAll(frameOf(Qt::green));
        deliver();
        QVERIFY(!second.data(PoiModel::ThumbnailRole).value<QImage>().isNull());
        QVERIFY(!marks.stack.canUndo());
    }

    void undoesAndRedoesEachStep()
    {
        Marks marks;
        marks.model.setFromList({entry(1000, "Hot cell"), entry(2000, "Rust")});
        const QStringList start = marks.names();

        marks.model.create(timeAt(1500));
        QCOMPARE(marks.stack.undoText(), QString("create 'New POI'"));
        marks.model.setTexts(timeAt(1500), "Crack", "deep");
        QCOMPARE(marks.stack.undoText(), QString("edit 'New POI'"));
        marks.model.move(timeAt(1500), timeAt(2000));
        QCOMPARE(marks.stack.undoText(), QString("move 'Crack'"));
        QCOMPARE(marks.names(), (QStringList{"1000 Hot cell", "2000 Crack"}));
        marks.model.remove(timeAt(1000));
        QCOMPARE(marks.stack.undoText(), QString("delete 'Hot cell'"));

        marks.stack.undo();
        marks.stack.undo();
        QCOMPARE(marks.names(), (QStringList{"1000 Hot cell", "1500 Crack", "2000 Rust"}));
        marks.stack.undo();
        marks.stack.undo();
        QCOMPARE(marks.names(), start);
        while (marks.stack.canRedo())
            marks.stack.redo();
        QCOMPARE(marks.names(), QStringList("2000 Crack"));
    }

    void undoingAMoveOntoItsOwnPlaceBringsItBack()
    {
        Marks marks;
        marks.model.setFromList({entry(1000, "A")});
        marks.model.move(timeAt(1000), timeAt(1000));
        QCOMPARE(marks.model.count(), 0);
        marks.stack.undo();
        QCOMPARE(marks.names(), QStringList("1000 A"));
    }

    void aDeletedOneComesBackWithItsThumbnail()
    {
        Marks marks;
        marks.model.setFromList({entry(1000, "A")});
        marks.player.answerAll(frameOf(Qt::green));
        deliver();
        marks.model.remove(timeAt(1000));
        marks.stack.undo();
        QVERIFY(!marks.model.find(timeAt(1000))->thumbnail.isNull());
        QVERIFY(marks.player.requests.empty());
    }

    void undoingAnEditKeepsTheThumbnailThatCameSince()
    {
        Marks marks;
        marks.model.setFromList({entry(1000, "A")});
        marks.model.setTexts(timeAt(1000), "B", "");
        marks.player.answerAll(frameOf(Qt::green));
        deliver();
        marks.stack.undo();
        QVERIFY(!marks.model.find(timeAt(1000))->thumbnail.isNull());
        QCOMPARE(marks.names(), QStringList("1000 A"));
    }

    void aThousandRandomStepsComeBack()
    {
        Marks marks;
        std::mt19937 random(7);
        const auto anyTime = [&random] { return timeAt(static_cast<int>(random() % 40) * 100); };
        std::vector<QStringList> states{marks.names()};
        while (states.size() <= 1000) {
            const int before = marks.stack.count();
            const QTime time = anyTime();
            switch (random() % 4) {
            case 0:
                if (!marks.model.find(time))
                    marks.model.create(time);
                break;
            case 1:
                marks.model.remove(time);
                break;
            case 2:
                marks.model.setTexts(time, QString::number(random() % 1000), "");
                break;
            default:
                if (marks.model.find(time))
                    marks.model.move(time, anyTime());
            }
            if (marks.stack.count() > before)
                states.push_back(marks.names());
        }
        QCOMPARE(marks.stack.count(), 1000);
        for (size_t i = states.size() - 1; i > 0; --i) {
            QCOMPARE(marks.names(), states[i]);
            marks.stack.undo();
        }
        QCOMPARE(marks.names(), states.front());
        for (size_t i = 1; i < states.size(); ++i) {
            marks.stack.redo();
            QCOMPARE(marks.names(), states[i]);
        }
    }

    void aRestoreFromTheLogIsOneStep()
    {
        Marks marks;
        LogParser parser;
        marks.model.setLogParser(&parser);
        QVERIFY(parse(parser, logWithPois({-5, 1000, 2000, 70000}), 60000));
        QCOMPARE(marks.model.addableFromLog(60000), 2);
        marks.model.addAllFromLog([] { return 60000; });
        marks.player.answerAll(frameOf(Qt::green));
        deliver();
        QCOMPARE(marks.names(), (QStringList{"1000 POI 2", "2000 POI 3"}));
        QCOMPARE(marks.model.pois().front().origin, PoiOrigin::log);
        QCOMPARE(marks.model.missingInLog(60000), 0);
        QCOMPARE(marks.stack.count(), 1);
        QCOMPARE(marks.stack.undoText(), QString("restore from the log"));
        marks.stack.undo();
        QCOMPARE(marks.model.count(), 0);
        QCOMPARE(marks.model.missingInLog(60000), 2);
    }

    void loadingFromTheLogIsNoStep()
    {
        Marks marks;
        LogParser parser;
        marks.model.setLogParser(&parser);
        QVERIFY(parse(parser, logWithPois({1000}), 60000));
        marks.model.addMissingFromLog(PoiModel::As::loading);
        marks.player.answerAll(frameOf(Qt::green));
        deliver();
        QCOMPARE(marks.model.count(), 1);
        QVERIFY(!marks.stack.canUndo());
    }

    void lateFramesOfAnEarlierFlightAreDropped()
    {
        Marks marks;
        LogParser parser;
        marks.model.setLogParser(&parser);
        QVERIFY(parse(parser, logWithPois({1000}), 60000));
        marks.model.addMissingFromLog(PoiModel::As::loading);
        marks.model.clear();
        marks.player.answerAll(frameOf(Qt::green));
        deliver();
        QCOMPARE(marks.model.count(), 0);
    }

    void heldThumbnailsAreAskedForOnceReleased()
    {
        Marks marks;
        marks.model.holdThumbnails();
        marks.model.setFromList({entry(1000, "A"), entry(2000, "B")});
        QVERIFY(marks.player.requests.empty());
        marks.model.releaseThumbnails();
        QCOMPARE(marks.player.requestedTimes(), (std::vector<QTime>{timeAt(1000), timeAt(2000)}));
    }

    void aHundredThousandFromAListTakeNoMinutes()
    {
        Marks marks;
        QVariantList list;
        for (int i = 0; i < 100000; ++i)
            list.append(entry((i * 7919) % 80000000, "A"));
        marks.model.holdThumbnails();
        marks.model.setFromList(list);
        QCOMPARE(marks.model.count(), 100000);
    }
};

QTEST_MAIN(PoiModelTest)
#include "PoiModelTest.moc"
