#include "Update/updateNames.h"

#include "Update/logCategory.h"

#include <QDebug>
#include <QLocale>
#include <QRegularExpression>
#include <QStringList>

namespace corv::updateNames {
namespace {

// The layout of the text form of a date, spelled out so that it can be had in English.
const QString momentFormat = QStringLiteral("ddd MMM d HH:mm:ss yyyy");
const QString utcSuffix = QStringLiteral(" GMT");

} // namespace

QString channelOf(const QString& value)
{
    const QString official = QStringLiteral("official");
    if (value.isEmpty())
        return official;
    if (value == official || value == QLatin1String("preview") || value == QLatin1String("dev"))
        return value;
    qCWarning(lcUpdate) << "Unrecognized value for env var [CorvenityUpdateChannel]:" << value;
    return official;
}

QString flavourOf(const QString& architecture)
{
    if (architecture == QLatin1String("x86_64"))
        return QStringLiteral("x64");
    if (architecture == QLatin1String("i386"))
        return QStringLiteral("x86");
    qCWarning(lcUpdate) << "Unsupported architecture:" << architecture;
    return architecture;
}

QString installerFileName(const QString& version, const QString& flavour)
{
    return QStringLiteral("VistrelSetup-%2-%3-Release.exe").arg(version, flavour);
}

QString manifestPath(const QString& channel)
{
    return QStringLiteral("update/%1.json").arg(channel);
}

QString installerPath(const QString& buildFolder, const QString& version, const QString& fileName)
{
    return QStringLiteral("builds/%1/%2/%3").arg(buildFolder, version, fileName);
}

bool isSafeFileElement(const QString& text)
{
    static const QRegularExpression safe(QStringLiteral("\\A[0-9A-Za-z_+.-]{1,64}\\z"));
    return safe.match(text).hasMatch();
}

bool isVersion(const QString& text)
{
    static const QRegularExpression numbers(QStringLiteral("\\A[0-9]{1,9}(\\.[0-9]{1,9}){3}\\z"));
    return numbers.match(text).hasMatch();
}

bool isSafeSharePath(const QString& text)
{
    static const QRegularExpression special(QStringLiteral("[\\\\%#?\\x00-\\x1f\\x7f]"));
    if (special.match(text).hasMatch())
        return false;
    for (const QString& element : text.split(QLatin1Char('/'))) {
        if (element.isEmpty() || element == QLatin1String(".") || element == QLatin1String(".."))
            return false;
    }
    return true;
}

QString notificationText(const QDateTime& moment)
{
    return QLocale::c().toString(moment.toUTC(), momentFormat) + utcSuffix;
}

QDateTime notificationMoment(const QString& text)
{
    QString plain = text.simplified();
    if (plain.endsWith(utcSuffix))
        plain.chop(utcSuffix.size());
    QDateTime moment = QLocale::c().toDateTime(plain, momentFormat);
    moment.setTimeSpec(Qt::UTC);
    return moment;
}

} // namespace corv::updateNames
