#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

using namespace corv::test;

/// `vistrel-cli project`: what a project holds, and where its missing files are.
class ProjectCommandTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const QString& name) const { return m_folder->filePath(name); }

    ProgramRun run(const QStringList& arguments) const
    {
        return runProgram(QStringLiteral(VISTREL_CLI), QStringList{"project"} + arguments);
    }

    static bool write(const QString& path, const QByteArray& text)
    {
        QFile file(path);
        return QDir().mkpath(QFileInfo(path).absolutePath()) && file.open(QIODevice::WriteOnly) &&
               file.write(text) == text.size();
    }

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(write(path("moved/CORV0001.MOV"), "12345"));
        QVERIFY(write(path("moved/f.log"), "123"));
        QVERIFY(write(path("p.ecor"), R"({"contents":{"flights":[{
            "files":{"video":"card/CORV0001.MOV","log":"card/f.log"},
            "sizes":{"card/CORV0001.MOV":5,"card/f.log":3},
            "properties":{"display":{"contrast":1.5}},
            "poi":[{"time":7,"name":"Crack","comment":"deep"}]}]}})"));
    }

    void saysWhatIsMissing()
    {
        const ProgramRun result = run({path("p.ecor"), "--json"});
        QCOMPARE(result.status, 0);
        QCOMPARE(QJsonDocument::fromJson(result.out).object()["missing"].toArray().size(), 2);
    }

    void findsMissingFilesInAFolder()
    {
        const ProgramRun result = run({path("p.ecor"), "--locate", m_folder->path(), "--json"});
        QCOMPARE(result.status, 0);
        const QJsonObject project = QJsonDocument::fromJson(result.out).object();
        QCOMPARE(project["missing"].toArray().size(), 0);
        QCOMPARE(project["video"].toObject()["path"].toString(), path("moved/CORV0001.MOV"));
        QCOMPARE(project["log"].toObject()["path"].toString(), path("moved/f.log"));
    }

    void writesTheProjectWithThePlacesFound()
    {
        QCOMPARE(
            run({path("p.ecor"), "--locate", m_folder->path(), "--out", path("p.ecor")}).status, 0);
        const QJsonObject project =
            QJsonDocument::fromJson(run({path("p.ecor"), "--json"}).out).object();
        QCOMPARE(project["missing"].toArray().size(), 0);
        QCOMPARE(project["poi"].toArray()[0].toObject()["comment"].toString(), QString("deep"));
        QCOMPARE(project["properties"].toObject()["display"].toObject()["contrast"].toDouble(),
                 1.5);
    }

    void refusesWhatMakesNoSense_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("status");
        QTest::newRow("nothing to write") << QStringList{"p.ecor", "--out", "q.ecor"} << 2;
        QTest::newRow("no folder") << QStringList{"p.ecor", "--locate", "/nowhere"} << 1;
        QTest::newRow("cannot be written")
            << QStringList{"p.ecor", "--locate", ".", "--out", "/nowhere/q.ecor"} << 1;
    }

    void refusesWhatMakesNoSense()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, status);
        arguments[0] = path("p.ecor");
        const ProgramRun result = run(arguments);
        QCOMPARE(result.status, status);
        QVERIFY(!result.error.isEmpty());
    }
};

QTEST_GUILESS_MAIN(ProjectCommandTest)
#include "ProjectCommandTest.moc"
