#include "paintedTexts.h"
#include "timelineSupport.h"

#include "Timeline/LogCurves.h"

#include <cmath>

using namespace corv;
using namespace corv::test;

/// Columns of the log as curves: which there are, and where they are drawn.
class LogCurvesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void listsTheNumbersOfGroupsWithTimes();
    void findsByAnyPartOfTheName();
    void showsTheValueHeldAtAMoment();
    void saysTheValuesAtTheCursor();
    void keepsTheNamesOfManyCurvesInside();
    void drawsEachValueAtItsTime();
    void drawsPeaksThatFallBetweenPixels();
    void isUnbrokenOnFinerScreens_data();
    void isUnbrokenOnFinerScreens();
    void followsTheCorrection();
    void showsNothingWithoutASynchronisedLog();
    void isDarkOnALightGround();
    void keepsItsChoiceForTheNextLog();
    void survivesAnyScale_data();
    void survivesAnyScale();

private:
    QImage picture() { return painted(*m_curves); }
    bool load(const LogBuilder& log);

    std::unique_ptr<LogParser> m_parser;
    std::unique_ptr<LogCurves> m_curves;
};

namespace {

constexpr int durationMs = 60000;
constexpr int width = 600; // 100 ms a pixel
constexpr int height = 101;
constexpr int marginPx = 4;
const QColor firstColour(0x12, 0xff, 0x54);

// A step from 0 to 10 after thirty seconds, with a peak of 20 for 20 ms at fifteen.
LogBuilder flight()
{
    LogBuilder log = recordingLog(durationMs);
    log.addGroup("engine", 7,
                 {{"time", "UINT32", 1},
                  {"rpm", "FLOAT", 1},
                  {"cells", "UINT16", 2},
                  {"name", "INT8", 4},
                  {"blob", "UINT8", 40}});
    const quint32 start = videoStartInLogMs;
    for (quint32 ms = 0; ms < 60000; ms += 20) {
        const float rpm = ms == 15000 ? 20 : ms < 30000 ? 0 : 10;
        log.addPacket(7, LogBuilder::u32(start + ms) + LogBuilder::f32(rpm) +
                             LogBuilder::u16(ms % 100) + LogBuilder::u16(7) +
                             LogBuilder::text("abc", 4) + QByteArray(40, '\1'));
    }
    log.addGroup("timeless", 8, {{"rpm", "FLOAT", 1}});
    log.addPacket(8, LogBuilder::f32(1));
    return log;
}

// The highest and the lowest pixel of the first curve in a column of the picture, below the legend.
QPair<int, int> curveAt(const QImage& image, int x)
{
    int top = -1;
    int bottom = -1;
    for (int y = 0; y < height; ++y) {
        if (image.pixelColor(x, y) != firstColour)
            continue;
        top = top < 0 ? y : top;
        bottom = y;
    }
    return {top, bottom};
}

int yOf(double value)
{
    return height - 1 - marginPx - int(std::lround(value / 20 * (height - 1 - 2 * marginPx)));
}

} // namespace

void LogCurvesTest::init()
{
    m_parser = std::make_unique<LogParser>();
    m_curves = std::make_unique<LogCurves>();
    m_curves->setSize(QSizeF(width, height));
    m_curves->setLogParser(m_parser.get());
    m_curves->setMsPerPx(100);
}

bool LogCurvesTest::load(const LogBuilder& log)
{
    return parse(*m_parser, log, durationMs);
}

void LogCurvesTest::listsTheNumbersOfGroupsWithTimes()
{
    QVERIFY(m_curves->available(QString()).isEmpty());
    QSignalSpy changed(m_curves.get(), &LogCurves::logChanged);
    QVERIFY(load(flight()));
    QVERIFY(changed.size() > 0);
    QStringList names;
    for (const QVariant& curve : m_curves->available(QString()))
        names += curve.toMap()["name"].toString();
    QCOMPARE(names, QStringList({"engine.rpm", "engine.cells[0]", "engine.cells[1]"}));
    m_parser->closeLog();
    QVERIFY(m_curves->available(QString()).isEmpty());
}

void LogCurvesTest::findsByAnyPartOfTheName()
{
    QVERIFY(load(flight()));
    QCOMPARE(m_curves->available(" CELLS ").size(), 2);
    QCOMPARE(m_curves->available("engine").size(), 3);
    QCOMPARE(m_curves->available("wings").size(), 0);
}

