#include "SampleFlight/SampleFlight.h"
#include "Support/ProgramRun.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv;
using namespace corv::test;

namespace {

QString textOf(const QString& file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? QString::fromUtf8(opened.readAll()) : QString();
}

} // namespace

/// What cmake --install and cpack make of the build, as the system that gets it sees it: staged in
/// a folder, and judged by the distribution's own checkers.
class InstallTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void installsTheseFilesAndNoOthers();
    void commandsAreLinks_data();
    void commandsAreLinks();
    void linkedCommandShowsItsVersion();
    void linkedCommandFindsTheTemplateBesideTheProgram();
    void manualIsComplete();
    void manualHasEachChapterOnItsPage_data();
    void manualHasEachChapterOnItsPage();
    void manualHasBookmarksAndLinks();
    void checkersAccept_data();
    void checkersAccept();
    void fileTypesAreKnown_data();
    void fileTypesAreKnown();
    void desktopEntryStartsTheCommand();
    void desktopEntryFindsTheCommandUnderAnotherPrefix();
    void unitOfACardFindsItsScriptUnderAnotherPrefix();
    void scriptsFindTheToolBesideThem_data();
    void scriptsFindTheToolBesideThem();
    void programsAreHardened_data();
    void programsAreHardened();
    void everySourceIsCompiledAsItIsDelivered();
    void billOfMaterialsNamesEveryDependency();
    void releaseNotesAreThere();
    void anotherMaskClockAndLanguageGiveTheSamePackage();
    void everybodyMayReadWhatIsInstalled();
    void aStrictMaskLocksNobodyOut();
    void packagePassesLintian();
    void packageDependsOnEveryModule_data();
    void packageDependsOnEveryModule();

private:
    ProgramRun run(const QString& program, const QStringList& arguments,
                   const QString& folder = {}) const;
    ProgramRun installUnder(const QString& prefix) const;
    QString staged(const QString& path) const { return m_folder.filePath("stage/usr/" + path); }
    QString package() const
    {
        const QDir folder(m_folder.filePath("package"));
        return folder.filePath(folder.entryList({"vistrel_*.deb"}).value(0));
    }

    QTemporaryDir m_folder;
    QStringList m_manualPages;
};

ProgramRun InstallTest::run(const QString& program, const QStringList& arguments,
                            const QString& folder) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DESTDIR", m_folder.filePath("stage"));
    environment.insert("LC_ALL", "C.UTF-8");
    // Wide enough that no line of a man page has to be broken badly.
    environment.insert("MANWIDTH", "80");
    return runProgram(program, arguments, environment, folder.isEmpty() ? m_folder.path() : folder);
}

// As by hand, not staged.
ProgramRun InstallTest::installUnder(const QString& prefix) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DESTDIR");
    return runProgram(CMAKE_PROGRAM, {"--install", BUILD_FOLDER, "--prefix", prefix}, environment,
                      {});
}

void InstallTest::initTestCase()
{
    const ProgramRun install = run(CMAKE_PROGRAM, {"--install", BUILD_FOLDER, "--prefix", "/usr"});
    QVERIFY2(install.status == 0, install.error);
    const ProgramRun pack =
        run(CPACK_PROGRAM, {"-G", "DEB", "--config", BUILD_FOLDER "/CPackConfig.cmake", "-B",
                            m_folder.filePath("package")});
    QVERIFY2(pack.status == 0, pack.out + pack.error);
    const ProgramRun manual = run("pdftotext", {"-layout", staged("lib/vistrel/manual.pdf"), "-"});
    QVERIFY2(manual.status == 0, manual.error);
    // Ligatures are taken apart into their letters. A page ends with a form feed.
    m_manualPages = QString::fromUtf8(manual.out)
                        .normalized(QString::NormalizationForm_KC)
                        .chopped(1)
                        .split('\f');
}

