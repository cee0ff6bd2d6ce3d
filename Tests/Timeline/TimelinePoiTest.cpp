#include "Timeline/TimelinePoi.h"

#include "paintedTexts.h"
#include "timelineSupport.h"

#include "Support/contrast.h"

#include <limits>

using namespace corv;
using namespace corv::test;

/// One point of interest: its thumbnail, and how it is drawn.
class TimelinePoiTest : public QObject
{
    Q_OBJECT

private slots:
    void scalesFrames_data();
    void scalesFrames();
    void aNullFrameKeepsTheThumbnail();
    void drawsAFlag_data();
    void drawsAFlag();
    void drawsTheNameInsideTheFlag();
    void theNameCanBeReadInEachState_data();
    void theNameCanBeReadInEachState();
    void aLongNameKeepsItsBeginning_data();
    void aLongNameKeepsItsBeginning();
    void aFlagWithoutThumbnailIsOnePixelWide();
    void drawsAtAnyX_data();
    void drawsAtAnyX();
};

void TimelinePoiTest::scalesFrames_data()
{
    QTest::addColumn<QSize>("frame");
    QTest::addColumn<QSize>("thumbnail");
    QTest::newRow("wide") << QSize(1920, 1080) << QSize(106, 60);
    QTest::newRow("tall") << QSize(1080, 1920) << QSize(60, 106);
    QTest::newRow("square") << QSize(500, 500) << QSize(60, 60);
    QTest::newRow("smaller than a thumbnail") << QSize(30, 20) << QSize(90, 60);
    QTest::newRow("a thumbnail already") << QSize(106, 60) << QSize(106, 60);
}

void TimelinePoiTest::scalesFrames()
{
    QFETCH(QSize, frame);
    QFETCH(QSize, thumbnail);
    QImage image(frame, QImage::Format_RGB888);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixelColor(x, y, QColor(x % 256, y % 256, (x * 7 + y * 3) % 256));
    }
    const TimelinePoi poi(timeAt(5), image);
    QCOMPARE(poi.time(), timeAt(5));
    QCOMPARE(poi.thumbnailWidth(), thumbnail.width());
    QCOMPARE(poi.thumbnail().size(), thumbnail);
    QCOMPARE(poi.thumbnail(),
             image.scaled(thumbnail, Qt::IgnoreAspectRatio, Qt::FastTransformation));
    QCOMPARE(thumbnailOf(poi.thumbnail()), poi.thumbnail());
}

void TimelinePoiTest::aNullFrameKeepsTheThumbnail()
{
    TimelinePoi poi(timeAt(5), QImage());
    QCOMPARE(poi.thumbnailWidth(), 0);
    poi.setThumbnail(frameOf(Qt::red));
    QCOMPARE(poi.thumbnailWidth(), 106);
    poi.setThumbnail(QImage());
    QCOMPARE(poi.thumbnailWidth(), 106);
}

void TimelinePoiTest::drawsAFlag_data()
{
    QTest::addColumn<bool>("hovered");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<bool>("dimmed");
    QTest::addColumn<bool>("omitThumbnail");
    QTest::addColumn<QColor>("flag");
    QTest::addColumn<QColor>("stem");
    QTest::addColumn<QColor>("thumbnail");
    const QColor grey(169, 169, 169);
    const QColor white(Qt::white);
    const QColor red(255, 0, 0);
    const QColor green(0, 255, 0);
    QTest::newRow("plain") << false << false << false << false << grey << QColor(0, 0, 0) << green;
    QTest::newRow("hovered") << true << false << false << false << white << QColor(0, 0, 0)
                             << green;
    QTest::newRow("selected") << false << true << false << false << red << QColor(0, 0, 0) << green;
    QTest::newRow("selected wins over hovered")
        << true << true << false << false << red << QColor(0, 0, 0) << green;
    QTest::newRow("no thumbnail") << true << true << false << true << red << QColor(0, 0, 0)
                                  << QColor(0, 0, 200);
    // 0.3 of the colour on 0.7 of the blue below it
    QTest::newRow("dimmed") << false << true << true << false << QColor(77, 0, 140)
                            << QColor(0, 0, 140) << QColor(0, 77, 140);
}

