#include "Batch/logTables.h"

#include "Log/LogTable.h"

#include <QDir>
#include <QFile>
#include <optional>

namespace corv {
namespace {

// A name that no other table has; names from a log can be anything.
QString fileName(const LogGroup& group, const QStringList& taken)
{
    QString base = QString::fromStdString(group.getName()).left(60);
    for (QChar& c : base)
        if (c.unicode() >= 0x80 || (!c.isLetterOrNumber() && c != QLatin1Char('_')))
            c = QLatin1Char('_');
    QString name = base + QStringLiteral(".csv");
    for (int number = 2; taken.contains(name, Qt::CaseInsensitive); ++number)
        name = QStringLiteral("%1-%2.csv").arg(base).arg(number);
    return name;
}

Status writeTable(const LogTable& table, const QString& path)
{
    QFile file(path);
    const auto append = [&file](const char* bytes, size_t size) {
        return file.write(bytes, static_cast<qint64>(size)) == static_cast<qint64>(size);
    };
    if (file.open(QIODevice::WriteOnly) && table.write(append) && file.flush())
        return {};
    const bool isFull = file.error() == QFile::ResourceError || file.error() == QFile::WriteError;
    return Failure{isFull ? Failure::Kind::noRoom : Failure::Kind::notWritable,
                   QStringLiteral("%1 cannot be written: %2.").arg(path, file.errorString())};
}

} // namespace

Result<QStringList> writeLogTables(const std::shared_ptr<const LogFile>& log,
                                   const QStringList& wanted, double rateHz, const QString& folder)
{
    QStringList names;
    std::optional<Failure> firstFailure;
    for (const QString& one : wanted) {
        const QString groupName = one.section(QLatin1Char(':'), 0, 0);
        const LogGroup* group = findGroup(*log, groupName);
        Status written;
        if (group) {
            LogTableOptions options;
            options.columns =
                one.section(QLatin1Char(':'), 1).split(QLatin1Char(','), Qt::SkipEmptyParts);
            options.rateHz = rateHz;
            const Result<LogTable> table = LogTable::make(log, *group, options);
            const QString name = fileName(*group, names);
            written =
                table ? writeTable(*table, QDir(folder).filePath(name)) : Status(table.failure());
            if (written)
                names << name;
        } else {
            written = Failure{Failure::Kind::notFound,
                              QStringLiteral("The log has no group \"%1\".").arg(groupName)};
        }
        if (!written && !firstFailure)
            firstFailure = written.failure();
    }
    if (firstFailure)
        return *firstFailure;
    return names;
}

} // namespace corv
