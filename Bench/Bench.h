#pragma once

#include <QString>
#include <functional>
#include <vector>

namespace corv::bench {

/// What a benchmark reports to, and where it may keep its inputs.
class Report
{
public:
    virtual ~Report() = default;

    /// One row of the table: `ratio` must not exceed `limit`, or must reach it if `atMost` is
    /// false. `input` says in a few words what was measured on.
    virtual void row(const QString& name, double ratio, double limit, const QString& input,
                     bool atMost = true) = 0;

    /// A folder for made inputs, kept between runs: make a file only if it is not there.
    virtual QString inputFolder() const = 0;
};

/// Registers a benchmark under the name that `./bench NAME` selects it by. Static, one per group
/// of rows:
///
///     const Benchmark decode("decode", [](Report& report) { ... });
class Benchmark
{
public:
    Benchmark(const char* name, std::function<void(Report&)> run);
};

double secondsOf(const std::function<void()>& work);

/// The middle of the values, of which there is at least one.
double median(std::vector<double> values);

/// Median over `rounds` of work's time over floor's time, measured alternately and without a
/// warm-up: for work that takes long.
double ratioInTurn(const std::function<void()>& work, const std::function<void()>& floor,
                   int rounds);

/// The same, after each of the two has run once as a warm-up.
double timeRatio(const std::function<void()>& work, const std::function<void()>& floor,
                 int rounds = 5);

/// Median of the seconds that `work` takes, warmed up once.
double medianSeconds(const std::function<void()>& work, int rounds = 5);

/// The most memory that `work` needs in a process of its own, in bytes, beyond what that has
/// before. Ends the program if the work fails there.
double peakBytesOf(const std::function<void()>& work);

} // namespace corv::bench
