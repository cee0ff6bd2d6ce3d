#include "App/interface.h"
#include "App/look.h"
#include "ManualPictures.h"
#include "Shell/applicationNames.h"
#include "WindowUnderReview.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QQuickWindow>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace {

int showUsage()
{
    std::fprintf(stderr, "usage: vistrel-screenshot FILE PICTURE.png [WIDTHxHEIGHT]\n"
                         "       vistrel-screenshot --manual PROJECT CARD OUT_DIR\n");
    return 2;
}

void photograph(const QString& file, const QString& picture, const QString& size)
{
    corv::WindowUnderReview review;
    review.window()->resize(size.section(QLatin1Char('x'), 0, 0).toInt(),
                            size.section(QLatin1Char('x'), 1, 1).toInt());
    review.open(file);
    review.playUpTo(review.mostInterestingMoment());
    if (!review.picture().save(picture))
        throw std::runtime_error("the picture could not be written");
}

} // namespace

/// vistrel-screenshot FILE PICTURE.png [WIDTHxHEIGHT]
/// Opens a project or a video in the real window, plays it up to its first point of interest and
/// saves what the window shows then.
/// vistrel-screenshot --manual PROJECT CARD OUT_DIR
/// Takes the pictures of the manual: of the project, and of the importer with the flights of a
/// card.
int main(int argc, char** argv)
{
    corv::followScreenScale();
    QApplication application(argc, argv);
    // On the terminal of who asks for a picture: what went wrong, not how the program came along.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    // The user's own settings stay as they are, and none of them shows.
    QStandardPaths::setTestModeEnabled(true);
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    corv::setApplicationNames();
    const QStringList arguments = QApplication::arguments();
    const bool forManual = arguments.value(1) == QLatin1String("--manual");
    if (arguments.size() < 3 || (forManual && arguments.size() != 5))
        return showUsage();
    corv::prepareInterface(application);
    try {
        if (forManual)
            corv::ManualPictures(arguments[2], arguments[3], arguments[4]).takeAll();
        else
            photograph(arguments[1], arguments[2], arguments.value(3, QStringLiteral("1600x900")));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vistrel-screenshot: %s\n", error.what());
        return 1;
    }
    return 0;
}
