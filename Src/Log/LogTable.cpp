#include "Log/LogTable.h"

#include "Base/csv.h"
#include "Log/logUnits.h"
#include "Log/printable.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace corv {
namespace {

// No packet holds more elements than bytes; a description that promises more describes no table.
constexpr size_t kMostColumns = 0xffff;

constexpr int kLongestText = 50; // of `LogVar::getString`
constexpr size_t kChunkBytes = size_t(256) << 10;
constexpr size_t kLongestNumber = 32;

bool hasTextName(const LogVar& var)
{
    const QByteArray name = QByteArray::fromStdString(var.getName()).toLower();
    constexpr const char* kEndings[] = {"name", "text", "string", "comment", "label"};
    return std::any_of(std::begin(kEndings), std::end(kEndings),
                       [&name](const char* ending) { return name.endsWith(ending); });
}

// Printable characters up to a NUL, with nothing but NULs behind it; `isEmpty` without any.
bool isTextRow(const LogVar& var, int row, bool* isEmpty)
{
    QByteArray bytes;
    for (int column = 0; column < var.getNb(); ++column) {
        quint8 byte = 0;
        var.getU8(column, row, &byte);
        bytes += static_cast<char>(byte);
    }
    const QByteArray text = bytes.left(static_cast<int>(qstrnlen(bytes, uint(bytes.size()))));
    *isEmpty = text.isEmpty();
    const bool isPadded = bytes.mid(text.size()).count('\0') == bytes.size() - text.size();
    const QString shown = QString::fromUtf8(text);
    return isPadded && !shown.contains(QChar::ReplacementCharacter) && printable(shown) == shown;
}

template <typename T>
char* writeAs(char* to, char* end, const unsigned char* from)
{
    T value;
    std::memcpy(&value, from, sizeof(value));
    return std::to_chars(to, end, value).ptr;
}

} // namespace

const LogGroup* findGroup(const LogFile& log, const QString& name)
{
    if (const LogGroup* group = log.getGroup(name.toStdString()))
        return group;
    bool isNumber = false;
    const int id = name.mid(1).toInt(&isNumber);
    if (!name.startsWith(QLatin1Char('#')) || !isNumber)
        return nullptr;
    const auto& groups = log.getGroups();
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [id](const LogGroup& group) { return group.getId() == id; });
    return found == groups.end() ? nullptr : &*found;
}

bool LogTable::isText(const LogVar& var)
{
    if (!var.holds<quint8>() || var.getNb() < 2 || var.getNb() > kLongestText)
        return false;
    if (hasTextName(var))
        return true;
    bool anyText = false;
    for (int row = 0; row < var.getNbPackets(); ++row) {
        bool isEmpty = true;
        if (!isTextRow(var, row, &isEmpty))
            return false;
        anyText = anyText || !isEmpty;
    }
    return anyText;
}

Result<LogTable> LogTable::make(std::shared_ptr<const LogFile> log, const LogGroup& group,
                                const LogTableOptions& options)
{
    LogTable table;
    table.m_log = std::move(log);
    table.m_rowCount = group.getNbPackets();
    for (const QString& name : options.columns) {
        if (const Status status = table.addNamed(group, name, options.textAsText); !status)
            return status.failure();
    }
    if (options.columns.isEmpty()) {
        for (const LogVar& var : group.getVars()) {
            const bool asText = options.textAsText && isText(var);
            if (const Status status = table.addColumns(group, var, -1, asText); !status)
                return status.failure();
        }
    }
    if (const Status status = table.chooseRows(group, options.rateHz); !status)
        return status.failure();
    return table;
}

// Adds one element of a field, or all of them for -1.
Status LogTable::addColumns(const LogGroup& group, const LogVar& var, int element, bool asText)
{
    const QByteArray name = printable(QString::fromStdString(var.getName())).toUtf8();
    const QByteArray unit = logUnit(group.getName(), var.getName());
    const auto titled = [&unit](const QByteArray& title) {
        return csvText(QString::fromUtf8(unit.isEmpty() ? title : title + " (" + unit + ')'));
    };
    if (asText) {
        m_columns.push_back({titled(name), &var, nullptr, var.getType(), true});
        return {};
    }
    const int first = element < 0 ? 0 : element;
    const int last = element < 0 ? var.getNb() - 1 : element;
    if (last - first >= int(kMostColumns) - int(m_columns.size())) {
        return Failure{Failure::Kind::tooLarge,
                       QStringLiteral("The group \"%1\" has too many columns for a table.")
                           .arg(QString::fromStdString(group.getName()))};
    }
    // Rows that a field does not have cannot be shown.
    m_rowCount = std::min(m_rowCount, var.getNbPackets());
    for (int column = first; column <= last; ++column) {
        void* rows = nullptr;
        var.getColumn(column, &rows);
        const QByteArray title =
            var.getNb() == 1 ? name : name + '[' + QByteArray::number(column) + ']';
        m_columns.push_back(
            {titled(title), &var, static_cast<const unsigned char*>(rows), var.getType(), false});
    }
    return {};
}

