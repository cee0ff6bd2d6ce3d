#include "Log/LogParser.h"
#include "Project/ProjectFileLoader.h"
#include "Review/Review.h"
#include "Support/SourceBackend.h"
#include "Video/VideoPlayer.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>
#include <optional>
#include <utility>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(corv::Failure)

namespace {

/// Opens no video, for a reason.
class RefusingBackend : public SourceBackend
{
public:
    explicit RefusingBackend(Failure reason) : SourceBackend({}), m_reason(std::move(reason)) {}

    Result<std::unique_ptr<FrameSource>> openSource(const QString&) const override
    {
        return m_reason;
    }

private:
    const Failure m_reason;
};

} // namespace

/// What a review says of a video that is there and does not open.
class RefusedVideoTest : public QObject
{
    Q_OBJECT

private slots:
    void theReasonIsSaid_data()
    {
        QTest::addColumn<Failure>("reason");
        QTest::addColumn<Failure>("said");
        const Failure memory{Failure::Kind::noMemory, "There is not enough memory for it."};
        QTest::newRow("no memory") << memory << memory;
        // What of the contents is wrong is looked up in the file.
        QTest::newRow("damage") << Failure{Failure::Kind::notRecognised, "It has no picture."}
                                << Failure{Failure::Kind::damaged,
                                           "The video VIDEO cannot be opened: it is cut short or "
                                           "damaged."};
    }

    void theReasonIsSaid()
    {
        QFETCH(Failure, reason);
        QFETCH(Failure, said);
        const QTemporaryDir folder;
        const QString path = folder.filePath("video.mov");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("....ftyp") == 8);
        file.close();

        LogParser parser;
        VideoPlayer player(std::make_shared<RefusingBackend>(reason));
        ProjectFileLoader files;
        Review review;
        review.setVideoPlayer(&player);
        review.setLogParser(&parser);
        review.setProjectFiles(&files);
        QStringList problems;
        connect(&review, &Review::problem,
                [&problems](const QString&, const QString& text) { problems << text; });
        std::optional<Failure> failed;
        connect(&review, &Review::openFailed,
                [&failed](const Failure& failure) { failed = failure; });
        review.openFlight(path, QString());
        QTRY_VERIFY(failed.has_value());
        QCOMPARE(failed->kind, said.kind);
        QCOMPARE(failed->sentence, QString(said.sentence).replace("VIDEO", path));
        QCOMPARE(problems.size(), 1);
        QCOMPARE(problems[0].contains(reason.sentence), reason.kind == said.kind);
    }
};

QTEST_MAIN(RefusedVideoTest)
#include "RefusedVideoTest.moc"
