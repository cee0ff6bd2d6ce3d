#include "Support/ProgramRun.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>

using namespace corv::test;

namespace {

/// A library from outside: its name in Docs/architecture.md, a header of its own, and the libraries
/// whose include folders come with it.
struct Library
{
    QString header;
    QStringList brings;
};

const QMap<QString, Library>& libraries()
{
    static const QMap<QString, Library> all{
        {"OpenCV", {"opencv2/core.hpp", {}}},
        {"QuaZip", {"quazip/quazip.h", {}}},
        {"Qt DBus", {"QDBusConnection", {}}},
        {"Qt Gui", {"QImage", {}}},
        {"Qt Network", {"QNetworkRequest", {}}},
        {"Qt Qml", {"QQmlEngine", {"Qt Network"}}},
        {"Qt Quick", {"QQuickItem", {"Qt Gui", "Qt Qml", "Qt Network"}}},
        {"Qt Multimedia", {"QVideoFrame", {"Qt Gui", "Qt Network"}}},
        {"Qt Widgets", {"QWidget", {"Qt Gui"}}},
    };
    return all;
}

QByteArray contentsOf(const QString& file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray();
}

/// The name that Docs/architecture.md has for a target of a link line.
QString nameOf(QString target)
{
    if (target.startsWith("vistrel_"))
        return target.mid(8);
    if (target.startsWith("opencv_"))
        return "OpenCV";
    if (target.startsWith("Qt5::") || target.startsWith("Qt::"))
        return "Qt " + target.section("::", 1);
    return target.section("::", 0, 0);
}

QStringList includesOf(const QString& file)
{
    static const QRegularExpression include("^\\s*#\\s*include\\s+[\"<]([^\">]+)[\">]",
                                            QRegularExpression::MultilineOption);
    QStringList found;
    auto matches = include.globalMatch(QString::fromUtf8(contentsOf(file)));
    while (matches.hasNext())
        found << matches.next().captured(1);
    return found;
}

} // namespace

/// The folders of Src as the build sees them: every room compiles with the headers of the rooms and
/// libraries on its link line and no others. Each row runs the room's own compiler command on a
/// source of one include.
class RoomsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyFolderIsARoom();
    void headerOfAnUnlinkedRoomIsNotFound_data();
    void headerOfAnUnlinkedRoomIsNotFound();
    void headerOfAnUnlinkedLibraryIsNotFound_data();
    void headerOfAnUnlinkedLibraryIsNotFound();
    void everythingLinkedIsIncludedAndCompiles_data();
    void everythingLinkedIsIncludedAndCompiles();
    void everyIncludeIsLinked();
    void noIncludeNamesAModuleOfQt();
    void noIncludeClimbsOutOfItsFolder();
    void everyLogLineIsOfTheCategoryOfItsRoom();
    void linkLinesHaveNoCircle();
    void architectureDocumentHasTheLinkLines();

private:
    QString anyHeaderOf(const QString& room) const;
    QSet<QString> headersReachedFrom(const QString& room) const;
    ProgramRun compile(const QString& room, const QString& include);

    QMap<QString, QStringList> m_lines;    ///< what each room links, by the document's names
    QMap<QString, QStringList> m_commands; ///< the compiler and its flags, for rooms with sources
    QTemporaryDir m_folder;
};

void RoomsTest::initTestCase()
{
    const QStringList lines =
        QString::fromUtf8(contentsOf(ROOMS_FILE)).split('\n', Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        QStringList& named = m_lines[line.section(": ", 0, 0)];
        for (const QString& target : line.section(": ", 1).split(' ', Qt::SkipEmptyParts)) {
            if (!named.contains(nameOf(target)))
                named << nameOf(target);
        }
    }
    QVERIFY(m_lines.size() > 10);

    const QString sources = QStringLiteral(SOURCES "/");
    const QJsonArray commands = QJsonDocument::fromJson(contentsOf(COMPILE_COMMANDS)).array();
    for (const QJsonValue& entry : commands) {
        const QString file = entry["file"].toString();
        const QString room = file.mid(sources.size()).section('/', 0, 0);
        if (!file.startsWith(sources) || !m_lines.contains(room) || m_commands.contains(room))
            continue;
        QStringList words = QProcess::splitCommand(entry["command"].toString());
        while (words.value(0).endsWith("ccache"))
            words.removeFirst();
        const int output = words.indexOf("-o");
        QVERIFY2(output > 0, qPrintable(words.join(' ')));
        m_commands[room] = words.mid(0, output) + QStringList{"-fsyntax-only"};
    }
}