void InstallTest::installsTheseFilesAndNoOthers()
{
    const QSet<QString> expected = {
        "bin/vistrel",
        "bin/vistrel-cli",
        "lib/systemd/system/vistrel-card@.service",
        "lib/vistrel/docx_export_template.dfw",
        "lib/vistrel/manual.pdf",
        "lib/vistrel/vistrel",
        "lib/vistrel/vistrel-cli",
        "lib/vistrel/vistrel-cli-flights",
        "lib/vistrel/vistrel-sample-flight",
        "share/applications/example.corvenity.vistrel.desktop",
        "share/bash-completion/completions/vistrel-cli",
        "share/fish/vendor_completions.d/vistrel-cli.fish",
        "share/zsh/vendor-completions/_vistrel-cli",
        "share/doc/vistrel/LICENSE",
        "share/doc/vistrel/changelog.gz",
        "share/doc/vistrel/copyright",
        "share/doc/vistrel/vistrel.spdx.json",
        "share/icons/hicolor/128x128/apps/vistrel.png",
        "share/icons/hicolor/256x256/apps/vistrel.png",
        "share/icons/hicolor/48x48/apps/vistrel.png",
        "share/icons/hicolor/scalable/apps/vistrel.svg",
        "share/lintian/overrides/vistrel",
        "share/man/man1/vistrel-cli.1.gz",
        "share/man/man1/vistrel.1.gz",
        "share/metainfo/example.corvenity.vistrel.metainfo.xml",
        "share/mime/packages/vistrel.xml",
        "share/vistrel/batch/90-vistrel-card.rules",
        "share/vistrel/batch/review-card",
        "share/vistrel/batch/review-parallel",
        "share/vistrel/batch/review-slurm",
        "share/vistrel/batch/review-task",
    };
    QSet<QString> found;
    const QDir root(staged({}));
    QDirIterator walk(root.path(), QDir::Files | QDir::System | QDir::Hidden,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QString file = root.relativeFilePath(walk.next());
        found.insert(file);
        QVERIFY2(walk.fileInfo().size() > 0, qPrintable(file));
        QVERIFY2(walk.fileInfo().permission(QFile::ReadOther), qPrintable(file));
    }
    QCOMPARE(found - expected, QSet<QString>());
    QCOMPARE(expected - found, QSet<QString>());
}

void InstallTest::commandsAreLinks_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("window") << "vistrel";
    QTest::newRow("command line") << "vistrel-cli";
}

void InstallTest::commandsAreLinks()
{
    QFETCH(QString, command);
    const QFileInfo link(staged("bin/" + command));
    QVERIFY(link.isSymLink());
    // Relative: it holds in the staged tree as well.
    QCOMPARE(QFileInfo(link.canonicalFilePath()),
             QFileInfo(QFileInfo(staged("lib/vistrel/" + command)).canonicalFilePath()));
    QVERIFY(QFileInfo(link.canonicalFilePath()).permission(QFile::ExeOther));
}

void InstallTest::linkedCommandShowsItsVersion()
{
    const ProgramRun outcome = run(staged("bin/vistrel-cli"), {"--version"});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.out, QByteArray("vistrel-cli " VISTREL_VERSION "\n"));
}

void InstallTest::linkedCommandFindsTheTemplateBesideTheProgram()
{
    SampleFlightOptions options;
    options.videoSeconds = 2.0;
    QVERIFY(SampleFlight(options).writeCard(m_folder.filePath("flight")));
    const ProgramRun outcome =
        run(staged("bin/vistrel-cli"), {"report", "sample.ecor", "--out", "a.docx"},
            m_folder.filePath("flight"));
    QVERIFY2(outcome.status == 0, outcome.error);
    QVERIFY(QFileInfo(m_folder.filePath("flight/a.docx")).size() > 0);
}

void InstallTest::manualIsComplete()
{
    QCOMPARE(m_manualPages.filter(QRegularExpression("\\S")), m_manualPages);
    QVERIFY(m_manualPages.first().contains("Version " VISTREL_VERSION));
    const QStringList words =
        textOf(MANUAL_TEXT).split(QRegularExpression("\\s+"), Qt::SkipEmptyParts);
    QVERIFY(m_manualPages.last().contains(words.last()));
}

