#include "ImporterSuite.h"

#include "Discovery/PersistentData.h"

#include <QDir>
#include <QQmlContext>
#include <QQmlExpression>

namespace corv::test {

void ImporterSuite::initTestCase()
{
    UiFixture::prepare();
    CardParser::registerInPlaceOfTheReal();
}

void ImporterSuite::init()
{
    PersistentData::instance()->setDirectoryList({});
    m_world = std::make_unique<CardWorld>();
    const QString host = m_world->machine.addFile(m_world->path("host.qml"), R"(
        import QtQuick 2.7
        import QtQuick.Window 2.2
        Window {
            id: host
            width: 1000; height: 760; visible: true; color: "#222222"
            property string clicked
            function openImporter() {
                var component = Qt.createComponent("qrc:/AutoImporter.qml");
                var window = component.createObject(host);
                if (!window)
                    console.warn("Error: " + component.errorString());
                return window;
            }
            Loader {
                anchors.centerIn: parent
                source: "qrc:/WelcomeMessage.qml"
                onLoaded: {
                    item.openProjectClicked.connect(function() { host.clicked = "project"; });
                    item.openSingleClicked.connect(function() { host.clicked = "video"; });
                    item.browseRemovableDevicesClicked.connect(function() { host.clicked = "scan"; });
                }
            }
        })");
    m_ui = std::make_unique<UiFixture>();
    QVERIFY(m_ui->load(QUrl::fromLocalFile(host)));
}

void ImporterSuite::cleanup()
{
    if (QTest::currentTestFailed())
        m_world->release();
    const QStringList scriptErrors = m_ui->scriptErrors();
    m_importer = nullptr;
    m_ui.reset();
    m_world.reset();
    QCOMPARE(scriptErrors, QStringList());
}

void ImporterSuite::openImporter()
{
    m_importer = qobject_cast<QQuickWindow*>(m_ui->call("openImporter").value<QObject*>());
    QVERIFY(m_importer);
    QMetaObject::invokeMethod(m_importer, "init");
    m_importer->show();
    QVERIFY(QTest::qWaitForWindowActive(m_importer));
}

QString ImporterSuite::openWithACard()
{
    const QString card = m_world->machine.addDrive("CARD", "", true);
    addDay(card + "/DCIM/100HDDVR", card);
    openImporter();
    return card;
}

QVariant ImporterSuite::evaluate(const QString& expression) const
{
    QQmlExpression script(qmlContext(m_importer), m_importer, expression);
    bool undefined = false;
    const QVariant value = script.evaluate(&undefined);
    if (script.hasError())
        qWarning("Error: %s", qPrintable(script.error().toString()));
    return undefined ? QVariant() : value;
}

void ImporterSuite::click(const QString& objectName) const
{
    QQuickItem* target = item(objectName);
    QVERIFY2(target && target->isVisible(), qPrintable(objectName));
    UiFixture::click(target);
}

QString ImporterSuite::dialogText() const
{
    const QMessageBox* box = UiFixture::messageBox();
    return box ? box->windowTitle() + ": " + box->text() : QString();
}

void ImporterSuite::dismissMessage()
{
    QTRY_VERIFY(UiFixture::messageBox());
    QVERIFY(UiFixture::dismissMessageBox());
}

void ImporterSuite::focus(QQuickItem* item) const
{
    QVERIFY(QTest::qWaitForWindowActive(m_importer));
    item->forceActiveFocus();
    QTRY_VERIFY(item->hasActiveFocus());
}

void ImporterSuite::search()
{
    click("parseButton");
    QTRY_VERIFY(!m_importer->property("isBusy").toBool());
}

void ImporterSuite::startHeldSearch()
{
    m_world->held = true;
    click("parseButton");
    m_world->reached.acquire();
}

QString ImporterSuite::selectedText(const QString& dropdown) const
{
    return item(dropdown)->property("currentText").toString();
}

void ImporterSuite::grab(const QString& name) const
{
    const QString folder = qEnvironmentVariable("VISTREL_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QSignalSpy drawn(m_importer, &QQuickWindow::frameSwapped);
    m_importer->update();
    QTRY_VERIFY(drawn.count() > 0);
    QDir().mkpath(folder);
    QVERIFY(m_importer->grabWindow().save(folder + '/' + name + ".png"));
}

void ImporterSuite::addDay(const QString& videos, const QString& logs)
{
    m_world->addVideo(videos + "/morning.mp4", 0);
    m_world->addLog(logs + "/l1.log", 100, "Tower 1");
    m_world->addVideo(videos + "/noon.mp4", 5000);
    m_world->addVideo(videos + "/evening.mp4", 10'000);
    m_world->addLog(logs + "/l2.log", 10'100, "Tower 2");
}

} // namespace corv::test