void LogCurvesTest::showsTheValueHeldAtAMoment()
{
    QVERIFY(load(flight()));
    CurvePainter painter;
    painter.setLog(m_parser->log());
    painter.setChosen({"engine.cells[0]"});
    QVERIFY(!painter.valueAt("engine.cells[0]", 0)); // no clock
    painter.setClock(m_parser->clock());
    QCOMPARE(painter.valueAt("engine.cells[0]", 39).value(), 20.0F);
    QCOMPARE(painter.valueAt("engine.cells[0]", 40).value(), 40.0F);
    QCOMPARE(painter.valueAt("engine.cells[0]", 3'000'000).value(), 80.0F);
    QVERIFY(!painter.valueAt("engine.cells[0]", -1));
    QVERIFY(!painter.valueAt("engine.rpm", 0)); // not chosen
}

void LogCurvesTest::saysTheValuesAtTheCursor()
{
    m_curves->setCurves({"engine.rpm", "engine.cells[0]"});
    QCOMPARE(m_curves->readings(), QStringList()); // without a log
    QSignalSpy changed(m_curves.get(), &LogCurves::readingsChanged);
    QVERIFY(load(flight()));
    QVERIFY(changed.size() > 0);
    changed.clear();
    m_curves->setCursorPosition(timeAt(40));
    QCOMPARE(changed.size(), 1);
    const auto said = [this] {
        QStringList texts = m_curves->readings();
        for (QString& text : texts)
            text = text.simplified();
        return texts;
    };
    QCOMPARE(said(), QStringList({"engine.rpm 0", "engine.cells[0] 40"}));
    m_curves->setCursorPosition(timeAt(45000));
    QCOMPARE(said().first(), QString("engine.rpm 10"));
    changed.clear();
    m_curves->toggle("engine.rpm");
    QCOMPARE(changed.size(), 1);
    QCOMPARE(m_curves->readings().size(), 1);
    m_parser->closeLog();
    QCOMPARE(m_curves->readings(), QStringList());
}

void LogCurvesTest::drawsEachValueAtItsTime()
{
    QVERIFY(load(flight()));
    m_curves->toggle("engine.rpm");
    QCOMPARE(m_curves->colourOf("engine.rpm"), firstColour);
    m_curves->setCursorPosition(timeAt(59000));
    const QImage image = picture();
    QCOMPARE(curveAt(image, 250), qMakePair(yOf(0), yOf(0)));
    QCOMPARE(curveAt(image, 299).second, yOf(0));
    QCOMPARE(curveAt(image, 302), qMakePair(yOf(10), yOf(10)));
    QCOMPARE(image.pixelColor(590, 5), QColor(Qt::white)); // the cursor
    m_curves->setContentX(200);
    QCOMPARE(curveAt(picture(), 102), qMakePair(yOf(10), yOf(10)));
    m_curves->toggle("engine.rpm");
    QVERIFY(m_curves->curves().isEmpty());
    QCOMPARE(curveAt(picture(), 302), qMakePair(-1, -1));
}

void LogCurvesTest::keepsTheNamesOfManyCurvesInside()
{
    QVERIFY(load(flight()));
    constexpr int lowHeight = 40; // room for two lines
    m_curves->setSize(QSizeF(width, lowHeight));
    m_curves->setCurves({"engine.rpm", "engine.cells[0]", "engine.cells[1]"});
    TextDevice device(QSize(width, lowHeight));
    QPainter painter(&device);
    m_curves->paint(&painter);
    painter.end();
    const std::vector<PaintedText> texts = device.texts();
    QCOMPARE(texts.size(), size_t(3));
    for (const PaintedText& text : texts)
        QVERIFY2(text.baseline.y() < lowHeight, qPrintable(text.text));
    QCOMPARE(texts[2].baseline.y(), texts[0].baseline.y());
    QVERIFY(texts[2].baseline.x() > texts[0].baseline.x());
}

void LogCurvesTest::drawsPeaksThatFallBetweenPixels()
{
    QVERIFY(load(flight()));
    m_curves->setCurves({"engine.rpm"});
    m_curves->setMsPerPx(1000);
    m_curves->setContentX(-300); // beside the legend
    const QImage image = picture();
    int highest = height;
    for (int x = 314; x <= 316; ++x)
        highest = std::min(highest, curveAt(image, x).first);
    QCOMPARE(highest, yOf(20));
}

