#include "Review/PoiModel.h"

#include "Base/videoTime.h"
#include "Review/UndoSteps.h"
#include "Review/logCategory.h"
#include "Review/logPois.h"

#include <QDebug>
#include <QUndoStack>
#include <algorithm>
#include <iterator>
#include <utility>

namespace corv {
namespace {

constexpr int noBatch = -1;

// Enough to keep the worker busy past the moment that each request waits, few enough that what is
// shown next comes soon.
constexpr int mostShownOnTheirWay = 8;

QString quoted(const QString& name)
{
    constexpr int shownLength = 40;
    return QLatin1Char('\'') +
           (name.size() > shownLength ? name.left(shownLength) + QStringLiteral("...") : name) +
           QLatin1Char('\'');
}

Poi logPoi(QTime time, int index, const QImage& thumbnail)
{
    return {time, QStringLiteral("POI %1").arg(index + 1), QString(), thumbnailOf(thumbnail),
            PoiOrigin::log};
}

bool isBefore(const Poi& poi, QTime time)
{
    return poi.time < time;
}

} // namespace

PoiModel::PoiModel(QObject* parent) : QAbstractListModel(parent) {}

void PoiModel::setVideoPlayer(VideoPlayer* videoPlayer)
{
    m_videoPlayer = videoPlayer;
}

void PoiModel::setLogParser(LogParser* logParser)
{
    m_logParser = logParser;
}

// --- The list --------------------------------------------------------------------------------

int PoiModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant PoiModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Poi& poi = m_pois[static_cast<size_t>(index.row())];
    switch (role) {
    case TimeRole:
        return msOfTime(poi.time);
    case Qt::DisplayRole:
    case NameRole:
        return poi.name;
    case CommentRole:
        return poi.comment;
    case ThumbnailRole:
        return poi.thumbnail;
    case OriginRole:
        return static_cast<int>(poi.origin);
    default:
        return {};
    }
}

QHash<int, QByteArray> PoiModel::roleNames() const
{
    return {{TimeRole, "time"},
            {NameRole, "name"},
            {CommentRole, "comment"},
            {ThumbnailRole, "thumbnail"},
            {OriginRole, "origin"}};
}

QVariantList PoiModel::list() const
{
    QVariantList list;
    list.reserve(count());
    for (const Poi& poi : m_pois)
        list.append(listForm(poi));
    return list;
}

const Poi* PoiModel::find(QTime time) const
{
    const auto poi = std::lower_bound(m_pois.begin(), m_pois.end(), time, isBefore);
    return time.isValid() && poi != m_pois.end() && poi->time == time ? &*poi : nullptr;
}

PoiModel::Iterator PoiModel::lowerBound(QTime time)
{
    return std::lower_bound(m_pois.begin(), m_pois.end(), time, isBefore);
}

Poi* PoiModel::findMutable(QTime time)
{
    return const_cast<Poi*>(std::as_const(*this).find(time));
}

void PoiModel::put(const Poi& poi)
{
    const auto place = lowerBound(poi.time);
    const int row = static_cast<int>(std::distance(m_pois.begin(), place));
    if (place != m_pois.end() && place->time == poi.time) {
        *place = poi;
        emit dataChanged(index(row), index(row));
        return;
    }
    beginInsertRows(QModelIndex(), row, row);
    m_pois.insert(place, poi);
    endInsertRows();
    emit countChanged();
}

void PoiModel::erase(QTime time)
{
    if (!find(time))
        return;
    const auto place = lowerBound(time);
    const int row = static_cast<int>(std::distance(m_pois.begin(), place));
    beginRemoveRows(QModelIndex(), row, row);
    m_pois.erase(place);
    endRemoveRows();
    emit countChanged();
}

// --- Steps -----------------------------------------------------------------------------------

void PoiModel::perform(const QString& text, std::vector<PoiChange> changes, int batch)
{
    if (m_undoStack)
        m_undoStack->push(new PoiStep(*this, text, std::move(changes), batch));
    else
        apply(changes, true);
}

