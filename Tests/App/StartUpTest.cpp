#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

// The program itself, started as a process of its own with a home of its own, observed through the
// log that it writes.
class StartUpTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void opensTheFirstArgument_data();
    void opensTheFirstArgument();
    void answersWithoutAWindow_data();
    void answersWithoutAWindow();
    void saysThatItsMemoryIsLimited_data();
    void saysThatItsMemoryIsLimited();
    void recordsTheSystemOnce();
    void sweepsWhatAKilledReportLeft();
    void saysThatTheLastRunCrashed();
    void saysThatTheInterfaceIsMissing();
    void saysThatNothingCanBeDrawn();
    // Last: the display keeps a key down whose release finds no window any more.
    void startsWithoutArgumentsAndQuits();

private:
    void start(const QStringList& arguments);
    QString log() const;
    QString dataFile(const QString& name) const
    {
        return m_home->filePath(QStringLiteral("data/Corvenity/Vistrel/") + name);
    }

    QStringList m_wrapper; ///< a program with its words that starts the program, if any
    QString m_platform;    ///< of windows, where it is not that of the test
    QString m_modules;     ///< a folder of modules that comes before that of the system
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_program;
};

namespace {

// The last thing of a start, a second into the event loop.
const QString updateCheck = QStringLiteral("update check");

} // namespace

void StartUpTest::init()
{
    m_wrapper.clear();
    m_modules.clear();
    m_platform.clear();
    m_home = std::make_unique<QTemporaryDir>();
    m_program = std::make_unique<QProcess>();
}

void StartUpTest::cleanup()
{
    m_program->kill();
    m_program->waitForFinished();
    m_program.reset();
    m_home.reset();
}

void StartUpTest::start(const QStringList& arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home->filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"),
                       m_home->filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("TMPDIR"), m_home->path());
    if (!m_platform.isEmpty()) {
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), m_platform);
        environment.remove(QStringLiteral("DISPLAY"));
    }
    if (!m_modules.isEmpty())
        environment.insert(QStringLiteral("QML2_IMPORT_PATH"), m_modules);
    m_program->setProcessEnvironment(environment);
    m_program->setWorkingDirectory(m_home->path());
    const QStringList line = m_wrapper + QStringList{QStringLiteral(VISTREL_PROGRAM)} + arguments;
    m_program->start(line[0], line.mid(1));
    QVERIFY(m_program->waitForStarted());
}

QString StartUpTest::log() const
{
    QFile file(dataFile(QStringLiteral("Vistrel.log")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void StartUpTest::opensTheFirstArgument_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    const QString video = QStringLiteral("could not be read");
    const QString project = QStringLiteral("Trying to open project ");
    const auto row = [](const char* name, const QString& message) {
        QTest::newRow(name) << QStringList{QString::fromLatin1(name)} << message;
    };
    row("/nowhere/a.MP4", video);
    row("/nowhere/a.mov", video);
    row("/nowhere/noSuffix", project);
    row("relative.ecor", project);
}

void StartUpTest::opensTheFirstArgument()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    start(arguments);
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(updateCheck), 30'000);
    const QString text = log();
    QVERIFY(text.contains(QStringLiteral("First argument: \"%1\"").arg(arguments[0])));
    QVERIFY2(text.contains(message), qPrintable(text));
    QCOMPARE(text.contains(QStringLiteral("Trying to open project ")),
             message.startsWith(QLatin1String("Trying")));
    // A path that depends on the folder of the start would be of no use in a saved project.
    if (QDir::isRelativePath(arguments[0]))
        QVERIFY(text.contains(message + QDir(m_home->path()).canonicalPath()));
}

void StartUpTest::answersWithoutAWindow_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("out");
    const QByteArray none;
    QTest::newRow("version, without a display")
        << QStringList{"--version"} << 0 << QByteArray("vistrel " VISTREL_VERSION "\n");
    QTest::newRow("unknown option") << QStringList{"-platform", "offscreen", "--fly"} << 2 << none;
    QTest::newRow("no display") << QStringList{} << 1 << none;
    QTest::newRow("display that does not answer") << QStringList{"-display", ":4711"} << 1 << none;
    QTest::newRow("two files") << QStringList{"-platform", "offscreen", "a.ecor", "b.mp4"} << 2
                               << none;
}

void StartUpTest::answersWithoutAWindow()
{
    QFETCH(QStringList, arguments);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(display);
    m_program->setProcessEnvironment(environment);
    m_program->start(QStringLiteral(VISTREL_PROGRAM), arguments);
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QTEST(m_program->exitCode(), "status");
    QTEST(m_program->readAllStandardOutput(), "out");
    const QByteArray said = m_program->readAllStandardError();
    QCOMPARE(said.startsWith("usage: vistrel"), m_program->exitCode() == 2);
    QCOMPARE(said.contains("vistrel: Vistrel cannot open a window"), m_program->exitCode() == 1);
}

void StartUpTest::saysThatItsMemoryIsLimited_data()
{
    QTest::addColumn<QString>("limitBytes");
    QTest::addColumn<bool>("opens");
    QTest::newRow("little") << QStringLiteral("1200000000") << false;
    QTest::newRow("nearly enough") << QStringLiteral("1999999999") << false;
    QTest::newRow("enough") << QStringLiteral("3000000000") << true;
}

// The libraries that draw end the program without a word where they get no memory.
void StartUpTest::saysThatItsMemoryIsLimited()
{
    QFETCH(QString, limitBytes);
    QFETCH(bool, opens);
    m_wrapper = QStringList{QStringLiteral("prlimit"), QStringLiteral("--as=") + limitBytes};
    start({});
    if (opens) {
        QTRY_VERIFY_WITH_TIMEOUT(log().contains(updateCheck), 30'000);
        return;
    }
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 1);
    const QByteArray said = m_program->readAllStandardError();
    QVERIFY2(said.contains("limited to " + limitBytes.left(4).toUtf8() + " MB"), said);
}

