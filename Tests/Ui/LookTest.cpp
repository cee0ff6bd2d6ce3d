#include "App/look.h"
#include "ReviewFixture.h"
#include "Support/contrast.h"

#include <QAccessible>
#include <QHash>
#include <QMessageBox>
#include <QScreen>
#include <cmath>
#include <memory>

using namespace corv::test;

/// What a look at the window would show: no text cut off or over another, no picture missing,
/// everything inside, at every size and in every state. Pictures of each are kept where
/// VISTREL_SCREENSHOTS says.
class LookTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void mainWindowFitsEverySize_data();
    void mainWindowFitsEverySize();
    void aDesktopWithLargeTextsLeavesThemRoom();
    void followsTheScaleOfTheScreen();
    void pointersAndIconsAreDrawnSharp();
    void signOfAMessageBoxIsSharpAndSeen_data();
    void signOfAMessageBoxIsSharpAndSeen();
    void curvesAreUnbroken();
    void everyControlHasANameForAReader();
    void theLookChangesInTheOpenWindow();

private:
    void bringInto(const QString& state);
    void checkTexts(QQuickItem* from);
    void checkPictures(QQuickItem* from);
    void checkContrast(QQuickItem* from, const QImage& picture);
    QRectF area(QQuickItem* item) const
    {
        return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
    }

    std::unique_ptr<ReviewFixture> m_ui;
    QVector<QPair<QRectF, QString>> m_texts;
};

void LookTest::initTestCase()
{
    UiFixture::prepare();
}

void LookTest::mainWindowFitsEverySize_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("state");
    for (const QSize size : {QSize(800, 700), QSize(1600, 900)}) {
        // At double density the wide window is wider than the screen of the test.
        if (size.width() > QGuiApplication::primaryScreen()->size().width())
            continue;
        for (const char* state : {"start", "flight", "adjustments", "move mode", "reading a log"})
            QTest::addRow("%s %dx%d", state, size.width(), size.height())
                << size << QString::fromLatin1(state);
    }
}

void LookTest::bringInto(const QString& state)
{
    if (state == "start")
        return;
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog());
    QTRY_COMPARE(m_ui->poiNames().size(), 2);
    QTRY_VERIFY(!m_ui->evaluate("videoPlayer.isBusy").toBool());
    if (state == "adjustments")
        QVERIFY(m_ui->showAdjustments());
    if (state == "move mode") {
        QVERIFY(m_ui->selectPoiAt(2000));
        m_ui->call("startMovingPoi");
    }
    if (state == "reading a log") {
        m_ui->evaluate("LogParser.isParsing = true");
        m_ui->call("logParsingProgress", {2, 30, 100});
    }
}

void LookTest::checkTexts(QQuickItem* from)
{
    if (!from->isVisible() || qFuzzyIsNull(from->opacity()))
        return;
    if (from->inherits("QQuickText") && !from->property("text").toString().isEmpty()) {
        const QString text = from->property("text").toString();
        const QRectF place = area(from);
        const QRectF window(QPointF(), m_ui->window()->size());
        QVERIFY2(window.adjusted(-1, -1, 1, 1).contains(place), qPrintable("outside: " + text));
        // A text may end in dots where its element says so; else it has the room that it needs.
        if (from->property("elide").toInt() == Qt::ElideNone) {
            QVERIFY2(from->property("contentWidth").toDouble() <= from->width() + 1,
                     qPrintable("too wide: " + text));
            QVERIFY2(from->property("contentHeight").toDouble() <= from->height() + 1,
                     qPrintable("too high: " + text));
            QVERIFY2(!from->property("truncated").toBool(), qPrintable("cut off: " + text));
        } else {
            QVERIFY2(from->width() >= 40, qPrintable("no room: " + text));
        }
        const QRectF parent = area(from->parentItem());
        const bool framed = from->parentItem()->inherits("QQuickRectangle");
        QVERIFY2(!framed ||
                     (parent.left() <= place.left() + 1 && place.right() <= parent.right() + 1),
                 qPrintable("wider than its container: " + text));
        for (const auto& other : m_texts)
            QVERIFY2(!other.first.intersects(place), qPrintable(text + " over " + other.second));
        m_texts.append({place.adjusted(1, 1, -1, -1), text});
    }
    for (QQuickItem* child : from->childItems())
        checkTexts(child);
}

