#pragma once

#include "Docx/DocxMerger.h"
#include "Support/WordPackage.h"

#include <QImage>
#include <QTemporaryDir>
#include <functional>
#include <memory>

namespace corv::test {

/// An item "Page" with the fields "Name", "Image" and "Comment".
inline QByteArray page()
{
    return control("Page", paragraph(run("Name: ") + control("Name", run("sample"))) +
                               paragraph(control("Image", drawing(900000))) +
                               paragraph(control("Comment", run("sample"))));
}

/// A folder with the templates, pictures and documents of one test, for suites of the merger to
/// derive from.
class DocxFixture
{
protected:
    /// Begins with an empty folder: for the `init` of a suite.
    void makeFolder() { m_folder = std::make_unique<QTemporaryDir>(); }

    QString path(const QString& name) const { return m_folder->filePath(name); }

    /// A template whose document has these blocks.
    QString templateOf(const QByteArray& blocks) const
    {
        writeZip(path("t.dfw"), templateParts(blocks));
        return path("t.dfw");
    }

    /// A picture of one colour.
    QString picture(int width, int height, const char* name = "picture.png") const
    {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        if (!image.save(path(name)))
            qFatal("cannot save the picture");
        return path(name);
    }

    /// The document made by `fill` from a template of these blocks. Ends the suite if it is not
    /// valid.
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

    std::unique_ptr<QTemporaryDir> m_folder;
};

} // namespace corv::test