void StartUpTest::startsWithoutArgumentsAndQuits()
{
    start({});
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(updateCheck), 30'000);
    const QString text = log();
    QVERIFY(
        text.contains(QStringLiteral("Vistrel version " VISTREL_VERSION " started; process id: %1")
                          .arg(m_program->processId())));
    QVERIFY(!text.contains(QStringLiteral("First argument:")));
    QVERIFY(!text.contains(QStringLiteral("Trying to open project ")));
    QVERIFY(!text.contains(QStringLiteral("could not be read")));
    QVERIFY2(!text.contains(QStringLiteral("[warning]")), qPrintable(text));

    // The check for updates waits until the interface is there.
    const int interfaceLoaded = text.indexOf(QStringLiteral("vistrel_started"));
    QVERIFY(interfaceLoaded >= 0);
    QVERIFY(text.indexOf(updateCheck) > interfaceLoaded);

    QProcess keyboard;
    keyboard.start(QStringLiteral("xdotool"),
                   {QStringLiteral("search"), QStringLiteral("--sync"),
                    QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                    QStringLiteral("^Vistrel 1"), QStringLiteral("windowactivate"),
                    QStringLiteral("--sync"), QStringLiteral("key"), QStringLiteral("ctrl+q")});
    QVERIFY(keyboard.waitForFinished());
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, 30'000);
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
    QVERIFY(log().contains(QStringLiteral("Bye! Exit code:  0")));
}

void StartUpTest::sweepsWhatAKilledReportLeft()
{
    // Above the highest number of a process that the system gives.
    const QString folder = m_home->filePath(QStringLiteral("vistrel-report-2147483000-aBcDeF"));
    QVERIFY(QDir().mkpath(folder));
    QFile picture(folder + QStringLiteral("/generated_image_0.png"));
    QVERIFY(picture.open(QIODevice::WriteOnly) && picture.write("x") == 1);
    picture.close();
    start({});
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(updateCheck), 30'000);
    QTRY_VERIFY(!QFile::exists(folder));
}

void StartUpTest::saysThatTheLastRunCrashed()
{
    const QString path = dataFile(QStringLiteral("Vistrel-crash.txt"));
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile report(path);
    QVERIFY(report.open(QIODevice::WriteOnly));
    report.write("signal: SIGSEGV\nmoment: 1000000000\n");
    report.close();
    start({});
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(updateCheck), 30'000);
    QVERIFY(log().contains(QStringLiteral("The last run crashed with \"SIGSEGV\"")));
    QVERIFY2(!log().contains(QStringLiteral("crashNotice")), qPrintable(log()));
    QVERIFY(!QFile::exists(path));
    QCOMPARE(QDir(QFileInfo(path).path())
                 .entryList({QStringLiteral("Vistrel-crash-20010909-*.txt")})
                 .size(),
             1);
}

// A module of the installation that is damaged.
void StartUpTest::saysThatTheInterfaceIsMissing()
{
    const QString module = m_home->filePath(QStringLiteral("modules/QtQuick/Controls.1"));
    QVERIFY(QDir().mkpath(module));
    QFile description(module + QStringLiteral("/qmldir"));
    QVERIFY(description.open(QIODevice::WriteOnly));
    description.write("module QtQuick.Controls\nplugin thatisnotthere\n");
    description.close();
    m_modules = m_home->filePath(QStringLiteral("modules"));
    start({});
    QProcess keyboard;
    keyboard.start(QStringLiteral("xdotool"),
                   {QStringLiteral("search"), QStringLiteral("--sync"),
                    QStringLiteral("--onlyvisible"), QStringLiteral("--name"),
                    QStringLiteral("^Vistrel$"), QStringLiteral("windowactivate"),
                    QStringLiteral("--sync"), QStringLiteral("key"), QStringLiteral("Return")});
    QVERIFY(keyboard.waitForFinished());
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, 30'000);
    QCOMPARE(m_program->exitCode(), 1);
    const QByteArray said = m_program->readAllStandardError();
    QVERIFY2(said.contains("install the package again"), said);
    QVERIFY2(said.contains("thatisnotthere"), said);
    QVERIFY(log().contains(QStringLiteral("The interface could not be loaded")));
}

// Of all platforms, the one without a display has no OpenGL.
void StartUpTest::saysThatNothingCanBeDrawn()
{
    m_platform = QStringLiteral("offscreen");
    start({});
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT(
        (said += m_program->readAllStandardError()).contains("libgl1-mesa-dri"), 30'000);
    QVERIFY(log().contains(QStringLiteral("Nothing can be drawn")));
    QCOMPARE(m_program->state(), QProcess::Running); // as long as the message is shown
    QCOMPARE(said.count("libgl1-mesa-dri"), 1);
}

void StartUpTest::recordsTheSystemOnce()
{
    const QString path = dataFile(QStringLiteral("SystemInfo.txt"));
    start({});
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(updateCheck), 30'000);
    QTRY_VERIFY(QFile::exists(path));
    m_program->kill();
    m_program->waitForFinished();

    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("kept");
    file.close();
    QVERIFY(QFile::remove(dataFile(QStringLiteral("Vistrel.log"))));
    start({});
    QTRY_VERIFY_WITH_TIMEOUT(log().contains(updateCheck), 30'000);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("kept"));
}

QTEST_GUILESS_MAIN(StartUpTest)
#include "StartUpTest.moc"