void LookTest::checkPictures(QQuickItem* from)
{
    if (from->inherits("QQuickImage") && !from->property("source").toString().isEmpty()) {
        const QString source = from->property("source").toString();
        constexpr int ready = 1;
        QVERIFY2(from->property("status").toInt() == ready, qPrintable("missing: " + source));
    }
    for (QQuickItem* child : from->childItems())
        checkPictures(child);
}

// Each text that can be used against what is really behind it.
void LookTest::checkContrast(QQuickItem* from, const QImage& picture)
{
    if (!from->isVisible() || qFuzzyIsNull(from->opacity()) || !from->isEnabled())
        return;
    if (from->inherits("QQuickText") && !from->property("text").toString().isEmpty()) {
        const double density = m_ui->window()->devicePixelRatio();
        const QRectF place = area(from);
        const QRect pixels(qRound(place.x() * density), qRound(place.y() * density),
                           qRound(place.width() * density), qRound(place.height() * density));
        const QColor ground = mostFrequentColour(picture.copy(pixels & picture.rect()));
        const double ratio = contrast(from->property("color").value<QColor>(), ground);
        QVERIFY2(ratio >= 4.5,
                 qPrintable(QString("%1 on %2: %3, \"%4\"")
                                .arg(from->property("color").toString(), ground.name())
                                .arg(ratio)
                                .arg(from->property("text").toString())));
    }
    for (QQuickItem* child : from->childItems())
        checkContrast(child, picture);
}

void LookTest::mainWindowFitsEverySize()
{
    QFETCH(QSize, size);
    QFETCH(QString, state);
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    m_ui->window()->resize(size);
    // The window manager has the last word, and the contents follow it.
    QTRY_COMPARE(m_ui->item("infoTab")->width(), double(size.width()));
    QTRY_COMPARE(m_ui->window()->size(), size);
    bringInto(state);
    if (QTest::currentTestFailed())
        return;
    QTest::mouseMove(m_ui->window(), QPoint(5, 5));
    m_texts.clear();
    checkTexts(m_ui->window()->contentItem());
    checkPictures(m_ui->window()->contentItem());
    checkContrast(m_ui->window()->contentItem(), m_ui->window()->grabWindow());
    m_ui->screenshot(QString("%1 @%2")
                         .arg(QString::fromLatin1(QTest::currentDataTag()))
                         .arg(m_ui->window()->devicePixelRatio()));
    QCOMPARE(m_ui->scriptErrors(), QStringList());
    m_ui.reset();
}

void LookTest::aDesktopWithLargeTextsLeavesThemRoom()
{
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSize(14);
    QApplication::setFont(large);
    QApplication::setFont(large, "QMenu");
    corv::useTextSizeOfWindows();
    QCOMPARE(QFontInfo(QApplication::font()).family(), QFontInfo(before).family());
    QCOMPARE(QFontInfo(QApplication::font()).pixelSize(), 12);
    QCOMPARE(QFontInfo(QApplication::font("QMenu")).pixelSize(), 12);
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    m_ui->call("goSettings");
    QTRY_VERIFY(UiFixture::visibleWindow("generalSettings"));
    QQuickWindow* const settings = UiFixture::visibleWindow("generalSettings");
    const double lowest = area(m_ui->item("finishJobsBox", settings)).bottom();
    QTRY_VERIFY(lowest <= area(m_ui->item("okButton", settings)).top());
    settings->close();
}

