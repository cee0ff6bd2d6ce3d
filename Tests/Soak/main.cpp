#include "Activity.h"
#include "Support/trustRow.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <cstdio>
#include <vector>

using namespace corv::soak;

namespace {

struct Tally
{
    std::unique_ptr<Activity> activity;
    quint32 steps = 0;
};

/// The generator of one step: the same for the same seed, activity and number.
QRandomGenerator generatorOf(quint32 seed, const QString& activity, quint32 step)
{
    const QByteArray name = activity.toUtf8();
    std::vector<quint32> numbers{seed, step};
    for (const char letter : name)
        numbers.push_back(static_cast<quint32>(letter));
    return QRandomGenerator(numbers.data(), static_cast<int>(numbers.size()));
}

std::vector<Tally> allActivities(const Workshop& shop)
{
    std::vector<Tally> all;
    all.push_back({makeKills(shop)});
    all.push_back({makeFullDisks(shop)});
    all.push_back({makeVanishingCards(shop)});
    all.push_back({makeBrokenDownloads(shop)});
    return all;
}

bool doStep(Tally& tally, quint32 seed)
{
    QRandomGenerator random = generatorOf(seed, tally.activity->name(), tally.steps);
    const QString problem = tally.activity->step(random);
    if (problem.isEmpty()) {
        ++tally.steps;
        return true;
    }
    std::printf("FAILED  %s\n  again: vistrel-soak --seed %u --only %s --first %u\n",
                qPrintable(problem), seed, qPrintable(tally.activity->name()), tally.steps);
    return false;
}

int soak(std::vector<Tally>& tallies, quint32 seed, qint64 seconds)
{
    QElapsedTimer timer;
    timer.start();
    do {
        for (Tally& tally : tallies) {
            if (!doStep(tally, seed))
                return 1;
        }
        std::fflush(stdout);
    } while (timer.elapsed() < seconds * 1000);
    for (const Tally& tally : tallies) {
        std::printf("%-10s %5u steps, all whole\n", qPrintable(tally.activity->name()),
                    tally.steps);
        corv::test::trustRow(QStringLiteral("Mishaps under AddressSanitizer"),
                             tally.activity->title(),
                             QStringLiteral("%1, nothing lost").arg(tally.steps));
    }
    return 0;
}

bool makeSample(const QString& folder)
{
    return QProcess::execute(QStringLiteral(SAMPLE_FLIGHT),
                             {folder, QStringLiteral("--minutes"), QStringLiteral("0.07")}) == 0;
}

} // namespace

/// vistrel-soak --seed N --seconds T --folder DIR [--only NAME] [--first STEP]
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QCoreApplication::setApplicationName(QStringLiteral("Vistrel-soak"));
    QCommandLineParser parser;
    const auto option = [&parser](const char* name, const char* value) {
        const QCommandLineOption made(QString::fromLatin1(name), QString(),
                                      QString::fromLatin1(value));
        parser.addOption(made);
        return made;
    };
    const QCommandLineOption seed = option("seed", "1");
    const QCommandLineOption seconds = option("seconds", "30");
    const QCommandLineOption folder = option("folder", "soak");
    const QCommandLineOption only = option("only", "name");
    const QCommandLineOption first = option("first", "0");
    const QCommandLineOption save = option("save", "folder");
    const QCommandLineOption update = option("update", "address");
    parser.process(application);
    if (parser.isSet(save))
        return saveWithoutEnd(parser.value(save));
    if (parser.isSet(update))
        return lookForUpdate(parser.value(update));

    QDir shopFolder(
        QDir(parser.isSet(folder) ? parser.value(folder) : QStringLiteral("soak")).absolutePath());
    shopFolder.removeRecursively();
    shopFolder.mkpath(QStringLiteral("."));
    const QString sample = shopFolder.filePath(QStringLiteral("sample"));
    if (!makeSample(sample)) {
        std::fprintf(stderr, "the sample flight cannot be made\n");
        return 2;
    }
    const Workshop shop{shopFolder.path(),
                        QStringLiteral(VISTREL_CLI),
                        QCoreApplication::applicationFilePath(),
                        sample + QStringLiteral("/sample.ecor"),
                        sample + QStringLiteral("/DCIM/101_CORV/CORV0001.MOV"),
                        sample + QStringLiteral("/FLIGHT01.LOG")};
    std::vector<Tally> chosen;
    for (Tally& tally : allActivities(shop)) {
        if (parser.isSet(only) && tally.activity->name() != parser.value(only))
            continue;
        tally.steps = parser.value(first).toUInt();
        chosen.push_back(std::move(tally));
    }
    return soak(chosen, parser.value(seed).toUInt(), parser.value(seconds).toLongLong());
}
