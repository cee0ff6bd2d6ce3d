#include "PlayerFixture.h"

#include <QMetaProperty>

using namespace corv;
using namespace corv::test;

// What a binding to the player relies on: a signal for each property, one per change.
class PlayerPropertiesTest : public QObject, private PlayerFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }
    void everyPropertyNotifies();
    void addedSignalsFollowTheStatedOnes();
    void aChangeNotifiesOnce_data();
    void aChangeNotifiesOnce();
    void aFractionOfASpeedIsNoChange();
    void anUnknownPaletteIsNotTaken();
    void anotherSurfaceNotifies();
    void anotherLogParserNotifies();
};

namespace {

QMetaMethod notifierOf(const char* property)
{
    const QMetaObject& meta = VideoPlayer::staticMetaObject;
    return meta.property(meta.indexOfProperty(property)).notifySignal();
}

} // namespace

void PlayerPropertiesTest::everyPropertyNotifies()
{
    const QMetaObject& meta = VideoPlayer::staticMetaObject;
    QVERIFY(meta.propertyCount() > meta.propertyOffset());
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        QVERIFY2(meta.property(i).hasNotifySignal() || meta.property(i).isConstant(),
                 meta.property(i).name());
}

void PlayerPropertiesTest::addedSignalsFollowTheStatedOnes()
{
    const QMetaObject& meta = VideoPlayer::staticMetaObject;
    const QByteArrayList stated{"sourceChanged",       "hasVideoOpenedChanged",
                                "timePositionChanged", "currentFrameIndexChanged",
                                "durationChanged",     "playingChanged",
                                "showIRChanged",       "sourceOpenError",
                                "irDataChanged",       "isBusyChanged",
                                "videoExportProgress", "videoExportComplete"};
    for (int i = 0; i < stated.size(); ++i)
        QCOMPARE(meta.method(meta.methodOffset() + i).name(), stated.at(i));
}

void PlayerPropertiesTest::aChangeNotifiesOnce_data()
{
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<QVariant>("value");
    for (const char* flag :
         {"showIR", "autoIRMapping", "fullScreenIR", "irOverlayTransparent", "thermalAsOnScreen"})
        QTest::newRow(flag) << QByteArray(flag) << QVariant(true);
    for (const char* number : {"contrast", "brightness", "irMappingMinValue", "irMappingMaxValue",
                               "irOffsetX", "irOffsetY", "playSpeed"})
        QTest::newRow(number) << QByteArray(number) << QVariant(7.0);
    QTest::newRow("irPalette") << QByteArray("irPalette") << QVariant(2);
}

void PlayerPropertiesTest::aChangeNotifiesOnce()
{
    QFETCH(QByteArray, property);
    QFETCH(QVariant, value);
    VideoPlayer player;
    QSignalSpy changes(&player, notifierOf(property));
    QVERIFY(changes.isValid());
    const QVariant before = player.property(property);
    QVERIFY(player.setProperty(property, before));
    QCOMPARE(changes.count(), 0);
    QVERIFY(player.setProperty(property, value));
    QCOMPARE(changes.count(), 1);
    QCOMPARE(player.property(property), value);
    QVERIFY(player.setProperty(property, value));
    QCOMPARE(changes.count(), 1);
    QVERIFY(player.setProperty(property, before));
    QCOMPARE(changes.count(), 2);
}

void PlayerPropertiesTest::aFractionOfASpeedIsNoChange()
{
    VideoPlayer player;
    player.setPlaySpeed(4.0);
    QSignalSpy changes(&player, &VideoPlayer::playSpeedChanged);
    player.setPlaySpeed(4.9);
    player.setPlaySpeed(0.5);
    QCOMPARE(player.playSpeed(), 4.0);
    QCOMPARE(changes.count(), 0);
}

void PlayerPropertiesTest::anUnknownPaletteIsNotTaken()
{
    VideoPlayer player;
    for (const int palette : {-1, 3, 1000000})
        player.setIrPalette(palette);
    QCOMPARE(player.irPalette(), 0);
}

void PlayerPropertiesTest::anotherSurfaceNotifies()
{
    VideoPlayer player;
    RecordingSurface surface;
    QSignalSpy changes(&player, &VideoPlayer::videoSurfaceChanged);
    player.setVideoSurface(&surface);
    player.setVideoSurface(&surface);
    QCOMPARE(changes.count(), 1);
    player.setVideoSurface(nullptr);
    QCOMPARE(changes.count(), 2);
}

void PlayerPropertiesTest::anotherLogParserNotifies()
{
    VideoPlayer player;
    LogParser parser;
    QSignalSpy changes(&player, &VideoPlayer::logParserChanged);
    player.setLogParser(&parser);
    player.setLogParser(&parser);
    QCOMPARE(changes.count(), 1);
    player.setLogParser(nullptr);
    QCOMPARE(changes.count(), 2);
}

QTEST_MAIN(PlayerPropertiesTest)
#include "PlayerPropertiesTest.moc"