void LookTest::followsTheScaleOfTheScreen()
{
    const QByteArray dpi = qgetenv("VISTREL_TEST_DPI");
    const QByteArray factor = qgetenv("QT_SCALE_FACTOR");
    const double expected =
        (dpi.isEmpty() ? 1 : dpi.toDouble() / 96) * (factor.isEmpty() ? 1 : factor.toDouble());
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    QVERIFY2(qAbs(m_ui->window()->devicePixelRatio() - expected) < 0.02,
             qPrintable(QString::number(m_ui->window()->devicePixelRatio())));
    m_ui.reset();
}

void LookTest::pointersAndIconsAreDrawnSharp()
{
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    const double density = m_ui->window()->devicePixelRatio();
    // An icon is shown at its own size, so its drawing for this density has that many pixels.
    for (const char* name : {"playButton", "saveImageButton", "namingEditButton"}) {
        QQuickItem* button = m_ui->item(name);
        QQuickItem* picture = nullptr;
        for (QQuickItem* child : button->findChildren<QQuickItem*>()) {
            if (child->inherits("corv::TintedPicture"))
                picture = child;
        }
        QVERIFY(picture);
        QImage image(":" + QUrl(picture->property("source").toString())
                               .path()
                               .replace(".png", density > 1 ? "@2x.png" : ".png"));
        QVERIFY(!image.isNull());
        // In between two densities the drawing for the higher one is made smaller.
        QCOMPARE(image.width(), qRound(picture->width() * std::ceil(density)));
        QVERIFY(picture->width() <= button->width());
    }
    m_ui.reset();
}

void LookTest::signOfAMessageBoxIsSharpAndSeen_data()
{
    QTest::addColumn<QMessageBox::Icon>("icon");
    QTest::addColumn<bool>("light");
    for (const bool light : {false, true}) {
        const char* look = light ? "light" : "dark";
        QTest::addRow("information, %s", look) << QMessageBox::Information << light;
        QTest::addRow("question, %s", look) << QMessageBox::Question << light;
        QTest::addRow("warning, %s", look) << QMessageBox::Warning << light;
        QTest::addRow("failure, %s", look) << QMessageBox::Critical << light;
    }
}

void LookTest::signOfAMessageBoxIsSharpAndSeen()
{
    QFETCH(QMessageBox::Icon, icon);
    QFETCH(bool, light);
    corv::useDialogColours(light);
    QMessageBox box(icon, "Title", "Text");
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    const QPixmap sign = box.iconPixmap();
    QCOMPARE(sign.devicePixelRatio(), box.devicePixelRatioF());
    // One of its two main colours stands out from the ground.
    QHash<QRgb, int> counts;
    const QImage picture = sign.toImage().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (qAlpha(picture.pixel(x, y)) == 255)
                ++counts[picture.pixel(x, y)];
    const QColor ground = box.palette().color(QPalette::Window);
    double best = 0;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        if (it.value() > picture.width() * picture.height() / 40)
            best = std::max(best, contrast(QColor(it.key()), ground));
    corv::useDialogColours(false);
    QVERIFY2(best >= 3, qPrintable(QString::number(best)));
}

void LookTest::everyControlHasANameForAReader()
{
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    bringInto("adjustments");
    int controls = 0;
    const QList<QQuickItem*> items = m_ui->window()->findChildren<QQuickItem*>();
    for (QQuickItem* item : items) {
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(item);
        if (!reader)
            continue;
        const QAccessible::Role role = reader->role();
        if (role != QAccessible::Button && role != QAccessible::CheckBox &&
            role != QAccessible::Slider && role != QAccessible::SpinBox)
            continue;
        ++controls;
        QVERIFY2(
            !reader->text(QAccessible::Name).isEmpty(),
            qPrintable("no name: " + item->objectName() + " " + item->metaObject()->className()));
        QVERIFY2(!item->objectName().isEmpty(),
                 qPrintable("no objectName: " + reader->text(QAccessible::Name)));
    }
    QVERIFY2(controls >= 30, qPrintable(QString::number(controls)));
    m_ui.reset();
}

