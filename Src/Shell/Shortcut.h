#pragma once

#include "Shell/HeldKey.h"

#include <QKeySequence>
#include <QObject>
#include <QVariant>

/// An interface type that fires on a key combination anywhere in the application, whatever has the
/// focus, and consumes nothing: the key still reaches its receiver. Interface thread. Two of the
/// same key both fire.
class Shortcut : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariant key READ key WRITE setKey NOTIFY keyChanged)

public:
    explicit Shortcut(QObject* parent = nullptr);

    QVariant key() const;

    /// Anything that does not convert to a key sequence clears the key; an empty key never fires.
    void setKey(const QVariant& key);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void keyChanged();

    /// Once per physical press: a held key repeats nothing, and the release of any key re-arms.
    void activated();

    /// Part of the type's interface; nothing emits it.
    void pressedAndHold();

private:
    QKeySequence m_key;
    KeyRepeats m_repeats;
    bool m_pressed = false;
    bool m_wasPressed = false; ///< before the last release
};
