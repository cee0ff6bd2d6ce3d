#include "Batch/flightResults.h"
#include "Support/ProgramRun.h"
#include "Support/ScratchDisk.h"
#include "Support/Servers.h"
#include "Support/TestCard.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <csignal>
#include <memory>

using namespace corv;
using namespace corv::test;

namespace {

constexpr int flightCount = 3;
constexpr int smallDiskKb = 900;
constexpr int largeDiskKb = 512 * 1024;
bool hasOwnMounts = false;

ProgramRun shell(const QString& command, const QProcessEnvironment& environment)
{
    return runProgram("/bin/bash", {"-c", command}, environment);
}

} // namespace

/// The engines that work on many machines, each as it is installed here: GNU parallel over ssh to
/// two names of the loopback, a Slurm cluster of one node, and the unit that a card starts. In each
/// the worker of a flight is killed and the disk is full; all end as one quiet review.
class EnginesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void parallelTakesNoOptions();
    void parallelOverSshReviewsLikeOneQuietRun();
    void parallelEndsAsTheSearchDid_data();
    void parallelEndsAsTheSearchDid();
    void slurmTasksTakeOneFlightAfterTheOther();
    void slurmReviewsLikeOneQuietRun();
    void systemdAcceptsTheUnit();
    void unitOfACardReviewsLikeOneQuietRun();

private:
    QString path(const QString& name) const { return m_base.filePath(name); }
    void reviewsLikeOneQuietRun(const QStringList& command);
    int mostAtOnce() const;
    QStringList optionsOfAll() const { return {"--copy", "--thermal"}; }

    QTemporaryDir m_base;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
    QMap<QString, QByteArray> m_quiet;
    std::unique_ptr<ScratchDisk> m_disk;
};

void EnginesTest::initTestCase()
{
    if (!hasOwnMounts || ::geteuid() != 0)
        QSKIP("the servers and the small disks need the administrator");
    for (const QString name : {"card", "tmp", "disk", "killed", "ssh", "slurm"})
        QVERIFY(QDir().mkpath(path(name)));
    // The socket of munge is for everybody.
    QVERIFY(QFile::setPermissions(m_base.path(), QFile::Permissions(0x7711)));
    TestCard card;
    card.flights = flightCount;
    QVERIFY(card.write(path("card")));
    m_environment.insert("TMPDIR", path("tmp"));
    // No word processor here: printing is no matter of the engines.
    const QString quiet = "env PATH=/nonexistent " VISTREL_CLI " review --out " + path("quiet") +
                          ' ' + optionsOfAll().join(' ') + ' ' + path("card");
    const ProgramRun review = shell(quiet, m_environment);
    QVERIFY2(review.status == 0, review.error + review.out);
    m_quiet = resultsIn(path("quiet"));
    QCOMPARE(m_quiet.keys().filter(QRegularExpression("/report.docx:word/document.xml$")).size(),
             flightCount);

    // The tool as the engines see it: the first attempt at each flight is killed in mid-work.
    QVERIFY(writeText(path("vistrel-cli"),
                      "#!/bin/bash\n"
                      "export PATH=/usr/bin:/bin TMPDIR=" +
                          path("tmp") +
                          "\n"
                          "tool() { exec env PATH=/nonexistent " VISTREL_CLI " \"$@\"; }\n"
                          "case \" $* \" in *' --job '*) ;; *) tool \"$@\" ;; esac\n"
                          "job=$(cat)\n"
                          "flight=$(md5sum <<<\"$job\" | cut -c1-32)\n"
                          "if mkdir " +
                          path("killed") +
                          "/$flight 2>/dev/null; then\n"
                          "    echo begin >>" +
                          path("worked") +
                          "\n"
                          "    (tool \"$@\") <<<\"$job\" & worker=$!\n"
                          "    sleep 0.3\n"
                          "    kill -9 $worker $$\n"
                          "fi\n"
                          "(tool \"$@\") <<<\"$job\"\n"
                          "status=$?\n"
                          "echo end >>" +
                          path("worked") +
                          "\n"
                          "exit $status\n",
                      true));
    m_environment.insert("VISTREL_CLI", path("vistrel-cli"));
}

