#include "Docx/DocxMerger.h"
#include "Support/WordPackage.h"

#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using corv::DocxMerger;
using namespace corv::test;

namespace {

struct Poi
{
    QString name;
    QString time;
    QString comment;
};

const QVector<Poi>& pois()
{
    static const QVector<Poi> all = {
        {"Crack at the tip", "01:05.7", "First line\nSecond line"},
        {"Markup <&>\"", "60:00.0", "</w:t> & so on"},
        {QString::fromUtf8("שלום"), "00:59.999", QString::fromUtf8("Éolienne")},
        {QString::fromUtf8("Heat 🔥"), "00:00.0", ""},
    };
    return all;
}

} // namespace

/// The template that is delivered, and what a word processor makes of it.
class ReportTemplateTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString path(const QString& name) const { return m_folder.filePath(name); }

    void writeReport(const QString& templateFile, const QString& output, bool isNamed = true)
    {
        QImage frame(160, 90, QImage::Format_RGB32);
        frame.fill(Qt::darkBlue);
        QVERIFY(frame.save(path("frame.png")));
        DocxMerger merger;
        merger.load(templateFile);
        if (isNamed) {
            merger.setClipboardValue("Cover", "MissionName", "North coast");
            merger.setClipboardValue("Cover", "FlightName", "Turbine 12");
            merger.setClipboardValue("Cover", "FlightNumber", 3.0);
        }
        merger.setClipboardValue("Cover", "GenerationDate", "Mon May 21 10:11:12 2018");
        merger.paste("Cover");
        for (const Poi& poi : pois()) {
            merger.setClipboardValue("Page", "Name", poi.name);
            merger.setClipboardValue("Page", "Time", poi.time);
            merger.setClipboardValue("Page", "Comment", poi.comment);
            merger.setClipboardValue("Page", "Image", path("frame.png"));
            merger.paste("Page");
        }
        merger.save(output);
    }

    bool hasWordProcessor() const
    {
        return !QStandardPaths::findExecutable("soffice").isEmpty() &&
               !QStandardPaths::findExecutable("pdftotext").isEmpty();
    }

    /// What the word processor makes of a file, in the folder "out".
    void convert(const QString& file, const QString& format)
    {
        QProcess process;
        process.start("soffice", {"-env:UserInstallation=file://" + path("profile"), "--headless",
                                  "--convert-to", format, "--outdir", path("out"), file});
        QVERIFY(process.waitForFinished(120000));
        QCOMPARE(process.exitCode(), 0);
    }

    QStringList pagesOf(const QString& pdf)
    {
        QProcess process;
        process.start("pdftotext", {"-layout", pdf, "-"});
        if (!process.waitForFinished(60000))
            return {};
        QStringList pages = QString::fromUtf8(process.readAllStandardOutput()).split('\f');
        pages.removeLast();
        return pages;
    }

    void checkPages(const QString& document)
    {
        convert(document, "pdf");
        const QStringList pages = pagesOf(path("out/report.pdf"));
        QCOMPARE(pages.size(), 1 + pois().size());
        for (const char* text : {"North coast", "Turbine 12", "3", "Mon May 21 10:11:12 2018"})
            QVERIFY2(pages[0].contains(text), qPrintable(pages[0]));
        QVERIFY(!pages[0].contains(QRegularExpression("1 ?/ ?5")));
        for (int i = 0; i < pois().size(); ++i) {
            const QString& page = pages[i + 1];
            QVERIFY2(page.contains(pois()[i].name), qPrintable(page));
            QVERIFY2(page.indexOf(pois()[i].time) > page.indexOf(pois()[i].name), qPrintable(page));
            for (const QString& line : pois()[i].comment.split('\n'))
                QVERIFY2(page.indexOf(line) >= 0, qPrintable(page));
            const QRegularExpression number(QString("%1 ?/ ?5").arg(i + 2));
            QVERIFY2(page.contains(number), qPrintable(page));
        }
    }

