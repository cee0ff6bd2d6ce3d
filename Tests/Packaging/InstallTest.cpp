#include "SampleFlight/SampleFlight.h"
#include "Support/ProgramRun.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
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
    void linkedCommandTellsItsVersion();
    void linkedCommandFindsTheTemplateBesideTheProgram();
    void manualIsComplete();
    void manualHasEachChapterOnItsPage_data();
    void manualHasEachChapterOnItsPage();
    void checkersAccept_data();
    void checkersAccept();
    void fileTypesAreKnown_data();
    void fileTypesAreKnown();
    void desktopEntryStartsTheCommand();
    void packagePassesLintian();
    void packageDependsOnEveryModule_data();
    void packageDependsOnEveryModule();

private:
    ProgramRun run(const QString& program, const QStringList& arguments,
                   const QString& folder = {}) const;
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
    // Letters that the font draws as one sign are two again; a page ends with a form feed.
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
        "lib/vistrel/docx_export_template.dfw",
        "lib/vistrel/manual.pdf",
        "lib/vistrel/vistrel",
        "lib/vistrel/vistrel-cli",
        "share/applications/example.corvenity.vistrel.desktop",
        "share/doc/vistrel/changelog.gz",
        "share/doc/vistrel/copyright",
        "share/icons/hicolor/128x128/apps/vistrel.png",
        "share/icons/hicolor/256x256/apps/vistrel.png",
        "share/icons/hicolor/48x48/apps/vistrel.png",
        "share/icons/hicolor/scalable/apps/vistrel.svg",
        "share/lintian/overrides/vistrel",
        "share/man/man1/vistrel-cli.1.gz",
        "share/man/man1/vistrel.1.gz",
        "share/metainfo/example.corvenity.vistrel.metainfo.xml",
        "share/mime/packages/vistrel.xml",
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

void InstallTest::linkedCommandTellsItsVersion()
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

// The page number that the contents tell is that of the page with the heading.
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
    QDirIterator documents(QML_FOLDER, {"*.qml"});
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
