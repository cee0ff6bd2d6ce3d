#pragma once

#include <QString>
#include <QtGlobal>

namespace corv {

/// Records a few facts about the computer, once per installation, as JSON in "SystemInfo.txt" in
/// the application's local data folder. Nothing of it leaves the machine.
class SystemInfo
{
public:
    SystemInfo();

    bool fileExists() const;

    /// Writes the file anew, whole or not at all. Where it cannot be written the log says so, and
    /// the next start tries again. Runs on a pool thread and shares nothing.
    void writeToFile() const;

    /// Installed memory in kilobytes, 0 where the system does not say.
    quint64 ramInstalledKb() const;

    const QString& filePath() const { return m_filePath; }

private:
    QString m_filePath;
};

} // namespace corv
