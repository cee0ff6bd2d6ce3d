#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// What a power failure may find: a file has its bytes on the disk before it has its name, and the
/// folder is flushed after that. Seen in the calls of the program itself.
class WriteOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void aProjectIsFlushedThenNamedThenItsFolderIsFlushed_data()
    {
        QTest::addColumn<bool>("isNew");
        QTest::newRow("a new project") << true;
        QTest::newRow("over another") << false;
    }

    void aProjectIsFlushedThenNamedThenItsFolderIsFlushed()
    {
        QFETCH(bool, isNew);
        const QTemporaryDir folder;
        const QString project = folder.filePath("p.ecor");
        const QString target = isNew ? folder.filePath("q.ecor") : project;
        QFile file(project);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"contents":{"flights":[{"files":{"video":"a.mov","log":""}}]}})");
        file.close();

        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LD_PRELOAD", VISTREL_WRITE_RECORDER);
        environment.insert("VISTREL_WRITES", folder.filePath("writes"));
        program.setProcessEnvironment(environment);
        program.start(VISTREL_CLI,
                      {"project", project, "--locate", folder.path(), "--out", target});
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(program.exitCode(), 0);

        QFile writes(folder.filePath("writes"));
        QVERIFY(writes.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(writes.readAll()).split('\n');
        const int named = lines.indexOf("rename " + target);
        QVERIFY2(named > 0, qPrintable(lines.join('\n')));
        // The bytes, under another name or none: which one depends on the file system.
        const int flushed = lines.indexOf(QRegularExpression(
            "fsync " + QRegularExpression::escape(folder.path()) + "/.*(\\.part|\\(deleted\\))"));
        QVERIFY2(flushed >= 0 && flushed < named, qPrintable(lines.join('\n')));
        QVERIFY(!lines.mid(0, named).contains("fsync " + target));
        // Nothing of the file is flushed or named in between but its own way to the name.
        const int folderFlushed = lines.indexOf("fsync " + folder.path(), named);
        QVERIFY2(folderFlushed == named + 1, qPrintable(lines.join('\n')));
    }
};

QTEST_GUILESS_MAIN(WriteOrderTest)
#include "WriteOrderTest.moc"
