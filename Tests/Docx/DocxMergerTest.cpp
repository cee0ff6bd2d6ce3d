#include "Docx/DocxMerger.h"

#include "Support/FullDisk.h"
#include "Support/WordPackage.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>
#include <functional>
#include <pugixml.hpp>
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

QByteArray page()
{
    return control("Page", paragraph(run("Name: ") + control("Name", run("sample"))) +
                               paragraph(control("Image", drawing(900000))) +
                               paragraph(control("Comment", run("sample"))));
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

class DocxMergerTest : public QObject
{
    Q_OBJECT

private:
    QScopedPointer<QTemporaryDir> m_folder;

    QString path(const QString& name) const { return m_folder->filePath(name); }

    QString templateOf(const QByteArray& blocks) const
    {
        writeZip(path("t.dfw"), templateParts(blocks));
        return path("t.dfw");
    }

    QString picture(int width, int height, const char* name = "picture.png") const
    {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        if (!image.save(path(name)))
            qFatal("cannot save the picture");
        return path(name);
    }

    /// The document made by `fill` from a template of these blocks; it has to keep the rules.
    Parts made(const QByteArray& blocks, const std::function<void(DocxMerger&)>& fill) const
    {
        DocxMerger merger;
        merger.load(templateOf(blocks));
        fill(merger);
        merger.save(path("out.docx"));
        const Parts parts = readZip(path("out.docx"));
        if (const QStringList broken = brokenRules(parts); !broken.isEmpty())
            qFatal("%s", qPrintable(broken.join("; ")));
        return parts;
    }

    /// The document of one item "I" with these blocks and the field "F" set.
    QByteArray filled(const QByteArray& blocks, const QString& value) const
    {
        const Parts parts = made(control("I", blocks), [&](DocxMerger& merger) {
            merger.setClipboardValue("I", "F", value);
            merger.paste("I");
        });
        return parts["word/document.xml"];
    }

private slots:
    void init() { m_folder.reset(new QTemporaryDir); }

    void appendsTheItemsInTheOrderOfPasting()
    {
        const QByteArray blocks = paragraph(run("outside")) +
                                  control("A", paragraph(run("a ") + control("F", run("x")))) +
                                  control("B", paragraph(run("b ") + control("F", run("x"))));
        const Parts parts = made(blocks, [](DocxMerger& merger) {
            merger.setClipboardValue("B", "F", "1");
            merger.setClipboardValue("A", "F", "2");
            merger.paste("B");
            merger.paste("A");
            merger.setClipboardValue("B", "F", 3.0);
            merger.paste("B");
        });
        QCOMPARE(documentText(parts), QString("b 1\na 2\nb 3\n"));
        QVERIFY(!parts["word/document.xml"].contains("w:sdt"));
    }

    void valuesAreClearedByPasting()
    {
        const Parts parts = made(page(), [](DocxMerger& merger) {
            merger.setClipboardValue("Page", "Name", "first");
            merger.setClipboardValue("Page", "Comment", "comment");
            merger.paste("Page");
            merger.setClipboardValue("Page", "Name", "second");
            merger.paste("Page");
        });
        QCOMPARE(documentText(parts), QString("Name: first\n\ncomment\nName: second\n\n\n"));
    }

    void writesAnyText_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("text");
        const auto row = [](const char* name, const QString& value, const QString& text) {
            QTest::newRow(name) << value << text;
        };
        row("plain", "Roof", "Roof");
        row("empty", "", "");
        row("blanks", "  a  b ", "  a  b ");
        row("a blank alone", " ", " ");
        row("markup", "<&>\"'</w:t>]]>&amp;", "<&>\"'</w:t>]]>&amp;");
        row("lines", "a\nb\r\nc\rd\n\ne\n", "a\nb\nc\nd\n\ne\n");
        row("separators", QString("a") + QChar(0x2028) + "b" + QChar(0x2029) + "c", "a\nb\nc");
        row("tab", "a\tb", "a\tb");
        row("accents", QString::fromUtf8("Éolienne — 3 °C"), QString::fromUtf8("Éolienne — 3 °C"));
        row("right to left", QString::fromUtf8("שלום مرحبا"), QString::fromUtf8("שלום مرحبا"));
        row("emoji", QString::fromUtf8("🔥👍🏽👩‍🚀"),
            QString::fromUtf8("🔥👍🏽👩‍🚀"));
        row("control characters", QString::fromUtf8("a\x01\x08\x0b\x0c\x1f\x1b[0m\0b", 13),
            "a[0mb");
        row("half a pair", QString("a") + QChar(0xd83d) + "b" + QChar(0xdd25), "ab");
        row("no characters", QString("a") + QChar(0xfffe) + QChar(0xffff) + "b", "ab");
    }

    void writesAnyText()
    {
        QFETCH(QString, value);
        QFETCH(QString, text);
        const Parts parts =
            made(control("I", paragraph(control("F", run("x")))), [&value](DocxMerger& merger) {
                merger.setClipboardValue("I", "F", value);
                merger.paste("I");
            });
        QCOMPARE(documentText(parts), text + '\n');
    }

    void writesNumbers_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 7.0 << "7";
        QTest::newRow("zero") << 0.0 << "0";
        QTest::newRow("negative") << -3.0 << "-3";
        QTest::newRow("large") << 4294967295.0 << "4294967295";
        QTest::newRow("fraction") << 0.1 << "0.1";
    }

    void writesNumbers()
    {
        QFETCH(double, number);
        const Parts parts =
            made(control("I", paragraph(control("F", run("x")))), [number](DocxMerger& merger) {
                merger.setClipboardValue("I", "F", number);
                merger.paste("I");
            });
        QTEST(documentText(parts).trimmed(), "text");
    }

    void keepsTheLookOfTheField_data()
    {
        QTest::addColumn<QByteArray>("blocks");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray bold = "<w:rPr><w:b/></w:rPr>";
        const QByteArray value = "<w:t xml:space=\"preserve\">v</w:t>";
        QTest::newRow("of its first letter")
            << paragraph(control("F", "<w:r>" + bold + "<w:t>x</w:t></w:r>" + run("y")))
            << "<w:p><w:r>" + bold + value + "</w:r></w:p>";
        QTest::newRow("of the control behind a hint")
            << paragraph(control("F", "<w:r><w:rPr><w:rStyle w:val=\"Hint\"/></w:rPr></w:r>",
                                 bold + "<w:showingPlcHdr/>"))
            << "<w:p><w:r>" + bold + value + "</w:r></w:p>";
        QTest::newRow("named by its title")
            << paragraph("<w:sdt><w:sdtPr><w:alias w:val=\"F\"/></w:sdtPr><w:sdtContent>" +
                         run("x") + "</w:sdtContent></w:sdt>")
            << "<w:p><w:r>" + value + "</w:r></w:p>";
        QTest::newRow("about paragraphs")
            << control("F", "<w:p><w:pPr><w:jc w:val=\"end\"/></w:pPr>" + run("x") + "</w:p>" +
                                paragraph(run("y")))
            << "<w:p><w:pPr><w:jc w:val=\"end\"/></w:pPr><w:r>" + value + "</w:r></w:p>";
        QTest::newRow("about a cell")
            << "<w:tbl><w:tr>" +
                   control("F", "<w:tc><w:tcPr><w:vAlign w:val=\"top\"/></w:tcPr>" +
                                    paragraph(run("x")) + paragraph("") + "</w:tc>") +
                   "</w:tr></w:tbl>"
            << "<w:tr><w:tc><w:tcPr><w:vAlign w:val=\"top\"/></w:tcPr><w:p><w:r>" + value +
                   "</w:r></w:p></w:tc></w:tr>";
        QTest::newRow("inside a control without a name")
            << paragraph("<w:sdt><w:sdtContent>" + control("F", run("x")) +
                         "</w:sdtContent></w:sdt>")
            << "<w:p><w:r>" + value + "</w:r></w:p>";
        QTest::newRow("twice in an item")
            << paragraph(control("F", run("x")) + control("F", run("x")))
            << "<w:p><w:r>" + value + "</w:r><w:r>" + value + "</w:r></w:p>";
        QTest::newRow("empty control")
            << paragraph(control("F", "")) << "<w:p><w:r>" + value + "</w:r></w:p>";
    }

    void keepsTheLookOfTheField()
    {
        QFETCH(QByteArray, blocks);
        QFETCH(QByteArray, expected);
        const QByteArray document = filled(blocks, "v");
        QVERIFY2(document.contains(expected), document.constData());
    }

    void textFromTheRightIsMarkedSo()
    {
        const QString hebrew = QString::fromUtf8("שלום");
        const QByteArray alone = filled(
            paragraph("<w:pPr><w:jc w:val=\"start\"/></w:pPr>" + control("F", run("x"))), hebrew);
        QVERIFY2(alone.contains("<w:pPr><w:bidi/><w:jc w:val=\"start\"/></w:pPr><w:r><w:rPr>"
                                "<w:rtl/></w:rPr>"),
                 alone.constData());
        const QByteArray beside = filled(paragraph(run("Name: ") + control("F", run("x"))), hebrew);
        QVERIFY2(beside.contains("<w:rtl/>") && !beside.contains("<w:bidi/>"), beside.constData());
        const QByteArray latin = filled(paragraph(control("F", run("x"))), "a");
        QVERIFY2(!latin.contains("<w:rtl/>") && !latin.contains("<w:bidi/>"), latin.constData());
    }

    void whatMayStandOnlyOnceIsTakenOut()
    {
        const QByteArray marks = "<w:bookmarkStart w:id=\"7\" w:name=\"n\"/><w:commentRangeStart "
                                 "w:id=\"1\"/><w:commentRangeEnd w:id=\"1\"/><w:bookmarkEnd "
                                 "w:id=\"7\"/><w:r><w:commentReference w:id=\"1\"/></w:r>";
        const QByteArray blocks =
            control("I", "<w:p w14:paraId=\"11223344\">" + marks + drawing(5000) + "</w:p>");
        const Parts parts = made(blocks, [](DocxMerger& merger) {
            merger.paste("I");
            merger.paste("I");
        });
        const QByteArray document = parts["word/document.xml"];
        QVERIFY(!document.contains("bookmark"));
        QVERIFY(!document.contains("w:comment"));
        QVERIFY(!document.contains("paraId"));
        QCOMPARE(document.count("<wp:docPr"), 2);
    }

    void showsAPictureAcrossTheWidthOfItsControl_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::addColumn<QByteArray>("size");
        const qint64 textWidth = 9000 * 635;
        const qint64 highest = 15000 * 635 * 2 / 3;
        const auto size = [](qint64 cx, qint64 cy) {
            return "cx=\"" + QByteArray::number(cx) + "\" cy=\"" + QByteArray::number(cy) + '"';
        };
        QTest::newRow("as wide as its sample")
            << drawing(1920000) << 1920 << 1080 << size(1920000, 1080000);
        QTest::newRow("small ones grow") << drawing(640000) << 64 << 48 << size(640000, 480000);
        QTest::newRow("a high one fits the page")
            << drawing(5000000) << 100 << 400 << size(highest / 4, highest);
        QTest::newRow("no sample: across the text")
            << run("x") << 90 << 45 << size(textWidth, textWidth / 2);
        QTest::newRow("a line of pixels stays visible")
            << drawing(900000) << 1 << 30000 << size(9525, highest);
    }

    void showsAPictureAcrossTheWidthOfItsControl()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, width);
        QFETCH(int, height);
        QFETCH(QByteArray, size);
        const QString file = picture(width, height);
        const Parts parts =
            made(control("I", paragraph(control("Image", content))), [&file](DocxMerger& merger) {
                merger.setClipboardValue("I", "Image", file);
                merger.paste("I");
            });
        const QByteArray document = parts["word/document.xml"];
        QVERIFY2(document.contains("<wp:extent " + size), document.constData());
        QVERIFY2(document.contains("<a:ext " + size), document.constData());
        QVERIFY(!document.contains("srcRect"));
        QCOMPARE(parts.keys().filter("/media/").size(), 1);
        QFile original(file);
        QVERIFY(original.open(QIODevice::ReadOnly));
        QCOMPARE(parts[parts.keys().filter("/media/").first()], original.readAll());
    }

    void aPictureFillsItsCell()
    {
        const QByteArray cell = "<w:tbl><w:tr><w:tc><w:tcPr><w:tcW w:w=\"100\" w:type=\"dxa\"/>"
                                "</w:tcPr>" +
                                paragraph(control("Photo", "", "<w:picture/>")) +
                                "</w:tc></w:tr></w:tbl>";
        const QString file = picture(20, 10);
        const Parts parts = made(control("I", cell), [&file](DocxMerger& merger) {
            merger.setClipboardValue("I", "Photo", file);
            merger.paste("I");
        });
        QVERIFY(parts["word/document.xml"].contains("<wp:extent cx=\"63500\" cy=\"31750\"/>"));
    }

    void everyPictureHasAnEntryOfItsOwn()
    {
        const Parts parts = made(page(), [this](DocxMerger& merger) {
            for (int i = 1; i <= 3; ++i) {
                // The same file each time: what it held when it was pasted counts.
                merger.setClipboardValue("Page", "Image", picture(10 * i, 10));
                merger.paste("Page");
            }
            merger.setClipboardValue("Page", "Image", picture(7, 7, "photo.jpg"));
            merger.paste("Page");
            QFile::remove(path("picture.png"));
        });
        const QStringList media = parts.keys().filter("/media/");
        QCOMPARE(media.size(), 4);
        QSet<int> widths;
        for (const QString& name : media)
            widths.insert(QImage::fromData(parts[name]).width());
        QCOMPARE(widths, QSet<int>({10, 20, 30, 7}));
        QVERIFY(parts["[Content_Types].xml"].contains("\"image/png\""));
        QVERIFY(parts["[Content_Types].xml"].contains("\"image/jpeg\""));
    }

    void aReportCanBeATemplateAgain()
    {
        const auto fill = [this](DocxMerger& merger) {
            merger.setClipboardValue("Page", "Image", picture(10, 10));
            merger.paste("Page");
        };
        Parts parts = made(page(), fill);
        QByteArray& document = parts["word/document.xml"];
        document.replace("<w:body>", "<w:body>" + control("Page", paragraph(control("Image", ""))));
        document.replace("</w:body>", control("Old", paragraph("")) + "</w:body>");
        writeZip(path("again.dfw"), parts);
        DocxMerger merger;
        merger.load(path("again.dfw"));
        fill(merger);
        merger.save(path("again.docx"));
        QCOMPARE(brokenRules(readZip(path("again.docx"))), QStringList());
    }

    void whatCannotBeReadLeavesNoTrace_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("no value") << "";
        QTest::newRow("missing") << "none.png";
        QTest::newRow("a folder") << ".";
        QTest::newRow("no picture") << "text.png";
        QTest::newRow("cut off") << "half.png";
    }

    void whatCannotBeReadLeavesNoTrace()
    {
        QFETCH(QString, name);
        QFile text(path("text.png"));
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write("text") == 4);
        picture(50, 50, "half.png");
        QVERIFY(QFile::resize(path("half.png"), QFileInfo(path("half.png")).size() / 2));
        const QString file = name.isEmpty() ? QString() : path(name);
        const Parts parts = made(page(), [&file](DocxMerger& merger) {
            merger.setClipboardValue("Page", "Name", "n");
            merger.setClipboardValue("Page", "Image", file);
            merger.paste("Page");
        });
        QVERIFY(!parts["word/document.xml"].contains("w:drawing"));
        QCOMPARE(parts.keys().filter("/media/"), QStringList());
        QCOMPARE(documentText(parts), QString("Name: n\n\n\n"));
    }

    void bookmarksStandInForLostControls_data()
    {
        QTest::addColumn<QByteArray>("blocks");
        const QByteArray start = "<w:bookmarkStart w:id=\"1\" w:name=\"I\"/>";
        const QByteArray end = "<w:bookmarkEnd w:id=\"1\"/>";
        const QByteArray field = control("F", run("x"));
        const QByteArray outside = paragraph(run("outside"));
        QTest::newRow("inside its paragraphs")
            << outside + paragraph(start + run("a ")) + paragraph(field + end) + outside;
        QTest::newRow("about its paragraphs")
            << outside + start + paragraph(run("a ")) + paragraph(field) + end + outside;
        QTest::newRow("up to the start of the next") << outside + paragraph(start + run("a ")) +
                                                            paragraph(field) +
                                                            paragraph(end + run("outside"));
        QTest::newRow("in pieces of one name")
            << outside + paragraph(start + run("a ")) +
                   paragraph("<w:bookmarkStart w:id=\"2\" w:name=\"I\"/>" + field +
                             "<w:bookmarkEnd w:id=\"2\"/>") +
                   outside;
        QTest::newRow("with the rest of the control")
            << outside +
                   paragraph("<w:sdt><w:sdtPr><w:alias w:val=\"I\"/></w:sdtPr><w:sdtContent>" +
                             start + run("a ") + "</w:sdtContent></w:sdt>") +
                   paragraph(field + end);
    }

    void bookmarksStandInForLostControls()
    {
        QFETCH(QByteArray, blocks);
        const Parts parts = made(blocks, [](DocxMerger& merger) {
            merger.setClipboardValue("I", "F", "v");
            merger.paste("I");
        });
        QCOMPARE(documentText(parts), QString("a \nv\n"));
    }

    void anEmptyDocumentAndOneThatEndsWithATableAreSound()
    {
        const QByteArray table = "<w:tbl><w:tr><w:tc>" + paragraph("") + "</w:tc></w:tr></w:tbl>";
        QVERIFY(made(table, [](DocxMerger&) {})["word/document.xml"].contains(
            "<w:body><w:p/><w:sectPr>"));
        const Parts parts =
            made(control("I", table), [](DocxMerger& merger) { merger.paste("I"); });
        QVERIFY(parts["word/document.xml"].contains("</w:tbl><w:p/><w:sectPr>"));
    }

    void theTypeBecomesThatOfADocument()
    {
        const Parts parts = made(page(), [](DocxMerger&) {});
        QVERIFY(parts["[Content_Types].xml"].contains(".document.main+xml\""));
        QVERIFY(!parts["[Content_Types].xml"].contains("template.main"));
    }

    void aFieldThatWasTakenOutIsLeftOut()
    {
        const Parts parts = made(control("I", paragraph(run("a"))), [](DocxMerger& merger) {
            merger.setClipboardValue("I", "Gone", "v");
            merger.paste("I");
        });
        QCOMPARE(documentText(parts), QString("a\n"));
    }

    void tellsWhatIsNotThere()
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
        const QString told = errorOf([&] { merger.load(path("t.dfw")); });
        QVERIFY2(!told.isEmpty() && told.contains(error), qPrintable(told));
        QVERIFY(peakBytes() - before < (qint64(400) << 20));
        QCOMPARE(errorOf([&] { merger.paste("Page"); }), QString("no template is open"));
    }

    void aMissingTemplateIsTold()
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

    void aPictureThatFindsNoRoomIsTold()
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

    void tellsWhereItCannotWrite()
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

QTEST_GUILESS_MAIN(DocxMergerTest)
#include "DocxMergerTest.moc"
