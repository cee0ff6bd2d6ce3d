#include "Discovery/flightNames.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <tuple>
#include <utility>

namespace corv {
namespace {

using Positions = std::vector<size_t>;

// Files named alike but for their number, by that number.
struct NumberedRow
{
    Positions files;
    bool followsTimes = false; // no higher number has an earlier time
};

// A place in a row for files that were renamed: behind `before`, ahead of `after`.
struct Opening
{
    const NumberedRow* row = nullptr;
    std::optional<size_t> before;
    std::optional<size_t> after;
    Positions renamed; // by their times

    bool isInside() const { return before && after; }
};

class FormerNames
{
public:
    FormerNames(std::vector<FlightName> names, const std::vector<qint64>& timesMs)
        : m_names(std::move(names)), m_timesMs(timesMs)
    {
        findRows();
    }

    std::vector<FlightName> find();

private:
    void findRows();
    bool isRowOfACard(const NumberedRow& row) const;
    qint64 number(size_t file) const { return m_names[file].number.toLongLong(); }
    std::optional<Opening> openingAt(const NumberedRow& row, qint64 timeMs) const;
    std::optional<Opening> nearestOpening(size_t file) const;
    qint64 distance(const Opening& opening, qint64 timeMs) const;
    void fill(const Opening& opening);

    std::vector<FlightName> m_names;
    const std::vector<qint64>& m_timesMs;
    std::vector<NumberedRow> m_rows; // of cards
    std::vector<bool> m_isInRow;     // by file
};

void FormerNames::findRows()
{
    std::map<std::tuple<QString, QString, QString, int>, Positions> alike;
    for (size_t i = 0; i < m_names.size(); ++i) {
        const FlightName& name = m_names[i];
        if (!name.number.isEmpty())
            alike[{name.folder, name.before, name.suffix, name.copy}].push_back(i);
    }
    m_isInRow.assign(m_names.size(), false);
    for (auto& named : alike) {
        NumberedRow row{std::move(named.second)};
        std::stable_sort(row.files.begin(), row.files.end(),
                         [this](size_t a, size_t b) { return number(a) < number(b); });
        if (!isRowOfACard(row))
            continue;
        row.followsTimes =
            std::is_sorted(row.files.begin(), row.files.end(),
                           [this](size_t a, size_t b) { return m_timesMs[a] < m_timesMs[b]; });
        for (const size_t file : row.files)
            m_isInRow[file] = true;
        m_rows.push_back(std::move(row));
    }
}

// People number a few files, and with any numbers; a recorder numbers all of them without a break.
bool FormerNames::isRowOfACard(const NumberedRow& row) const
{
    constexpr size_t fewest = 3;
    constexpr qint64 mostBetween = 10; // on the average: files that are missing, and pictures
    const qint64 numbers = number(row.files.back()) - number(row.files.front());
    return row.files.size() >= fewest &&
           numbers <= mostBetween * static_cast<qint64>(row.files.size());
}

std::optional<Opening> FormerNames::openingAt(const NumberedRow& row, qint64 timeMs) const
{
    const auto after = std::partition_point(row.files.begin(), row.files.end(),
                                            [&](size_t file) { return m_timesMs[file] < timeMs; });
    Opening opening{&row, {}, {}, {}};
    if (after != row.files.begin())
        opening.before = *(after - 1);
    if (after != row.files.end())
        opening.after = *after;
    const bool atTheTimeOfAnother = opening.after && m_timesMs[*opening.after] == timeMs;
    const bool isFull =
        opening.before && opening.after && number(*opening.after) - number(*opening.before) < 2;
    if (atTheTimeOfAnother || isFull)
        return {};
    return opening;
}

qint64 FormerNames::distance(const Opening& opening, qint64 timeMs) const
{
    return opening.before ? timeMs - m_timesMs[*opening.before]
                          : m_timesMs[*opening.after] - timeMs;
}

// Inside a row rather than beyond it, where cards were put together; none where it could be inside
// of several.
std::optional<Opening> FormerNames::nearestOpening(size_t file) const
{
    std::optional<Opening> nearest;
    int inside = 0;
    const qint64 timeMs = m_timesMs[file];
    const auto rank = [&](const Opening& opening) {
        return std::make_pair(!opening.isInside(), distance(opening, timeMs));
    };
    for (const NumberedRow& row : m_rows) {
        if (!row.followsTimes || timeMs < 0 || m_timesMs[row.files.front()] < 0 ||
            m_names[row.files.front()].folder != m_names[file].folder)
            continue;
        const std::optional<Opening> opening = openingAt(row, timeMs);
        if (!opening)
            continue;
        inside += opening->isInside() ? 1 : 0;
        if (!nearest || rank(*opening) < rank(*nearest))
            nearest = opening;
    }
    return inside > 1 ? std::nullopt : nearest;
}

void FormerNames::fill(const Opening& opening)
{
    const auto count = static_cast<qint64>(opening.renamed.size());
    const qint64 first =
        opening.before ? number(*opening.before) + 1 : number(*opening.after) - count;
    if (first < 0 || (opening.after && first + count > number(*opening.after)))
        return;
    const FlightName like = m_names[opening.row->files.front()];
    for (qint64 i = 0; i < count; ++i) {
        FlightName& name = m_names[opening.renamed[static_cast<size_t>(i)]];
        name = like;
        name.number = QStringLiteral("%1").arg(first + i, like.number.size(), 10, QLatin1Char('0'));
    }
}

std::vector<FlightName> FormerNames::find()
{
    std::map<std::pair<const NumberedRow*, size_t>, Opening> openings; // by what follows
    for (size_t file = 0; file < m_names.size(); ++file) {
        if (m_isInRow[file])
            continue;
        const std::optional<Opening> opening = nearestOpening(file);
        if (!opening)
            continue;
        const size_t after = opening->after.value_or(m_names.size());
        openings.emplace(std::make_pair(opening->row, after), *opening)
            .first->second.renamed.push_back(file);
    }
    // Where all of them are beyond the others, a copy took them before or after these, as one that
    // goes by the names does: that is not their place on the card.
    const bool anyInside = std::any_of(openings.begin(), openings.end(),
                                       [](const auto& entry) { return entry.second.isInside(); });
    if (!anyInside)
        return m_names;
    for (auto& entry : openings) {
        Positions& renamed = entry.second.renamed;
        std::sort(renamed.begin(), renamed.end(),
                  [this](size_t a, size_t b) { return m_timesMs[a] < m_timesMs[b]; });
        fill(entry.second);
    }
    return m_names;
}

} // namespace

std::vector<FlightName> formerNames(std::vector<FlightName> names,
                                    const std::vector<qint64>& timesMs)
{
    return FormerNames(std::move(names), timesMs).find();
}

} // namespace corv