void PoiModel::apply(const std::vector<PoiChange>& changes, bool forward)
{
    std::vector<ThumbnailWish> wishes;
    const auto applyOne = [this, forward, &wishes](const PoiChange& change) {
        const std::optional<Poi>& wanted = forward ? change.after : change.before;
        if (!wanted) {
            erase(change.time);
            return;
        }
        const Poi* there = find(change.time);
        const bool needsFrame =
            wanted->thumbnail.isNull() && (!there || (forward && change.fetchesFrame));
        Poi poi = *wanted;
        if (there && poi.thumbnail.isNull() && !needsFrame)
            poi.thumbnail = there->thumbnail;
        put(poi);
        if (needsFrame)
            wishes.push_back({poi.time, FrameHandOver::NullFrameWarning::withTime});
    };
    if (forward)
        std::for_each(changes.begin(), changes.end(), applyOne);
    else
        std::for_each(changes.rbegin(), changes.rend(), applyOne);
    requestThumbnails(wishes);
    emit contentsChanged();
    emit changed();
}

void PoiModel::create(QTime time)
{
    Poi poi;
    poi.time = time;
    poi.name = QStringLiteral("New POI");
    perform(tr("create %1").arg(quoted(poi.name)), {{time, std::nullopt, poi}}, noBatch);
}

void PoiModel::remove(QTime time)
{
    const Poi* poi = find(time);
    if (poi)
        perform(tr("delete %1").arg(quoted(poi->name)), {{time, *poi, std::nullopt}}, noBatch);
}

void PoiModel::removeAll(std::vector<QTime> times)
{
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    std::vector<PoiChange> changes;
    for (const QTime time : times) {
        if (const Poi* poi = find(time))
            changes.push_back({time, *poi, std::nullopt});
    }
    if (changes.size() == 1) {
        remove(changes.front().time);
    } else if (!changes.empty()) {
        const QString text = tr("delete %1 points of interest").arg(changes.size());
        perform(text, std::move(changes), noBatch);
    }
}

bool PoiModel::setTexts(QTime time, const QString& name, const QString& comment)
{
    const Poi* poi = find(time);
    if (!poi)
        return false;
    if (poi->name == name && poi->comment == comment)
        return true;
    Poi edited = *poi;
    edited.name = name;
    edited.comment = comment;
    perform(tr("edit %1").arg(quoted(poi->name)), {{time, *poi, edited}}, noBatch);
    return true;
}

void PoiModel::move(QTime from, QTime to)
{
    const Poi* const source = find(from);
    const Poi* const replaced = find(to);
    Poi moved;
    moved.time = to;
    if (source) {
        moved.name = source->name;
        moved.comment = source->comment;
        moved.origin = source->origin;
    }
    const QString text = tr("move %1").arg(quoted(moved.name));
    const auto before = [](const Poi* poi) {
        return poi ? std::optional<Poi>(*poi) : std::optional<Poi>();
    };
    if (source && from == to) {
        perform(text, {{from, *source, std::nullopt}}, noBatch);
        requestThumbnail(to, FrameHandOver::NullFrameWarning::withTime);
        return;
    }
    std::vector<PoiChange> changes{{to, before(replaced), moved, true}};
    if (source)
        changes.push_back({from, *source, std::nullopt});
    perform(text, std::move(changes), noBatch);
}

// --- Loading ---------------------------------------------------------------------------------

void PoiModel::setFromList(const QVariantList& list)
{
    std::vector<Poi> pois;
    for (const QVariant& entry : list) {
        const QVariantMap map = entry.toMap();
        if (!map.contains(QStringLiteral("time")))
            continue;
        Poi poi;
        poi.time = timeOfMs(map.value(QStringLiteral("time")).toInt());
        poi.name = map.value(QStringLiteral("name")).toString();
        poi.comment = map.value(QStringLiteral("comment")).toString();
        poi.origin = PoiOrigin::project;
        pois.push_back(poi);
    }
    std::vector<ThumbnailWish> wishes;
    wishes.reserve(pois.size());
    std::transform(pois.begin(), pois.end(), std::back_inserter(wishes), [](const Poi& poi) {
        return ThumbnailWish{poi.time, FrameHandOver::NullFrameWarning::withoutTime};
    });
    // Of several at one time the last one is kept.
    std::reverse(pois.begin(), pois.end());
    std::stable_sort(pois.begin(), pois.end(),
                     [](const Poi& a, const Poi& b) { return a.time < b.time; });
    pois.erase(std::unique(pois.begin(), pois.end(),
                           [](const Poi& a, const Poi& b) { return a.time == b.time; }),
               pois.end());

    beginResetModel();
    m_pois = std::move(pois);
    endResetModel();
    m_unseen.clear();
    requestThumbnails(wishes);
    emit countChanged();
    emit contentsChanged();
    emit changed();
}