void TimelinePoiTest::drawsAFlag()
{
    QFETCH(bool, hovered);
    QFETCH(bool, selected);
    QFETCH(bool, dimmed);
    QFETCH(bool, omitThumbnail);
    QImage image(200, 160, QImage::Format_RGB32);
    image.fill(QColor(0, 0, 200));
    QPainter painter(&image);
    const TimelinePoi poi(timeAt(0), frameOf(QColor(0, 255, 0), QSize(60, 60)));
    PoiLook look;
    look.hovered = hovered;
    look.selected = selected;
    look.dimmed = dimmed;
    look.omitThumbnail = omitThumbnail;
    poi.drawPoi(painter, 20, look);
    QCOMPARE(painter.opacity(), 1.0);
    painter.end();

    const auto differ = [](const QColor& a, const QColor& b) {
        return qMax(qAbs(a.red() - b.red()),
                    qMax(qAbs(a.green() - b.green()), qAbs(a.blue() - b.blue())));
    };
    QFETCH(QColor, flag);
    QFETCH(QColor, stem);
    QFETCH(QColor, thumbnail);
    const QColor ground(0, 0, 200);
    QVERIFY(differ(image.pixelColor(80, 33), flag) <= 1);
    QVERIFY(differ(image.pixelColor(80, 46), flag) <= 1);
    QCOMPARE(image.pixelColor(81, 40), ground);
    QCOMPARE(image.pixelColor(50, 32), ground);
    QVERIFY(differ(image.pixelColor(20, 26), stem) <= 1);
    QVERIFY(differ(image.pixelColor(20, 106), stem) <= 1);
    QCOMPARE(image.pixelColor(20, 108), ground);
    QVERIFY2(differ(image.pixelColor(21, 47), thumbnail) <= 2,
             qPrintable(image.pixelColor(21, 47).name()));
    QVERIFY(differ(image.pixelColor(80, 106), thumbnail) <= 2);
    QCOMPARE(image.pixelColor(81, 106), ground);
    QCOMPARE(image.pixelColor(80, 107), ground);
}

void TimelinePoiTest::drawsTheNameInsideTheFlag()
{
    for (const bool selected : {false, true}) {
        QImage image(200, 160, QImage::Format_RGB32);
        image.fill(QColor(0, 0, 200));
        QPainter painter(&image);
        TimelinePoi poi(timeAt(0), frameOf(QColor(0, 255, 0), QSize(60, 60)));
        poi.setName(QString(5000, QLatin1Char('M')));
        PoiLook look;
        look.selected = selected;
        poi.drawPoi(painter, 20, look);
        painter.end();
        int inkPixels = 0;
        for (int y = 33; y < 47; ++y) {
            for (int x = 23; x < 81; ++x)
                inkPixels += image.pixelColor(x, y) == QColor(selected ? Qt::white : Qt::black);
            QCOMPARE(image.pixelColor(82, y), QColor(0, 0, 200));
        }
        QVERIFY2(inkPixels > 20, qPrintable(QString::number(inkPixels)));
    }
}

void TimelinePoiTest::theNameCanBeReadInEachState_data()
{
    QTest::addColumn<bool>("hovered");
    QTest::addColumn<bool>("selected");
    QTest::newRow("plain") << false << false;
    QTest::newRow("hovered") << true << false;
    QTest::newRow("selected") << false << true;
}

