#pragma once

#include "Review/PoiModel.h"

#include <QCollator>
#include <QPointer>
#include <QSortFilterProxyModel>
#include <QString>
#include <QTime>
#include <QVariantList>

namespace corv {

/// The points of interest as a list shows them: those whose name or description contains each word
/// of the filter, in any case, sorted by time or by name. It has the roles of the model,
/// "firstLine", the first line of the description, and "timeText", the time as minutes, seconds and
/// milliseconds. Interface thread only.
class PoiFilter : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_PROPERTY(corv::PoiModel* pois READ pois WRITE setPois NOTIFY poisChanged)
    Q_PROPERTY(QString words READ words WRITE setWords NOTIFY wordsChanged)
    Q_PROPERTY(bool byName READ byName WRITE setByName NOTIFY byNameChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    static constexpr int firstLineRole = Qt::UserRole + 100;
    static constexpr int timeTextRole = firstLineRole + 1;

    explicit PoiFilter(QObject* parent = nullptr);

    PoiModel* pois() const { return m_pois; }
    void setPois(PoiModel* pois);

    const QString& words() const { return m_words; }
    void setWords(const QString& words);

    /// By name, and by time among equal names; else by time.
    bool byName() const { return m_byName; }
    void setByName(bool byName);

    int count() const { return rowCount(); }

    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// The time of a row; invalid beyond the list.
    Q_INVOKABLE QTime timeOfRow(int row) const;

    /// The row of the point of interest at `time`; -1 if the list does not show it.
    Q_INVOKABLE int rowOfTime(QTime time) const;

    /// Deletes the points of interest of these rows, as one step.
    Q_INVOKABLE void removeRowsOf(const QVariantList& rows);

signals:
    void poisChanged();
    void wordsChanged();
    void byNameChanged();
    void countChanged();

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    QPointer<PoiModel> m_pois;
    QString m_words;
    QStringList m_parts;
    bool m_byName = false;
    QCollator m_collator; ///< "POI 2" before "POI 10", in any case
};

} // namespace corv