void LookTest::curvesAreUnbroken()
{
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    QVERIFY(m_ui->openVideo());
    QVERIFY(m_ui->importLog(media().logWithThermal()));
    QVERIFY(m_ui->trigger("curvesMenuItem"));
    // At one and a half the panel begins between two pixels then.
    m_ui->window()->resize(1273, 783);
    QTRY_COMPARE(m_ui->evaluate("timelineContent.contentWidth").toInt(), 1273);
    m_ui->evaluate("curvesPanel.curves = ['lepton_status.frame_counter']");
    QQuickItem* const curves = m_ui->item("logCurves");
    QTRY_VERIFY(curves->isVisible() && curves->height() > 50);
    const double density = m_ui->window()->devicePixelRatio();
    // The log has values from the first second to the next.
    const double pxPerMs = 1 / m_ui->get("timelineContent", "msPerPx").toDouble();
    const QRectF place = area(curves);
    const QRect pixels(
        QPoint(qRound((place.x() + 1100 * pxPerMs) * density), qRound(place.y() * density)),
        QSize(qRound(800 * pxPerMs * density), qRound(place.height() * density)));
    m_ui->screenshot("curve");
    const auto gaps = [&] {
        const QImage picture = m_ui->window()->grabWindow().copy(pixels);
        int columns = 0;
        for (int x = 0; x < picture.width(); ++x) {
            bool isDrawn = false;
            // Its green, or nearly: a finer screen may fall between the pixels of the drawing.
            for (int y = 0; y < picture.height(); ++y) {
                const QColor colour = picture.pixelColor(x, y);
                isDrawn = isDrawn || (colour.green() > 150 && colour.red() < 80);
            }
            columns += isDrawn ? 0 : 1;
        }
        return columns;
    };
    QVERIFY(pixels.width() > 100);
    QTRY_COMPARE(gaps(), 0);
    m_ui.reset();
}

void LookTest::theLookChangesInTheOpenWindow()
{
    m_ui = std::make_unique<ReviewFixture>();
    QVERIFY(m_ui->load());
    bringInto("adjustments");
    m_ui->evaluate("videoPlayer.showIR = true");
    // Beside its text, in what Qt draws by itself.
    const auto ground = [this](const char* name) {
        const QRectF place = area(m_ui->item(name));
        const QImage picture = m_ui->window()->grabWindow();
        const double density = m_ui->window()->devicePixelRatio();
        return picture.pixelColor(qRound((place.right() - 30) * density),
                                  qRound(place.center().y() * density));
    };
    QTRY_VERIFY(m_ui->item("paletteBox")->isEnabled());
    QTRY_VERIFY(ground("paletteBox").lightness() < 128);
    const auto choose = [this](const char* look) {
        m_ui->call("goSettings");
        QTRY_VERIFY(UiFixture::visibleWindow("generalSettings"));
        QQuickWindow* settings = UiFixture::visibleWindow("generalSettings");
        QVERIFY(QTest::qWaitForWindowExposed(settings));
        UiFixture::click(m_ui->item(look, settings));
        UiFixture::click(m_ui->item("okButton", settings));
        QTRY_VERIFY(!settings->isVisible());
    };
    choose("radioLookLight");
    QTRY_VERIFY(ground("paletteBox").lightness() > 180);
    QCOMPARE(m_ui->get("paletteBox", "currentText").toString(), QString("Rainbow"));
    choose("radioLookDark");
    QTRY_VERIFY(ground("paletteBox").lightness() < 128);
    // The way of the units out of the settings has a complaint of its own.
    QCOMPARE(m_ui->scriptErrors().filter("Combo").join('\n'), QString());
    m_ui.reset();
}

QTEST_MAIN(LookTest)
#include "LookTest.moc"
