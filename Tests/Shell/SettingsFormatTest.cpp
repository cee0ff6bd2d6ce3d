#include "Shell/settingsFormat.h"
#include "Support/FullDisk.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>
#include <QRect>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

using namespace corv;
using namespace corv::test;

/// What the program remembers survives a disk that is full, and is read and written as Qt does it.
class SettingsFormatTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void qtAndVistrelReadEachOthersValues_data();
    void qtAndVistrelReadEachOthersValues();
    void qtAndVistrelReadEachOthersTexts();
    void readsFilesEditedByHand_data();
    void readsFilesEditedByHand();
    void theFileStaysTheSame();
    void aFullDiskLeavesTheEarlierSettings();
    void whatDidNotFitIsSavedLater();
    void aDeviceThatFailsIsNoSuccess();

private:
    using Map = QSettings::SettingsMap;

    QString newFile() const { return m_folder->filePath(QString("%1.ini").arg(++m_files)); }
    Map readByQt(const QByteArray& text) const;
    QByteArray writtenByQt(const Map& settings) const;
    static Map read(QByteArray text);
    static QByteArray written(const Map& settings);

    std::unique_ptr<QTemporaryDir> m_folder;
    mutable int m_files = 0;
};

void SettingsFormatTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    for (const auto format : {QSettings::NativeFormat, QSettings::IniFormat})
        QSettings::setPath(format, QSettings::UserScope, m_folder->path());
    QCoreApplication::setOrganizationName("Corvenity");
    QCoreApplication::setApplicationName("Vistrel");
}

SettingsFormatTest::Map SettingsFormatTest::readByQt(const QByteArray& text) const
{
    const QString path = newFile();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("cannot write %s", qPrintable(path));
    file.close();
    const QSettings settings(path, QSettings::IniFormat);
    Map result;
    for (const QString& key : settings.allKeys())
        result.insert(key, settings.value(key));
    return result;
}

QByteArray SettingsFormatTest::writtenByQt(const Map& settings) const
{
    const QString path = newFile();
    QSettings byQt(path, QSettings::IniFormat);
    for (auto setting = settings.begin(); setting != settings.end(); ++setting)
        byQt.setValue(setting.key(), setting.value());
    byQt.sync();
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

SettingsFormatTest::Map SettingsFormatTest::read(QByteArray text)
{
    QBuffer buffer(&text);
    Map settings;
    if (!buffer.open(QIODevice::ReadOnly) || !readSettings(buffer, settings))
        qFatal("cannot read");
    return settings;
}

QByteArray SettingsFormatTest::written(const Map& settings)
{
    QByteArray text;
    QBuffer buffer(&text);
    if (!buffer.open(QIODevice::WriteOnly) || !writeSettings(buffer, settings))
        qFatal("cannot write");
    return text;
}

void SettingsFormatTest::qtAndVistrelReadEachOthersValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    const QString key = "mainWindow/width";
    QTest::newRow("yes") << key << QVariant(true);
    QTest::newRow("number") << key << QVariant(-1600);
    QTest::newRow("large number") << key << QVariant(quint64(1) << 63);
    QTest::newRow("fraction") << key << QVariant(0.1);
    QTest::newRow("text") << key << QVariant("Site 12");
    QTest::newRow("no text") << key << QVariant("");
    QTest::newRow("outer blanks") << key << QVariant("  a ");
    QTest::newRow("separators") << key << QVariant("a=b;c,d #e [f]");
    QTest::newRow("quotes") << key << QVariant("\"a\" \\ 'b' ?");
    QTest::newRow("lines") << key << QVariant("a\nb\r\tc");
    QTest::newRow("no letters") << key << QVariant(QString(QChar(0)) + "1" + QChar(0x1f) + "f");
    QTest::newRow("other letters") << key << QVariant(QString::fromUtf8("Brücke 橋 é1 \u00e9f"));
    QTest::newRow("at") << key << QVariant("@Rect(1 2 3 4)");
    QTest::newRow("list") << key
                          << QVariant(QStringList{"/a b/c.ecor", "/ü,/\"d\".ecor", "", "@x"});
    QTest::newRow("list of one") << key << QVariant(QStringList{"/a,b.ecor"});
    QTest::newRow("empty list") << key << QVariant(QStringList());
    QTest::newRow("mixed list") << key << QVariant(QVariantList{1, "a", QByteArray("b")});
    QTest::newRow("bytes") << key << QVariant(QByteArray("a\0b\xff)", 5));
    QTest::newRow("address") << key << QVariant(QUrl("file:///a%20b/ü"));
    QTest::newRow("nothing") << key << QVariant();
    QTest::newRow("rectangle") << key << QVariant(QRect(-1, 2, 3, 4));
    QTest::newRow("size") << key << QVariant(QSize(3, 4));
    QTest::newRow("point") << key << QVariant(QPoint(-3, 4));
    QTest::newRow("moment") << key << QVariant(QDateTime({2026, 11, 21}, {14, 2}));
    QTest::newRow("key without a group") << "width" << QVariant(1);
    QTest::newRow("group named General") << "General/width" << QVariant(1);
    QTest::newRow("group in a group") << "a/b/c" << QVariant(1);
    QTest::newRow("odd key") << QString::fromUtf8("ü [x]/a=b;c 橋%41") << QVariant(1);
}