void TimelinePoiTest::theNameCanBeReadInEachState()
{
    QFETCH(bool, hovered);
    QFETCH(bool, selected);
    QImage image(200, 160, QImage::Format_RGB32);
    image.fill(QColor(0, 0, 200));
    QPainter painter(&image);
    TimelinePoi poi(timeAt(0), frameOf(QColor(0, 255, 0), QSize(60, 60)));
    poi.setName("Crack");
    PoiLook look;
    look.hovered = hovered;
    look.selected = selected;
    poi.drawPoi(painter, 20, look);
    const int textWidth = painter.fontMetrics().horizontalAdvance("Crack");
    painter.end();
    const QColor behind = mostFrequentColour(image.copy(23, 34, std::min(textWidth, 57), 12));
    const double ratio = contrast(selected ? Qt::white : Qt::black, behind);
    QVERIFY2(ratio >= 4.5, qPrintable(QString("%1 on %2").arg(ratio).arg(behind.name())));
    // Nothing of it is above or below the flag.
    QCOMPARE(image.pixelColor(22, 32), QColor(0, 0, 200));
}

void TimelinePoiTest::aLongNameKeepsItsBeginning_data()
{
    QTest::addColumn<QString>("beginning");
    QTest::addColumn<QString>("rest");
    QTest::newRow("to the right") << "Hairline"
                                  << " crack in the upper insulator of the mast";
    QTest::newRow("to the left") << QString::fromUtf8("شق")
                                 << QString::fromUtf8(" في العازل العلوي على البرج الشمالي");
}

void TimelinePoiTest::aLongNameKeepsItsBeginning()
{
    QFETCH(QString, beginning);
    QFETCH(QString, rest);
    TimelinePoi poi(timeAt(0), frameOf(QColor(0, 255, 0), QSize(106, 60)));
    const auto drawn = [&poi](const QString& name) {
        TextDevice device(QSize(200, 160));
        QPainter painter(&device);
        poi.setName(name);
        poi.drawPoi(painter, 20, PoiLook());
        QString texts;
        for (const PaintedText& text : device.texts())
            texts += text.text;
        return texts;
    };
    QCOMPARE(drawn(beginning), beginning);
    const QString shortened = drawn(beginning + rest);
    QVERIFY2(shortened.startsWith(beginning), qPrintable(shortened));
    QVERIFY2(shortened.contains(QChar(0x2026)), qPrintable(shortened));
    QVERIFY2(!shortened.contains(rest.right(5)), qPrintable(shortened));
}

void TimelinePoiTest::aFlagWithoutThumbnailIsOnePixelWide()
{
    QImage image(200, 160, QImage::Format_RGB32);
    image.fill(QColor(0, 0, 200));
    QPainter painter(&image);
    TimelinePoi poi(timeAt(0), QImage());
    PoiLook look;
    look.selected = true;
    poi.drawPoi(painter, 20, look);
    painter.end();
    // The stem is drawn over all of the flag.
    for (int y = 33; y < 47; ++y) {
        QCOMPARE(image.pixelColor(20, y), QColor(0, 0, 0));
        QCOMPARE(image.pixelColor(19, y), QColor(0, 0, 200));
        QCOMPARE(image.pixelColor(21, y), QColor(0, 0, 200));
    }
}

void TimelinePoiTest::drawsAtAnyX_data()
{
    QTest::addColumn<int>("x");
    QTest::newRow("greatest") << std::numeric_limits<int>::max();
    QTest::newRow("far to the right") << 1000000;
    QTest::newRow("just outside on the right") << 200;
    QTest::newRow("least") << std::numeric_limits<int>::min();
    QTest::newRow("far to the left") << -1000000;
    QTest::newRow("just outside on the left") << -108;
}

void TimelinePoiTest::drawsAtAnyX()
{
    QFETCH(int, x);
    QImage image(200, 160, QImage::Format_RGB32);
    image.fill(Qt::blue);
    const QImage before = image;
    QPainter painter(&image);
    TimelinePoi poi(timeAt(0), frameOf(Qt::green));
    poi.setName(QStringLiteral("far"));
    poi.drawPoi(painter, x, PoiLook());
    painter.end();
    QCOMPARE(image, before);
}

QTEST_MAIN(TimelinePoiTest)
#include "TimelinePoiTest.moc"
