#include "Timeline/PoiFilter.h"

#include "Base/videoTime.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace corv {

PoiFilter::PoiFilter(QObject* parent) : QSortFilterProxyModel(parent)
{
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    m_collator.setNumericMode(true);
    setDynamicSortFilter(true);
    sort(0);
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(this, signal, this, &PoiFilter::countChanged);
    connect(this, &QAbstractItemModel::modelReset, this, &PoiFilter::countChanged);
}

void PoiFilter::setPois(PoiModel* pois)
{
    if (pois == m_pois)
        return;
    m_pois = pois;
    setSourceModel(pois);
    emit poisChanged();
}

void PoiFilter::setWords(const QString& words)
{
    if (words == m_words)
        return;
    m_words = words;
    m_parts = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    invalidateFilter();
    emit wordsChanged();
}

void PoiFilter::setByName(bool byName)
{
    if (byName == m_byName)
        return;
    m_byName = byName;
    invalidate();
    emit byNameChanged();
}

QVariant PoiFilter::data(const QModelIndex& index, int role) const
{
    if (role == timeTextRole)
        return textOfTime(timeOfRow(index.row()));
    if (role != firstLineRole)
        return QSortFilterProxyModel::data(index, role);
    const QString text = QSortFilterProxyModel::data(index, PoiModel::CommentRole).toString();
    return text.section(QLatin1Char('\n'), 0, 0);
}

QHash<int, QByteArray> PoiFilter::roleNames() const
{
    QHash<int, QByteArray> names = QSortFilterProxyModel::roleNames();
    names.insert(firstLineRole, QByteArrayLiteral("firstLine"));
    names.insert(timeTextRole, QByteArrayLiteral("timeText"));
    return names;
}

QTime PoiFilter::timeOfRow(int row) const
{
    const QModelIndex place = index(row, 0);
    if (!place.isValid())
        return {};
    return QTime(0, 0).addMSecs(place.data(PoiModel::TimeRole).toInt());
}

int PoiFilter::rowOfTime(QTime time) const
{
    const int timeMs = QTime(0, 0).msecsTo(time);
    for (int row = 0; time.isValid() && row < rowCount(); ++row) {
        if (index(row, 0).data(PoiModel::TimeRole).toInt() == timeMs)
            return row;
    }
    return -1;
}

void PoiFilter::removeRowsOf(const QVariantList& rows)
{
    std::vector<QTime> times;
    for (const QVariant& row : rows)
        times.push_back(timeOfRow(row.toInt()));
    if (m_pois)
        m_pois->removeAll(std::move(times));
}

bool PoiFilter::filterAcceptsRow(int row, const QModelIndex&) const
{
    if (m_parts.isEmpty() || !m_pois)
        return true;
    const auto& pois = m_pois->pois();
    if (row < 0 || row >= static_cast<int>(pois.size()))
        return false;
    const Poi& poi = pois[static_cast<size_t>(row)];
    return std::all_of(m_parts.cbegin(), m_parts.cend(), [&poi](const QString& part) {
        return poi.name.contains(part, Qt::CaseInsensitive) ||
               poi.comment.contains(part, Qt::CaseInsensitive);
    });
}

bool PoiFilter::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (m_byName && m_pois) {
        const auto& pois = m_pois->pois();
        const int order = m_collator.compare(pois[static_cast<size_t>(left.row())].name,
                                             pois[static_cast<size_t>(right.row())].name);
        if (order != 0)
            return order < 0;
    }
    // The model is sorted by time.
    return left.row() < right.row();
}

} // namespace corv
