#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>

namespace corv::platform {

/// The system's service for drives and cards (UDisks2), where there is one. It knows which drives
/// can be pulled, and reports cards that come and go. Without it nothing is known and nothing
/// reported. Lives and is used on the interface thread.
class DriveService : public QObject
{
    Q_OBJECT

public:
    explicit DriveService(QObject* parent = nullptr);

    /// On an open connection of that name in place of the system's bus.
    explicit DriveService(const QString& bus, QObject* parent = nullptr);

    /// Whether the drive that a block device is on can be pulled, by the device's path and by those
    /// of its links. Empty without the service. Waits for its answer, for a second at most.
    QHash<QByteArray, bool> removableDevices() const;

signals:
    /// Drives or volumes have come or gone, or have been mounted or unmounted. Changes that follow
    /// each other closely are one signal.
    void changed();

private slots:
    void noteChange();

private:
    const QString m_bus;
    QTimer m_settled;
};

} // namespace corv::platform
