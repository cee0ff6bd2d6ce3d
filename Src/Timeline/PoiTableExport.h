#pragma once

#include "Log/LogParser.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

namespace corv {

/// Writes the points of interest as a table for the window. The parser, whose log gives the values
/// of the instruments, is not owned. Interface thread only.
class PoiTableExport : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::LogParser* logParser MEMBER m_logParser)
    Q_PROPERTY(bool imperialUnits MEMBER m_imperialUnits)
    Q_PROPERTY(QStringList nameFilters READ nameFilters CONSTANT)

public:
    using QObject::QObject;

    /// The formats as a file dialog lists them: "CSV table (*.csv)".
    QStringList nameFilters() const;

    /// Writes points of interest in list form to a file, in the format of its name. Ends in
    /// `written` or `failed`.
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
