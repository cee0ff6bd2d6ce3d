#include "DialogSuite.h"

#include <QAccessible>
#include <QSettings>
#include <QSignalSpy>
#include <QTime>

using namespace corv::test;

namespace {

const QList<WindowLook> windows{
    {"restore", "RestoreLog.qml", "Restore POIs from flight data", QSize(400, 120), QSize(400, 120),
     "#555555"},
    {"poi", "PoiProperties.qml", "Edit point of interest", QSize(400, 200), QSize(400, 200),
     "#494949", Qt::WindowModal, true},
    {"flight", "FlightPropertiesEdit.qml", "Edit flight properties", QSize(400, 200),
     QSize(400, 200), "#494949", Qt::WindowModal, true},
};

QAccessibleEditableTextInterface* readerOf(QObject* field)
{
    QAccessibleInterface* const reader = QAccessible::queryAccessibleInterface(field);
    return reader ? reader->editableTextInterface() : nullptr;
}

} // namespace

/// The windows that restore and edit: their texts, fields, keys and what they hand back.
class EditDialogsTest : public DialogSuite
{
    Q_OBJECT

public:
    EditDialogsTest() : DialogSuite(windows) {}

private slots:
    void tabLeadsThroughTheFields_data();
    void tabLeadsThroughTheFields();

    void theChosenWayOfRestoringIsReturned_data();
    void theChosenWayOfRestoringIsReturned();
    void cancellingRestoreChangesNothing_data();
    void cancellingRestoreChangesNothing();

    void poiIsEdited_data();
    void poiIsEdited();
    void aReaderWritesIntoTheFields();
    void poiNeedsAName();
    void cancellingAPoiChangesNothing_data();
    void cancellingAPoiChangesNothing();

    void anEmptyFlightNumberIsNone_data();
    void anEmptyFlightNumberIsNone();
    void flightFieldsAreFilled();
    void flightNumberFieldRefuses_data();
    void flightNumberFieldRefuses();
    void aReaderWritesWhatCouldBeTyped();
    void cancellingAFlightChangesNothing_data();
    void cancellingAFlightChangesNothing();
};

void EditDialogsTest::tabLeadsThroughTheFields_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("fields");
    QTest::newRow("poi") << "PoiProperties.qml" << QStringList{"tfName", "taDescription"};
    QTest::newRow("flight") << "FlightPropertiesEdit.qml"
                            << QStringList{"tfMissionName", "tfFlightName", "tfFlightNumber"};
}

void EditDialogsTest::tabLeadsThroughTheFields()
{
    QFETCH(QString, file);
    QFETCH(QStringList, fields);
    QVERIFY(m_host->open(file));
    verifyTabOrder(fields);
}

void EditDialogsTest::theChosenWayOfRestoringIsReturned_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<bool>("eraseAll");
    QTest::newRow("as it opens, clicked") << "" << false << true;
    QTest::newRow("as it opens, Return") << "" << true << true;
    QTest::newRow("missing only, clicked") << "actionFillBlanks" << false << false;
    QTest::newRow("missing only, Return") << "actionFillBlanks" << true << false;
}

void EditDialogsTest::theChosenWayOfRestoringIsReturned()
{
    QFETCH(QString, choice);
    QFETCH(bool, byKey);
    QVERIFY(m_host->make("RestoreLog.qml"));
    QVERIFY(m_host->get("eraseAll").toBool());
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "init"));
    QVERIFY(m_host->show());
    QCOMPARE(m_host->textOf("actionEraseAll"),
             QString("Clear all points of interests, reload from log"));
    QCOMPARE(m_host->textOf("actionFillBlanks"), QString("Reload missing points of interest only"));
    QCOMPARE(m_host->part("okButton")->property("caption").toString(), QString("Execute"));
    QCOMPARE(m_host->part("cancelButton")->property("caption").toString(), QString("Cancel"));
    if (!choice.isEmpty())
        m_host->click(choice);
    accept(byKey, "okButton");
    QTEST(m_host->get("eraseAll").toBool(), "eraseAll");
}

void EditDialogsTest::cancellingRestoreChangesNothing_data()
{
    addRowsOfCancelling();
}

void EditDialogsTest::cancellingRestoreChangesNothing()
{
    QFETCH(bool, byKey);
    QVERIFY(m_host->open("RestoreLog.qml"));
    m_host->click("actionFillBlanks");
    cancel(byKey, "cancelButton");
    QVERIFY(m_host->get("eraseAll").toBool());
}

void EditDialogsTest::poiIsEdited_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<QString>("description");
    QTest::newRow("clicked") << false << "a crack";
    QTest::newRow("Ctrl+Return") << true << "a crack";
    QTest::newRow("no description") << true << "";
}

