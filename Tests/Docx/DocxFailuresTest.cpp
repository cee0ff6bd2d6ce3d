#include "DocxFixture.h"
#include "Support/FullDisk.h"

#include <QDir>
#include <QFile>
#include <QtTest>
#include <random>
#include <stdexcept>

using corv::DocxMerger;
using namespace corv::test;

namespace {

/// The text of the error that `work` ends with; empty if it does not.
QString errorOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
    return {};
}

/// The largest memory that this process had since `forgetPeak`.
qint64 peakBytes()
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    return text.mid(text.indexOf("VmHWM:") + 6).simplified().split(' ').first().toLongLong() * 1024;
}

void forgetPeak()
{
    QFile file("/proc/self/clear_refs");
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

} // namespace

/// What cannot be read, written or held in memory: it is reported, and what was there before is
/// whole.
class DocxFailuresTest : public QObject, private DocxFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }

    void namesWhatIsMissing()
    {
        DocxMerger merger;
        const QString closed = "no template is open";
        QCOMPARE(errorOf([&] { merger.paste("Page"); }), closed);
        QCOMPARE(errorOf([&] { merger.setClipboardValue("Page", "Name", 1.0); }), closed);
        QCOMPARE(errorOf([&] { merger.save(path("out.docx")); }), closed);
        merger.load(templateOf(page()));
        const QString noItem = "the template has no item \"Cover\"";
        QCOMPARE(errorOf([&] { merger.setClipboardValue("Cover", "F", "x"); }), noItem);
        QCOMPARE(errorOf([&] { merger.paste("Cover"); }), noItem);
        merger.close();
        merger.close();
        QCOMPARE(errorOf([&] { merger.paste("Page"); }), closed);
    }

    void refusesBrokenTemplates_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("error");
        const auto zipped = [](const Parts& parts) {
            QTemporaryDir folder;
            writeZip(folder.filePath("t"), parts);
            QFile file(folder.filePath("t"));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        const auto with = [&zipped](const QString& name, const QByteArray& content) {
            Parts parts = templateParts(page());
            parts[name] = content;
            return zipped(parts);
        };
        const auto without = [&zipped](const QString& name) {
            Parts parts = templateParts(page());
            parts.remove(name);
            return zipped(parts);
        };
        const QString document = "word/document.xml";
        QTest::newRow("empty") << QByteArray() << "cannot be unpacked";
        QTest::newRow("text") << QByteArray("no zip") << "cannot be unpacked";
        QTest::newRow("cut off") << zipped(templateParts(page())).chopped(300)
                                 << "cannot be unpacked";
        QByteArray damaged = zipped(templateParts(page()));
        damaged.replace(80, 30, QByteArray(30, '\x55'));
        QTest::newRow("damaged") << damaged << "damaged";
        QTest::newRow("no parts") << zipped({}) << "";
        QTest::newRow("no relationships") << without("_rels/.rels") << "no Word document";
        QTest::newRow("no types") << without("[Content_Types].xml") << "no Word document";
        QTest::newRow("no document") << without(document) << "no Word document in it";
        QTest::newRow("relationships to nowhere")
            << with("_rels/.rels", "<Relationships/>") << "no Word document in it";
        QTest::newRow("no XML") << with(document, "no XML") << "is damaged";
        QTest::newRow("XML that does not end")
            << with(document, "<w:document><w:body>") << "is damaged";
        QTest::newRow("a page of the web") << with(document, "<html/>") << "no Word document in it";
        QTest::newRow("nested too deeply")
            << with(document, "<w:document><w:body>" + QByteArray("<w:sdt>").repeated(100000) +
                                  QByteArray("</w:sdt>").repeated(100000) +
                                  "</w:body></w:document>")
            << "nested too deeply";
        QTest::newRow("a document of 20 MB")
            << with(document, "<w:document><w:body>" + QByteArray("<w:p></w:p>").repeated(2000000) +
                                  "</w:body></w:document>")
            << "too large";
        QTest::newRow("unpacks to 100 MB")
            << with("bomb", QByteArray(100 << 20, '\0')) << "too large";
        Parts many = templateParts(page());
        for (int i = 0; i < 3000; ++i)
            many[QString("part%1").arg(i)] = "x";
        const QString badName = "has a name that no document may have";
        for (const char* name :
             {"../above.xml", "word/../../above.xml", "/etc/passwd", "C:/x.xml", "word\\x.xml",
              "word//x.xml", "word/./x.xml", "word/a\nb.xml", "word/what?.xml"})
            QTest::addRow("part %s", name) << with(name, "x") << badName;
        QTest::newRow("part of a long name") << with(QString(300, 'n'), "x") << badName;
        QTest::newRow("two parts of one name")
            << with("WORD/Document.xml", "x") << "two parts of the template have one name";
        QTest::newRow("thousands of parts") << zipped(many) << "too many parts";
    }

    void refusesBrokenTemplates()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, error);
        QFile out(path("t.dfw"));
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(file) == file.size());
        out.close();
        DocxMerger merger;
        forgetPeak();
        const qint64 before = peakBytes();
        const QString reported = errorOf([&] { merger.load(path("t.dfw")); });
        QVERIFY2(!reported.isEmpty() && reported.contains(error), qPrintable(reported));
        QVERIFY(peakBytes() - before < (qint64(400) << 20));
        QCOMPARE(errorOf([&] { merger.paste("Page"); }), QString("no template is open"));
    }

    void missingTemplateIsReported()
    {
        DocxMerger merger;
        QVERIFY(errorOf([&] { merger.load(path("none.dfw")); }).contains("none.dfw"));
    }

    void thousandsOfBookmarksAboutEverythingTakeNoMemory()
    {
        QByteArray starts;
        QByteArray ends;
        for (int i = 0; i < 20000; ++i) {
            const QByteArray id = QByteArray::number(i);
            starts += "<w:bookmarkStart w:id=\"" + id + "\" w:name=\"n" + id + "\"/>";
            ends += "<w:bookmarkEnd w:id=\"" + id + "\"/>";
        }
        const QString file =
            templateOf(paragraph(starts) + paragraph(run("x")).repeated(20000) + paragraph(ends));
        DocxMerger merger;
        forgetPeak();
        const qint64 before = peakBytes();
        merger.load(file);
        QVERIFY(peakBytes() - before < (qint64(200) << 20));
    }

    void onAFullDiskTheEarlierDocumentIsWhole_data()
    {
        QTest::addColumn<double>("share");
        QTest::newRow("no room") << 0.0;
        QTest::newRow("room for a piece") << 0.4;
        QTest::newRow("room for all but the end") << 0.99;
    }

    void onAFullDiskTheEarlierDocumentIsWhole()
    {
        QFETCH(double, share);
        DocxMerger merger;
        merger.load(templateOf(page()));
        QFile old(path("out.docx"));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        merger.setClipboardValue("Page", "Comment", QString("very long ").repeated(10000));
        merger.paste("Page");
        merger.save(path("whole.docx"));
        const double neededBytes = static_cast<double>(QFileInfo(path("whole.docx")).size());
        QString error;
        {
            const FullDisk disk(static_cast<rlim_t>(neededBytes * share));
            error = errorOf([&] { merger.save(path("out.docx")); });
        }
        QVERIFY2(error.contains("cannot write"), qPrintable(error));
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), QByteArray("old"));
        QCOMPARE(QDir(m_folder->path()).entryList({"out*"}, QDir::Files | QDir::Hidden),
                 QStringList({"out.docx"}));
        merger.save(path("out.docx")); // once there is room again
        QCOMPARE(brokenRules(readZip(path("out.docx"))), QStringList());
    }

    void pictureWithoutRoomIsReported()
    {
        DocxMerger merger;
        merger.load(templateOf(page()));
        QImage noise(200, 200, QImage::Format_RGB32);
        std::mt19937 random(7);
        for (int i = 0; i < 200 * 200; ++i)
            noise.setPixel(i % 200, i / 200, static_cast<uint>(random()));
        QVERIFY(noise.save(path("noise.png")));
        merger.setClipboardValue("Page", "Image", path("noise.png"));
        QString error;
        {
            const FullDisk disk(1000);
            error = errorOf([&] { merger.paste("Page"); });
        }
        QVERIFY2(error.contains("cannot write the temporary file"), qPrintable(error));
        merger.setClipboardValue("Page", "Image", path("noise.png"));
        merger.paste("Page");
        merger.save(path("out.docx"));
        const Parts parts = readZip(path("out.docx"));
        QCOMPARE(brokenRules(parts), QStringList());
        const QStringList media = parts.keys().filter("/media/");
        QCOMPARE(media.size(), 1);
        QCOMPARE(QImage::fromData(parts[media.first()]), noise);
    }

    void namesTheFileItCannotWrite()
    {
        DocxMerger merger;
        merger.load(templateOf(page()));
        QVERIFY(errorOf([&] { merger.save(path("none/out.docx")); }).contains("cannot write"));
        QVERIFY(errorOf([&] { merger.save(m_folder->path()); }).contains("cannot write"));
    }

    void hundredsOfPicturesAreNotHeldInMemory()
    {
#ifdef __SANITIZE_ADDRESS__
        QSKIP("the sanitizer holds on to what has been freed");
#endif
        QImage noise(1000, 1000, QImage::Format_RGB32);
        std::mt19937 random(7);
        for (int y = 0; y < 1000; ++y)
            for (int x = 0; x < 1000; ++x)
                noise.setPixel(x, y, static_cast<uint>(random()));
        QVERIFY(noise.save(path("noise.png")));
        QVERIFY(QFileInfo(path("noise.png")).size() > 2500000);
        DocxMerger merger;
        merger.load(templateOf(page()));
        forgetPeak();
        const qint64 before = peakBytes();
        for (int i = 0; i < 60; ++i) {
            merger.setClipboardValue("Page", "Image", path("noise.png"));
            merger.paste("Page");
        }
        merger.save(path("out.docx"));
        QVERIFY(QFileInfo(path("out.docx")).size() > 150000000);
        const qint64 grown = peakBytes() - before;
        QVERIFY2(grown < 30000000, qPrintable(QString::number(grown)));
    }
};

QTEST_GUILESS_MAIN(DocxFailuresTest)
#include "DocxFailuresTest.moc"
