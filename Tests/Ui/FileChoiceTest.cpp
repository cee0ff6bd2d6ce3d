#include "App/FileChoice.h"
#include "ReviewSuite.h"

#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSettings>
#include <QTreeView>
#include <QWindow>

using namespace corv::test;

/// The dialogs that ask for a file: what they propose, where they begin, what they show.
class FileChoiceTest : public ReviewSuite
{
    Q_OBJECT

private slots:
    void aFilterFindsSuffixesInAnyCase_data();
    void aFilterFindsSuffixesInAnyCase();
    void proposesTheNameOfTheFlight_data();
    void proposesTheNameOfTheFlight();
    void proposesTheNameOfTheProjectThatIsOpen();
    void nameGetsTheSuffixOfTheChosenFormat();
    void eachKindOfFileHasItsOwnFolder();
    void aFolderThatIsGoneIsNotOpened();
    void aFolderThatIsTypedIsEntered_data();
    void aFolderThatIsTypedIsEntered();
    void noOtherWindowIsUsedMeanwhile();
    void datesOfFilesAreShownWhole();
    void aTypedNameOpensNoList();

private:
    static QString proposedName();
    static QString folder();
};

QString FileChoiceTest::proposedName()
{
    auto* field = UiFixture::fileDialog()->findChild<QLineEdit*>("fileNameEdit");
    return field ? field->text() : QString();
}

QString FileChoiceTest::folder()
{
    return UiFixture::fileDialog()->directory().absolutePath();
}

void FileChoiceTest::aFilterFindsSuffixesInAnyCase_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isFound");
    const QString videos = "Video files (*.mov *.avi *.3gp *.mp4)";
    for (const char* name : {"CORV0001.MOV", "a.mov", "a.Mov", "B.3GP", "c.mp4", "C.MP4"})
        QTest::newRow(name) << videos << name << true;
    QTest::newRow("of a card") << "Flight data files (*.log)"
                               << "FLIGHT01.LOG" << true;
    QTest::newRow("another suffix") << videos << "a.log" << false;
    QTest::newRow("a suffix that goes on") << videos << "a.mov.part" << false;
}

void FileChoiceTest::aFilterFindsSuffixesInAnyCase()
{
    QFETCH(QString, filter);
    QFETCH(QString, name);
    QFETCH(bool, isFound);
    // As a desktop's dialog compares: each letter as it is.
    const QString text = corv::filterOfAnyCase(filter);
    const QString patterns = text.mid(text.indexOf('(') + 1).chopped(1);
    bool matches = false;
    for (const QString& pattern : patterns.split(' '))
        matches =
            matches || QRegularExpression(QRegularExpression::wildcardToRegularExpression(pattern))
                           .match(name)
                           .hasMatch();
    QCOMPARE(matches, isFound);
    QCOMPARE(text.left(text.indexOf('(')), filter.left(filter.indexOf('(')));
}

void FileChoiceTest::proposesTheNameOfTheFlight_data()
{
    QTest::addColumn<QString>("verb");
    QTest::addColumn<QString>("ending");
    QTest::newRow("project") << "goSaveProjectAs"
                             << ".ecor";
    QTest::newRow("report") << "goCreatePoiReport"
                            << ".docx";
    QTest::newRow("picture") << "saveCurrentFrame"
                             << "_00m00.000s";
}

void FileChoiceTest::proposesTheNameOfTheFlight()
{
    QFETCH(QString, verb);
    QFETCH(QString, ending);
    QVERIFY(m_ui->openVideo());
    m_ui->call("nameFlight", {"Solar/park #2", "Row survey", 3});
    m_ui->call(verb.toLatin1());
    QTRY_VERIFY(UiFixture::fileDialog());
    const QString date = QFileInfo(media().video()).lastModified().date().toString(Qt::ISODate);
    QCOMPARE(proposedName(), "Solar_park _2_Row survey_3_" + date + ending);
    UiFixture::fileDialog()->reject();
}

void FileChoiceTest::proposesTheNameOfTheProjectThatIsOpen()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("doSaveProject", {media().newFolder() + "/Site 2026.11.21.ecor"});
    m_ui->call("goSaveProjectAs");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(proposedName(), QString("Site 2026.11.21.ecor"));
    UiFixture::fileDialog()->reject();
    QTRY_VERIFY(!UiFixture::fileDialog());
    m_ui->call("goSaveProjectCopy");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(proposedName(), QString("Site 2026.11.21 copy.ecor"));
    UiFixture::fileDialog()->reject();
}

void FileChoiceTest::nameGetsTheSuffixOfTheChosenFormat()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("saveCurrentFrame");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->defaultSuffix(), QString("jpg"));
    auto* formats = UiFixture::fileDialog()->findChild<QComboBox*>("fileTypeCombo");
    QVERIFY(formats);
    QTest::keyClick(formats, Qt::Key_Down);
    QCOMPARE(UiFixture::fileDialog()->selectedNameFilter(), QString("Bitmap (*.bmp)"));
    QCOMPARE(UiFixture::fileDialog()->defaultSuffix(), QString("bmp"));
    UiFixture::fileDialog()->reject();
}

