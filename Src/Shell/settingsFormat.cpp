#include "Shell/settingsFormat.h"

#include "Shell/logCategory.h"

#include <QDataStream>
#include <QDebug>
#include <QFileDevice>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QVector>
#include <algorithm>

namespace corv {
namespace {

const QString generalSection = QStringLiteral("General");

// One letter after a backslash for each of these.
constexpr char escapeLetters[] = "abfnrtv\"?'\\";
constexpr char escapedCharacters[] = "\a\b\f\n\r\t\v\"?\'\\";

// Converts all bytes; Qt's conversion of an array ends at the first zero.
QString latin(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.constData(), bytes.size());
}

bool isHexDigit(QChar c)
{
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
           (c >= QLatin1Char('a') && c <= QLatin1Char('f')) ||
           (c >= QLatin1Char('A') && c <= QLatin1Char('F'));
}

bool isOctalDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('7');
}

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

// --- Writing ---------------------------------------------------------------------------------

QByteArray keyText(const QString& key)
{
    QByteArray text;
    for (const QChar c : key) {
        const uint code = c.unicode();
        const bool isPlain = code < 0x80 && (c.isLetterOrNumber() || c == QLatin1Char('_') ||
                                             c == QLatin1Char('-') || c == QLatin1Char('.'));
        const QByteArray number = QByteArray::number(code, 16).toUpper();
        if (c == QLatin1Char('/'))
            text += '\\';
        else if (isPlain)
            text += static_cast<char>(code);
        else
            text += code <= 0xff ? '%' + number.rightJustified(2, '0')
                                 : "%U" + number.rightJustified(4, '0');
    }
    return text;
}

QByteArray escaped(const QString& string)
{
    QByteArray text;
    bool needsQuotes = false;
    bool wasNumber = false; // a digit behind it would be taken for a part of it
    for (const QChar c : string) {
        const uint code = c.unicode();
        needsQuotes =
            needsQuotes || c == QLatin1Char(';') || c == QLatin1Char(',') || c == QLatin1Char('=');
        const char* const letter =
            code == 0 || code == '?' || code == '\'' || code > 0x7f
                ? nullptr
                : std::find(escapedCharacters, std::end(escapedCharacters) - 1,
                            static_cast<char>(code));
        const bool hasLetter = letter && letter != std::end(escapedCharacters) - 1;
        if (hasLetter) {
            text += '\\';
            text += escapeLetters[letter - escapedCharacters];
        }
        const bool isNumber =
            !hasLetter && (code < 0x20 || code >= 0x7f || (wasNumber && isHexDigit(c)));
        if (isNumber)
            text += "\\x" + QByteArray::number(code, 16);
        else if (!hasLetter)
            text += static_cast<char>(code);
        wasNumber = isNumber;
    }
    const bool hasOuterBlanks = text.startsWith(' ') || text.endsWith(' ');
    return needsQuotes || hasOuterBlanks ? '"' + text + '"' : text;
}

QString stringOf(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::UnknownType:
        return QStringLiteral("@Invalid()");
    case QMetaType::QByteArray:
        return QStringLiteral("@ByteArray(") + latin(value.toByteArray()) + QLatin1Char(')');
    case QMetaType::QString:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double: {
        const QString text = value.toString();
        if (text.contains(QChar(0)))
            return QStringLiteral("@String(") + text + QLatin1Char(')');
        return text.startsWith(QLatin1Char('@')) ? QLatin1Char('@') + text : text;
    }
    default:
        break;
    }
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_0);
    stream << value;
    return QStringLiteral("@Variant(") + latin(bytes) + QLatin1Char(')');
}

QByteArray valueText(const QVariant& value)
{
    const bool isList = value.userType() == QMetaType::QStringList ||
                        (value.userType() == QMetaType::QVariantList && value.toList().size() != 1);
    if (!isList)
        return escaped(stringOf(value));
    QByteArrayList texts;
    for (const QVariant& part : value.toList())
        texts << escaped(stringOf(part));
    return texts.isEmpty() ? QByteArray("@Invalid()") : texts.join(", ");
}

QByteArray sectionText(const QString& section)
{
    if (section.isEmpty())
        return generalSection.toLatin1();
    const bool looksGeneral = section.compare(generalSection, Qt::CaseInsensitive) == 0;
    return looksGeneral ? "%General" : keyText(section);
}

