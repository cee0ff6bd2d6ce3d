#include <QJSValue>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QUrl>
#include <QtTest>
#include <memory>

/// The ways from a dialog's URL to a path and back, on both families of systems.
class PathsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void urlsBecomePaths_data();
    void urlsBecomePaths();
    void everyVariantDecodesItsUrls_data();
    void everyVariantDecodesItsUrls();
    void pathsBecomeUrls_data();
    void pathsBecomeUrls();
    void aPathSurvivesTheUrlAndBack_data();
    void aPathSurvivesTheUrlAndBack();
    void urlsForTheShellHaveThreeSlashes();
    void namesGetTheSuffixOfTheirFilter_data();
    void namesGetTheSuffixOfTheirFilter();
    void extensionsAreCompared_data();
    void extensionsAreCompared();

private:
    QString call(const char* function, const QVariant& first, const QString& second = {});

    QQmlEngine m_engine;
    std::unique_ptr<QObject> m_paths;
};

void PathsTest::initTestCase()
{
    QQmlComponent component(&m_engine);
    component.setData(R"(
        import QtQml 2.2
        import "paths.js" as Paths
        QtObject {
            function call(name, first, second) {
                return second === "" ? Paths[name](first) : Paths[name](first, second);
            }
            function extension(url, extensions) { return Paths.hasExtension(url, extensions); }
        })",
                      QUrl(QStringLiteral("qrc:/PathsTest.qml")));
    m_paths.reset(component.create());
    QVERIFY2(m_paths, qPrintable(component.errorString()));
}

QString PathsTest::call(const char* function, const QVariant& first, const QString& second)
{
    QVariant result;
    QMetaObject::invokeMethod(m_paths.get(), "call", Q_RETURN_ARG(QVariant, result),
                              Q_ARG(QVariant, QString::fromLatin1(function)),
                              Q_ARG(QVariant, first), Q_ARG(QVariant, second));
    return result.toString();
}

void PathsTest::urlsBecomePaths_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("os");
    QTest::addColumn<QString>("path");
    QTest::newRow("linux") << "file:///tmp/a.mp4"
                           << "linux"
                           << "/tmp/a.mp4";
    QTest::newRow("windows") << "file:///C:/a.mp4"
                             << "windows"
                             << "C:/a.mp4";
    QTest::newRow("a share") << "file://server/a.mp4"
                             << "windows"
                             << "//server/a.mp4";
    QTest::newRow("escapes") << "file:///tmp/a%23%25%22.mp4"
                             << "linux"
                             << "/tmp/a#%\".mp4";
    QTest::newRow("blanks and letters") << QStringLiteral("file:///tmp/Größe 東京.mp4") << "linux"
                                        << QStringLiteral("/tmp/Größe 東京.mp4");
    QTest::newRow("escaped letters") << "file:///C:/%C3%BC%20b"
                                     << "windows" << QStringLiteral("C:/ü b");
    QTest::newRow("already a path") << "/tmp/a.mp4"
                                    << "linux"
                                    << "/tmp/a.mp4";
    QTest::newRow("no encoding at all") << "file:///tmp/100%.mp4"
                                        << "linux"
                                        << "/tmp/100%.mp4";
    QTest::newRow("a word") << "no_match"
                            << "linux"
                            << "no_match";
    QTest::newRow("nothing") << ""
                             << "linux"
                             << "";
}

void PathsTest::urlsBecomePaths()
{
    QFETCH(QString, url);
    QFETCH(QString, os);
    QFETCH(QString, path);
    QCOMPARE(call("decodedPath", url, os), path);
}

void PathsTest::everyVariantDecodesItsUrls_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("os");
    QTest::addColumn<QString>("path");
    QTest::newRow("saving keeps the escapes")
        << QByteArray("undecodedPath") << "file:///tmp/a b%23.ecor"
        << "linux"
        << "/tmp/a b%23.ecor";
    QTest::newRow("saving on windows") << QByteArray("undecodedPath") << "file:///D:/a%23.ecor"
                                       << "windows"
                                       << "D:/a%23.ecor";
    QTest::newRow("saving on a share") << QByteArray("undecodedPath") << "file://server/a.ecor"
                                       << "windows"
                                       << "//server/a.ecor";
    QTest::newRow("an image decodes") << QByteArray("decodedLocalPath") << "file:///tmp/a%23.jpg"
                                      << "linux"
                                      << "/tmp/a#.jpg";
    QTest::newRow("an image on a share keeps its prefix")
        << QByteArray("decodedLocalPath") << "file://server/a.jpg"
        << "windows"
        << "file://server/a.jpg";
    QTest::newRow("a chosen file") << QByteArray("chosenPath") << "file:///tmp/a%23.log"
                                   << "linux"
                                   << "/tmp/a#.log";
    QTest::newRow("a chosen word") << QByteArray("chosenPath") << "qrc:/no_match"
                                   << "linux"
                                   << "no_match";
}

void PathsTest::everyVariantDecodesItsUrls()
{
    QFETCH(QByteArray, function);
    QFETCH(QString, url);
    QFETCH(QString, os);
    QFETCH(QString, path);
    QCOMPARE(call(function.constData(), url, os), path);
}

