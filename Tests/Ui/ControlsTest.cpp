#include "ControlsSuite.h"

#include "Support/contrast.h"

#include <QAccessible>
#include <QColor>

using corv::test::ControlsSuite;
using corv::test::UiFixture;

/// The shared controls, alone in a window: the button family, the tool tip, the scroll bar.
class ControlsTest : public ControlsSuite
{
    Q_OBJECT

private slots:
    void constantsHaveTheirValues_data();
    void constantsHaveTheirValues();
    void buttonsFollowThePointer_data();
    void buttonsFollowThePointer();
    void everyButtonReportsAClick_data();
    void everyButtonReportsAClick();
    void disabledButtonsReportNothing_data();
    void disabledButtonsReportNothing();
    void aScreenReaderChangesOnlyAnEnabledChoice();
    void togglesFlipBeforeTheyReport_data();
    void togglesFlipBeforeTheyReport();
    void iconsAreInTheirColour();
    void aFieldIsFramedOnAllSides();
    void togglesShowTheirStateByColour_data();
    void togglesShowTheirStateByColour();
    void coloursAreToldApart_data();
    void coloursAreToldApart();
    void theToolTipNeedsATextAndThePointer();
    void theToolTipShowsNamesAsTheyAreInsideTheWindow();
    void theToolTipLeavesForAnotherWindow_data();
    void theToolTipLeavesForAnotherWindow();
    void theScrollBarShowsOnlyWhatIsOutOfView_data();
    void theScrollBarShowsOnlyWhatIsOutOfView();
    void theScrollBarMovesTheTimeline();
    void theScrollBarStepsByAQuarter();

private:
    QColor colour(const QString& name) const;
};

namespace {

const QByteArray allButtons = R"(
    Column {
        spacing: 4
        CorvButton { objectName: "button"; width: 100; height: 30; text: "a" }
        CorvQuickStartButton { objectName: "quick"; width: 100; height: 30; text: "a" }
        CorvToolbarButton { objectName: "tool"; source: "images/button_camera.png" }
        CorvToolbarTextButton { objectName: "toolText"; text: "a"; source: "images/button_camera.png" }
        CorvToolbarToggleButton { objectName: "toggle"; source: "images/button_camera.png" }
        CorvToolbarToggleTextButton { objectName: "toggleText"; text: "a"; source: "images/button_camera.png" }
    })";

QByteArray timeline(int contentWidth)
{
    return R"(
    Rectangle {
        id: strip
        objectName: "strip"
        width: 400; height: 50
        property real contentWidth: )" +
           QByteArray::number(contentWidth) + R"(
        property real widthRatio: width / contentWidth
        property real position: 0
        function setContentX(x) { position = Math.max(0, Math.min(x, contentWidth - width)); }
        function getContentX() { return position; }
        MyScrollBar { objectName: "bar"; width: 400; anchors.bottom: parent.bottom; timeline: strip }
    })";
}

} // namespace

QColor ControlsTest::colour(const QString& name) const
{
    return m_ui->get(name, "color").value<QColor>();
}

void ControlsTest::constantsHaveTheirValues_data()
{
    QTest::addColumn<QVariant>("value");
    const QVector<QPair<const char*, QVariant>> table{
        {"oldLeptonMinValue", 0},
        {"oldLeptonMaxValue", 16383},
        {"newLeptonMinValue", 16383},
        {"newLeptonMaxValue", 40000},
        {"activeExportNothing", 0},
        {"activeExportVideo", 1},
        {"activeExportWordDocument", 2},
        {"borderColor", "#777777"},
        {"bgndColor", "#555555"},
        {"headerColor", "#444444"},
        {"pressedColor", "#ff0000"},
        {"btnColorClicked", "#BBBBBB"},
        {"btnColorHover", "#999999"},
        {"btnColor", "#777777"},
        {"btnColorTbHover", "#555555"},
        {"btnColorTbChecked", "#151515"},
        {"btnColorTbCheckedDisabled", "#373737"},
        {"btnColorDisabled", "#555"},
        {"btnTextColor", "#000000"},
        {"btnTextPressedColor", "#ffffff"},
        {"disabledBtnColor", "#555555"},
        {"disabledCheckedBtnBg", "#333333"},
        {"checkedBtnBg", "#111"},
        {"checkedBtnFg", "#12ff54"},
        {"uncheckedBtnFg", "#000000"},
        {"disabledBtnFg", "#222222"},
        {"disabledCheckedBtnFg", "#999999"},
        {"progressBarBg", "#46af63"},
        {"accentColor", "#12ff54"},
    };
    for (const auto& row : table)
        QTest::newRow(row.first) << row.second;
    open({});
}

