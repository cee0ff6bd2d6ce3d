#pragma once

#include "Base/Result.h"
#include "Log/LogFile.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

namespace corv {

/// Which part of a group a table shows.
struct LogTableOptions
{
    /// Names of fields, or of one element of a field as "euler_angles[2]", in the order of the
    /// table. Empty for all fields.
    QStringList columns;

    /// At most this many rows a second of log time, the first of each interval; 0 for all rows.
    double rateHz = 0;

    /// Fields of text as text, not as one column for each of their bytes.
    bool textAsText = true;
};

/// A group by its name, or by its id as "#3"; null if the log has none.
const LogGroup* findGroup(const LogFile& log, const QString& name);

/// The packets of a group of a log as a table of comma-separated values: one row for each packet,
/// in the order of the log, numbers in the shortest form that gives the same value again.
///
/// The first line has the names of the columns, with the unit in parentheses where it is known.
class LogTable
{
public:
    /// Fails for a column that the group does not have, for a rate of a group without times, and
    /// for a group that is no table because its fields have no end.
    static Result<LogTable> make(std::shared_ptr<const LogFile> log, const LogGroup& group,
                                 const LogTableOptions& options);

    /// Writes the table through `write`, some hundred kilobytes at a time; false when that fails.
    bool write(const std::function<bool(const char* bytes, size_t size)>& write) const;

    /// Whether a field holds text: bytes whose name or whose values say so.
    static bool isText(const LogVar& var);

private:
    struct Column
    {
        QByteArray title;
        const LogVar* var = nullptr;
        const unsigned char* rows = nullptr; ///< null for text, and without rows
        LogVar::Type type = LogVar::Uint8;
        bool isText = false;
    };

    Status addColumns(const LogGroup& group, const LogVar& var, int element, bool asText);
    Status addNamed(const LogGroup& group, const QString& name, bool textAsText);
    Status chooseRows(const LogGroup& group, double rateHz);
    static char* writeNumber(char* to, char* end, const Column& column, size_t row);

    std::shared_ptr<const LogFile> m_log;
    std::vector<Column> m_columns;
    std::vector<int> m_rows; ///< those shown; empty for all
    int m_rowCount = 0;
    bool m_allRows = true;
};

} // namespace corv
