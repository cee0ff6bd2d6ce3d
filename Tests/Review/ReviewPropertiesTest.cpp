#include "Review/ReviewProperties.h"
#include "Log/LogParser.h"
#include "Video/VideoPlayer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace corv;

namespace {

QVariantMap fromText(const QByteArray& text)
{
    return QJsonDocument::fromJson(text).object().toVariantMap();
}

} // namespace

/// What a project keeps of a review's adjustments and names, and what it takes back.
class ReviewPropertiesTest : public QObject
{
    Q_OBJECT

private slots:
    void comesBackAsItWas()
    {
        ReviewProperties saved;
        saved.contrast = 1.5;
        saved.brightness = -10;
        saved.showIR = true;
        saved.irOverlayTransparent = true;
        saved.autoIRMapping = false;
        saved.irMappingMinValue = 2000;
        saved.irMappingMaxValue = 9000;
        saved.irOffsetX = 0.05;
        saved.irOffsetY = -0.05;
        saved.irPalette = ThermalPalette::grey;
        saved.manualLogTimeOffset = 7'000'000;
        saved.hasNaming = true;
        saved.missionName = "Bridge";
        saved.flightName = "North pier";
        saved.flightNumber = 7;
        const QByteArray text = QJsonDocument(QJsonObject::fromVariantMap(saved.toJson())).toJson();
        const ReviewProperties read = ReviewProperties::fromJson(fromText(text), {});
        QCOMPARE(read.toJson(), saved.toJson());
        QCOMPARE(read.naming().value("flightNumber").toInt(), 7);
        QCOMPARE(read.irPalette, ThermalPalette::grey);
    }

    void anOldProjectHasTheOldPalette_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("none") << QByteArray("{}");
        QTest::newRow("unknown") << QByteArray(R"({"thermal_video":{"palette":"pink"}})");
        QTest::newRow("number") << QByteArray(R"({"thermal_video":{"palette":2}})");
    }

    void anOldProjectHasTheOldPalette()
    {
        QFETCH(QByteArray, text);
        ReviewProperties otherwise;
        otherwise.irPalette = ThermalPalette::even;
        QCOMPARE(ReviewProperties::fromJson(fromText(text), otherwise).irPalette,
                 ThermalPalette::rainbow);
        // And what an old project has looks as it did.
        QVERIFY(!ReviewProperties().toJson()["thermal_video"].toMap().contains("palette"));
    }

    void curvesAreKeptByName()
    {
        QVariantMap properties;
        putCurves({}, &properties);
        QVERIFY(properties.isEmpty());
        QVERIFY(!curvesIn(properties));
        putCurves({"altitude", "speed[1]"}, &properties);
        const QByteArray text = QJsonDocument(QJsonObject::fromVariantMap(properties)).toJson();
        QCOMPARE(curvesIn(fromText(text)).value_or(QStringList()),
                 (QStringList{"altitude", "speed[1]"}));
        QVERIFY(!curvesIn(fromText(R"({"log_curves":{"shown":"altitude"}})")));
        QCOMPARE(curvesIn(fromText(R"({"log_curves":{"shown":[1,"a",null,"a"]}})"))
                     .value_or(QStringList()),
                 QStringList("a"));
    }

    void aFlightWithoutANumberSavesNone()
    {
        ReviewProperties saved;
        saved.hasNaming = true;
        saved.flightName = "North pier";
        const QVariantMap designation = saved.toJson().value("designation").toMap();
        QCOMPARE(designation.keys(), (QStringList{"flight_name", "mission_name"}));
        QVERIFY(!ReviewProperties().toJson().contains("designation"));
    }

    void takesOnlyWhatTheControlsAllow_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<double>("contrast");
        QTest::addColumn<double>("offsetX");
        QTest::addColumn<int>("manualLogTimeOffset");
        const double otherwise = 1.25;
        QTest::newRow("nothing") << QByteArray("{}") << otherwise << 0.0 << 0;
        QTest::newRow("a huge contrast")
            << QByteArray(R"({"display":{"contrast":1e308}})") << 2.0 << 0.0 << 0;
        QTest::newRow("a negative contrast")
            << QByteArray(R"({"display":{"contrast":-4}})") << 0.5 << 0.0 << 0;
        QTest::newRow("text for a number")
            << QByteArray(R"({"display":{"contrast":"2"}})") << otherwise << 0.0 << 0;
        QTest::newRow("a flag for a number")
            << QByteArray(R"({"display":{"contrast":true}})") << otherwise << 0.0 << 0;
        QTest::newRow("an overlay outside the picture")
            << QByteArray(R"({"thermal_video":{"align_offset_x":-9}})") << otherwise << -0.2 << 0;
        QTest::newRow("a shift beyond its control")
            << QByteArray(R"({"correction":{"log_offset":-3600000}})") << otherwise << 0.0
            << -3'600'000;
        QTest::newRow("a shift beyond any number")
            << QByteArray(R"({"correction":{"log_offset":1e12}})") << otherwise << 0.0 << 0;
        QTest::newRow("lists for maps")
            << QByteArray(R"({"display":[1],"thermal_video":4,"correction":null})") << otherwise
            << 0.0 << 0;
    }

    void takesOnlyWhatTheControlsAllow()
    {
        QFETCH(QByteArray, text);
        ReviewProperties otherwise;
        otherwise.contrast = 1.25;
        const ReviewProperties read = ReviewProperties::fromJson(fromText(text), otherwise);
        QTEST(read.contrast, "contrast");
        QTEST(read.irOffsetX, "offsetX");
        QTEST(read.manualLogTimeOffset, "manualLogTimeOffset");
        QVERIFY(!read.hasNaming);
        QCOMPARE(read.naming(), (QVariantMap{{"undefined", true}}));
    }

    void goesToThePlayerAndComesFromIt()
    {
        VideoPlayer player;
        LogParser parser;
        ReviewProperties given;
        given.contrast = 0.75;
        given.autoIRMapping = false;
        given.irMappingMaxValue = 8000;
        given.showIR = true;
        given.irPalette = ThermalPalette::even;
        given.applyTo(player);
        QCOMPARE(ReviewProperties::of(player, parser).toJson(), given.toJson());
    }
};

QTEST_MAIN(ReviewPropertiesTest)
#include "ReviewPropertiesTest.moc"