void ControlsTest::constantsHaveTheirValues()
{
    QFETCH(QVariant, value);
    QCOMPARE(m_ui->call("constant", {QString::fromLatin1(QTest::currentDataTag())}).toString(),
             value.toString());
}

void ControlsTest::buttonsFollowThePointer_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QColor>("atRest");
    QTest::addColumn<QColor>("hovered");
    QTest::addColumn<QColor>("pressed");
    const QColor none(Qt::transparent);
    QTest::newRow("button") << "button" << QColor("#777777") << QColor("#999999")
                            << QColor("#ff0000");
    QTest::newRow("quick start") << "quick" << none << QColor("#999999") << QColor("#ff0000");
    QTest::newRow("toolbar") << "tool" << none << QColor("#555555") << QColor("#555555");
    QTest::newRow("toolbar text") << "toolText" << none << QColor("#555555") << QColor("#555555");
    QTest::newRow("toggle") << "toggle" << none << QColor("#555555") << QColor("#555555");
    QTest::newRow("toggle text") << "toggleText" << none << QColor("#555555") << QColor("#555555");
}

void ControlsTest::buttonsFollowThePointer()
{
    QFETCH(QString, button);
    QFETCH(QColor, atRest);
    QFETCH(QColor, hovered);
    QFETCH(QColor, pressed);
    open(allButtons);
    QQuickItem* item = m_ui->item(button);
    QVERIFY(item);
    const QPoint middle = item->mapToScene(QPointF(12, 12)).toPoint();
    QTRY_COMPARE(colour(button), atRest);
    UiFixture::hover(item);
    QTRY_COMPARE(colour(button), hovered);
    QTest::mousePress(m_ui->window(), Qt::LeftButton, Qt::NoModifier, middle);
    QTRY_COMPARE(colour(button), pressed);
    QTest::mouseRelease(m_ui->window(), Qt::LeftButton, Qt::NoModifier, middle);
}

