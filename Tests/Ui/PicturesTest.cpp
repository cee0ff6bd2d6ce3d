#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QSet>
#include <QtTest>

/// The pictures that the build renders: all there, sharp at twice the density, and such that a
/// control can tint them.
class PicturesTest : public QObject
{
    Q_OBJECT

private slots:
    void pictureIsThereAtEachDensity_data();
    void pictureIsThereAtEachDensity();
    void tintedPictureHasOneColour_data();
    void tintedPictureHasOneColour();
    void spinnerIsADrawing();
    void iconHasTheSizesOfADesktop();
};

namespace {

QImage load(const QString& name)
{
    return QImage(":/images/" + name + ".png").convertToFormat(QImage::Format_ARGB32);
}

bool hasSoftEdges(const QImage& image)
{
    QSet<int> alphas;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            alphas.insert(qAlpha(image.pixel(x, y)));
    }
    return alphas.size() > 3; // none, full, and what is half transparent by design
}

} // namespace

void PicturesTest::pictureIsThereAtEachDensity_data()
{
    tintedPictureHasOneColour_data();
    for (const char* name : {"slider_pointer_down", "slider_pointer_up", "vistitle",
                             "vistitle_light", "splash_logo", "splash_logo_light", "cam_pitch"})
        QTest::newRow(name) << name;
}

void PicturesTest::pictureIsThereAtEachDensity()
{
    QFETCH(QString, name);
    const QImage once = load(name);
    const QImage twice = load(name + "@2x");
    QVERIFY(!once.isNull());
    QCOMPARE(twice.size(), once.size() * 2);
    QCOMPARE(load(name + "@3x").size(), once.size() * 3);
    // Where an edge lies between two pixels it is drawn anew for the larger size and not stretched.
    if (hasSoftEdges(once))
        QVERIFY(twice != once.scaled(twice.size()));
}

void PicturesTest::tintedPictureHasOneColour_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"begin",
                             "prev",
                             "play",
                             "pause",
                             "next",
                             "end",
                             "button_camera",
                             "button_copy",
                             "button_poi_add",
                             "button_poi_remove",
                             "button_poi_edit",
                             "button_poi_move",
                             "icon_check_ok",
                             "icon_cross_cancel",
                             "button_show_ir",
                             "button_ir_fullscreen",
                             "button_transparency",
                             "button_auto",
                             "button_lock_levels",
                             "icon_horizontal_pos",
                             "icon_vertical_pos",
                             "icon_time_offset",
                             "icon_contrast",
                             "icon_brightness",
                             "button_icon_reset_defaults",
                             "button_edit_field"})
        QTest::newRow(name) << name;
}

void PicturesTest::tintedPictureHasOneColour()
{
    QFETCH(QString, name);
    const QImage image = load(name);
    int covered = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (qAlpha(pixel) < 128)
                continue;
            ++covered;
            QVERIFY2(qRed(pixel) > 250 && qGreen(pixel) > 250 && qBlue(pixel) > 250,
                     qPrintable(QStringLiteral("%1, %2").arg(x).arg(y)));
        }
    }
    // Neither empty nor a blot.
    const double share = double(covered) / (image.width() * image.height());
    QVERIFY2(share > 0.05 && share < 0.6, qPrintable(QString::number(share)));
    // Nothing touches the edge, where a button's own frame runs.
    QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
    QCOMPARE(qAlpha(image.pixel(image.width() - 1, image.height() - 1)), 0);
}

void PicturesTest::spinnerIsADrawing()
{
    QFile file(":/images/loading_spinner.svg");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("<svg"));
    const QImage image(file.fileName());
    QVERIFY(!image.isNull());
    QCOMPARE(image.width(), image.height()); // it turns about its middle
}

void PicturesTest::iconHasTheSizesOfADesktop()
{
    const QIcon icon(":/logo.ico");
    QList<int> sides;
    for (const QSize& size : icon.availableSizes()) {
        QCOMPARE(size.width(), size.height());
        sides.append(size.width());
    }
    std::sort(sides.begin(), sides.end());
    QCOMPARE(sides, (QList<int>{16, 24, 32, 48, 64, 128, 256}));
}

QTEST_MAIN(PicturesTest)

#include "PicturesTest.moc"
