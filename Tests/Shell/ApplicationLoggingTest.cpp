#include "Shell/applicationLogging.h"

#include <QRegularExpression>
#include <QStandardPaths>
#include <QtTest>
#include <thread>
#include <vector>

using corv::ApplicationLogging;

namespace {
constexpr qint64 limit = 16'777'216;
}

class ApplicationLoggingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void rotatesAtTheLimit_data();
    void rotatesAtTheLimit();
    void replacesTheOldGeneration();
    void writesThePattern();
    void keepsTheLinesOfManyThreadsWhole();
    void runsOnWithoutAFolder();

private:
    QtMessageHandler m_testHandler = nullptr;

    QString path() const { return ApplicationLogging::instance().filePath(); }
    static QByteArray contents(const QString& path);
    static void write(const QString& path, qint64 size, char fill);
};

QByteArray ApplicationLoggingTest::contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ApplicationLoggingTest::write(const QString& path, qint64 size, char fill)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray(static_cast<int>(size), fill)), size);
}

void ApplicationLoggingTest::initTestCase()
{
    m_testHandler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(m_testHandler);
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QCoreApplication::setApplicationName(QStringLiteral("Vistrel-logging-test"));
    QCOMPARE(QFileInfo(path()).fileName(), QStringLiteral("Vistrel.log"));
}

void ApplicationLoggingTest::init()
{
    qInstallMessageHandler(m_testHandler);
    QFileInfo(path()).dir().removeRecursively();
    QVERIFY(QFileInfo(path()).dir().mkpath(QStringLiteral(".")));
}

void ApplicationLoggingTest::cleanup()
{
    qInstallMessageHandler(m_testHandler);
    QFileInfo(path()).dir().removeRecursively();
}

void ApplicationLoggingTest::rotatesAtTheLimit_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("rotated");
    QTest::newRow("one byte less") << limit - 1 << false;
    QTest::newRow("exactly") << limit << true;
    QTest::newRow("more") << limit + 1 << true;
}

void ApplicationLoggingTest::rotatesAtTheLimit()
{
    QFETCH(qint64, size);
    QFETCH(bool, rotated);
    write(path(), size, 'a');
    ApplicationLogging::instance().init();
    QCOMPARE(QFile::exists(path() + QStringLiteral(".old")), rotated);
    qInfo() << "after the start";
    QVERIFY(contents(path()).endsWith("after the start\n"));
    QCOMPARE(QFileInfo(path()).size() > limit - 1, !rotated);
}

void ApplicationLoggingTest::replacesTheOldGeneration()
{
    write(path() + QStringLiteral(".old"), 10, 'o');
    write(path(), limit, 'n');
    ApplicationLogging::instance().init();
    const QByteArray old = contents(path() + QStringLiteral(".old"));
    QCOMPARE(old.size(), static_cast<int>(limit));
    QVERIFY(old.startsWith('n'));
    QCOMPARE(QFileInfo(path()).size(), qint64(0));
}

void ApplicationLoggingTest::writesThePattern()
{
    ApplicationLogging::instance().init();
    qWarning() << "a warning";
    const QString line = QString::fromUtf8(contents(path()));
    const QRegularExpression pattern(
        QStringLiteral("^\\[default\\] \\[warning\\] \\[[^]]+\\] \\[\\d+\\] "
                       "\\[.*writesThePattern.*\\] a warning\n$"));
    QVERIFY2(pattern.match(line).hasMatch(), qPrintable(line));
}

void ApplicationLoggingTest::keepsTheLinesOfManyThreadsWhole()
{
    ApplicationLogging::instance().init();
    constexpr int threadCount = 8;
    constexpr int lineCount = 500;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            const QString text = QString(200, QLatin1Char(static_cast<char>('a' + thread)));
            for (int line = 0; line < lineCount; ++line)
                qInfo().noquote() << text;
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    const QList<QByteArray> lines = contents(path()).trimmed().split('\n');
    QCOMPARE(lines.size(), threadCount * lineCount);
    for (const QByteArray& line : lines) {
        const QByteArray text = line.mid(line.lastIndexOf(' ') + 1);
        QCOMPARE(text, QByteArray(200, text.at(0)));
    }
}

void ApplicationLoggingTest::runsOnWithoutAFolder()
{
    const QString folder = QFileInfo(path()).path();
    QVERIFY(QDir(folder).removeRecursively());
    write(folder, 1, 'x'); // a file where the folder should be
    QTest::ignoreMessage(
        QtWarningMsg, qPrintable(QStringLiteral("Unable to create folder:  \"%1\"").arg(folder)));
    ApplicationLogging::instance().init();
    QVERIFY(QFile::remove(folder));

    QVERIFY(QDir().mkpath(path())); // a folder where the file should be
    QTest::ignoreMessage(
        QtWarningMsg, qPrintable(QStringLiteral("Unable to open log file :  \"%1\"").arg(path())));
    ApplicationLogging::instance().init();
}

QTEST_GUILESS_MAIN(ApplicationLoggingTest)
#include "ApplicationLoggingTest.moc"
