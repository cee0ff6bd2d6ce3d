#include "Timeline/InstrumentsInset.h"
#include "Timeline/ThermalBarInset.h"
#include "Timeline/thermalBarPainting.h"

#include <QPainter>
#include <QtTest>

using namespace corv;

/// The colours of the thermal overlay with the ends of their range, on screen and in exported
/// pictures.
class ThermalBarTest : public QObject
{
    Q_OBJECT

private slots:
    void isReadableInPicturesOfAnySize_data();
    void isReadableInPicturesOfAnySize();
    void hasTheColoursOfThePaletteHottestOnTop_data();
    void hasTheColoursOfThePaletteHottestOnTop();
    void endsAreWholeNumbers_data();
    void endsAreWholeNumbers();
    void eachEndHasItsOwnText();
    void textsStayInsideTheBar();
    void showsNothingWithoutAnOverlay();
    void showsWhatThePainterPaints();
    void paintsAgainWhatHasChanged();
};

namespace {

const QColor ground(0x1f, 0x1f, 0x1f);

QImage painted(const ThermalScale& scale, QSize size = {54, 260})
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(ground);
    QPainter painter(&image);
    paintThermalBar(painter, image.rect(), 1.0, scale);
    return image;
}

ThermalScale scaleOf(double lowest, double highest,
                     ThermalPalette palette = ThermalPalette::rainbow)
{
    return {palette, lowest, highest};
}

QImage imageAt(ThermalBarInset& inset, const std::optional<ThermalScale>& scale,
               QSize picture = {1280, 720})
{
    return inset.partAt({0, picture, scale}).image.copy();
}

bool isNear(const QColor& one, const QColor& other, int tolerance)
{
    return std::abs(one.red() - other.red()) <= tolerance &&
           std::abs(one.green() - other.green()) <= tolerance &&
           std::abs(one.blue() - other.blue()) <= tolerance;
}

// The rows of a picture in which two pictures differ.
QList<int> differingRows(const QImage& one, const QImage& other)
{
    QList<int> rows;
    for (int y = 0; y < one.height(); ++y)
        if (one.copy(0, y, one.width(), 1) != other.copy(0, y, one.width(), 1))
            rows << y;
    return rows;
}

} // namespace

void ThermalBarTest::isReadableInPicturesOfAnySize_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<double>("smallestTextPx"); // 0 where there is no room for a bar
    QTest::newRow("thermal camera") << QSize(640, 512) << 11.0;
    QTest::newRow("small") << QSize(320, 240) << 11.0;
    QTest::newRow("720p") << QSize(1280, 720) << 11.0;
    QTest::newRow("1080p") << QSize(1920, 1080) << 13.0;
    QTest::newRow("4K") << QSize(3840, 2160) << 26.0;
    QTest::newRow("upright") << QSize(1080, 1920) << 24.0;
    QTest::newRow("a thumbnail") << QSize(64, 48) << 0.0;
    QTest::newRow("one line") << QSize(4000, 1) << 0.0;
    QTest::newRow("nothing") << QSize(0, 0) << 0.0;
}

void ThermalBarTest::isReadableInPicturesOfAnySize()
{
    QFETCH(QSize, picture);
    QFETCH(double, smallestTextPx);
    const ThermalBarPlace place = thermalBarPlace(picture);
    QCOMPARE(!place.rect.isEmpty(), smallestTextPx > 0);
    if (place.rect.isEmpty())
        return;
    QVERIFY(QRect(QPoint(), picture).contains(place.rect));
    QVERIFY2(11 * place.scale >= smallestTextPx - 0.1, qPrintable(QString::number(place.scale)));
    QVERIFY(place.rect.left() <= picture.width() / 20);
    QVERIFY(place.rect.top() <= picture.height() / 20);
    QVERIFY(place.rect.width() * place.rect.height() <
            picture.width() * picture.height() * 15 / 100);
    QVERIFY(!place.rect.intersects(instrumentsPlace(picture, 510, 150).rect));
}

void ThermalBarTest::hasTheColoursOfThePaletteHottestOnTop_data()
{
    QTest::addColumn<int>("palette");
    QTest::addColumn<QColor>("coldest");
    QTest::addColumn<QColor>("middle");
    QTest::addColumn<QColor>("hottest");
    QTest::newRow("rainbow") << int(ThermalPalette::rainbow) << QColor(0, 0, 128)
                             << QColor(128, 255, 128) << QColor(128, 0, 0);
    QTest::newRow("even") << int(ThermalPalette::even) << QColor(0, 34, 78) << QColor(124, 123, 120)
                          << QColor(254, 232, 56);
    QTest::newRow("grey") << int(ThermalPalette::grey) << QColor(0, 0, 0) << QColor(128, 128, 128)
                          << QColor(255, 255, 255);
}

