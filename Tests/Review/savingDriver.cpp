// A program that does once whatever a review writes: edits, keeps the unsaved work, saves, saves
// again, copies the flight beside a new project and beside another. It prints how each of them went
// and what it has to say.
//
//     SavingDriver VIDEO LOG FOLDER

#include "Desk.h"

#include <cstdio>

using namespace corv;
using namespace corv::test;

namespace {

void print(const QString& line)
{
    std::printf("%s\n", qPrintable(line.simplified()));
    std::fflush(stdout);
}

void printResult(const char* verb, bool isDone)
{
    print(QStringLiteral("%1 %2").arg(QLatin1String(verb), isDone ? "done" : "failed"));
}

void addPoi(Desk& desk, int ms)
{
    desk.review.pois()->create(timeOfMs(ms));
    desk.review.pois()->setTexts(timeOfMs(ms), QStringLiteral("At %1").arg(ms), QString());
    desk.recovery.flush();
    QCoreApplication::processEvents(); // in which a failure is said
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QString folder = arguments.value(3) + QLatin1Char('/');
    Desk desk(folder + QStringLiteral("recovery"));
    const auto printText = [](const QString&, const QString& text) { print("said " + text); };
    QObject::connect(&desk.review, &Review::problem, printText);
    QObject::connect(&desk.review, &Review::warning, printText);
    QObject::connect(&desk.recovery, &Recovery::notKept,
                     [](const QString& text) { print("not kept " + text); });

    if (!desk.openFlight(arguments.value(1), arguments.value(2)))
        return 1;
    addPoi(desk, 100);
    printResult("save", desk.review.save(folder + QStringLiteral("p.ecor")));
    addPoi(desk, 200);
    printResult("save", desk.review.save(folder + QStringLiteral("p.ecor")));
    addPoi(desk, 300);
    printResult("save", desk.review.saveCopy(folder + QStringLiteral("copy.ecor")));
    printResult("save", desk.review.saveAs(folder + QStringLiteral("as.ecor")));
    addPoi(desk, 400);
    return 0;
}