void InstallTest::manualHasEachChapterOnItsPage_data()
{
    QTest::addColumn<QString>("chapter");
    const QRegularExpression heading("^##+ (.*)$", QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator headings = heading.globalMatch(textOf(MANUAL_TEXT));
    QVERIFY(headings.hasNext());
    while (headings.hasNext()) {
        const QString chapter = headings.next().captured(1);
        QTest::newRow(qPrintable(chapter)) << chapter;
    }
}

// The page number in the contents is that of the page with the heading.
void InstallTest::manualHasEachChapterOnItsPage()
{
    QFETCH(QString, chapter);
    const QString line = "^ *" + QRegularExpression::escape(chapter);
    const QRegularExpressionMatch entry =
        QRegularExpression(line + " +(\\d+)$", QRegularExpression::MultilineOption)
            .match(m_manualPages.value(1));
    QVERIFY(entry.hasMatch());
    const QString page = m_manualPages.value(entry.captured(1).toInt() - 1);
    QVERIFY2(page.contains(QRegularExpression(line + "$", QRegularExpression::MultilineOption)),
             qPrintable(page));
}

void InstallTest::manualHasBookmarksAndLinks()
{
    const ProgramRun xml =
        run("pdftohtml", {"-xml", "-i", "-stdout", staged("lib/vistrel/manual.pdf")});
    QCOMPARE(xml.status, 0);
    const QRegularExpression heading("^##+ ", QRegularExpression::MultilineOption);
    const int chapters = textOf(MANUAL_TEXT).count(heading);
    QCOMPARE(xml.out.count("<item page="), chapters);
    QVERIFY(xml.out.count("<a href=") >= chapters);
}

void InstallTest::checkersAccept_data()
{
    QTest::addColumn<QString>("checker");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("desktop entry")
        << "desktop-file-validate"
        << QStringList{staged("share/applications/example.corvenity.vistrel.desktop")};
    QTest::newRow("description")
        << "appstreamcli"
        << QStringList{"validate", "--no-net",
                       staged("share/metainfo/example.corvenity.vistrel.metainfo.xml")};
    for (const char* page : {"vistrel", "vistrel-cli"})
        QTest::newRow(page) << "man"
                            << QStringList{"--warnings", "--local-file",
                                           staged(QString("share/man/man1/%1.1.gz").arg(page))};
}

void InstallTest::checkersAccept()
{
    QFETCH(QString, checker);
    QFETCH(QStringList, arguments);
    const ProgramRun outcome = run(checker, arguments);
    QVERIFY2(outcome.status == 0, outcome.out + outcome.error);
    QCOMPARE(outcome.error, QByteArray());
}

void InstallTest::fileTypesAreKnown_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("project") << "application/x-vistrel-project";
    QTest::newRow("mp4") << "video/mp4";
    QTest::newRow("mov") << "video/quicktime";
}

// The desktop entry claims the type; the type of our own files is declared as well.
void InstallTest::fileTypesAreKnown()
{
    QFETCH(QString, type);
    const QString entry = textOf(staged("share/applications/example.corvenity.vistrel.desktop"));
    const QRegularExpressionMatch claimed =
        QRegularExpression("^MimeType=(.*)$", QRegularExpression::MultilineOption).match(entry);
    QVERIFY(claimed.captured(1).split(';').contains(type));

    const ProgramRun outcome = run("update-mime-database", {staged("share/mime")});
    QVERIFY2(outcome.status == 0, outcome.error);
    const QString globs = textOf(staged("share/mime/globs2"));
    QCOMPARE(globs.contains(":" + type + ":*.ecor"), type.startsWith("application/"));
}

void InstallTest::desktopEntryStartsTheCommand()
{
    const QString entry = textOf(staged("share/applications/example.corvenity.vistrel.desktop"));
    // A local path, blanks and all, as one argument; scaled to the screen.
    QVERIFY(entry.contains("\nExec=env QT_AUTO_SCREEN_SCALE_FACTOR=1 vistrel %f\n"));
    QVERIFY(entry.contains("\nIcon=vistrel\n"));
}

