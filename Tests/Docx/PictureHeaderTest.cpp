#include "Docx/pictureHeader.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray encoded(int width, int height, const char* format)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QBuffer buffer;
    image.save(&buffer, format);
    return buffer.data();
}

QByteArray withBytes(QByteArray data, int position, const QByteArray& bytes)
{
    return data.replace(position, bytes.size(), bytes);
}

} // namespace

class PictureHeaderTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;

    QString file(const QByteArray& content)
    {
        const QString name = m_folder.filePath("picture");
        QFile out(name);
        if (!out.open(QIODevice::WriteOnly) || out.write(content) != content.size())
            qFatal("cannot write the picture");
        return name;
    }

private slots:
    void readsTheSize_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("PNG") << encoded(1920, 1080, "png") << "png" << 1920 << 1080;
        QTest::newRow("PNG, one pixel") << encoded(1, 1, "png") << "png" << 1 << 1;
        QTest::newRow("JPEG") << encoded(641, 13, "jpg") << "jpeg" << 641 << 13;
        QTest::newRow("JPEG, padded")
            << encoded(8, 9, "jpg") + QByteArray(20, '\0') << "jpeg" << 8 << 9;
        QByteArray filled = encoded(8, 9, "jpg");
        filled.insert(2, "\xff\xff");
        QTest::newRow("JPEG with fill bytes") << filled << "jpeg" << 8 << 9;
    }

    void readsTheSize()
    {
        QFETCH(QByteArray, content);
        const auto header = corv::readPictureHeader(file(content));
        QVERIFY(header.has_value());
        QTEST(header->suffix, "suffix");
        QTEST(header->widthPx, "width");
        QTEST(header->heightPx, "height");
        QCOMPARE(header->sizeBytes, qint64(content.size()));
    }

    void refusesWhatIsNoWholePicture_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray png = encoded(64, 64, "png");
        const QByteArray jpeg = encoded(64, 64, "jpg");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("no picture at all");
        QTest::newRow("another format") << encoded(64, 64, "bmp");
        QTest::newRow("PNG, signature alone") << png.left(8);
        QTest::newRow("PNG, half a header") << png.left(20);
        QTest::newRow("PNG, cut off") << png.chopped(5);
        QTest::newRow("PNG without data") << png.left(33) + png.right(12);
        QTest::newRow("PNG, width 0") << withBytes(png, 16, QByteArray(4, '\0'));
        QTest::newRow("PNG, width beyond all bounds") << withBytes(png, 16, "\xff\xff\xff\xff");
        QTest::newRow("PNG, a chunk beyond the end") << withBytes(png, 33, "\x7f\xff\xff\xff");
        QTest::newRow("JPEG, start alone") << jpeg.left(3);
        QTest::newRow("JPEG, cut off") << jpeg.chopped(5);
        QTest::newRow("JPEG, segment without length")
            << QByteArray("\xff\xd8\xff\xe0\x00\x00xxxxxx", 12);
        QTest::newRow("JPEG, fill bytes only") << "\xff\xd8" + QByteArray(5000, '\xff');
    }

    void refusesWhatIsNoWholePicture()
    {
        QFETCH(QByteArray, content);
        QVERIFY(!corv::readPictureHeader(file(content)));
    }

    void refusesWhatIsNoFile()
    {
        QVERIFY(!corv::readPictureHeader(m_folder.filePath("none")));
        QVERIFY(!corv::readPictureHeader(m_folder.path()));
        QVERIFY(!corv::readPictureHeader(QString()));
    }
};

QTEST_GUILESS_MAIN(PictureHeaderTest)
#include "PictureHeaderTest.moc"
