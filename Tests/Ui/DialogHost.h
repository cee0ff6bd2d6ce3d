#pragma once

#include "UiFixture.h"

namespace corv::test {

/// A substitute for the main window, and the secondary windows that it makes on demand.
/// Pictures of them are saved to the folder named by VISTREL_SCREENSHOTS, if that is set.
class DialogHost
{
public:
    DialogHost();

    UiFixture& ui() { return m_ui; }
    bool isLoaded() const { return m_loaded; }

    /// Makes the object of a document and keeps it as the one at hand; null if it has errors.
    QObject* make(const QString& fileName);

    /// Makes a window and shows it, as its openers do; false if it does not become active.
    bool open(const QString& fileName);
    bool show();

    QObject* object() const { return m_object; }
    QQuickWindow* window() const { return qobject_cast<QQuickWindow*>(m_object); }
    QVariant get(const char* property) const { return m_object->property(property); }
    void set(const char* property, const QVariant& value)
    {
        m_object->setProperty(property, value);
    }

    /// A named part of the object at hand.
    QObject* part(const QString& objectName) const;
    QQuickItem* item(const QString& objectName) const;
    QString textOf(const QString& objectName) const;
    void setTextOf(const QString& objectName, const QString& text);

    /// A click in the middle of a named part, once it has its place.
    void click(const QString& objectName);

    /// Keys into the window at hand; `type` replaces what is in a field.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const QString& objectName, const QString& text);

    /// The buttons, choices and fields of the window at hand that a screen reader cannot name.
    QStringList namelessControls() const;

    /// Answers the open message box. Its text, or nothing if none opens in time. Afterwards the
    /// window manager may leave the keyboard with the window behind: go on with the mouse.
    QString dismissMessage();

    void screenshot(const QString& name) const;

private:
    UiFixture m_ui;
    bool m_loaded = false;
    QObject* m_object = nullptr;
};

} // namespace corv::test