// A prefix that nothing looks for commands in, with every letter that an entry has to quote.
void InstallTest::desktopEntryFindsTheCommandUnderAnotherPrefix()
{
    const QString prefix = m_folder.filePath("opt/100% ours \"$HOME\" `x`");
    const ProgramRun install = installUnder(prefix);
    QVERIFY2(install.status == 0, install.error);
    const QString entry = prefix + "/share/applications/example.corvenity.vistrel.desktop";
    const ProgramRun check = run("desktop-file-validate", {entry});
    QVERIFY2(check.status == 0, check.out + check.error);
    const QRegularExpression exec("^Exec=env QT_AUTO_SCREEN_SCALE_FACTOR=1 \"(.*)\" %f$",
                                  QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = exec.match(textOf(entry));
    QVERIFY2(match.hasMatch(), qPrintable(textOf(entry)));
    // Read as a desktop reads it: the text's escapes, then those of the command, then the codes.
    QString command = match.captured(1);
    command.replace("\\\\", "\\");
    command.replace(QRegularExpression("\\\\([\"`$\\\\])"), "\\1");
    command.replace("%%", "%");
    QCOMPARE(command, prefix + "/bin/vistrel");
    QVERIFY(QFileInfo(command).isExecutable());
    QVERIFY(textOf(entry).contains("\nTryExec=" + command + '\n'));
}

// The checker asks whether there is such a program.
void InstallTest::unitOfACardFindsItsScriptUnderAnotherPrefix()
{
    const QString prefix = m_folder.filePath("opt/100% ours, $HOME");
    const ProgramRun install = installUnder(prefix);
    QVERIFY2(install.status == 0, install.error);
    const QString unit = prefix + "/lib/systemd/system/vistrel-card@.service";
    const ProgramRun check = run("systemd-analyze", {"verify", "--man=no", unit});
    QVERIFY2(check.status == 0 && check.error.isEmpty(), check.error);
    const QString script = prefix + "/share/vistrel/batch/review-card";
    QVERIFY(textOf(unit).contains(
        QString("\nExecStart=\"%1\" /dev/%I\n").arg(QString(script).replace("%", "%%"))));
    // It would have said so.
    QVERIFY(QFile::remove(script));
    QVERIFY(!run("systemd-analyze", {"verify", "--man=no", unit}).error.isEmpty());
}

void InstallTest::scriptsFindTheToolBesideThem_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::newRow("card") << QStringList{"review-card", "/proc"}; // mounted
    QTest::newRow("parallel") << QStringList{"review-parallel", "out", ":", "card"};
    QTest::newRow("Slurm") << QStringList{"review-slurm", "out", "card"};
}

// Where no session looks for commands: a tool of that name elsewhere would be another version.
void InstallTest::scriptsFindTheToolBesideThem()
{
    QFETCH(QStringList, command);
    const QString prefix = m_folder.filePath("opt/beside");
    const ProgramRun install = installUnder(prefix);
    QVERIFY2(install.status == 0, install.error);
    QVERIFY(QFile::remove(prefix + "/bin/vistrel-cli"));
    QVERIFY(QDir(m_folder.path()).mkpath("opt/card"));
    QFile tool(prefix + "/bin/vistrel-cli");
    QVERIFY(tool.open(QIODevice::WriteOnly));
    tool.write("#!/bin/sh\necho \"called: $1\" >&2\nexit 9\n");
    tool.setPermissions(tool.permissions() | QFile::ExeOwner);
    tool.close();
    const ProgramRun script =
        run("env",
            QStringList{"VISTREL_CARD_OUT=out", prefix + "/share/vistrel/batch/" + command[0]} +
                command.mid(1),
            m_folder.filePath("opt"));
    QCOMPARE(script.status, 9);
    QVERIFY2(script.error.contains("called: review"), script.error);
}

void InstallTest::programsAreHardened_data()
{
    QTest::addColumn<QString>("program");
    for (const char* program :
         {"vistrel", "vistrel-cli", "vistrel-cli-flights", "vistrel-sample-flight"})
        QTest::newRow(program) << staged(QString("lib/vistrel/") + program);
}