// --- Reading ---------------------------------------------------------------------------------

QString keyOf(const QByteArray& text)
{
    QString key;
    for (int i = 0; i < text.size(); ++i) {
        const char c = text.at(i);
        if (c == '\\') {
            key += QLatin1Char('/');
            continue;
        }
        const int start = i + (text.mid(i, 2) == "%U" ? 2 : 1);
        const int digits = start - i == 2 ? 4 : 2;
        bool isNumber = c == '%' && start + digits <= text.size();
        const int code = isNumber ? text.mid(start, digits).toInt(&isNumber, 16) : 0;
        if (isNumber) {
            key += QChar(code);
            i = start + digits - 1;
        } else {
            key += QLatin1Char(c);
        }
    }
    return key;
}

QVector<int> numbersIn(const QString& text)
{
    QVector<int> numbers;
    const int start = text.indexOf(QLatin1Char('(')) + 1;
    const QStringList parts = text.mid(start, text.size() - start - 1).split(QLatin1Char(' '));
    for (const QString& part : parts)
        numbers << part.toInt();
    return numbers;
}

QVariant streamed(const QString& text, int start, QDataStream::Version version)
{
    const QByteArray bytes = text.mid(start).toLatin1();
    QDataStream stream(bytes);
    stream.setVersion(version);
    QVariant value;
    stream >> value;
    return value;
}

QVariant valueOf(const QString& text)
{
    if (!text.startsWith(QLatin1Char('@')))
        return text;
    if (text.endsWith(QLatin1Char(')'))) {
        const QVector<int> n = numbersIn(text);
        if (text.startsWith(QLatin1String("@ByteArray(")))
            return text.mid(11, text.size() - 12).toLatin1();
        if (text.startsWith(QLatin1String("@String(")))
            return text.mid(8, text.size() - 9);
        if (text.startsWith(QLatin1String("@Variant(")))
            return streamed(text, 9, QDataStream::Qt_4_0);
        if (text.startsWith(QLatin1String("@DateTime(")))
            return streamed(text, 10, QDataStream::Qt_5_6);
        if (text.startsWith(QLatin1String("@Rect(")) && n.size() == 4)
            return QRect(n[0], n[1], n[2], n[3]);
        if (text.startsWith(QLatin1String("@Size(")) && n.size() == 2)
            return QSize(n[0], n[1]);
        if (text.startsWith(QLatin1String("@Point(")) && n.size() == 2)
            return QPoint(n[0], n[1]);
        if (text == QLatin1String("@Invalid()"))
            return {};
    }
    return text.startsWith(QLatin1String("@@")) ? text.mid(1) : text;
}

// The parts of a value, which commas outside of quotes separate.
class ValueReader
{
public:
    explicit ValueReader(const QByteArray& text) : m_text(latin(text)) {}

    QVariant read()
    {
        while (m_at < m_text.size())
            readOne();
        endPart();
        if (m_parts.size() == 1)
            return valueOf(m_parts.first());
        const auto isTyped = [](const QString& part) {
            return part.startsWith(QLatin1Char('@')) && !part.startsWith(QLatin1String("@@"));
        };
        QVariantList values;
        QStringList strings;
        for (const QString& part : qAsConst(m_parts)) {
            values << valueOf(part);
            strings << values.last().toString();
        }
        return std::any_of(m_parts.cbegin(), m_parts.cend(), isTyped) ? QVariant(values)
                                                                      : QVariant(strings);
    }

private:
    void readOne()
    {
        const QChar c = m_text.at(m_at++);
        if (c == QLatin1Char('\\')) {
            readEscape();
            m_firstBlank = m_part.size();
        } else if (c == QLatin1Char('"')) {
            m_hasQuotes = true;
            m_isInQuotes = !m_isInQuotes;
            if (!m_isInQuotes)
                skipBlanks();
        } else if (c == QLatin1Char(',') && !m_isInQuotes) {
            endPart();
            skipBlanks();
        } else {
            m_part += c;
        }
    }