void EnginesTest::init()
{
    QDir(path("killed")).removeRecursively();
    QVERIFY(QDir().mkpath(path("killed")));
    m_disk.reset();
    m_disk = std::make_unique<ScratchDisk>(path("disk"), smallDiskKb);
    QVERIFY(m_disk->isMounted());
}

void EnginesTest::reviewsLikeOneQuietRun(const QStringList& command)
{
    const auto run = [&] { return runProgram(command[0], command.mid(1), m_environment); };
    const ProgramRun full = run();
    QVERIFY2(full.status == 3 || full.status == 1, full.out + full.error);
    QVERIFY2(full.out.contains("\"noRoom\""), full.out + full.error);
    QVERIFY(m_disk->resize(largeDiskKb));
    QDir(path("killed")).removeRecursively();
    QVERIFY(QDir().mkpath(path("killed")));
    QFile::remove(path("worked"));
    const ProgramRun whole = run();
    QVERIFY2(whole.status == 0, whole.out + whole.error);
    QCOMPARE(whole.out.count("\"finished\""), flightCount);
    QCOMPARE(int(QDir(path("killed")).count()) - 2, flightCount);
    QCOMPARE(differencesOf(resultsIn(path("disk")), m_quiet).join('\n'), QString());
    QCOMPARE(mostAtOnce(), 2);
}

// How many flights were worked on at the same time.
int EnginesTest::mostAtOnce() const
{
    QFile worked(path("worked"));
    int now = 0;
    int most = 0;
    if (worked.open(QIODevice::ReadOnly))
        for (const QByteArray& line : worked.readAll().trimmed().split('\n')) {
            now += line == "begin" ? 1 : -1;
            most = std::max(most, now);
        }
    return most;
}

// Options are the user's choice: none of them is no empty word.
void EnginesTest::parallelTakesNoOptions()
{
    QProcessEnvironment environment = m_environment;
    environment.insert("VISTREL_CLI", path("words"));
    QVERIFY(writeText(path("words"),
                      "#!/bin/bash\n"
                      "case \" $* \" in\n"
                      "*' --list '*) echo '{}' ;;\n"
                      "*' --job '*) printf '%s|' \"$@\" >" +
                          path("disk/words") + " ;;\nesac\n",
                      true));
    const ProgramRun run = runProgram(VISTREL_BATCH "/review-parallel",
                                      {path("disk"), ":", path("card")}, environment);
    QVERIFY2(run.status == 0, run.out + run.error);
    QFile words(path("disk/words"));
    QVERIFY(words.open(QIODevice::ReadOnly));
    QCOMPARE(words.readAll(), "review|--job|-|--out|" + path("disk").toUtf8() + '|');
}

void EnginesTest::parallelOverSshReviewsLikeOneQuietRun()
{
    const QString port = QString::number(freePort());
    for (const QString key : {"host", "user"})
        QCOMPARE(
            runProgram("ssh-keygen", {"-q", "-t", "ed25519", "-N", "", "-f", path("ssh/" + key)})
                .status,
            0);
    QVERIFY(QFile::copy(path("ssh/user.pub"), path("ssh/authorized")));
    QVERIFY(QDir().mkpath("/run/sshd")); // what the server's package makes at its start
    QVERIFY(writeText(path("ssh/server"), "Port " + port +
                                              "\nListenAddress 127.0.0.1\n"
                                              "ListenAddress 127.0.0.2\nHostKey " +
                                              path("ssh/host") +
                                              "\nPidFile none\nStrictModes no\nUsePAM no\n"
                                              "AuthorizedKeysFile " +
                                              path("ssh/authorized") + '\n'));
    QVERIFY(writeText(path("ssh/client"),
                      "Host *\nPort " + port + "\nIdentityFile " + path("ssh/user") +
                          "\nUserKnownHostsFile /dev/null\nStrictHostKeyChecking no\n"
                          "LogLevel ERROR\nHost one\nHostName 127.0.0.1\n"
                          "Host two\nHostName 127.0.0.2\n"));
    const Server server("/usr/sbin/sshd", {"-D", "-e", "-f", path("ssh/server")}, path("ssh/log"));
    m_environment.insert("PARALLEL_SSH", "ssh -F " + path("ssh/client"));
    QTRY_COMPARE(shell("ssh -F " + path("ssh/client") + " two true", m_environment).status, 0);
    reviewsLikeOneQuietRun(QStringList{VISTREL_BATCH "/review-parallel", path("disk"),
                                       "1/one,1/two", path("card"), "--"} +
                           optionsOfAll());
    if (QTest::currentTestFailed())
        return;
    // Both hosts have worked.
    QFile log(path("disk/.batch/parallel.log"));
    QVERIFY(log.open(QIODevice::ReadOnly));
    const QByteArray lines = log.readAll();
    QVERIFY2(lines.contains("\tone\t") && lines.contains("\ttwo\t"), lines);
}