void RoomsTest::everyFolderIsARoom()
{
    QCOMPARE(m_lines.keys(),
             QDir(SOURCES).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name));
    for (const QString& room : m_lines.keys()) {
        const bool hasSources = !QDir(SOURCES "/" + room).entryList({"*.cpp"}).isEmpty();
        QVERIFY2(hasSources == m_commands.contains(room), qPrintable(room));
    }
}

/// A header of `room`, as it is included.
QString RoomsTest::anyHeaderOf(const QString& room) const
{
    return room + '/' +
           QDir(SOURCES "/" + room).entryList({"*.h"}, QDir::Files, QDir::Name).value(0);
}

ProgramRun RoomsTest::compile(const QString& room, const QString& include)
{
    const QString probe = m_folder.filePath("probe.cpp");
    QFile file(probe);
    if (!file.open(QIODevice::WriteOnly) || file.write(include.toUtf8()) < 0)
        return {};
    file.close();
    const QStringList command = m_commands.value(room);
    return runProgram(command.value(0), command.mid(1) + QStringList{probe});
}

void RoomsTest::headerOfAnUnlinkedRoomIsNotFound_data()
{
    QTest::addColumn<QString>("room");
    QTest::addColumn<QString>("header");
    for (const QString& room : m_commands.keys()) {
        for (const QString& other : m_lines.keys()) {
            if (other != room && !m_lines[room].contains(other))
                QTest::addRow("%s in %s", qPrintable(other), qPrintable(room))
                    << room << anyHeaderOf(other);
        }
    }
}

void RoomsTest::headerOfAnUnlinkedRoomIsNotFound()
{
    QFETCH(QString, room);
    QFETCH(QString, header);
    const ProgramRun run = compile(room, "#include \"" + header + "\"\n");
    QVERIFY(run.status > 0);
    QVERIFY2(run.error.contains(header.toUtf8() + ": No such file"), run.error);
}

void RoomsTest::headerOfAnUnlinkedLibraryIsNotFound_data()
{
    QTest::addColumn<QString>("room");
    QTest::addColumn<QString>("header");
    for (const QString& room : m_commands.keys()) {
        QStringList seen = m_lines[room];
        for (const QString& named : m_lines[room])
            seen += libraries().value(named).brings;
        for (auto library = libraries().cbegin(); library != libraries().cend(); ++library) {
            if (!seen.contains(library.key()))
                QTest::addRow("%s in %s", qPrintable(library.key()), qPrintable(room))
                    << room << library->header;
        }
    }
}

void RoomsTest::headerOfAnUnlinkedLibraryIsNotFound()
{
    QFETCH(QString, room);
    QFETCH(QString, header);
    const ProgramRun run = compile(room, "#include <" + header + ">\n");
    QVERIFY(run.status > 0);
    QVERIFY2(run.error.contains(header.toUtf8() + ": No such file"), run.error);
}

/// Everything that the sources of `room` include, themselves or through headers of rooms.
QSet<QString> RoomsTest::headersReachedFrom(const QString& room) const
{
    const QDir sources(SOURCES);
    QSet<QString> seen;
    QStringList waiting;
    QDirIterator own(sources.filePath(room), {"*.cpp", "*.h"}, QDir::Files);
    while (own.hasNext())
        waiting << sources.relativeFilePath(own.next());
    while (!waiting.isEmpty()) {
        for (const QString& include : includesOf(sources.filePath(waiting.takeLast()))) {
            if (seen.contains(include))
                continue;
            seen << include;
            if (QFileInfo::exists(sources.filePath(include)))
                waiting << include;
        }
    }
    return seen;
}

void RoomsTest::everythingLinkedIsIncludedAndCompiles_data()
{
    QTest::addColumn<QString>("room");
    for (const QString& room : m_commands.keys())
        QTest::addRow("%s", qPrintable(room)) << room;
}

void RoomsTest::everythingLinkedIsIncludedAndCompiles()
{
    QFETCH(QString, room);
    QStringList reached = headersReachedFrom(room).values();
    reached.sort();
    QString source = "#include \"" + anyHeaderOf(room) + "\"\n";
    for (const QString& named : m_lines[room]) {
        if (libraries().contains(named)) {
            // Headers of Qt do not show their module.
            const QString folder = libraries()[named].header.section('/', 0, -2);
            QVERIFY2(folder.isEmpty() ||
                         !reached.filter(QRegularExpression('^' + folder)).isEmpty(),
                     qPrintable(room + " names " + named + " and includes nothing of it"));
            source += "#include <" + libraries()[named].header + ">\n";
        } else if (m_lines.contains(named)) {
            const int first = reached.indexOf(QRegularExpression('^' + named + "/.*"));
            QVERIFY2(first >= 0,
                     qPrintable(room + " names " + named + " and includes nothing of it"));
            source += "#include \"" + reached[first] + "\"\n";
        }
    }
    const ProgramRun run = compile(room, source);
    QVERIFY2(run.status == 0, run.error);
}