void PoiModel::clear()
{
    ++m_loading;
    m_held.clear();
    m_isHeld = false;
    m_toRefresh.clear();
    m_isRefreshing = false;
    m_unseen.clear();
    m_shown.clear();
    m_shownOnTheirWay = 0;
    beginResetModel();
    m_pois.clear();
    endResetModel();
    emit cleared();
    emit countChanged();
    emit contentsChanged();
    emit changed();
}

// --- Those of the log ------------------------------------------------------------------------

void PoiModel::addMissingFromLog(As as)
{
    if (!m_logParser)
        return;
    const int batch = ++m_lastBatch;
    int index = 0;
    for (const int ms : logPoiTimesMs(*m_logParser)) {
        const QTime time = timeOfMs(ms);
        if (find(time)) {
            qCInfo(lcReview) << "Already added POI at" << time;
        } else {
            requestFrame(time, FrameHandOver::NullFrameWarning::withTime,
                         [this, time, index, as, batch](const QImage& thumbnail) {
                             insertLogPoi(time, index, thumbnail, as, batch);
                         });
        }
        ++index;
    }
}

void PoiModel::addAllFromLog(std::function<int()> durationMs)
{
    if (!m_logParser)
        return;
    const int batch = ++m_lastBatch;
    int index = 0;
    for (const int ms : logPoiTimesMs(*m_logParser)) {
        if (ms >= 0 && ms <= durationMs()) {
            const QTime time = timeOfMs(ms);
            requestFrame(time, FrameHandOver::NullFrameWarning::withTime,
                         [this, time, index, durationMs, batch](const QImage& thumbnail) {
                             insertLogPoiWhereFree(time, index, thumbnail, durationMs(), batch);
                         });
        }
        ++index;
    }
}

int PoiModel::missingInLog(int durationMs) const
{
    return countInLog(
        [this, durationMs](int ms) { return ms >= 0 && ms < durationMs && !find(timeOfMs(ms)); });
}

int PoiModel::addableFromLog(int durationMs) const
{
    return countInLog([durationMs](int ms) { return ms >= 0 && ms < durationMs; });
}

int PoiModel::countInLog(const std::function<bool(int)>& counts) const
{
    if (!m_logParser)
        return 0;
    const std::vector<int> timesMs = logPoiTimesMs(*m_logParser);
    return static_cast<int>(std::count_if(timesMs.begin(), timesMs.end(), counts));
}

void PoiModel::insertLogPoi(QTime time, int index, const QImage& thumbnail, As as, int batch)
{
    const Poi* there = find(time);
    const PoiChange change{time, there ? std::optional<Poi>(*there) : std::nullopt,
                           logPoi(time, index, thumbnail)};
    if (as == As::step) {
        perform(tr("restore from the log"), {change}, batch);
        return;
    }
    emit loadedFromLog(*change.after);
    apply({change}, true);
}

void PoiModel::insertLogPoiWhereFree(QTime time, int index, const QImage& thumbnail, int durationMs,
                                     int batch)
{
    int freeMs = msOfTime(time);
    for (auto taken = lowerBound(time); taken != m_pois.end() && msOfTime(taken->time) == freeMs;
         ++taken)
        ++freeMs;
    if (freeMs >= durationMs) {
        qCWarning(lcReview) << "Couldn't insert POI at " << time;
        return;
    }
    const QTime freeTime = timeOfMs(freeMs);
    perform(tr("restore from the log"),
            {{freeTime, std::nullopt, logPoi(freeTime, index, thumbnail)}}, batch);
}

// --- Thumbnails ------------------------------------------------------------------------------

void PoiModel::holdThumbnails()
{
    m_isHeld = true;
}

void PoiModel::releaseThumbnails()
{
    m_isHeld = false;
    requestThumbnails(std::exchange(m_held, {}));
    if (hasUnseen())
        emit changed();
}