void ThermalBarTest::hasTheColoursOfThePaletteHottestOnTop()
{
    QFETCH(int, palette);
    const auto ofPalette = static_cast<ThermalPalette>(palette);
    const QImage image = painted(scaleOf(7000, 9000, ofPalette));
    // The part of the middle column between the edges of the bar.
    int top = 0;
    while (top < image.height() && !isNear(image.pixelColor(20, top), QColor(170, 170, 170), 40))
        ++top;
    int bottom = image.height() - 1;
    while (bottom > top && !isNear(image.pixelColor(20, bottom), QColor(170, 170, 170), 40))
        --bottom;
    QVERIFY2(bottom - top > 200, qPrintable(QStringLiteral("%1 to %2").arg(top).arg(bottom)));
    const auto at = [&](double part) {
        return image.pixelColor(27, qRound(bottom - 2 - part * (bottom - top - 4)));
    };
    QFETCH(QColor, coldest);
    QFETCH(QColor, middle);
    QFETCH(QColor, hottest);
    QVERIFY2(isNear(at(0.0), coldest, 8), qPrintable(at(0.0).name()));
    QVERIFY2(isNear(at(0.5), middle, 8), qPrintable(at(0.5).name()));
    QVERIFY2(isNear(at(1.0), hottest, 8), qPrintable(at(1.0).name()));
    const auto colours = thermalColours(ofPalette);
    for (const double part : {0.125, 0.25, 0.375, 0.625, 0.75, 0.875})
        QVERIFY(isNear(at(part), QColor(colours[static_cast<size_t>(part * 255)]), 10));
}

void ThermalBarTest::endsAreWholeNumbers_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("raw") << 7213.0 << "7213";
    QTest::newRow("highest") << 65535.0 << "65535";
    QTest::newRow("set by hand") << 7213.6 << "7214";
    QTest::newRow("nothing") << 0.0 << "0";
    QTest::newRow("rounded to nothing") << -0.2 << "0";
    QTest::newRow("damaged project") << 1e30 << "1e+30";
}

void ThermalBarTest::endsAreWholeNumbers()
{
    QFETCH(double, value);
    QTEST(thermalBarText(value), "text");
}

void ThermalBarTest::eachEndHasItsOwnText()
{
    const QImage image = painted(scaleOf(7000, 9000));
    const QList<int> ofHighest = differingRows(image, painted(scaleOf(7000, 9111)));
    QVERIFY(!ofHighest.isEmpty());
    QVERIFY2(ofHighest.last() < 24, qPrintable(QString::number(ofHighest.last())));
    const QList<int> ofLowest = differingRows(image, painted(scaleOf(7111, 9000)));
    QVERIFY(!ofLowest.isEmpty());
    QVERIFY2(ofLowest.first() > 235, qPrintable(QString::number(ofLowest.first())));
}

void ThermalBarTest::textsStayInsideTheBar()
{
    const QSize wide(200, 260);
    for (const double value : {65535.0, 1e30, -123456789.0}) {
        QImage image(wide, QImage::Format_ARGB32_Premultiplied);
        image.fill(ground);
        QPainter painter(&image);
        const QRect bar(60, 0, 54, 260);
        paintThermalBar(painter, bar, 1.0, scaleOf(value, value));
        painter.end();
        QImage left = image.copy(0, 0, 60, 260);
        QImage right = image.copy(114, 0, 86, 260);
        QImage bare(wide, image.format());
        bare.fill(ground);
        QCOMPARE(left, bare.copy(left.rect()));
        QCOMPARE(right, bare.copy(right.rect()));
        QVERIFY(image.copy(bar) != bare.copy(bar));
    }
}

void ThermalBarTest::showsNothingWithoutAnOverlay()
{
    ThermalBarInset inset;
    QVERIFY(imageAt(inset, std::nullopt).isNull());
    QVERIFY(!imageAt(inset, scaleOf(1, 2)).isNull());
    QVERIFY(imageAt(inset, std::nullopt).isNull());
    QVERIFY(imageAt(inset, scaleOf(1, 2), {0, 0}).isNull());
    QVERIFY(imageAt(inset, scaleOf(1, 2), {64, 48}).isNull());
}

void ThermalBarTest::showsWhatThePainterPaints()
{
    ThermalBarInset inset;
    const ThermalScale scale = scaleOf(7100, 8500, ThermalPalette::even);
    const PictureInset::Part part = inset.partAt({1500, {1920, 1080}, scale});
    const ThermalBarPlace place = thermalBarPlace({1920, 1080});
    QCOMPARE(part.topLeft, place.rect.topLeft());
    QImage expected(place.rect.size(), QImage::Format_ARGB32_Premultiplied);
    expected.fill(QColor(0, 0, 0, 168));
    QPainter onImage(&expected);
    paintThermalBar(onImage, expected.rect(), place.scale, scale);
    onImage.end();
    QCOMPARE(part.image, expected);
}

void ThermalBarTest::paintsAgainWhatHasChanged()
{
    ThermalBarInset inset;
    const QList<ThermalScale> scales{scaleOf(7000, 9000), scaleOf(7000, 9001), scaleOf(6999, 9001),
                                     scaleOf(6999, 9001, ThermalPalette::grey),
                                     scaleOf(7000, 9000)};
    QImage before;
    for (const QSize picture : {QSize(1280, 720), QSize(1920, 1080)}) {
        for (const ThermalScale& scale : scales) {
            ThermalBarInset fresh;
            const QImage image = imageAt(inset, scale, picture);
            QCOMPARE(image, imageAt(fresh, scale, picture));
            QVERIFY(image != before);
            before = image;
        }
    }
}

QTEST_MAIN(ThermalBarTest)
#include "ThermalBarTest.moc"
