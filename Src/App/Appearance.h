#pragma once

#include <QObject>

namespace corv {

/// The look of the windows: dark, or light for bright sun. Kept in the settings. A new one gives
/// what Qt draws by itself the colours of the kept look. Interface thread only.
class Appearance : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool light READ isLight WRITE setLight NOTIFY lightChanged)

public:
    explicit Appearance(QObject* parent = nullptr);

    bool isLight() const { return m_light; }
    void setLight(bool light);

signals:
    void lightChanged();

private:
    bool m_light;
};

} // namespace corv
