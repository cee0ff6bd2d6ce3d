#include "ControlsSuite.h"

#include "App/look.h"
#include "Support/contrast.h"

#include <QColor>
#include <QLocale>

using namespace corv::test;

/// The setter of a number: its slider, its spin box and its reset.
class SetterTest : public ControlsSuite
{
    Q_OBJECT

private slots:
    void aNumberToTypeOverIsReadable_data();
    void aNumberToTypeOverIsReadable();
    void theSetterKeepsItsThreeViewsInStep_data();
    void theSetterKeepsItsThreeViewsInStep();
    void theSetterStopsAtItsLimits();
    void numbersAreWrittenAlikeOnEveryMachine_data();
    void numbersAreWrittenAlikeOnEveryMachine();
    void otherKeyboardsTypeTheSameNumbers_data();
    void otherKeyboardsTypeTheSameNumbers();
    void resettingIsLeftToTheUser();
    void onlyTheKeypadEndsAnEdit();
    void aDisabledSetterResetsNothing();

private:
    /// Types over the number of the setter's spin box.
    void type(const QString& text) const;
};

namespace {

const QByteArray setter = R"(
    NumericPropertySetter {
        objectName: "setter"
        width: 270
        minimumValue: -5000; maximumValue: 5000; stepSize: 100; value: 0
        iconSource: "images/icon_contrast.png"
        property int resets: 0
        property int edits: 0
        onResetClicked: ++resets
        onEditingFinished: ++edits
    })";

} // namespace

void SetterTest::type(const QString& text) const
{
    UiFixture::click(m_ui->item("valueBox"));
    QTRY_VERIFY(m_ui->get("valueBox", "activeFocus").toBool());
    QTest::keySequence(m_ui->window(), QKeySequence::SelectAll);
    for (const QChar letter : text) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(letter));
        QCoreApplication::sendEvent(m_ui->window(), &press);
        QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(letter));
        QCoreApplication::sendEvent(m_ui->window(), &release);
    }
}

void SetterTest::aNumberToTypeOverIsReadable_data()
{
    QTest::addColumn<bool>("light");
    QTest::newRow("dark") << false;
    QTest::newRow("light") << true;
}

void SetterTest::aNumberToTypeOverIsReadable()
{
    QFETCH(bool, light);
    open(setter, light);
    UiFixture::click(m_ui->item("valueBox"));
    QTRY_VERIFY(m_ui->get("valueBox", "activeFocus").toBool());
    const QQuickItem* const field = m_ui->window()->activeFocusItem();
    QVERIFY(field && field->property("selectionColor").isValid());
    const double ratio = corv::test::contrast(field->property("selectedTextColor").value<QColor>(),
                                              field->property("selectionColor").value<QColor>());
    QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
}

void SetterTest::theSetterKeepsItsThreeViewsInStep_data()
{
    QTest::addColumn<QString>("written");
    QTest::newRow("the setter") << "setter";
    QTest::newRow("the slider") << "horizontalSlider";
    QTest::newRow("the spin box") << "valueBox";
}

void SetterTest::theSetterKeepsItsThreeViewsInStep()
{
    QFETCH(QString, written);
    open(setter);
    for (const double value : {1200.0, -700.0, 0.0}) {
        m_ui->find(written)->setProperty("value", value);
        QCOMPARE(m_ui->get("setter", "value").toDouble(), value);
        QCOMPARE(m_ui->get("horizontalSlider", "value").toDouble(), value);
        QCOMPARE(m_ui->get("valueBox", "value").toDouble(), value);
    }
}

void SetterTest::theSetterStopsAtItsLimits()
{
    open(setter);
    m_ui->find("setter")->setProperty("value", 5000);
    QCOMPARE(m_ui->get("horizontalSlider", "value"), m_ui->get("horizontalSlider", "maximumValue"));
    m_ui->find("valueBox")->setProperty("value", 9000);
    QCOMPARE(m_ui->get("setter", "value").toDouble(), 5000.0);
}

void SetterTest::numbersAreWrittenAlikeOnEveryMachine_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("C") << QLocale::c();
    QTest::newRow("English") << QLocale("en_US");
    QTest::newRow("German") << QLocale("de_DE");
    QTest::newRow("Arabic") << QLocale("ar_EG");
    QTest::newRow("Persian") << QLocale("fa_IR");
}

void SetterTest::numbersAreWrittenAlikeOnEveryMachine()
{
    QFETCH(QLocale, locale);
    QLocale::setDefault(locale);
    corv::usePlainNumbers();
    open(setter);
    const auto text = [this] { return m_ui->get("valueBox", "__text").toString(); };
    m_ui->find("setter")->setProperty("value", 1200);
    QCOMPARE(text(), QString("1200"));
    type("10");
    QCOMPARE(m_ui->get("setter", "value").toDouble(), 10.0);
    m_ui->find("setter")->setProperty("decimals", 3);
    m_ui->find("setter")->setProperty("value", -0.125);
    QCOMPARE(text(), QString("-0.125"));
    type("1.5");
    QCOMPARE(m_ui->get("setter", "value").toDouble(), 1.5);
}

void SetterTest::otherKeyboardsTypeTheSameNumbers_data()
{
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("a comma") << 3 << "0,5"
                             << "0.5" << 0.5;
    QTest::newRow("two commas") << 3 << "1,,5"
                                << "1.5" << 1.5;
    QTest::newRow("a comma in a whole number") << 0 << "1,5"
                                               << "15" << 15.0;
    QTest::newRow("Arabic digits") << 0 << QString::fromUtf8("-٤٢٠") << "-420" << -420.0;
    QTest::newRow("Persian digits") << 1 << QString::fromUtf8("۱۲.۵") << "12.5" << 12.5;
}

void SetterTest::otherKeyboardsTypeTheSameNumbers()
{
    QFETCH(int, decimals);
    QFETCH(QString, typed);
    open(setter);
    m_ui->find("setter")->setProperty("decimals", decimals);
    type(typed);
    QTEST(m_ui->get("valueBox", "__text").toString(), "text");
    QTEST(m_ui->get("setter", "value").toDouble(), "value");
    QCOMPARE(m_ui->scriptErrors(), QStringList());
}

void SetterTest::resettingIsLeftToTheUser()
{
    open(setter);
    m_ui->find("setter")->setProperty("value", 300);
    QVERIFY(m_ui->click("resetButton"));
    QCOMPARE(m_ui->get("setter", "resets").toInt(), 1);
    QCOMPARE(m_ui->get("setter", "value").toDouble(), 300.0);
}

void SetterTest::onlyTheKeypadEndsAnEdit()
{
    open(setter);
    QQuickItem* box = m_ui->item("valueBox");
    UiFixture::click(box);
    QTRY_VERIFY(box->hasActiveFocus() || box->property("activeFocus").toBool());
    QTest::keyClick(m_ui->window(), Qt::Key_Return);
    QCOMPARE(m_ui->get("setter", "edits").toInt(), 0);
    QTest::keyClick(m_ui->window(), Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(m_ui->get("setter", "edits").toInt(), 1);
}

void SetterTest::aDisabledSetterResetsNothing()
{
    open(setter);
    m_ui->find("setter")->setProperty("enabled", false);
    QVERIFY(m_ui->click("resetButton"));
    QCOMPARE(m_ui->get("setter", "resets").toInt(), 0);
    QVERIFY(!m_ui->item("horizontalSlider")->isEnabled());
}

QTEST_MAIN(SetterTest)
#include "SetterTest.moc"