void ControlsTest::everyButtonReportsAClick_data()
{
    QTest::addColumn<QString>("button");
    for (const char* name : {"button", "quick", "tool", "toolText"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void ControlsTest::everyButtonReportsAClick()
{
    QFETCH(QString, button);
    open(allButtons);
    QSignalSpy clicked(m_ui->find(button), SIGNAL(clicked()));
    QVERIFY(m_ui->click(button));
    QCOMPARE(clicked.count(), 1);
}

void ControlsTest::disabledButtonsReportNothing_data()
{
    everyButtonReportsAClick_data();
}

void ControlsTest::disabledButtonsReportNothing()
{
    QFETCH(QString, button);
    open(allButtons);
    QObject* item = m_ui->find(button);
    item->setProperty("enabled", false);
    QSignalSpy clicked(item, SIGNAL(clicked()));
    QVERIFY(m_ui->click(button));
    QCOMPARE(clicked.count(), 0);
}

void ControlsTest::aScreenReaderChangesOnlyAnEnabledChoice()
{
    open(R"(
    Controls.CorvComboBox {
        objectName: "choice"
        width: 100; height: 25
        enabled: false
        model: ["a", "b", "c"]
        currentIndex: 1
    })");
    QObject* choice = m_ui->find("choice");
    QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(choice);
    QVERIFY(reader && reader->actionInterface());
    QSignalSpy activated(choice, SIGNAL(activated(int)));
    for (const QString& action :
         {QAccessibleActionInterface::pressAction(), QAccessibleActionInterface::increaseAction(),
          QAccessibleActionInterface::decreaseAction()})
        reader->actionInterface()->doAction(action);
    QCOMPARE(choice->property("currentIndex").toInt(), 1);
    QCOMPARE(activated.count(), 0);
    choice->setProperty("enabled", true);
    reader->actionInterface()->doAction(QAccessibleActionInterface::decreaseAction());
    QCOMPARE(choice->property("currentIndex").toInt(), 0);
    QCOMPARE(activated.count(), 1);
}

void ControlsTest::togglesFlipBeforeTheyReport_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("toggle") << "toggle";
    QTest::newRow("toggle text") << "toggleText";
}

void ControlsTest::togglesFlipBeforeTheyReport()
{
    QFETCH(QString, button);
    open(allButtons);
    QSignalSpy toggled(m_ui->find(button), SIGNAL(toggle(bool)));
    QCOMPARE(m_ui->get(button, "checked").toBool(), false);
    for (const bool expected : {true, false}) {
        QVERIFY(m_ui->click(button));
        QCOMPARE(toggled.count(), 1);
        QCOMPARE(toggled.takeFirst().first().toBool(), expected);
        QCOMPARE(m_ui->get(button, "checked").toBool(), expected);
    }
}

void ControlsTest::iconsAreInTheirColour()
{
    open(R"(
    Rectangle {
        width: 100; height: 50; color: "black"
        TintedIcon { objectName: "icon"; width: 100; height: 50; color: "#ff0000"
                     source: "images/play.png" }
        TintedIcon { objectName: "missing"; source: "" }
    })");
    QQuickItem* const icon = m_ui->item("icon");
    QVERIFY(icon->implicitWidth() > 0 && icon->implicitWidth() < 50);
    QCOMPARE(icon->implicitHeight(), icon->implicitWidth());
    // The triangle is in the middle of the item, whatever the size of that.
    const QPoint middle = icon->mapToScene(QPointF(50, 25)).toPoint();
    const auto colourAt = [&](const QPoint& place) {
        const QImage window = m_ui->window()->grabWindow();
        return window.pixelColor(place * qRound(window.devicePixelRatio()));
    };
    QTRY_COMPARE(colourAt(middle), QColor("#ff0000"));
    QCOMPARE(colourAt(middle - QPoint(40, 0)), QColor("black"));
    icon->setProperty("color", QColor("#0000ff"));
    QTRY_COMPARE(colourAt(middle), QColor("#0000ff"));
    icon->setProperty("source", QUrl());
    QTRY_COMPARE(colourAt(middle), QColor("black"));
    QCOMPARE(icon->implicitWidth(), 0.0);
}

void ControlsTest::aFieldIsFramedOnAllSides()
{
    open(R"(
    CorvFieldFrame {
        objectName: "frame"; x: 20; y: 20; width: 100; height: 25
        CorvTextInput { objectName: "field"; text: "12" }
    })");
    QVERIFY(QTest::qWaitForWindowActive(m_ui->window()));
    m_ui->item("field")->forceActiveFocus();
    QTRY_VERIFY(m_ui->item("field")->hasActiveFocus());
    const auto colourAt = [this](int x, int y) {
        const QImage window = m_ui->window()->grabWindow();
        return window.pixelColor(QPoint(x, y) * qRound(window.devicePixelRatio())).name();
    };
    const QString accent = "#12ff54";
    QTRY_COMPARE(colourAt(70, 20), accent);
    QCOMPARE(colourAt(70, 44), accent);
    QCOMPARE(colourAt(20, 32), accent);
    QCOMPARE(colourAt(119, 32), accent);
}

void ControlsTest::togglesShowTheirStateByColour_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QColor>("background");
    for (const char* name : {"toggle", "toggleText"}) {
        const QString button = QString::fromLatin1(name);
        QTest::addRow("%s checked", name) << button << true << true << QColor("#151515");
        QTest::addRow("%s checked, disabled", name) << button << true << false << QColor("#373737");
        QTest::addRow("%s unchecked", name) << button << false << true << QColor(Qt::transparent);
        QTest::addRow("%s unchecked, disabled", name)
            << button << false << false << QColor(Qt::transparent);
    }
}

void ControlsTest::togglesShowTheirStateByColour()
{
    QFETCH(QString, button);
    QFETCH(bool, checked);
    QFETCH(bool, enabled);
    QFETCH(QColor, background);
    open(allButtons);
    QObject* item = m_ui->find(button);
    item->setProperty("checked", checked);
    item->setProperty("enabled", enabled);
    QTRY_COMPARE(colour(button), background);
}

void ControlsTest::coloursAreToldApart_data()
{
    QTest::addColumn<bool>("light");
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::addColumn<double>("floor");
    for (const bool light : {false, true}) {
        const auto add = [light](const char* what, const char* one, const char* other,
                                 double floor = 3) {
            QTest::addRow("%s, %s", light ? "light" : "dark", what)
                << light << one << other << floor;
        };
        add("failed jobs", "textFailed", "strip", 4.5);
        add("failed jobs at the pointer", "textFailed", "toolHovered", 4.5);
        add("progress of a log", "progress", "strip");
        add("chosen flight", "progress", "listGround");
        add("progress of a job", "accent", "progressGroove");
        add("sign of a flight without a log", "evidenceNone", "textMissingMark");
        add("chosen point of interest", "accent", "listSelected");
        add("the same beside others", "accent", "panel");
        add("handle of a list", "barHandle", "panel");
        add("handle of the flight data", "flightBarHandle", "flightPanel");
    }
}

void ControlsTest::coloursAreToldApart()
{
    QFETCH(bool, light);
    QFETCH(QString, one);
    QFETCH(QString, other);
    QFETCH(double, floor);
    open({}, light);
    const auto themed = [this](const QString& name) {
        return m_ui->call("themed", {name}).value<QColor>();
    };
    QVERIFY(themed(one).isValid() && themed(other).isValid());
    const double ratio = corv::test::contrast(themed(one), themed(other));
    QVERIFY2(ratio >= floor, qPrintable(QString::number(ratio)));
}

void ControlsTest::theToolTipNeedsATextAndThePointer()
{
    open(allButtons);
    QQuickItem* button = m_ui->item("tool");
    const auto shown = [this] { return m_ui->get("toolTip", "visible").toBool(); };
    UiFixture::hover(button);
    QVERIFY(!shown());
    QTest::mouseMove(m_ui->window(), QPoint(490, 290));
    button->setProperty("tooltiptext", "what it does");
    UiFixture::hover(button);
    QTRY_VERIFY(shown());
    QCOMPARE(m_ui->get("toolTip", "text").toString(), QString("what it does"));
    QCOMPARE(m_ui->get("toolTip", "delay").toInt(), 1000);
    QCOMPARE(m_ui->get("toolTip", "timeout").toInt(), 5000);
    QTest::mouseMove(m_ui->window(), QPoint(490, 290));
    QTRY_VERIFY(!shown());
}

void ControlsTest::theToolTipShowsNamesAsTheyAreInsideTheWindow()
{
    open(allButtons);
    QQuickItem* button = m_ui->item("tool");
    button->setProperty("tooltiptext",
                        "<b>Tower</b> " + QString("with a name longer than a line ").repeated(6));
    UiFixture::hover(button);
    QTRY_VERIFY(m_ui->find("toolTip") && m_ui->get("toolTip", "visible").toBool());
    auto* text = m_ui->get("toolTip", "contentItem").value<QQuickItem*>();
    QVERIFY(text);
    QCOMPARE(text->property("textFormat").toInt(), int(Qt::PlainText));
    const auto isInside = [&] {
        const QRectF place(0, 0, text->property("contentWidth").toDouble(),
                           text->property("contentHeight").toDouble());
        return QRectF(QPointF(), m_ui->window()->size()).contains(text->mapRectToScene(place));
    };
    QTRY_VERIFY(isInside());
    QVERIFY(text->property("lineCount").toInt() > 1);
    // As wide as its longest line.
    button->setProperty("tooltiptext", "Mission: A\nFlight: B\nNum. 3");
    QTRY_COMPARE(text->property("lineCount").toInt(), 3);
    const double needed = text->property("contentWidth").toDouble();
    QTRY_VERIFY(m_ui->get("toolTip", "width").toDouble() <= needed + 12);
}

void ControlsTest::theToolTipLeavesForAnotherWindow_data()
{
    QTest::addColumn<bool>("waits");
    QTest::newRow("shown") << false;
    QTest::newRow("about to be shown") << true;
}

void ControlsTest::theToolTipLeavesForAnotherWindow()
{
    QFETCH(bool, waits);
    open(allButtons);
    QQuickItem* button = m_ui->item("tool");
    button->setProperty("tooltiptext", "what it does");
    UiFixture::hover(button);
    QTRY_VERIFY(m_ui->find("toolTip"));
    const auto shown = [this] { return m_ui->get("toolTip", "visible").toBool(); };
    if (!waits)
        QTRY_VERIFY(shown());
    QWindow menu;
    menu.setFlags(Qt::Popup);
    menu.setTransientParent(m_ui->window());
    menu.setGeometry(300, 200, 50, 50);
    menu.show();
    constexpr int soonMs = 1000; // long before it leaves by itself
    QTRY_VERIFY_WITH_TIMEOUT(!shown(), soonMs);
    QTest::qWait(m_ui->get("toolTip", "delay").toInt() + 200);
    QVERIFY(!shown());
    menu.close();
    QTest::mouseMove(m_ui->window(), QPoint(490, 290));
    UiFixture::hover(button);
    QTRY_VERIFY(shown());
}

void ControlsTest::theScrollBarShowsOnlyWhatIsOutOfView_data()
{
    QTest::addColumn<int>("contentWidth");
    QTest::addColumn<bool>("shown");
    QTest::addColumn<double>("handleWidth");
    QTest::newRow("narrower") << 300 << false << -1.0;
    QTest::newRow("as wide") << 400 << false << -1.0;
    QTest::newRow("twice") << 800 << true << 198.0;
    QTest::newRow("a hundred times") << 40000 << true << 20.0;
}

void ControlsTest::theScrollBarShowsOnlyWhatIsOutOfView()
{
    QFETCH(int, contentWidth);
    QFETCH(bool, shown);
    QFETCH(double, handleWidth);
    open(timeline(contentWidth));
    QCOMPARE(m_ui->item("bar")->isVisible(), shown);
    QCOMPARE(m_ui->item("bar")->height(), 12.0);
    if (shown)
        QCOMPARE(m_ui->item("timelineScrollBarHandle")->width(), handleWidth);
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void ControlsTest::theScrollBarMovesTheTimeline()
{
    open(timeline(800));
    QQuickItem* handle = m_ui->item("timelineScrollBarHandle");
    QQuickItem* groove = m_ui->item("timelineScrollBarGroove");
    const auto position = [this] { return m_ui->get("strip", "position").toDouble(); };
    const auto at = [groove](double x) { return groove->mapToScene(QPointF(x, 4)).toPoint(); };

    m_ui->find("strip")->setProperty("position", 200);
    QCOMPARE(handle->x(), 99.0);

    QTest::mouseClick(m_ui->window(), Qt::LeftButton, Qt::NoModifier, at(groove->width() * 0.9));
    QVERIFY(qAbs(position() - 360) < 3);

    m_ui->find("strip")->setProperty("position", 0);
    QTest::mousePress(m_ui->window(), Qt::LeftButton, Qt::NoModifier, at(50));
    for (int x = 50; x <= 150; x += 10)
        QTest::mouseMove(m_ui->window(), at(x));
    QVERIFY(handle->x() > 50);
    QVERIFY(qAbs(position() - handle->x() * 400 / 198) < 1);
    QTest::mouseMove(m_ui->window(), at(480));
    QCOMPARE(position(), 400.0);
    QTest::mouseRelease(m_ui->window(), Qt::LeftButton, Qt::NoModifier, at(480));
    QCOMPARE(handle->x(), 198.0);
}

void ControlsTest::theScrollBarStepsByAQuarter()
{
    open(timeline(650));
    QObject* bar = m_ui->find("bar");
    const auto position = [this] { return m_ui->get("strip", "position").toDouble(); };
    for (const double expected : {100.0, 200.0, 250.0, 250.0}) {
        QVERIFY(QMetaObject::invokeMethod(bar, "scrollRight"));
        QCOMPARE(position(), expected);
    }
    for (const double expected : {150.0, 50.0, 0.0, 0.0}) {
        QVERIFY(QMetaObject::invokeMethod(bar, "scrollLeft"));
        QCOMPARE(position(), expected);
    }
}

QTEST_MAIN(ControlsTest)
#include "ControlsTest.moc"
