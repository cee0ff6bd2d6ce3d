#pragma once

#include <QKeyEvent>
#include <QObject>

/// Knows the repeats of a held key that the windowing library takes for presses of their own. On
/// X11 a repeat is a release and a press with one time stamp. Where they arrive apart, as under
/// load, neither event is marked as a repeat.
class KeyRepeats
{
public:
    /// To be called with the release of a key.
    void noteRelease(const QKeyEvent& release);

    /// Whether a press repeats a held key: it is marked so, or it has the key and the time stamp of
    /// the last release. Keys without a native code have no such time stamps.
    bool isRepeat(const QKeyEvent& press) const;

private:
    quint32 m_code = 0;
    ulong m_timestamp = 0;
};

/// Says for the whole application whether the key press that is being handled repeats a held key.
/// Consumes nothing. Interface thread.
class HeldKey : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool repeats READ repeats)

public:
    explicit HeldKey(QObject* parent = nullptr);

    bool repeats() const { return m_repeats; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    KeyRepeats m_keys;
    bool m_repeats = false;
};