void EditDialogsTest::poiIsEdited()
{
    QFETCH(bool, byKey);
    QFETCH(QString, description);
    QVERIFY(m_host->make("PoiProperties.qml"));
    const QTime time(0, 0, 12, 345);
    m_host->set("poiName", "POI1");
    m_host->set("poiDescription", "old");
    m_host->set("poiTime", time);
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "populate"));
    QVERIFY(m_host->show());
    QTRY_VERIFY(m_host->item("tfName")->hasActiveFocus());
    QCOMPARE(m_host->textOf("tfName"), QString("POI1"));
    QCOMPARE(m_host->textOf("taDescription"), QString("old"));
    m_host->type("tfName", "Blade 2");
    m_host->press(Qt::Key_Tab);
    QCOMPARE(m_host->get("poiName").toString(), QString("POI1"));
    m_host->type("taDescription", description);
    accept(byKey, "btn_save", Qt::ControlModifier);
    QCOMPARE(m_host->get("poiName").toString(), QString("Blade 2"));
    QCOMPARE(m_host->get("poiDescription").toString(), description);
    QCOMPARE(m_host->get("poiTime").toTime(), time);
}

void EditDialogsTest::aReaderWritesIntoTheFields()
{
    QVERIFY(m_host->make("PoiProperties.qml"));
    m_host->set("poiName", "POI1");
    m_host->set("poiDescription", "old");
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "populate"));
    QVERIFY(m_host->show());
    QAccessibleInterface* const described =
        QAccessible::queryAccessibleInterface(m_host->item("tfName"));
    QVERIFY(described);
    QCOMPARE(described->role(), QAccessible::EditableText);
    QCOMPARE(described->text(QAccessible::Name), QString("Name"));
    QVERIFY(described->state().focusable);
    QCOMPARE(described->rect().size(), m_host->item("tfName")->size().toSize());
    QVERIFY(described->parent()->indexOfChild(described) >= 0);
    QAccessibleEditableTextInterface* name = readerOf(m_host->item("tfName"));
    QAccessibleEditableTextInterface* description = readerOf(m_host->item("taDescription"));
    QVERIFY(name && description);
    name->replaceText(0, 3, "Blade ");
    QCOMPARE(described->textInterface()->text(0, 7), QString("Blade 1"));
    name->insertText(7, "7");
    name->deleteText(0, 1);
    for (const auto& [start, end] : {std::pair(-1, 2), std::pair(3, 2), std::pair(0, 99)})
        name->replaceText(start, end, "nowhere");
    QCOMPARE(m_host->textOf("tfName"), QString("lade 17"));
    description->replaceText(0, 3, "two\nlines");
    QCOMPARE(m_host->textOf("taDescription"), QString("two\nlines"));
    m_host->item("tfName")->setProperty("readOnly", true);
    name->insertText(0, "B");
    QCOMPARE(m_host->textOf("tfName"), QString("lade 17"));
    accept(true, "btn_save", Qt::ControlModifier);
    QCOMPARE(m_host->get("poiName").toString(), QString("lade 17"));
    QCOMPARE(m_host->get("poiDescription").toString(), QString("two\nlines"));
}

void EditDialogsTest::poiNeedsAName()
{
    QVERIFY(m_host->make("PoiProperties.qml"));
    m_host->set("poiName", "POI1");
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "populate"));
    QVERIFY(m_host->show());
    m_host->type("tfName", "");
    m_host->press(Qt::Key_Return, Qt::ControlModifier);
    QTRY_VERIFY(UiFixture::messageBox());
    QCOMPARE(UiFixture::messageBox()->windowTitle(), QString("Missing information"));
    QCOMPARE(UiFixture::messageBox()->icon(), QMessageBox::Critical);
    QCOMPARE(m_host->dismissMessage(), QString("This point of interest must have a name."));
    QVERIFY(m_host->window()->isVisible());
    QVERIFY(!m_host->get("ok").toBool());
    QCOMPARE(m_host->get("poiName").toString(), QString("POI1"));

    m_host->click("btn_save");
    QCOMPARE(m_host->dismissMessage(), QString("This point of interest must have a name."));
    m_host->setTextOf("tfName", "x");
    m_host->click("btn_save");
    QTRY_VERIFY(!m_host->window()->isVisible());
    QVERIFY(m_host->get("ok").toBool());
}

void EditDialogsTest::cancellingAPoiChangesNothing_data()
{
    addRowsOfCancelling();
}

void EditDialogsTest::cancellingAPoiChangesNothing()
{
    QFETCH(bool, byKey);
    QVERIFY(m_host->open("PoiProperties.qml"));
    m_host->type("tfName", "changed");
    cancel(byKey, "btn_cancel");
    QCOMPARE(m_host->get("poiName").toString(), QString());
}

