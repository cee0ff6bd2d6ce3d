#include "App/hiddenFocus.h"

#include <QGuiApplication>
#include <QQuickItem>

namespace corv {
namespace {

/// Gives the keys to the innermost item around this one that can be seen.
void passOnKeys(QQuickItem* hidden)
{
    QQuickItem* around = hidden;
    while (around && !around->isVisible()) {
        // What is hidden in a scope would get the keys again together with the scope.
        around->setFocus(false);
        around = around->parentItem();
    }
    if (around)
        around->forceActiveFocus(Qt::OtherFocusReason);
}

/// Watches the item that has the keys.
class FocusWatch : public QObject
{
public:
    using QObject::QObject;

    void watch(QObject* focusObject)
    {
        disconnect(m_visibility);
        auto* const item = qobject_cast<QQuickItem*>(focusObject);
        if (!item)
            return;
        m_visibility = connect(item, &QQuickItem::visibleChanged, this, [item] { check(item); });
        check(item);
    }

private:
    static void check(QQuickItem* item)
    {
        if (item->hasActiveFocus() && !item->isVisible())
            passOnKeys(item);
    }

    QMetaObject::Connection m_visibility;
};

} // namespace

void keepKeysOffHiddenItems(QGuiApplication& application)
{
    auto* const watch = new FocusWatch(&application);
    QObject::connect(&application, &QGuiApplication::focusObjectChanged, watch, &FocusWatch::watch);
}

} // namespace corv