void InstallTest::programsAreHardened()
{
    QFETCH(QString, program);
    const ProgramRun facts = run("readelf", {"--wide", "--file-header", "--program-headers",
                                             "--dynamic", "--dyn-syms", program});
    QVERIFY2(facts.status == 0, facts.error);
    QVERIFY(facts.out.contains("DYN (Position-Independent Executable file)"));
    QVERIFY(facts.out.contains("GNU_RELRO"));
    QVERIFY(QRegularExpression("FLAGS_1.*NOW").match(QString::fromUtf8(facts.out)).hasMatch());
    const QRegularExpression stack("GNU_STACK .* RW +0x");
    QVERIFY(stack.match(QString::fromUtf8(facts.out)).hasMatch());
    QVERIFY(facts.out.contains(" __stack_chk_fail"));
    const QRegularExpression checkedCopies(" __\\w+_chk@");
    QVERIFY(checkedCopies.match(QString::fromUtf8(facts.out)).hasMatch());
}

// Generated sources, too: one that is not would also have the folder of the build in it.
void InstallTest::everySourceIsCompiledAsItIsDelivered()
{
    const QByteArray text = textOf(BUILD_FOLDER "/compile_commands.json").toUtf8();
    const QJsonArray commands = QJsonDocument::fromJson(text).array();
    const QRegularExpression notInstalled(" -o (Tests|Bench)/");
    int sources = 0;
    for (const QJsonValue& value : commands) {
        const QString command = value["command"].toString();
        if (notInstalled.match(command).hasMatch())
            continue;
        QVERIFY2(command.contains("-fstack-protector-strong"),
                 qPrintable(value["file"].toString()));
        ++sources;
    }
    QVERIFY(sources > 300);
}

void InstallTest::billOfMaterialsNamesEveryDependency()
{
    const QJsonObject bill =
        QJsonDocument::fromJson(textOf(staged("share/doc/vistrel/vistrel.spdx.json")).toUtf8())
            .object();
    QCOMPARE(bill["spdxVersion"].toString(), QString("SPDX-2.3"));
    QCOMPARE(bill["SPDXID"].toString(), QString("SPDXRef-DOCUMENT"));
    QVERIFY(!bill["creationInfo"].toObject()["created"].toString().isEmpty());
    QSet<QString> names;
    QSet<QString> ids;
    for (const QJsonValue& package : bill["packages"].toArray()) {
        const QString id = package["SPDXID"].toString();
        QVERIFY2(!ids.contains(id), qPrintable(id));
        ids.insert(id);
        names.insert(package["name"].toString());
        QVERIFY(!package["versionInfo"].toString().isEmpty());
        QVERIFY(!package["downloadLocation"].toString().isEmpty());
    }
    for (const QJsonValue& relationship : bill["relationships"].toArray())
        QVERIFY(ids.contains(relationship["relatedSpdxElement"].toString()));
    QCOMPARE(bill["relationships"].toArray().size(), ids.size());

    const ProgramRun fields = run("dpkg-deb", {"--field", package(), "Depends"});
    QVERIFY2(fields.status == 0, fields.error);
    for (const QByteArray& dependency : fields.out.split(',')) {
        const QByteArray name = dependency.trimmed().split(' ').first();
        QVERIFY2(names.contains(QString::fromUtf8(name)), name);
    }
}

void InstallTest::releaseNotesAreThere()
{
    const QString text = textOf(staged("share/metainfo/example.corvenity.vistrel.metainfo.xml"));
    const QRegularExpression release("<release version=\"" VISTREL_VERSION
                                     "\" date=\"\\d{4}-\\d\\d-\\d\\d\"[^>]*>\\s*<description>");
    QVERIFY(release.match(text).hasMatch());
}

// Made again by somebody whose files nobody else may read, at the other end of the world.
void InstallTest::anotherMaskClockAndLanguageGiveTheSamePackage()
{
    const QString folder = m_folder.filePath("again");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TZ", "Pacific/Kiritimati");
    environment.insert("LC_ALL", "tr_TR.UTF-8");
    const QString script = QString("umask 077; exec \"$0\" -G DEB --config \"$1\" -B \"$2\"");
    const ProgramRun pack =
        runProgram("sh", {"-c", script, CPACK_PROGRAM, BUILD_FOLDER "/CPackConfig.cmake", folder},
                   environment, m_folder.path());
    QVERIFY2(pack.status == 0, pack.out + pack.error);
    const QString again = QDir(folder).filePath(QFileInfo(package()).fileName());
    QFile first(package());
    QFile second(again);
    QVERIFY(first.open(QIODevice::ReadOnly) && second.open(QIODevice::ReadOnly));
    QVERIFY(first.readAll() == second.readAll());
}