    void readEscape()
    {
        if (m_at == m_text.size())
            return;
        const QChar c = m_text.at(m_at++);
        const char* const letter =
            std::find(escapeLetters, std::end(escapeLetters) - 1, c.toLatin1());
        if (letter != std::end(escapeLetters) - 1) {
            m_part += QLatin1Char(escapedCharacters[letter - escapeLetters]);
        } else if (c == QLatin1Char('x')) {
            readNumber(isHexDigit, 16);
        } else if (isOctalDigit(c)) {
            --m_at;
            readNumber(isOctalDigit, 8);
        }
    }

    void readNumber(bool (*isDigit)(QChar), uint base)
    {
        const int start = m_at;
        uint code = 0;
        while (m_at < m_text.size() && isDigit(m_text.at(m_at)))
            code = code * base + m_text.mid(m_at++, 1).toUInt(nullptr, 16);
        if (m_at > start)
            m_part += QChar(static_cast<ushort>(code));
    }

    void skipBlanks()
    {
        while (m_at < m_text.size() && isBlank(m_text.at(m_at)))
            ++m_at;
    }

    void endPart()
    {
        while (!m_hasQuotes && m_part.size() > m_firstBlank && isBlank(m_part.back()))
            m_part.chop(1);
        m_parts << m_part;
        m_part.clear();
        m_firstBlank = 0;
        m_hasQuotes = false;
    }

    const QString m_text;
    int m_at = 0;
    QStringList m_parts;
    QString m_part;
    int m_firstBlank = 0; ///< outer blanks before it are escaped, and a part of it
    bool m_isInQuotes = false;
    bool m_hasQuotes = false; ///< and so all blanks are a part of it
};

// Where the value of a line ends: a comment may follow.
QByteArray withoutComment(const QByteArray& line)
{
    bool isInQuotes = false;
    for (int i = 0; i < line.size(); ++i) {
        if (line.at(i) == '\\')
            ++i;
        else if (line.at(i) == '"')
            isInQuotes = !isInQuotes;
        else if (line.at(i) == ';' && !isInQuotes)
            return line.left(i);
    }
    return line;
}

} // namespace

bool readSettings(QIODevice& device, QSettings::SettingsMap& settings)
{
    const qint64 size = device.size();
    const QByteArray text = device.readAll();
    if (text.size() < size)
        return false;
    QString prefix;
    for (const QByteArray& rawLine : text.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            const QByteArray section = line.mid(1, line.indexOf(']') - 1).trimmed();
            const bool isGeneral = section.toLower() == "general";
            const bool isNamedGeneral = section.toLower() == "%general";
            const QString name =
                isNamedGeneral ? QString::fromLatin1(section.mid(1)) : keyOf(section);
            prefix = isGeneral ? QString() : name + QLatin1Char('/');
            continue;
        }
        const int equals = line.indexOf('=');
        if (equals > 0 && !line.startsWith(';'))
            settings.insert(prefix + keyOf(line.left(equals).trimmed()),
                            ValueReader(withoutComment(line.mid(equals + 1)).trimmed()).read());
    }
    return true;
}

bool writeSettings(QIODevice& device, const QSettings::SettingsMap& settings)
{
    QMap<QString, QByteArray> sections;
    for (auto setting = settings.begin(); setting != settings.end(); ++setting) {
        const int slash = setting.key().indexOf(QLatin1Char('/'));
        const QString section = setting.key().left(std::max(slash, 0));
        sections[section] +=
            keyText(setting.key().mid(slash + 1)) + '=' + valueText(setting.value()) + '\n';
    }
    QByteArrayList texts;
    for (auto section = sections.begin(); section != sections.end(); ++section)
        texts << '[' + sectionText(section.key()) + "]\n" + section.value();
    const QByteArray text = texts.join('\n');
    bool isWritten = device.write(text) == text.size();
    // What is still in a buffer may not fit on the disk. Where the system took a part, only a
    // second attempt brings the reason.
    if (auto* file = qobject_cast<QFileDevice*>(&device))
        isWritten = (file->flush() || file->flush()) && isWritten;
    if (!isWritten)
        qCWarning(lcShell) << "The settings cannot be saved:" << device.errorString();
    return isWritten;
}

void keepSettingsWhole()
{
    QSettings::setDefaultFormat(QSettings::registerFormat(QStringLiteral("conf"), readSettings,
                                                          writeSettings, Qt::CaseSensitive));
}

} // namespace corv