void EditDialogsTest::anEmptyFlightNumberIsNone_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<int>("number");
    QTest::addColumn<QStringList>("logged");
    QTest::newRow("a number") << "12" << false << 12
                              << QStringList{"Entered flight number 12", "Read as number: 12",
                                             "Number"};
    QTest::newRow("the largest") << "999" << true << 999
                                 << QStringList{"Entered flight number 999", "Read as number: 999",
                                                "Number"};
    QTest::newRow("nothing") << "" << true << 0
                             << QStringList{"Entered flight number ", "Read as number: NaN",
                                            "Not a number"};
}

void EditDialogsTest::anEmptyFlightNumberIsNone()
{
    QFETCH(QString, typed);
    QFETCH(bool, byKey);
    QFETCH(QStringList, logged);
    QVERIFY(m_host->make("FlightPropertiesEdit.qml"));
    m_host->set("flightNumber", 7);
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "populate"));
    QVERIFY(m_host->show());
    m_host->type("tfMissionName", "Dam");
    m_host->type("tfFlightName", "North");
    m_host->type("tfFlightNumber", typed);
    const int before = m_host->ui().log().messages().size();
    accept(byKey, "btn_save", Qt::ControlModifier);
    QCOMPARE(m_host->get("missionName").toString(), QString("Dam"));
    QCOMPARE(m_host->get("flightName").toString(), QString("North"));
    QTEST(m_host->get("flightNumber").toInt(), "number");
    QStringList messages;
    for (const QString& message : m_host->ui().log().messages().mid(before))
        messages.append(message);
    QVERIFY2(messages.size() >= 3, qPrintable(messages.join('\n')));
    for (int i = 0; i < 3; ++i)
        QVERIFY2(messages[i].endsWith(logged[i]), qPrintable(messages[i]));
}

void EditDialogsTest::flightFieldsAreFilled()
{
    QVERIFY(m_host->make("FlightPropertiesEdit.qml"));
    QCOMPARE(m_host->get("namingDefined").toBool(), true);
    m_host->set("missionName", "Bridge");
    m_host->set("flightName", "East");
    m_host->set("flightNumber", 31);
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "populate"));
    QVERIFY(m_host->show());
    QTRY_VERIFY(m_host->item("tfMissionName")->hasActiveFocus());
    QCOMPARE(m_host->textOf("tfMissionName"), QString("Bridge"));
    QCOMPARE(m_host->textOf("tfFlightName"), QString("East"));
    QCOMPARE(m_host->textOf("tfFlightNumber"), QString("31"));
    QVERIFY(m_host->item("tfFlightNumber")->width() < m_host->item("tfFlightName")->width());
    m_host->screenshot("FlightPropertiesEdit-filled");
}

void EditDialogsTest::flightNumberFieldRefuses_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("left");
    QTest::newRow("letters") << "a1b2"
                             << "12";
    QTest::newRow("a fourth digit") << "1000"
                                    << "100";
    QTest::newRow("a sign") << "-5"
                            << "5";
    QTest::newRow("a point") << "1.5"
                             << "15";
}

void EditDialogsTest::flightNumberFieldRefuses()
{
    QFETCH(QString, typed);
    QVERIFY(m_host->open("FlightPropertiesEdit.qml"));
    m_host->type("tfFlightNumber", typed);
    QTEST(m_host->textOf("tfFlightNumber"), "left");
}

void EditDialogsTest::aReaderWritesWhatCouldBeTyped()
{
    QVERIFY(m_host->make("FlightPropertiesEdit.qml"));
    m_host->set("flightNumber", 31);
    QVERIFY(QMetaObject::invokeMethod(m_host->object(), "populate"));
    QVERIFY(m_host->show());
    QAccessibleEditableTextInterface* const number = readerOf(m_host->item("tfFlightNumber"));
    QVERIFY(number);
    number->insertText(2, "a");
    QCOMPARE(m_host->textOf("tfFlightNumber"), QString("31"));
    number->replaceText(0, 2, "");
    QCOMPARE(m_host->textOf("tfFlightNumber"), QString());
    number->insertText(0, "47");
    QCOMPARE(m_host->textOf("tfFlightNumber"), QString("47"));
}

void EditDialogsTest::cancellingAFlightChangesNothing_data()
{
    addRowsOfCancelling();
}

void EditDialogsTest::cancellingAFlightChangesNothing()
{
    QFETCH(bool, byKey);
    QVERIFY(m_host->open("FlightPropertiesEdit.qml"));
    m_host->type("tfFlightName", "changed");
    cancel(byKey, "btn_cancel");
    QCOMPARE(m_host->get("flightName").toString(), QString());
}

QTEST_MAIN(EditDialogsTest)
#include "EditDialogsTest.moc"