void FileChoiceTest::eachKindOfFileHasItsOwnFolder()
{
    QVERIFY(m_ui->openVideo());
    const QString projects = media().newFolder();
    const QString pictures = media().newFolder();
    m_ui->call("goSaveProjectAs");
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(projects + "/a.ecor"));
    QTRY_VERIFY(QFile::exists(projects + "/a.ecor"));
    m_ui->call("saveCurrentFrame");
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(UiFixture::acceptFile(pictures + "/a.jpg"));
    QTRY_VERIFY(QFile::exists(pictures + "/a.jpg"));

    // Also at the next start, and a project is looked for where one was saved.
    QVERIFY(m_ui->reload());
    m_ui->call("goOpenProject", {"file_menu"});
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(folder(), projects);
    UiFixture::fileDialog()->reject();
    QTRY_VERIFY(!UiFixture::fileDialog());
    m_ui->call("saveCurrentFrame");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(folder(), pictures);
    UiFixture::fileDialog()->reject();
}

void FileChoiceTest::aFolderThatIsGoneIsNotOpened()
{
    const QString card = media().newFolder() + "/card";
    m_ui->evaluate(QString("loadFileSettings.folder = 'file://%1'").arg(card));
    m_ui->call("goOpenVideo", {"file_menu"});
    QTRY_VERIFY(UiFixture::fileDialog());
    QVERIFY(QDir(folder()).exists());
    QVERIFY(!folder().startsWith(card));
    UiFixture::fileDialog()->reject();
}

void FileChoiceTest::aFolderThatIsTypedIsEntered_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("folder") << "DCIM";
    QTest::newRow("completed as far as names are the same") << "DCIM/CORV000";
}

void FileChoiceTest::aFolderThatIsTypedIsEntered()
{
    QFETCH(QString, typed);
    const QString card = media().newFolder();
    const QString inner = card + "/DCIM";
    QVERIFY(QDir(card).mkdir("DCIM"));
    const QString video = inner + "/CORV0001.mp4";
    QVERIFY(QFile::copy(media().video(), video));
    m_ui->evaluate(QString("loadFileSettings.folder = 'file://%1'").arg(card));
    m_ui->call("goOpenVideo", {"file_menu"});
    QTRY_VERIFY(UiFixture::fileDialog());
    auto* name = UiFixture::fileDialog()->findChild<QLineEdit*>("fileNameEdit");
    QVERIFY(name);
    name->setText(typed);
    // Qt's dialog goes on by itself, a desktop's ends.
    UiFixture::fileDialog()->QDialog::accept();
    QVERIFY(!UiFixture::fileDialog());
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(folder(), inner);
    QVERIFY(!UiFixture::messageBox());
    QVERIFY(UiFixture::acceptFile(video));
    QTRY_VERIFY(m_ui->hasVideo());
    QCOMPARE(m_ui->evaluate("videoPlayer.source").toString(), video);
}

// Modal to its window alone, it left a click on that window's title and the keys after it to the
// flight that was being saved.
void FileChoiceTest::noOtherWindowIsUsedMeanwhile()
{
    QVERIFY(m_ui->openVideo());
    m_ui->call("goSaveProjectAs");
    QTRY_VERIFY(UiFixture::fileDialog());
    QCOMPARE(UiFixture::fileDialog()->windowHandle()->modality(), Qt::ApplicationModal);
    UiFixture::fileDialog()->reject();
}

void FileChoiceTest::datesOfFilesAreShownWhole()
{
    const QString card = media().newFolder();
    QVERIFY(QFile::copy(media().video(), card + "/CORV0001.mp4"));
    m_ui->evaluate(QString("loadFileSettings.folder = 'file://%1'").arg(card));
    m_ui->call("goOpenVideo", {"file_menu"});
    QTRY_VERIFY(UiFixture::fileDialog());
    auto* files = UiFixture::fileDialog()->findChild<QTreeView*>("treeView");
    QVERIFY(files);
    QTRY_VERIFY(files->model()->rowCount(files->rootIndex()) > 0);
    const int dates = 3;
    const QModelIndex date = files->model()->index(0, dates, files->rootIndex());
    QTRY_VERIFY(files->visualRect(date).width() >=
                files->fontMetrics().horizontalAdvance(date.data().toString()));
    UiFixture::fileDialog()->reject();
}

// One that is open when Return ends the dialog keeps the keyboard.
void FileChoiceTest::aTypedNameOpensNoList()
{
    const QDir folder(media().newFolder());
    for (const char* name : {"x.ecor", "x.ecor.ecor"}) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QFileDialog dialog(nullptr, "Open", folder.path());
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    auto* field = dialog.findChild<QLineEdit*>("fileNameEdit");
    QVERIFY(!field->completer());
    QTest::keyClicks(field, "x.ecor");
    QVERIFY(!QApplication::activePopupWidget());
    QTest::keyClick(field, Qt::Key_Return);
    QTRY_VERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.selectedFiles(), QStringList{folder.filePath("x.ecor")});
}

QTEST_MAIN(FileChoiceTest)
#include "FileChoiceTest.moc"
