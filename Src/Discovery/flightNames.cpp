#include "Discovery/flightNames.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>
#include <utility>

namespace corv {
namespace {

FlightName flightName(const QFileInfo& file, const QString& base)
{
    static const QRegularExpression form(
        QStringLiteral("^(.*?)([0-9]{1,9})(?: ?\\(([0-9]{1,4})\\))?$"));
    const QRegularExpressionMatch match = form.match(base);
    if (!match.hasMatch())
        return {file.path(), base, {}, file.suffix()};
    return {file.path(), match.captured(1), match.captured(2), file.suffix(),
            match.captured(3).toInt()};
}

// A name that may be that of a copy: "CORV0012_2" of "CORV0012".
struct MarkedCopy
{
    QString of;
    QString mark; // separator and number of the copy
    QString kind; // what such names have in common: folder, separator and suffix
    int copy = 0; // 0 if the name is not of this form
};

MarkedCopy markedCopy(const QFileInfo& file)
{
    // Shorter numbers are those that people give, as in "tower 3_2"; longer ones are days.
    constexpr int leastDigits = 3;
    constexpr int mostDigits = 6;
    constexpr int mostDigitsOfCopy = 2;
    const QString base = file.completeBaseName();
    const auto startOfDigits = [&base](int end) {
        while (end > 0 && base[end - 1] >= QLatin1Char('0') && base[end - 1] <= QLatin1Char('9'))
            --end;
        return end;
    };
    const int copy = startOfDigits(base.size());
    const int separator = copy - 1;
    if (copy == base.size() || base.size() - copy > mostDigitsOfCopy || separator < 0 ||
        !QStringLiteral(" _-").contains(base[separator]))
        return {};
    const int digits = separator - startOfDigits(separator);
    if (digits < leastDigits || digits > mostDigits)
        return {};
    return {base.left(separator), base.mid(separator),
            file.path() + base[separator] + file.suffix(), base.mid(copy).toInt()};
}

QString keyOf(const QFileInfo& file, const QString& base)
{
    return (file.path() + QLatin1Char('/') + base + QLatin1Char('.') + file.suffix())
        .toCaseFolded();
}

// The name whose number is that much higher, with as many digits.
QString stepped(const QString& name, int by)
{
    int digits = 0;
    while (digits < name.size() && name[name.size() - 1 - digits].isDigit())
        ++digits;
    const int number = name.rightRef(digits).toInt() + by;
    return name.left(name.size() - digits) +
           QStringLiteral("%1").arg(number, digits, 10, QLatin1Char('0'));
}

// What a name says of those of its kind: 1 that they are copies, as the name without the mark is
// beside it; -1 that they are not; 0 nothing, in the middle of a card whose files all have the
// mark.
int voteForCopies(const QFileInfo& file, const MarkedCopy& marked, const QSet<QString>& names)
{
    if (names.contains(keyOf(file, marked.of)))
        return 1;
    const bool amongItsCard = names.contains(keyOf(file, stepped(marked.of, -1) + marked.mark)) &&
                              names.contains(keyOf(file, stepped(marked.of, 1) + marked.mark));
    return amongItsCard ? 0 : -1;
}

} // namespace

std::vector<FlightName> flightNames(const QStringList& paths)
{
    QSet<QString> names;
    for (const QString& path : paths) {
        const QFileInfo file(path);
        names.insert(keyOf(file, file.completeBaseName()));
    }
    QHash<QString, int> votes; // by kind
    for (const QString& path : paths) {
        const QFileInfo file(path);
        const MarkedCopy marked = markedCopy(file);
        if (marked.copy > 0)
            votes[marked.kind] += voteForCopies(file, marked, names);
    }
    std::vector<FlightName> parts;
    parts.reserve(static_cast<size_t>(paths.size()));
    for (const QString& path : paths) {
        const QFileInfo file(path);
        const MarkedCopy marked = markedCopy(file);
        if (marked.copy > 0 && votes.value(marked.kind) > 0) {
            parts.push_back(flightName(file, marked.of));
            parts.back().copy = marked.copy;
        } else {
            parts.push_back(flightName(file, file.completeBaseName()));
        }
    }
    return parts;
}

bool namesInOrder(const QString& a, const QString& b)
{
    int i = 0;
    int j = 0;
    const auto numberEnd = [](const QString& text, int from) {
        while (from < text.size() && text[from].isDigit())
            ++from;
        return from;
    };
    while (i < a.size() && j < b.size()) {
        if (a[i].isDigit() && b[j].isDigit()) {
            const int iEnd = numberEnd(a, i);
            const int jEnd = numberEnd(b, j);
            while (i < iEnd - 1 && a[i] == QLatin1Char('0'))
                ++i;
            while (j < jEnd - 1 && b[j] == QLatin1Char('0'))
                ++j;
            if (iEnd - i != jEnd - j)
                return iEnd - i < jEnd - j;
            const int order = a.midRef(i, iEnd - i).compare(b.midRef(j, jEnd - j));
            if (order != 0)
                return order < 0;
            i = iEnd;
            j = jEnd;
            continue;
        }
        // A separator comes before all letters, so that a folder's files stay together.
        const ushort x = a[i] == QLatin1Char('/') ? 0 : a[i].toCaseFolded().unicode();
        const ushort y = b[j] == QLatin1Char('/') ? 0 : b[j].toCaseFolded().unicode();
        if (x != y)
            return x < y;
        ++i;
        ++j;
    }
    return a.size() - i < b.size() - j;
}

int numbersBetween(const FlightName& name, const FlightName& next)
{
    const qint64 step = next.number.toLongLong() - name.number.toLongLong();
    const bool alike = name.folder == next.folder && name.suffix == next.suffix &&
                       !name.number.isEmpty() && name.before == next.before &&
                       name.copy == next.copy;
    constexpr qint64 mostCounted = 1'000'000;
    return alike && step > 0 ? static_cast<int>(std::min(step, mostCounted)) - 1 : -1;
}

bool isNextPart(const FlightName& name, const FlightName& next)
{
    return numbersBetween(name, next) == 0;
}

} // namespace corv