void SettingsFormatTest::qtAndVistrelReadEachOthersValues()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    const Map settings{{key, value}, {"zoom/level", 2}};
    const QByteArray byQt = writtenByQt(settings);
    const Map expected = readByQt(byQt);
    QCOMPARE(expected.size(), 2);
    QCOMPARE(read(byQt), expected);
    QCOMPARE(readByQt(written(settings)), expected);
    QCOMPARE(read(written(settings)), expected);
}

void SettingsFormatTest::qtAndVistrelReadEachOthersTexts()
{
    QRandomGenerator random(7);
    const QString letters = QString::fromUtf8("ab01F,;=\"\\ @()[]%/'?\n\t\u00e9\u6a4b") + QChar(0);
    const auto text = [&](int longest) {
        QString result;
        for (int left = random.bounded(longest + 1); left > 0; --left)
            result += letters.at(random.bounded(letters.size()));
        return result;
    };
    for (int round = 0; round < 300; ++round) {
        Map settings;
        for (int i = 0; i < 5; ++i) {
            const QString key = QString("g%1/k%2").arg(i % 2).arg(i) + text(3).remove('/');
            settings.insert(key, i % 2 == 0 ? QVariant(text(12))
                                            : QVariant(QStringList{text(6), text(6), text(6)}));
        }
        const QByteArray byQt = writtenByQt(settings);
        const Map expected = readByQt(byQt);
        QCOMPARE(expected.size(), settings.size());
        QCOMPARE(read(byQt), expected);
        QCOMPARE(readByQt(written(settings)), expected);
    }
}

void SettingsFormatTest::readsFilesEditedByHand_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("comments and blanks") << QByteArray("; c\n [a] \n x = 1 ; d\n\n y=\"a;b\"\n");
    QTest::newRow("line ends of Windows") << QByteArray("[a]\r\nx=1\r\ny=2\r\n");
    QTest::newRow("no group") << QByteArray("x=1\n[General]\ny=2\n");
    QTest::newRow("cut off") << QByteArray("[a]\nx=1\ny=/home/pil");
    QTest::newRow("octal") << QByteArray("[a]\nx=a\\101\\0b\\q\n");
    QTest::newRow("blanks of a list") << QByteArray("[a]\nx=a  ,  \"b \" ,c\n");
}

void SettingsFormatTest::readsFilesEditedByHand()
{
    QFETCH(QByteArray, text);
    QCOMPARE(read(text), readByQt(text));
}

void SettingsFormatTest::theFileStaysTheSame()
{
    const QString before = QSettings().fileName();
    QSettings().setValue("userPreferences/imperialUnits", true);
    keepSettingsWhole();
    QCOMPARE(QSettings().fileName(), before);
    QCOMPARE(QSettings().value("userPreferences/imperialUnits").toBool(), true);
    QSettings().setValue("mainWindow/width", 1600);
    QSettings().sync();
    const QSettings byQt(before, QSettings::IniFormat);
    QCOMPARE(byQt.value("mainWindow/width").toInt(), 1600);
    QCOMPARE(byQt.value("userPreferences/imperialUnits").toBool(), true);
    QSettings::setDefaultFormat(QSettings::NativeFormat);
}

/// At each limit of a file's size.
void SettingsFormatTest::aFullDiskLeavesTheEarlierSettings()
{
    keepSettingsWhole();
    const QStringList recent{"/flights/one.ecor", "/flights/two.ecor"};
    QSettings().setValue("recentProjects/paths", recent);
    QSettings().setValue("userPreferences/imperialUnits", true);
    QSettings().sync();
    QFile file(QSettings().fileName());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();
    QVERIFY(before.contains("two.ecor"));
    for (rlim_t bytes = 0; bytes < 200; bytes += 5) {
        QSettings settings;
        settings.setValue("zoom/level", QString(150, 'x') + QString::number(bytes));
        {
            const FullDisk disk(bytes);
            settings.sync();
        }
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray after = file.readAll();
        file.close();
        QCOMPARE(after, before);
        QVERIFY(settings.status() != QSettings::NoError);
        settings.remove("zoom/level"); // or it is saved at the end of this object
        settings.sync();
    }
    QSettings::setDefaultFormat(QSettings::NativeFormat);
}

void SettingsFormatTest::whatDidNotFitIsSavedLater()
{
    keepSettingsWhole();
    QSettings settings;
    settings.setValue("recentProjects/paths", "one");
    settings.sync();
    settings.setValue("zoom/level", QString(150, 'x'));
    {
        const FullDisk disk(120);
        settings.sync();
    }
    settings.sync();
    const QSettings byQt(settings.fileName(), QSettings::IniFormat);
    QCOMPARE(byQt.value("recentProjects/paths").toString(), QString("one"));
    QCOMPARE(byQt.value("zoom/level").toString(), QString(150, 'x'));
    QSettings::setDefaultFormat(QSettings::NativeFormat);
}

void SettingsFormatTest::aDeviceThatFailsIsNoSuccess()
{
    QFile full("/dev/full");
    QVERIFY(full.open(QIODevice::WriteOnly));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("The settings cannot be saved"));
    QVERIFY(!writeSettings(full, {{"a", 1}}));
}

QTEST_GUILESS_MAIN(SettingsFormatTest)
#include "SettingsFormatTest.moc"
