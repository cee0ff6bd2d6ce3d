#include "Bench.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

namespace corv::bench {
namespace {

struct Registered
{
    const char* name;
    std::function<void(Report&)> run;
};

std::vector<Registered>& registered()
{
    static std::vector<Registered> all;
    return all;
}

class TableReport : public Report
{
public:
    explicit TableReport(QString inputFolder) : m_inputFolder(std::move(inputFolder)) {}

    void row(const QString& name, double ratio, double limit, const QString& input,
             bool atMost) override
    {
        const bool holds = atMost ? ratio <= limit : ratio >= limit;
        m_allHold = m_allHold && holds;
        std::printf("%-52s %8.3f  %s %-6.3g %-5s %s\n", qPrintable(name), ratio,
                    atMost ? "<=" : ">=", limit, holds ? "holds" : "MISS", qPrintable(input));
        std::fflush(stdout);
        m_rows.append(QJsonObject{{QStringLiteral("name"), name},
                                  {QStringLiteral("ratio"), ratio},
                                  {QStringLiteral("limit"), limit},
                                  {QStringLiteral("atMost"), atMost}});
    }

    QString inputFolder() const override { return m_inputFolder; }
    const QJsonArray& rows() const { return m_rows; }
    bool allHold() const { return m_allHold; }

private:
    QString m_inputFolder;
    QJsonArray m_rows;
    bool m_allHold = true;
};

} // namespace

Benchmark::Benchmark(const char* name, std::function<void(Report&)> run)
{
    registered().push_back({name, std::move(run)});
}

double secondsOf(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double ratioInTurn(const std::function<void()>& work, const std::function<void()>& floor,
                   int rounds)
{
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const double below = secondsOf(floor);
        ratios.push_back(secondsOf(work) / below);
    }
    return median(ratios);
}

double timeRatio(const std::function<void()>& work, const std::function<void()>& floor, int rounds)
{
    secondsOf(floor);
    secondsOf(work);
    return ratioInTurn(work, floor, rounds);
}

double medianSeconds(const std::function<void()>& work, int rounds)
{
    secondsOf(work);
    std::vector<double> seconds;
    for (int round = 0; round < rounds; ++round)
        seconds.push_back(secondsOf(work));
    return median(seconds);
}

} // namespace corv::bench

/// vistrel-bench OUTPUT.json INPUT_FOLDER [NAME ...]
int main(int argc, char** argv)
{
    using namespace corv::bench;
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QApplication::setApplicationName(QStringLiteral("Vistrel-bench"));
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(message));
    });
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: vistrel-bench OUTPUT.json INPUT_FOLDER [NAME ...]\n");
        return 2;
    }
    QDir().mkpath(arguments[2]);
    TableReport report(QDir(arguments[2]).absolutePath());
    const QStringList names = arguments.mid(3);
    for (const auto& benchmark : registered()) {
        const QString name = QString::fromLatin1(benchmark.name);
        const bool wanted = names.isEmpty() ||
                            std::any_of(names.begin(), names.end(), [&name](const QString& part) {
                                return name.contains(part);
                            });
        if (wanted)
            benchmark.run(report);
    }
    QFile output(arguments[1]);
    const QByteArray json = QJsonDocument(report.rows()).toJson();
    if (!output.open(QIODevice::WriteOnly) || output.write(json) != json.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(arguments[1]));
        return 1;
    }
    return report.allHold() ? 0 : 1;
}