void InstallTest::everybodyMayReadWhatIsInstalled()
{
    const QString folder = m_folder.filePath("again");
    const ProgramRun list =
        run("dpkg-deb", {"--contents", QDir(folder).filePath(QFileInfo(package()).fileName())});
    QVERIFY2(list.status == 0, list.error);
    int entries = 0;
    for (const QByteArray& line : list.out.trimmed().split('\n')) {
        const QByteArray mode = line.left(10);
        QVERIFY2(mode == "drwxr-xr-x" || mode == "-rw-r--r--" || mode == "-rwxr-xr-x" ||
                     mode == "lrwxrwxrwx",
                 line);
        QVERIFY2(line.contains("root/root"), line);
        ++entries;
    }
    QVERIFY(entries > 30);
}

// Who installs from the sources is root, and may have a mask of their own.
void InstallTest::aStrictMaskLocksNobodyOut()
{
    const QString prefix = m_folder.filePath("strict");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DESTDIR");
    const QString script = QString("umask 077; exec \"$0\" --install \"$1\" --prefix \"$2\"");
    const ProgramRun install =
        runProgram("sh", {"-c", script, CMAKE_PROGRAM, BUILD_FOLDER, prefix}, environment, {});
    QVERIFY2(install.status == 0, install.error);
    QDirIterator installed(prefix, QDir::AllEntries | QDir::Dirs | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
    int entries = 0;
    while (installed.hasNext()) {
        const QFileInfo entry(installed.next());
        QVERIFY2(entry.permission(QFile::ReadOther), qPrintable(entry.filePath()));
        QVERIFY2(!entry.isDir() || entry.permission(QFile::ExeOther), qPrintable(entry.filePath()));
        ++entries;
    }
    QVERIFY(entries > 30);
}

void InstallTest::packagePassesLintian()
{
    const ProgramRun lintian =
        run("lintian", {"--allow-root", "--fail-on", "error,warning", package()});
    QVERIFY2(lintian.status == 0, lintian.out + lintian.error);
}

void InstallTest::packageDependsOnEveryModule_data()
{
    QTest::addColumn<QString>("qmldir");
    const QRegularExpression import("^import ((?:Qt)[A-Za-z.]*) (\\d)",
                                    QRegularExpression::MultilineOption);
    QDirIterator documents(QML_FOLDER, {"*.qml"}, QDir::Files, QDirIterator::Subdirectories);
    QSet<QString> folders;
    while (documents.hasNext()) {
        QRegularExpressionMatchIterator matches = import.globalMatch(textOf(documents.next()));
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            const QString folder =
                QML_MODULES "/" + match.captured(1).replace(QLatin1Char('.'), QLatin1Char('/'));
            const QString versioned = folder + "." + match.captured(2);
            folders.insert(QFileInfo::exists(versioned) ? versioned : folder);
        }
    }
    QVERIFY(folders.size() > 5);
    for (const QString& folder : qAsConst(folders))
        QTest::newRow(qPrintable(QDir(QML_MODULES).relativeFilePath(folder))) << folder + "/qmldir";
}

void InstallTest::packageDependsOnEveryModule()
{
    QFETCH(QString, qmldir);
    const QString file = QFileInfo(qmldir).canonicalFilePath();
    QVERIFY2(!file.isEmpty(), qPrintable(qmldir));
    const ProgramRun owner = run("dpkg-query", {"--search", file});
    QVERIFY2(owner.status == 0, owner.error);
    const QByteArray module = owner.out.left(owner.out.indexOf(':'));
    const ProgramRun fields = run("dpkg-deb", {"--field", package(), "Depends"});
    QVERIFY2(fields.status == 0, fields.error);
    QList<QByteArray> names;
    for (const QByteArray& dependency : fields.out.split(','))
        names << dependency.trimmed().split(' ').first();
    QVERIFY2(names.contains(module), module);
}

QTEST_GUILESS_MAIN(InstallTest)
#include "InstallTest.moc"
