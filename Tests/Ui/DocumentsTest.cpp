#include "UiFixture.h"

#include <QDir>
#include <QQmlComponent>
#include <QRegularExpression>

using namespace corv::test;

/// Each document of the interface for itself: it declares what it needs, and shows itself with none
/// of it there.
class DocumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { UiFixture::prepare(); }
    void loadsAlone_data();
    void loadsAlone();
    void takesItsColoursFromThePalette_data() { loadsAlone_data(); }
    void takesItsColoursFromThePalette();
    void fileDialogsHoldTheKeysOfAllWindows_data() { loadsAlone_data(); }
    void fileDialogsHoldTheKeysOfAllWindows();
    void takesItsControlsFromOurFolder_data() { loadsAlone_data(); }
    void takesItsControlsFromOurFolder();
};

void DocumentsTest::loadsAlone_data()
{
    QTest::addColumn<QString>("path");
    const QDir folder(QStringLiteral(VISTREL_QML_FOLDER));
    const QFileInfoList controls =
        QDir(folder.filePath(QStringLiteral("Controls"))).entryInfoList({"*.qml"});
    QVERIFY(controls.size() > 20);
    const QFileInfoList documents = folder.entryInfoList({"*.qml"}) + controls;
    QVERIFY(documents.size() > 60);
    for (const QFileInfo& document : documents)
        QTest::newRow(qPrintable(folder.relativeFilePath(document.filePath())))
            << document.filePath();
}

void DocumentsTest::loadsAlone()
{
    QFETCH(QString, path);
    const QString name = QDir(QStringLiteral(VISTREL_QML_FOLDER)).relativeFilePath(path);
    if (name == QLatin1String("main.qml"))
        QSKIP("the whole window has suites of its own");
    if (name == QLatin1String("ImporterRow.qml"))
        QSKIP("a row is nothing without its values");
    UiFixture ui;
    QVERIFY(ui.loadText("import QtQuick 2.7\nimport QtQuick.Window 2.2\n"
                        "Window { visible: true; width: 400; height: 300 }"));
    QVERIFY2(QFile::exists(":/" + name), "not compiled in");
    std::unique_ptr<QObject> object;
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    if (file.readAll().startsWith("pragma Singleton")) {
        QQmlComponent user(&ui.engine());
        user.setData("import QtQuick 2.7\nimport \".\"\nItem { property var it: " +
                         name.section('.', 0, 0).toLatin1() + " }",
                     QUrl("qrc:/User.qml"));
        object.reset(user.create());
        QVERIFY2(object && object->property("it").value<QObject*>(),
                 qPrintable(user.errorString()));
    } else {
        QQmlComponent component(&ui.engine(), QUrl("qrc:/" + name));
        object.reset(component.beginCreate(ui.engine().rootContext()));
        QVERIFY2(object, qPrintable(component.errorString()));
        if (auto* item = qobject_cast<QQuickItem*>(object.get()))
            item->setParentItem(ui.window()->contentItem());
        component.completeCreate();
    }
    QCOMPARE(ui.scriptErrors(), QStringList());
}

void DocumentsTest::takesItsColoursFromThePalette()
{
    QFETCH(QString, path);
    const QString name = QFileInfo(path).fileName();
    if (name == QLatin1String("Theme.qml"))
        QSKIP("the palette itself");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QRegularExpression literal(
        R"re("#[0-9A-Fa-f]{3,8}"|[cC]olor: *"[a-z]+"|[cC]olor:.*\? *"[a-z]+"|Qt\.rgba\()re");
    int number = 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        ++number;
        QVERIFY2(!literal.match(QString::fromUtf8(line)).hasMatch(),
                 qPrintable(QString("line %1: %2").arg(number).arg(QString::fromUtf8(line))));
    }
}

// One that is modal to its own window alone lets a click on the main window put the keys there.
void DocumentsTest::fileDialogsHoldTheKeysOfAllWindows()
{
    QFETCH(QString, path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(file.readAll());
    const QRegularExpression holding(R"re(\bFileDialog \{[^{]*modality: Qt\.ApplicationModal)re");
    QCOMPARE(text.count(holding), text.count(QRegularExpression(R"re(\bFileDialog \{)re")));
}

// What the next Qt has no more is replaced in one place.
void DocumentsTest::takesItsControlsFromOurFolder()
{
    QFETCH(QString, path);
    if (QFileInfo(path).dir().dirName() == QLatin1String("Controls"))
        QSKIP("the folder itself");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QRegularExpression gone(
        R"re(import +Qt(Quick\.(Controls(\.Styles)? +1|Dialogs)|GraphicalEffects)\b.*)re");
    const QString found = gone.match(QString::fromUtf8(file.readAll())).captured();
    QVERIFY2(found.isEmpty(), qPrintable(found));
}

QTEST_MAIN(DocumentsTest)
#include "DocumentsTest.moc"