// What the search left out is not done, also where all flights of the list are.
void EnginesTest::parallelEndsAsTheSearchDid_data()
{
    QTest::addColumn<int>("search");
    QTest::addColumn<int>("gathering");
    QTest::addColumn<int>("status");
    QTest::newRow("nothing found") << 1 << 0 << 1;
    QTest::newRow("a file left out") << 3 << 0 << 3;
    QTest::newRow("a file left out, no flight done") << 3 << 1 << 1;
    QTest::newRow("a part done") << 0 << 3 << 3;
}

void EnginesTest::parallelEndsAsTheSearchDid()
{
    QFETCH(int, search);
    QFETCH(int, gathering);
    QProcessEnvironment environment = m_environment;
    environment.insert("VISTREL_CLI", path("statuses"));
    QVERIFY(writeText(path("statuses"),
                      QStringLiteral("#!/bin/bash\n"
                                     "case \" $* \" in\n"
                                     "*' --list '*) echo '{}'; exit %1 ;;\n"
                                     "*' --gather '*) exit %2 ;;\nesac\n")
                          .arg(search)
                          .arg(gathering),
                      true));
    const ProgramRun run = runProgram(VISTREL_BATCH "/review-parallel",
                                      {path("disk"), ":", path("card")}, environment);
    QTEST(run.status, "status");
}

// Two tasks at once do all flights; those that wait behind them are ended.
void EnginesTest::slurmTasksTakeOneFlightAfterTheOther()
{
    const SlurmCluster cluster(path("slurm"));
    QVERIFY(cluster.isReady());
    QProcessEnvironment environment = m_environment;
    environment.insert("SLURM_CONF", cluster.configuration());
    environment.insert("VISTREL_CLI", path("tasks"));
    QVERIFY(writeText(path("tasks"),
                      "#!/bin/bash\n"
                      "case \" $* \" in\n"
                      "*' --list '*) printf '%s\\n' 1 2 3 4 5; exit 3 ;;\n"
                      "*' --job '*) echo \"$(cat) $SLURM_ARRAY_TASK_ID\" >>" +
                          path("disk/tasks") + " ;;\nesac\n",
                      true));
    const ProgramRun run =
        runProgram(VISTREL_BATCH "/review-slurm", {path("disk"), path("card")}, environment);
    QVERIFY2(run.status == 3, run.out + run.error); // the search left something out
    QFile tasks(path("disk/tasks"));
    QVERIFY(tasks.open(QIODevice::ReadOnly));
    QStringList flights;
    for (const QString& line : QString::fromUtf8(tasks.readAll()).trimmed().split('\n')) {
        flights << line.section(' ', 0, 0);
        QVERIFY2(line.endsWith(" 1") || line.endsWith(" 2"), qPrintable(line));
    }
    flights.sort();
    QCOMPARE(flights, QStringList({"1", "2", "3", "4", "5"}));
    QCOMPARE(QDir(path("disk/.batch")).entryList({"taken.*"}), QStringList());
}

