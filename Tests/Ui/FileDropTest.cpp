#include "ReviewSuite.h"

#include <QDropEvent>
#include <QFile>
#include <QMimeData>

using namespace corv::test;

/// Files dropped on the main window.
class FileDropTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void opensAVideo();
    void opensAVideoWithItsLog();
    void importsALogIntoTheOpenVideo();
    void opensAProject();
    void refusesWhatItCannotOpen_data();
    void refusesWhatItCannotOpen();
    void leavesTextAlone();
    void leavesADropAloneWhoseSourceHasEnded();
    void leavesTheFilesWithTheirSource();

private:
    void drop(const QStringList& paths);
    bool dropData(const QMimeData& data);
};

bool FileDropTest::dropData(const QMimeData& data)
{
    QQuickWindow* window = m_ui->window();
    const QPoint middle(window->width() / 2, window->height() / 2);
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent event(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
    return event.isAccepted();
}

void FileDropTest::drop(const QStringList& paths)
{
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls << QUrl::fromLocalFile(path);
    QMimeData data;
    data.setUrls(urls);
    QVERIFY(dropData(data));
}

void FileDropTest::opensAVideo()
{
    // A name with all that a URL escapes.
    const QString path =
        FlightMedia::instance().newFolder() + QStringLiteral("/Flug #1 über 100%.MP4");
    QVERIFY(QFile::copy(FlightMedia::instance().video(), path));
    drop({path});
    QTRY_VERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->evaluate(QStringLiteral("videoPlayer.source")).toString(), path);
}

void FileDropTest::opensAVideoWithItsLog()
{
    drop({FlightMedia::instance().log(), FlightMedia::instance().video()});
    QTRY_COMPARE(m_ui->evaluate(QStringLiteral("LogParser.source")).toString(),
                 FlightMedia::instance().log());
    QTRY_VERIFY(!m_ui->evaluate(QStringLiteral("LogParser.isParsing")).toBool());
    QVERIFY(m_ui->hasVideo());
    QVERIFY(!UiFixture::messageBox());
}

void FileDropTest::importsALogIntoTheOpenVideo()
{
    QVERIFY(m_ui->openVideo());
    drop({FlightMedia::instance().log()});
    QTRY_COMPARE(m_ui->evaluate(QStringLiteral("LogParser.source")).toString(),
                 FlightMedia::instance().log());
    QVERIFY(m_ui->hasVideo());
}

void FileDropTest::opensAProject()
{
    QVERIFY(m_ui->openVideo());
    const QString path = FlightMedia::instance().newFolder() + QStringLiteral("/work.ecor");
    m_ui->call("doSaveProject", {path});
    m_ui->call("goCloseProject");
    QVERIFY(!m_ui->hasVideo());
    drop({path});
    QTRY_VERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->get(QStringLiteral("currentProject"), "filePath").toString(), path);
}

void FileDropTest::refusesWhatItCannotOpen_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("message");
    QTest::newRow("a picture")
        << "/somewhere/picture.jpg"
        << "Invalid file extension, choose a \".mov\", \".avi\", \".3gp\" or "
           "\".mp4\" file";
    QTest::newRow("a log without a video") << "/somewhere/flight.log"
                                           << "A flight log is added to an open video. Open the "
                                              "video first, or drop both together.";
}

void FileDropTest::refusesWhatItCannotOpen()
{
    QFETCH(QString, name);
    QFETCH(QString, message);
    drop({name});
    QTRY_VERIFY(UiFixture::messageBox());
    QCOMPARE(UiFixture::messageBox()->text(), message);
    QVERIFY(UiFixture::dismissMessageBox());
    QVERIFY(!m_ui->hasVideo());
}

void FileDropTest::leavesTextAlone()
{
    QMimeData data;
    data.setText(QStringLiteral("only words"));
    QVERIFY(!dropData(data));
}

void FileDropTest::leavesADropAloneWhoseSourceHasEnded()
{
    // It has announced files, and no one answers when they are fetched.
    QMimeData data;
    data.setData(QStringLiteral("text/uri-list"), QByteArray());
    QSignalSpy drops(m_ui->item("fileDrop"), SIGNAL(dropped(QQuickDropEvent*)));
    QVERIFY(dropData(data));
    QCOMPARE(drops.size(), 1);
    // What a drop opens is opened by the events after it.
    bool isOver = false;
    QTimer::singleShot(0, m_ui->window(), [&isOver] { isOver = true; });
    QTRY_VERIFY(isOver);
    QVERIFY(!UiFixture::messageBox());
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

/// A file manager offers to copy or to move, and proposes the move.
void FileDropTest::leavesTheFilesWithTheirSource()
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(FlightMedia::instance().video())});
    const auto answerTo = [this](QDropEvent&& event) {
        event.setDropAction(Qt::MoveAction);
        QCoreApplication::sendEvent(m_ui->window(), &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    };
    const QPoint middle(m_ui->window()->width() / 2, m_ui->window()->height() / 2);
    const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction;
    QCOMPARE(answerTo(QDragEnterEvent(middle, offered, &data, Qt::LeftButton, Qt::NoModifier)),
             Qt::CopyAction);
    QCOMPARE(answerTo(QDragMoveEvent(middle + QPoint(1, 1), offered, &data, Qt::LeftButton,
                                     Qt::NoModifier)),
             Qt::CopyAction);
    QCOMPARE(answerTo(QDropEvent(middle, offered, &data, Qt::LeftButton, Qt::NoModifier)),
             Qt::CopyAction);
    QTRY_VERIFY(m_ui->hasVideo());
}

QTEST_MAIN(FileDropTest)
#include "FileDropTest.moc"
