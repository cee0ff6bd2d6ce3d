#include "Video/fileNames.h"

#include <QFileInfo>
#include <QLatin1Char>

namespace corv {
namespace {

constexpr int numberDigits = 4;

// What is in the name's last pair of brackets counts on; with no such pair it begins at 1.
int numberInBrackets(const QString& base, QString::size_type open)
{
    if (base.size() < 3)
        return 1;
    const auto close = base.lastIndexOf(QLatin1Char(')'));
    if (open < 0 || close <= open)
        return 1;
    const int number = base.mid(open + 1, close - open - 1).toInt();
    return static_cast<int>(static_cast<unsigned>(number) + 1U);
}

} // namespace

QStringList expandVideoSequence(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return {};
    QStringList files{path};
    const QString prefix = QStringLiteral("CORV");
    const QString base = info.completeBaseName();
    if (!base.startsWith(prefix) || base.size() < prefix.size() + numberDigits)
        return files;
    bool isNumber = false;
    int number = base.right(numberDigits).toInt(&isNumber);
    if (!isNumber)
        return files;
    const QString stem = base.left(base.size() - numberDigits);
    while (true) {
        ++number;
        const QString digits =
            QString::number(number).rightJustified(numberDigits, QLatin1Char('0'));
        const QString next =
            QStringLiteral("%1/%2%3.%4").arg(info.absolutePath(), stem, digits, info.suffix());
        if (!QFileInfo::exists(next))
            return files;
        files << next;
    }
}

QString seriesFileName(const QString& prefix, int number)
{
    return prefix + QString::number(number).rightJustified(3, QLatin1Char('0')) +
           QStringLiteral(".jpg");
}

QString differentFileName(const QString& fileName)
{
    const QFileInfo info(fileName);
    const QString base = info.completeBaseName();
    const auto open = base.lastIndexOf(QLatin1Char('('));
    return QStringLiteral("%1/%2(%3).%4")
        .arg(info.absolutePath(), base.left(open), QString::number(numberInBrackets(base, open)),
             info.suffix());
}

} // namespace corv