/// What the compiler does not see: a room of headers alone is compiled by others, with their line,
/// and some libraries are in a folder that every compiler searches.
void RoomsTest::everyIncludeIsLinked()
{
    static const QRegularExpression pugixml("^pugixml");
    static const QRegularExpression libav("^lib(av|sw)\\w+/");
    QSet<QString> found;
    for (const QString& room : m_lines.keys()) {
        QDirIterator files(QStringLiteral(SOURCES "/") + room, {"*.h", "*.cpp"}, QDir::Files);
        while (files.hasNext()) {
            const QString file = files.next();
            for (const QString& include : includesOf(file)) {
                const QString folder = include.section('/', 0, 0);
                const QString owner = include.contains(pugixml) ? "pugixml"
                                      : include.contains(libav) ? "libav"
                                                                : folder;
                if (owner == folder && (folder == room || !m_lines.contains(folder)))
                    continue;
                found << owner;
                QVERIFY2(m_lines[room].contains(owner), qPrintable(file + ": " + include));
            }
        }
    }
    QVERIFY(found.contains("Base") && found.contains("pugixml") && found.contains("libav"));
}

/// The folder of all modules of Qt is searched, so such an include is found in every room.
void RoomsTest::noIncludeNamesAModuleOfQt()
{
    static const QRegularExpression module("^Qt[A-Z]\\w*/");
    QDirIterator files(SOURCES, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        QVERIFY2(includesOf(file).filter(module).isEmpty(), qPrintable(file));
    }
}

void RoomsTest::noIncludeClimbsOutOfItsFolder()
{
    QDirIterator files(SOURCES, {"*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        const QStringList climbing = includesOf(file).filter("..");
        QVERIFY2(climbing.isEmpty(), qPrintable(file + ": " + climbing.join(' ')));
    }
}

void RoomsTest::everyLogLineIsOfTheCategoryOfItsRoom()
{
    static const QRegularExpression logging("(?<!\\w)qC?(?:Debug|Info|Warning|Critical)\\((\\w*)");
    int lines = 0;
    for (const QString& room : m_lines.keys()) {
        QDirIterator sources(QStringLiteral(SOURCES "/") + room, {"*.h", "*.cpp"}, QDir::Files);
        while (sources.hasNext()) {
            const QString file = sources.next();
            auto matches = logging.globalMatch(QString::fromUtf8(contentsOf(file)));
            for (; matches.hasNext(); ++lines)
                QVERIFY2(matches.next().captured(1) == "lc" + room, qPrintable(file));
        }
    }
    QVERIFY(lines > 100);
}

void RoomsTest::linkLinesHaveNoCircle()
{
    const std::function<bool(const QString&, QStringList)> reachesItself = [&](const QString& room,
                                                                               QStringList way) {
        if (way.contains(room))
            return true;
        way << room;
        for (const QString& named : m_lines.value(room)) {
            if (reachesItself(named, way))
                return true;
        }
        return false;
    };
    for (const QString& room : m_lines.keys())
        QVERIFY2(!reachesItself(room, {}), qPrintable(room));
}

/// Each row of the document's table ends with what the room links; Qt Core is left out.
void RoomsTest::architectureDocumentHasTheLinkLines()
{
    static const QRegularExpression row("^\\| `(\\w+)` \\|.*\\| ([^|]*) \\|$");
    QMap<QString, QStringList> documented;
    for (const QString& line : QString::fromUtf8(contentsOf(ARCHITECTURE)).split('\n')) {
        const auto match = row.match(line);
        if (!match.hasMatch())
            continue;
        QStringList names = match.captured(2).split(", ");
        names.removeAll("nothing");
        names.sort();
        documented[match.captured(1)] = names;
    }
    QMap<QString, QStringList> linked = m_lines;
    for (QStringList& names : linked)
        names.sort();
    QCOMPARE(documented.keys(), linked.keys());
    for (const QString& room : linked.keys())
        QVERIFY2(documented[room] == linked[room],
                 qPrintable(room + " links: " + linked[room].join(", ")));
}

QTEST_GUILESS_MAIN(RoomsTest)
#include "RoomsTest.moc"