void EnginesTest::slurmReviewsLikeOneQuietRun()
{
    const SlurmCluster cluster(path("slurm"));
    QVERIFY(cluster.isReady());
    m_environment.insert("SLURM_CONF", cluster.configuration());
    reviewsLikeOneQuietRun(
        QStringList{VISTREL_BATCH "/review-slurm", path("disk"), path("card"), "--"} +
        optionsOfAll());
    if (QTest::currentTestFailed())
        return;
    QFile gathered(path("disk/.batch/gather.log"));
    QVERIFY(gathered.open(QIODevice::ReadOnly));
    QCOMPARE(gathered.readAll().count("\"finished\""), flightCount);
    QVERIFY(cluster.isRunning());
}

// The unit as it is installed, with its program in the tree.
void EnginesTest::systemdAcceptsTheUnit()
{
    QFile unit(VISTREL_CARD_UNIT);
    QVERIFY(unit.open(QIODevice::ReadOnly));
    QString text = QString::fromUtf8(unit.readAll());
    text.replace("@VISTREL_REVIEW_CARD@", VISTREL_BATCH "/review-card");
    QVERIFY(text.contains("ExecStart=" VISTREL_BATCH "/review-card /dev/%I\n"));
    const QString copy = path("vistrel-card@.service");
    QVERIFY(writeText(copy, text));
    const ProgramRun good = runProgram("systemd-analyze", {"verify", "--man=no", copy});
    QVERIFY2(good.status == 0 && good.error.isEmpty(), good.error);
    // It would have said so.
    QVERIFY(writeText(copy, text.replace("Nice=10", "Nice=lots")));
    QVERIFY(!runProgram("systemd-analyze", {"verify", "--man=no", copy}).error.isEmpty());
}

// A card on a device, and the line of the unit for it.
void EnginesTest::unitOfACardReviewsLikeOneQuietRun()
{
    const QString image = path("card.img");
    const ProgramRun card =
        shell("truncate -s 64M " + image + " && /sbin/mkfs.ext4 -q -L CORV1 -d " + path("card") +
                  ' ' + image + " && /sbin/losetup --find --show --read-only " + image,
              m_environment);
    const QString device = QString::fromUtf8(card.out).trimmed();
    if (device.isEmpty())
        QSKIP("no device can be made of a file here");
    struct Detach
    {
        QString device;
        ~Detach() { QProcess::execute("/sbin/losetup", {"--detach", device}); }
    } const detach{device};
    QFile unit(VISTREL_CARD_UNIT);
    QVERIFY(unit.open(QIODevice::ReadOnly));
    const QString line = QRegularExpression("ExecStart=@VISTREL_REVIEW_CARD@ (.*)")
                             .match(QString::fromUtf8(unit.readAll()))
                             .captured(1)
                             .replace("/dev/%I", device);
    m_environment.insert("VISTREL_CARD_OUT", path("disk"));
    m_environment.insert("VISTREL_CARD_OPTIONS", optionsOfAll().join(' '));
    // As the unit has it: a folder for the mount, and mounts that nobody else sees.
    m_environment.insert("RUNTIME_DIRECTORY", path("run"));
    const QString command =
        "mkdir -p " + path("run") + "; exec unshare --mount " VISTREL_BATCH "/review-card " + line;
    m_environment.insert("PATH", "/usr/sbin:/usr/bin:/sbin:/bin");

    const ProgramRun full = shell(command, m_environment);
    QVERIFY2((full.status == 3 || full.status == 1) && full.out.contains("\"noRoom\""),
             full.out + full.error);
    QVERIFY(m_disk->resize(largeDiskKb));
    // Killed with all that it started, as the system does it.
    const ProgramRun killed = shell(
        "set -m; " + command + " >/dev/null & sleep 0.5; kill -9 -$!; wait $!", m_environment);
    QCOMPARE(killed.status, 128 + SIGKILL);
    const ProgramRun whole = shell(command, m_environment);
    QVERIFY2(whole.status == 0, whole.out + whole.error);
    QCOMPARE(shell("findmnt --noheadings " + device, m_environment).out, QByteArray());
    // With copies the way to the card is in no result.
    QCOMPARE(differencesOf(resultsIn(path("disk")), m_quiet).join('\n'), QString());
}

int main(int argc, char** argv)
{
    hasOwnMounts = takeOwnMounts();
    QCoreApplication application(argc, argv);
    EnginesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "EnginesTest.moc"