private slots:
    // A template packed again has the same bytes: no part brings times of its own, which would be
    // in what a zip calls the extra field.
    void holdsNoTimes()
    {
        QFile file(VISTREL_REPORT_TEMPLATE);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray zip = file.readAll();
        const auto number = [&zip](qsizetype at, qsizetype bytes) {
            qsizetype value = 0;
            for (qsizetype i = bytes; i-- > 0;)
                value = value * 256 + static_cast<unsigned char>(zip[static_cast<int>(at + i)]);
            return value;
        };
        const QByteArray partBegin("PK\x03\x04");
        int parts = 0;
        for (qsizetype at = 0; zip.mid(static_cast<int>(at), 4) == partBegin; ++parts) {
            QCOMPARE(number(at + 10, 4), qsizetype(0x210000)); // the first day of a zip
            QCOMPARE(number(at + 28, 2), qsizetype(0));        // bytes of the extra field
            at += 30 + number(at + 26, 2) + number(at + 18, 4);
        }
        QVERIFY2(parts > 8, qPrintable(QString::number(parts)));
    }

    void keepsTheRulesOfTheFormat()
    {
        QCOMPARE(brokenRules(readZip(VISTREL_REPORT_TEMPLATE)).join('\n'), QString());
        writeReport(VISTREL_REPORT_TEMPLATE, path("report.docx"));
        const Parts parts = readZip(path("report.docx"));
        QCOMPARE(brokenRules(parts).join('\n'), QString());
        const QByteArray document = parts["word/document.xml"];
        QVERIFY(!document.contains("w:sdt"));
        QVERIFY(!document.contains("bookmark"));
        // The logo and a frame for each point of interest; the sample frame has gone.
        QCOMPARE(parts.keys().filter("word/media/").size(), 1 + pois().size());
    }

    void textIsInOrder()
    {
        writeReport(VISTREL_REPORT_TEMPLATE, path("report.docx"));
        const QString text = documentText(readZip(path("report.docx")));
        QString::size_type position = 0;
        QStringList expected = {"North coast", "Turbine 12", "3", "Mon May 21 10:11:12 2018"};
        for (const Poi& poi : pois())
            expected << poi.name << poi.time << poi.comment;
        for (const QString& piece : expected) {
            const auto found = text.indexOf(piece, position);
            QVERIFY2(found >= 0, qPrintable(piece + " in " + text));
            position = found + piece.size();
        }
        for (const char* sample : {"Comment", "00:00.0\n00"})
            QVERIFY2(!text.contains(sample), sample);
    }

    void withoutANamingTheCoverHasADate()
    {
        writeReport(VISTREL_REPORT_TEMPLATE, path("report.docx"), false);
        const QString text = documentText(readZip(path("report.docx")));
        QVERIFY(text.contains("Mon May 21 10:11:12 2018"));
        QVERIFY(text.contains("Mission\n\nFlight\n\nFlight number\n\nDate\n"));
    }

    void aWordProcessorPrintsEveryPage()
    {
        QVERIFY(hasWordProcessor());
        writeReport(VISTREL_REPORT_TEMPLATE, path("report.docx"));
        checkPages(path("report.docx"));
    }

    void aWordProcessorMayEditTheTemplate()
    {
        QVERIFY(hasWordProcessor());
        QFile::remove(path("edited.docx"));
        QVERIFY(QFile::copy(VISTREL_REPORT_TEMPLATE, path("edited.docx")));
        convert(path("edited.docx"), "docx");
        writeReport(path("out/edited.docx"), path("report.docx"));
        const Parts parts = readZip(path("report.docx"));
        QCOMPARE(brokenRules(parts).join('\n'), QString());
        QVERIFY(!parts["word/document.xml"].contains("w:sdt"));
        QCOMPARE(parts.keys().filter("word/media/").size(), 1 + pois().size());
        checkPages(path("report.docx"));
    }
};

QTEST_GUILESS_MAIN(ReportTemplateTest)
#include "ReportTemplateTest.moc"
