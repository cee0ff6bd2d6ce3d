#include "DocxFixture.h"

#include <QFile>
#include <QtTest>

using corv::DocxMerger;
using namespace corv::test;

/// The document made of a template and the values that are pasted.
class DocxMergerTest : public QObject, private DocxFixture
{
    Q_OBJECT

private slots:
    void init() { makeFolder(); }

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

    void rightToLeftTextHasItsDirection()
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

    void removesWhatMayExistOnlyOnce()
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

    void bookmarksReplaceLostControls_data()
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

    void bookmarksReplaceLostControls()
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
};

QTEST_GUILESS_MAIN(DocxMergerTest)
#include "DocxMergerTest.moc"
