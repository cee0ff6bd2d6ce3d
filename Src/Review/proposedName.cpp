#include "Review/proposedName.h"

#include "Base/videoTime.h"

#include <QFileInfo>
#include <QStringList>

namespace corv {
namespace {

bool isPlain(QChar character)
{
    static const QString allowed = QStringLiteral(" -_.,()+&");
    return character.isLetterOrNumber() || character.isMark() || allowed.contains(character);
}

bool isDroppedAtEnds(QChar character)
{
    return character == QLatin1Char(' ') || character == QLatin1Char('.') ||
           character == QLatin1Char('-') || character == QLatin1Char('_');
}

QString plainPart(const QString& text)
{
    constexpr int longestPart = 60;
    QString part;
    for (const QChar character : text.simplified().normalized(QString::NormalizationForm_C))
        part += isPlain(character) ? character : QLatin1Char('_');
    part.truncate(longestPart);
    while (!part.isEmpty() && isDroppedAtEnds(part.front()))
        part.remove(0, 1);
    while (!part.isEmpty() && isDroppedAtEnds(part.back()))
        part.chop(1);
    return part;
}

} // namespace

QString proposedName(const ReviewProperties& properties, const QString& videoPath, QDate date)
{
    QStringList parts;
    if (properties.hasNaming)
        parts << plainPart(properties.missionName) << plainPart(properties.flightName);
    if (properties.hasNaming && properties.flightNumber > 0)
        parts << QString::number(properties.flightNumber);
    parts.removeAll(QString());
    if (parts.isEmpty())
        parts << plainPart(QFileInfo(videoPath).completeBaseName());
    if (date.isValid())
        parts << date.toString(Qt::ISODate);
    parts.removeAll(QString());
    return parts.join(QLatin1Char('_'));
}

QString proposedFrameName(const QString& flightName, QTime position)
{
    constexpr int msPerMinute = 60000;
    constexpr int msPerSecond = 1000;
    const int ms = msOfTime(position);
    return QStringLiteral("%1_%2m%3.%4s")
        .arg(flightName)
        .arg(ms / msPerMinute, 2, 10, QLatin1Char('0'))
        .arg(ms % msPerMinute / msPerSecond, 2, 10, QLatin1Char('0'))
        .arg(ms % msPerSecond, 3, 10, QLatin1Char('0'));
}

} // namespace corv
