#include "App/qmlTypes.h"
#include "Shell/applicationNames.h"
#include "WindowUnderReview.h"

#include <QApplication>
#include <QQuickWindow>
#include <QStandardPaths>
#include <cstdio>
#include <exception>
#include <stdexcept>

/// vistrel-screenshot FILE PICTURE.png [WIDTHxHEIGHT]
/// Opens a project or a video in the real window, plays it up to its first point of interest and
/// saves what the window shows then.
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QStandardPaths::setTestModeEnabled(true); // the user's own settings stay as they are
    corv::setApplicationNames();
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: vistrel-screenshot FILE PICTURE.png [WIDTHxHEIGHT]\n");
        return 2;
    }
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    corv::registerQmlTypes();
    try {
        corv::WindowUnderReview review;
        const QString size = arguments.value(3, QStringLiteral("1600x900"));
        review.window()->resize(size.section(QLatin1Char('x'), 0, 0).toInt(),
                                size.section(QLatin1Char('x'), 1, 1).toInt());
        review.open(arguments[1]);
        review.playUpTo(review.mostInterestingMoment());
        if (!review.picture().save(arguments[2]))
            throw std::runtime_error("the picture could not be written");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vistrel-screenshot: %s\n", error.what());
        return 1;
    }
    return 0;
}