void LogCurvesTest::isUnbrokenOnFinerScreens_data()
{
    QTest::addColumn<double>("scale");
    for (const double scale : {1.0, 1.25, 1.5, 2.0, 3.0})
        QTest::addRow("%g", scale) << scale;
}

void LogCurvesTest::isUnbrokenOnFinerScreens()
{
    QFETCH(double, scale);
    QVERIFY(load(flight()));
    m_curves->setCurves({"engine.rpm"});
    m_curves->setCursorPosition(timeAt(59000));
    QImage image((QSizeF(width, height) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    painter.scale(scale, scale);
    m_curves->paint(&painter);
    painter.end();
    for (int x = int(200 * scale); x < int(580 * scale); ++x) {
        const bool isBeforeStep = x < int(298 * scale);
        if (!isBeforeStep && x < int(304 * scale))
            continue;
        const double y = yOf(isBeforeStep ? 0 : 10) * scale;
        bool isDrawn = false;
        for (int row = int(y); row <= int(y + scale); ++row)
            isDrawn = isDrawn || image.pixelColor(x, row) == firstColour;
        QVERIFY2(isDrawn, qPrintable(QString("column %1").arg(x)));
    }
}

void LogCurvesTest::followsTheCorrection()
{
    QVERIFY(load(flight()));
    m_curves->setCurves({"engine.rpm"});
    m_parser->setManualLogTimeOffset(5000);
    const QImage image = picture();
    QCOMPARE(curveAt(image, 252), qMakePair(yOf(10), yOf(10)));
}

void LogCurvesTest::showsNothingWithoutASynchronisedLog()
{
    m_curves->setCurves({"engine.rpm"});
    const QImage empty = picture();
    QVERIFY(load(flight()));
    QVERIFY(picture() != empty);
    m_parser->closeLog();
    QCOMPARE(picture(), empty);
}

void LogCurvesTest::isDarkOnALightGround()
{
    QVERIFY(load(flight()));
    m_curves->toggle("engine.rpm");
    m_curves->setCursorPosition(timeAt(59000));
    const QImage onDark = picture();
    m_curves->setLight(true);
    QVERIFY(m_curves->colourOf("engine.rpm").lightness() < 100);
    QCOMPARE(picture().pixelColor(590, 5), QColor(Qt::black)); // the cursor
    m_curves->setLight(false);
    QCOMPARE(m_curves->colourOf("engine.rpm"), firstColour);
    QCOMPARE(picture(), onDark);
}

void LogCurvesTest::keepsItsChoiceForTheNextLog()
{
    m_curves->setCurves({"engine.rpm", "wings.lift"});
    QVERIFY(load(flight()));
    QCOMPARE(m_curves->curves(), QStringList({"engine.rpm", "wings.lift"}));
    QCOMPARE(curveAt(picture(), 450), qMakePair(yOf(10), yOf(10)));
    QVERIFY(!m_curves->colourOf("wings.lift").isValid());
}

void LogCurvesTest::survivesAnyScale_data()
{
    QTest::addColumn<float>("msPerPx");
    QTest::addColumn<int>("contentX");
    const float infinite = std::numeric_limits<float>::infinity();
    QTest::newRow("nothing") << 0.0F << 0;
    QTest::newRow("negative") << -1.0F << 0;
    QTest::newRow("infinite") << infinite << 0;
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN() << 0;
    QTest::newRow("closest") << 0.005F << 2'000'000'000;
    QTest::newRow("farthest") << 1e30F << 0;
    QTest::newRow("far off") << 100.0F << std::numeric_limits<int>::max();
    QTest::newRow("far before") << 100.0F << std::numeric_limits<int>::min();
}

void LogCurvesTest::survivesAnyScale()
{
    QFETCH(float, msPerPx);
    QFETCH(int, contentX);
    QVERIFY(load(flight()));
    m_curves->setCurves({"engine.rpm", "engine.cells[0]"});
    m_curves->setMsPerPx(msPerPx);
    m_curves->setContentX(contentX);
    QCOMPARE(picture().isNull(), false);
}

QTEST_MAIN(LogCurvesTest)
#include "LogCurvesTest.moc"
