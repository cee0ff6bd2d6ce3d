#include "Bench.h"

#include "Review/PoiModel.h"
#include "Timeline/PoiFilter.h"

#include <QVariantList>
#include <algorithm>
#include <vector>

namespace corv::bench {
namespace {

constexpr int poiCount = 10'000;
constexpr double patienceSeconds = 0.050;

// Each key of a word typed into the filter, and each of its deletion.
void benchFilter(Report& report)
{
    QVariantList list;
    for (int i = 0; i < poiCount; ++i)
        list.append(QVariantMap{
            {QStringLiteral("time"), i * 700},
            {QStringLiteral("name"), QStringLiteral("Panel %1 crack").arg(i)},
            {QStringLiteral("comment"), QStringLiteral("row %1, found on the left").arg(i % 97)}});
    PoiModel model;
    model.setFromList(list);
    PoiFilter filter;
    filter.setPois(&model);
    const QString word = QStringLiteral("crack 97");
    std::vector<double> keys;
    const auto type = [&](int length) {
        keys.push_back(secondsOf([&] { filter.setWords(word.left(length)); }));
    };
    for (int length = 1; length <= word.size(); ++length)
        type(length);
    for (int length = static_cast<int>(word.size()) - 1; length >= 0; --length)
        type(length);
    report.row(QStringLiteral("list of points: slowest key of the filter / 50 ms"),
               *std::max_element(keys.cbegin(), keys.cend()) / patienceSeconds, 1,
               QStringLiteral("%1 points of interest").arg(poiCount));
}

const Benchmark filter("poiList", benchFilter);

} // namespace
} // namespace corv::bench
