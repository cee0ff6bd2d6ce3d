#include "App/interface.h"

#include "App/closedWindows.h"
#include "App/fileDialogs.h"
#include "App/hiddenFocus.h"
#include "App/look.h"
#include "App/qmlTypes.h"
#include "Shell/blockedKeys.h"
#include "Shell/copiedDrops.h"
#include "Shell/writableFields.h"

#include <QApplication>
#include <QQuickWindow>

namespace corv {

void prepareInterface(QApplication& application)
{
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    usePlainNumbers();
    useTextSizeOfWindows();
    registerQmlTypes();
    suitFileDialogs(application);
    freeClosedWindows(application);
    dressDialogs(application);
    dropKeysOfBlockedWindows(application);
    keepKeysOffHiddenItems(application);
    takeDropsAsCopies(application);
    letReadersWriteIntoFields();
}

} // namespace corv
