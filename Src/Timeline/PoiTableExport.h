#pragma once

#include "Log/LogParser.h"

#include <QObject>
#include <QString>
#include <QVariantList>

namespace corv {

/// Writes the points of interest as a table for the window. The parser, whose log gives the values
/// of the instruments, is not owned. Interface thread only.
class PoiTableExport : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::LogParser* logParser MEMBER m_logParser)
    Q_PROPERTY(bool imperialUnits MEMBER m_imperialUnits)

public:
    using QObject::QObject;

    /// Writes points of interest in list form to a file, as JSON where its name ends in ".json",
    /// else as comma-separated values. Ends in `written` or `failed`.
    Q_INVOKABLE void write(const QVariantList& pois, const QString& path);

signals:
    /// In a sentence each.
    void written(const QString& text);
    void failed(const QString& text);

private:
    LogParser* m_logParser = nullptr;
    bool m_imperialUnits = false;
};

} // namespace corv