void PathsTest::pathsBecomeUrls_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("url");
    QTest::newRow("linux") << "/tmp/a b.mp4"
                           << "file:///tmp/a%20b.mp4";
    QTest::newRow("windows") << "C:/a#b.mp4"
                             << "file:///C:/a%23b.mp4";
    QTest::newRow("backslashes") << "C:\\flights\\a.mp4"
                                 << "file:///C:/flights/a.mp4";
    QTest::newRow("a URL") << "file:///tmp/a.mp4"
                           << "file:///tmp/a.mp4";
    QTest::newRow("a word") << "no_match"
                            << "no_match";
    QTest::newRow("nothing") << ""
                             << "";
}

void PathsTest::pathsBecomeUrls()
{
    QFETCH(QString, path);
    QFETCH(QString, url);
    QCOMPARE(call("toUrl", path), url);
}

void PathsTest::aPathSurvivesTheUrlAndBack_data()
{
    QTest::addColumn<QString>("path");
    for (const char* path : {"/tmp/a.mp4", "/tmp/a b.mp4", "/tmp/Größe.mp4", "/tmp/東京/a.log",
                             "/tmp/#1/100%.mp4", "/tmp/%41.mp4", "/tmp/\"quoted\" 'too'.mp4",
                             "/tmp/a+b&c=d?.mp4", "/tmp/file:x.mp4", "/tmp/back\\slash.mp4"})
        QTest::newRow(path) << QString::fromUtf8(path);
}

void PathsTest::aPathSurvivesTheUrlAndBack()
{
    QFETCH(QString, path);
    QCOMPARE(call("decodedPath", QUrl(call("toUrl", path))), path);
    QCOMPARE(call("decodedPath", QUrl::fromLocalFile(path)), path);
}

void PathsTest::urlsForTheShellHaveThreeSlashes()
{
    QCOMPARE(call("urlInFolder", QStringLiteral("/opt/vi strel"), QStringLiteral("manual.pdf")),
             QStringLiteral("file:///opt/vi%20strel/manual.pdf"));
    QCOMPARE(call("urlInFolder", QStringLiteral("C:/vistrel/"), QStringLiteral("manual.pdf")),
             QStringLiteral("file:///C:/vistrel/manual.pdf"));
}

void PathsTest::namesGetTheSuffixOfTheirFilter_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("completed");
    QTest::newRow("none") << "/tmp/a"
                          << "JPEG (*.jpg)"
                          << "/tmp/a.jpg";
    QTest::newRow("its own") << "/tmp/a.JPG"
                             << "JPEG (*.jpg)"
                             << "/tmp/a.JPG";
    QTest::newRow("another's") << "/tmp/a.png"
                               << "JPEG (*.jpg)"
                               << "/tmp/a.png.jpg";
    QTest::newRow("a date") << "/tmp/Site 2026.11.21"
                            << "Vistrel projects (*.ecor)"
                            << "/tmp/Site 2026.11.21.ecor";
    QTest::newRow("the second of several") << "/tmp/a.avi"
                                           << "Video files (*.mov *.avi)"
                                           << "/tmp/a.avi";
    QTest::newRow("a dot in the folder") << "/tmp/a.d/b"
                                         << "PNG (*.png)"
                                         << "/tmp/a.d/b.png";
    QTest::newRow("a hidden file") << "/tmp/.a"
                                   << "PNG (*.png)"
                                   << "/tmp/.a.png";
    QTest::newRow("first of several") << "/tmp/a"
                                      << "Video files (*.mov *.avi)"
                                      << "/tmp/a.mov";
    QTest::newRow("any file") << "/tmp/a"
                              << "All files (*)"
                              << "/tmp/a";
    QTest::newRow("nothing") << ""
                             << "PNG (*.png)"
                             << "";
}

void PathsTest::namesGetTheSuffixOfTheirFilter()
{
    QFETCH(QString, path);
    QFETCH(QString, filter);
    QFETCH(QString, completed);
    QCOMPARE(call("withSuffix", path, filter), completed);
}

void PathsTest::extensionsAreCompared_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("lower case") << "file:///tmp/a.mp4" << true;
    QTest::newRow("upper case") << "file:///tmp/a.MP4" << true;
    QTest::newRow("another one") << "file:///tmp/a.mov" << true;
    QTest::newRow("unknown") << "file:///tmp/a.mkv" << false;
    QTest::newRow("none") << "file:///tmp/mp4" << false;
    QTest::newRow("nothing") << "" << false;
}

void PathsTest::extensionsAreCompared()
{
    QFETCH(QString, url);
    QFETCH(bool, accepted);
    QVariant result;
    QMetaObject::invokeMethod(m_paths.get(), "extension", Q_RETURN_ARG(QVariant, result),
                              Q_ARG(QVariant, QUrl(url)),
                              Q_ARG(QVariant, QStringList({".mp4", ".mov"})));
    QCOMPARE(result.toBool(), accepted);
}

QTEST_GUILESS_MAIN(PathsTest)
#include "PathsTest.moc"
