#include "ManualDocument.h"

#include <QGuiApplication>
#include <QStringList>
#include <cstdio>
#include <exception>

/// vistrel-build-manual MANUAL.md LOGO.png VERSION MANUAL.pdf
int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 5) {
        std::fprintf(stderr, "usage: vistrel-build-manual MANUAL.md LOGO.png VERSION MANUAL.pdf\n");
        return 2;
    }
    try {
        corv::ManualDocument(arguments[1], arguments[2], arguments[3]).savePdf(arguments[4]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vistrel-build-manual: %s\n", error.what());
        return 1;
    }
    return 0;
}
