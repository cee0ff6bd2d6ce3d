#include "headUpPanel.h"

#include "Timeline/InstrumentsInset.h"

using namespace corv;
using namespace corv::test;

/// The instruments in a corner of exported pictures.
class InstrumentsInsetTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void isReadableInPicturesOfAnySize_data();
    void isReadableInPicturesOfAnySize();
    void showsWhatThePainterPaints();
    void paintsAgainWhatHasChanged_data();
    void paintsAgainWhatHasChanged();
    void followsTheCorrectionOfTheTime();
    void showsNothingWithoutASynchronisedLog();

private:
    std::shared_ptr<FlightClock> m_clock;
    LogParser m_parser;
    HeadUpPainter m_painter;
};

namespace {

constexpr int lastMs = 3000;

// Some values stay, some change, at different times.
LogBuilder flightLog()
{
    LogBuilder log = recordingLog(durationMs);
    addStateGroup(log);
    for (int ms = 0; ms <= lastMs; ms += 100) {
        State state;
        state.time = start + static_cast<quint32>(ms);
        state.pitch = radians(-3);
        state.roll = radians(ms / 500);
        state.yaw = radians(ms / 20);
        state.altitude = static_cast<float>(20 + ms / 1000);
        addState(log, state);
    }
    addCameraGroup(log);
    addCamera(log, start, -10);
    addCamera(log, start + 1500, -60);
    return log;
}

QImage imageAt(InstrumentsInset& inset, int videoMs, QSize picture)
{
    return inset.partAt({videoMs, picture, {}}).image.copy();
}

int largestDifference(const QImage& one, const QImage& other)
{
    int largest = one.size() == other.size() ? 0 : 255;
    for (qsizetype i = 0; largest < 255 && i < one.sizeInBytes(); ++i)
        largest = std::max(largest, std::abs(one.constBits()[i] - other.constBits()[i]));
    return largest;
}

} // namespace

void InstrumentsInsetTest::init()
{
    m_clock = std::make_shared<FlightClock>();
    m_clock->logTimeOffset = static_cast<int>(start);
    m_clock->synced = true;
    QVERIFY(parse(m_parser, flightLog(), durationMs));
    m_painter = HeadUpPainter();
    m_painter.setLog(m_parser.log());
    m_painter.setClock(m_clock);
}

void InstrumentsInsetTest::isReadableInPicturesOfAnySize_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<bool>("showsDials");
    QTest::addColumn<double>("smallestTextPx");
    QTest::newRow("thermal camera") << QSize(640, 512) << false << 13.0;
    QTest::newRow("small") << QSize(320, 240) << false << 13.0;
    QTest::newRow("720p") << QSize(1280, 720) << true << 11.0;
    QTest::newRow("1080p") << QSize(1920, 1080) << true << 13.0;
    QTest::newRow("4K") << QSize(3840, 2160) << true << 26.0;
    QTest::newRow("upright") << QSize(1080, 1920) << true << 20.0;
    QTest::newRow("a strip") << QSize(200, 2000) << true << 0.0;
    QTest::newRow("a thumbnail") << QSize(64, 48) << false << 0.0;
}

void InstrumentsInsetTest::isReadableInPicturesOfAnySize()
{
    QFETCH(QSize, picture);
    const InstrumentsPlace place = instrumentsPlace(picture, 510, 150);
    QTEST(place.showsDials, "showsDials");
    QVERIFY(QRect(QPoint(), picture).contains(place.rect));
    const double scale = place.rect.width() / HeadUpPainter::naturalWidth;
    QFETCH(double, smallestTextPx);
    QVERIFY2(13 * scale >= smallestTextPx - 0.1, qPrintable(QString::number(scale)));
    // In the corner, and most of the picture is free.
    QVERIFY(place.rect.right() >= picture.width() * 9 / 10);
    QVERIFY(place.rect.top() <= picture.height() / 10);
    if (smallestTextPx > 0)
        QVERIFY(place.rect.width() * place.rect.height() <
                picture.width() * picture.height() * 35 / 100);
}

void InstrumentsInsetTest::showsWhatThePainterPaints()
{
    InstrumentsInset inset(m_painter);
    const PictureInset::Part part = inset.partAt({1500, {1920, 1080}, {}});
    const double fullHeight = m_painter.heightAt(HeadUpPainter::naturalWidth);
    const double numbersHeight = m_painter.withoutDials().heightAt(HeadUpPainter::naturalWidth);
    const InstrumentsPlace place = instrumentsPlace({1920, 1080}, fullHeight, numbersHeight);
    QCOMPARE(part.topLeft, place.rect.topLeft());
    QImage expected(place.rect.size(), QImage::Format_ARGB32_Premultiplied);
    expected.fill(QColor(0, 0, 0, 168));
    QPainter onImage(&expected);
    m_painter.paintInto(onImage, expected.rect(), 1500);
    onImage.end();
    QCOMPARE(part.image, expected);
    QVERIFY(needlePixels(part.image, part.image.rect()) > 100);
    // As numbers alone.
    const QImage numbers = imageAt(inset, 1500, {640, 512});
    QCOMPARE(numbers.size(), instrumentsPlace({640, 512}, fullHeight, numbersHeight).rect.size());
    QCOMPARE(needlePixels(numbers, numbers.rect()), 0);
}

void InstrumentsInsetTest::paintsAgainWhatHasChanged_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::newRow("720p") << QSize(1280, 720);
    QTest::newRow("odd scale") << QSize(1440, 1078);
    QTest::newRow("numbers") << QSize(640, 512);
}

void InstrumentsInsetTest::paintsAgainWhatHasChanged()
{
    QFETCH(QSize, picture);
    InstrumentsInset inset(m_painter);
    QImage before;
    int changes = 0;
    for (const int ms : {0, 0, 40, 80, 120, 500, 1000, 1480, 1500, 3000, 60, lastMs, 0}) {
        InstrumentsInset fresh(m_painter);
        const QImage image = imageAt(inset, ms, picture);
        // Edges are smoothed within what is painted: a step of the colour may differ there.
        QVERIFY(largestDifference(image, imageAt(fresh, ms, picture)) <= 1);
        changes += image == before ? 0 : 1;
        before = image;
    }
    QVERIFY(changes >= 7);
}

void InstrumentsInsetTest::followsTheCorrectionOfTheTime()
{
    InstrumentsInset inset(m_painter);
    const QSize picture(1280, 720);
    const QImage before = imageAt(inset, 0, picture);
    const QImage later = imageAt(inset, 1500, picture);
    QVERIFY(before != later);
    m_clock->manualLogTimeOffset = 1500;
    QCOMPARE(imageAt(inset, 0, picture), later);
    m_clock->manualLogTimeOffset = 0;
}

void InstrumentsInsetTest::showsNothingWithoutASynchronisedLog()
{
    m_clock->synced = false;
    InstrumentsInset inset(m_painter);
    QVERIFY(inset.partAt({0, {1280, 720}, {}}).image.isNull());
    QVERIFY(InstrumentsInset(HeadUpPainter()).partAt({0, {1280, 720}, {}}).image.isNull());
    m_clock->synced = true;
    QVERIFY(!inset.partAt({0, {1280, 720}, {}}).image.isNull());
    QVERIFY(inset.partAt({0, {0, 0}, {}}).image.isNull());
}

QTEST_MAIN(InstrumentsInsetTest)
#include "InstrumentsInsetTest.moc"