Status LogTable::addNamed(const LogGroup& group, const QString& name, bool textAsText)
{
    const QString wanted = name.trimmed();
    if (const LogVar* var = group.getVar(wanted.toStdString()))
        return addColumns(group, *var, -1, textAsText && isText(*var));
    const auto bracket = wanted.lastIndexOf(QLatin1Char('['));
    if (bracket > 0 && wanted.endsWith(QLatin1Char(']'))) {
        bool isNumber = false;
        const int element = wanted.mid(bracket + 1, wanted.size() - bracket - 2).toInt(&isNumber);
        const LogVar* var = group.getVar(wanted.left(bracket).toStdString());
        if (var && isNumber && element >= 0 && element < var->getNb())
            return addColumns(group, *var, element, false);
    }
    return Failure{Failure::Kind::notFound,
                   QStringLiteral("The group \"%1\" has no column \"%2\".")
                       .arg(QString::fromStdString(group.getName()), wanted)};
}

Status LogTable::chooseRows(const LogGroup& group, double rateHz)
{
    if (rateHz <= 0)
        return {};
    const LogColumn<quint32> times = group.column<quint32>("time");
    if (times.empty() && group.getNbPackets() > 0) {
        return Failure{Failure::Kind::notPossible,
                       QStringLiteral("The group \"%1\" has no times to take a rate of.")
                           .arg(QString::fromStdString(group.getName()))};
    }
    m_allRows = false;
    const double intervalMs = 1000.0 / rateHz;
    double lastInterval = -1;
    for (int row = 0; row < std::min(times.size(), m_rowCount); ++row) {
        const double interval = std::floor(times[row] / intervalMs);
        if (interval != lastInterval)
            m_rows.push_back(row);
        lastInterval = interval;
    }
    return {};
}

char* LogTable::writeNumber(char* to, char* end, const Column& column, size_t row)
{
    const unsigned char* const rows = column.rows;
    switch (column.type) {
    case LogVar::Int32:
        return writeAs<qint32>(to, end, rows + row * 4);
    case LogVar::Uint32:
        return writeAs<quint32>(to, end, rows + row * 4);
    case LogVar::Int16:
        return writeAs<qint16>(to, end, rows + row * 2);
    case LogVar::Uint16:
        return writeAs<quint16>(to, end, rows + row * 2);
    case LogVar::Int8:
        return writeAs<qint8>(to, end, rows + row);
    case LogVar::Float:
        return writeAs<float>(to, end, rows + row * 4);
    case LogVar::Double:
        return writeAs<double>(to, end, rows + row * 8);
    default:
        return writeAs<quint8>(to, end, rows + row);
    }
}

bool LogTable::write(const std::function<bool(const char* bytes, size_t size)>& write) const
{
    QByteArray header;
    for (const Column& column : m_columns)
        header += column.title + ',';
    if (!header.isEmpty())
        header.chop(1);
    header += '\n';
    if (!write(header.constData(), static_cast<size_t>(header.size())))
        return false;

    std::vector<char> chunk(kChunkBytes);
    char* const end = chunk.data() + chunk.size();
    char* at = chunk.data();
    const auto hasRoom = [&](size_t bytes) {
        if (static_cast<size_t>(end - at) >= bytes)
            return true;
        const bool written = write(chunk.data(), static_cast<size_t>(at - chunk.data()));
        at = chunk.data();
        return written;
    };
    const int shown = m_allRows ? m_rowCount : static_cast<int>(m_rows.size());
    for (int i = 0; i < shown; ++i) {
        const int row = m_allRows ? i : m_rows[static_cast<size_t>(i)];
        for (const Column& column : m_columns) {
            if (column.isText) {
                const QByteArray text = csvText(printable(column.var->getString(row)));
                if (!hasRoom(static_cast<size_t>(text.size()) + 1))
                    return false;
                at = std::copy(text.begin(), text.end(), at);
            } else {
                if (!hasRoom(kLongestNumber))
                    return false;
                at = writeNumber(at, end - 1, column, static_cast<size_t>(row));
            }
            *at++ = ',';
        }
        if (m_columns.empty() && !hasRoom(1))
            return false;
        // The separator behind the last field ends the line.
        (m_columns.empty() ? *at++ : at[-1]) = '\n';
    }
    return write(chunk.data(), static_cast<size_t>(at - chunk.data()));
}

} // namespace corv
