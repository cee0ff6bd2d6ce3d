#include "Shell/NoDisplayMessage.h"

#include <QtGlobal>
#include <cstdio>
#include <cstdlib>

namespace corv {
namespace {

QtMessageHandler handlerBefore = nullptr;

// The reasons of the windowing system come before, as messages of their own.
void handle(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type != QtFatalMsg) {
        handlerBefore(type, context, message);
        return;
    }
    std::fputs("vistrel: Vistrel cannot open a window: no display answers. Start it on a desktop. "
               "vistrel-cli does the same work without a window.\n",
               stderr);
    std::_Exit(EXIT_FAILURE); // returning from here aborts
}

} // namespace

NoDisplayMessage::NoDisplayMessage()
{
    handlerBefore = qInstallMessageHandler(handle);
}

NoDisplayMessage::~NoDisplayMessage()
{
    qInstallMessageHandler(handlerBefore);
}

} // namespace corv