bool PoiModel::requestFrame(QTime time, FrameHandOver::NullFrameWarning warning,
                            std::function<void(const QImage&)> store, std::function<void()> missing)
{
    if (!m_videoPlayer)
        return false;
    // A frame of the flight before this one would be a wrong picture here.
    return m_frames.request(
        *m_videoPlayer, time, warning,
        [this, loading = m_loading, store = std::move(store)](const QImage& thumbnail) {
            if (loading == m_loading)
                store(thumbnail);
        },
        [this, loading = m_loading, missing = std::move(missing)]() {
            if (loading == m_loading && missing)
                missing();
        });
}

void PoiModel::requestThumbnail(QTime time, FrameHandOver::NullFrameWarning warning)
{
    if (m_isHeld)
        m_held.push_back({time, warning});
    else
        requestFrame(time, warning,
                     [this, time](const QImage& thumbnail) { storeThumbnail(time, thumbnail); });
}

// A list that no screen shows at once would keep the worker busy for minutes.
void PoiModel::requestThumbnails(const std::vector<ThumbnailWish>& wishes)
{
    if (m_isHeld || wishes.size() <= fetchedUnseen) {
        for (const ThumbnailWish& wish : wishes)
            requestThumbnail(wish.time, wish.warning);
        return;
    }
    for (const ThumbnailWish& wish : wishes)
        m_unseen[msOfTime(wish.time)] = wish.warning;
}

bool PoiModel::isUnseen(QTime time) const
{
    return time.isValid() && m_unseen.count(msOfTime(time)) > 0;
}

void PoiModel::showThumbnails(const std::vector<QTime>& times)
{
    m_shown.assign(times.begin(), times.end());
    fetchNextShown();
}

void PoiModel::showThumbnail(QTime time)
{
    if (!isUnseen(time) || !find(time))
        return;
    const auto fetched = m_unseen.extract(msOfTime(time));
    requestThumbnail(time, fetched.mapped());
}

void PoiModel::fetchNextShown()
{
    const auto fetchNext = [this] {
        --m_shownOnTheirWay;
        fetchNextShown();
    };
    while (!m_shown.empty() && m_shownOnTheirWay < mostShownOnTheirWay) {
        const QTime time = m_shown.front();
        m_shown.pop_front();
        if (!isUnseen(time) || !find(time))
            continue;
        const auto fetched = m_unseen.extract(msOfTime(time));
        const bool isRequested = requestFrame(
            time, fetched.mapped(),
            [this, time, fetchNext](const QImage& thumbnail) {
                storeThumbnail(time, thumbnail);
                fetchNext();
            },
            fetchNext);
        m_shownOnTheirWay += isRequested ? 1 : 0;
    }
}

void PoiModel::refreshThumbnails()
{
    // Those that are held are drawn in the new way anyway.
    if (m_isHeld)
        return;
    m_toRefresh.clear();
    if (m_pois.size() > fetchedUnseen) {
        for (const Poi& poi : m_pois)
            m_unseen.emplace(msOfTime(poi.time), FrameHandOver::NullFrameWarning::withTime);
        emit changed();
        return;
    }
    for (const Poi& poi : m_pois)
        m_toRefresh.push_back(poi.time);
    if (!m_isRefreshing)
        refreshNext();
}

// One at a time: a later change or another request for a picture waits for one frame at most.
void PoiModel::refreshNext()
{
    m_isRefreshing = false;
    while (!m_toRefresh.empty() && !m_isRefreshing) {
        const QTime time = m_toRefresh.front();
        m_toRefresh.pop_front();
        if (!find(time))
            continue;
        m_isRefreshing = requestFrame(
            time, FrameHandOver::NullFrameWarning::withTime,
            [this, time](const QImage& thumbnail) {
                storeThumbnail(time, thumbnail);
                refreshNext();
            },
            [this] { refreshNext(); });
        if (!m_isRefreshing)
            m_toRefresh.clear();
    }
}

void PoiModel::storeThumbnail(QTime time, const QImage& thumbnail)
{
    Poi* const poi = findMutable(time);
    if (!poi) {
        qCWarning(lcReview) << "POI not found anymore";
        return;
    }
    poi->thumbnail = thumbnailOf(thumbnail);
    const int row = static_cast<int>(poi - m_pois.data());
    emit dataChanged(index(row), index(row), {ThumbnailRole});
    emit changed();
}

} // namespace corv
