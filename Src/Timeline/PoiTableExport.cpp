#include "Timeline/PoiTableExport.h"

#include "Timeline/poiTable.h"

#include <QFileInfo>

namespace corv {

QStringList PoiTableExport::nameFilters() const
{
    QStringList filters;
    for (const PoiTableFormat& format : poiTableFormats())
        filters << QStringLiteral("%1 (*.%2)").arg(format.name, format.suffix);
    return filters;
}

void PoiTableExport::write(const QVariantList& pois, const QString& path)
{
    const LogParser noLog;
    const PoiTable table = poiTable(pois, m_logParser ? *m_logParser : noLog, m_imperialUnits);
    const Status status = writePoiTable(table, path, poiTableFormatOf(path));
    if (status)
        emit written(pois.size() == 1
                         ? tr("1 point of interest is in %1.").arg(QFileInfo(path).fileName())
                         : tr("%1 points of interest are in %2.")
                               .arg(pois.size())
                               .arg(QFileInfo(path).fileName()));
    else
        emit failed(status.failure().sentence);
}

} // namespace corv
