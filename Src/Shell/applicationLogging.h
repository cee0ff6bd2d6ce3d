#pragma once

#include <QFile>
#include <QMessageLogContext>
#include <QString>

namespace corv {

/// Sends all diagnostics of the program into one text file, "Vistrel.log" in the application's
/// local data folder, and keeps one older generation of it beside it (".old"). The application's
/// names must be set before the first use, as they decide where that folder is.
class ApplicationLogging
{
public:
    static ApplicationLogging& instance();

    /// Opens the file, first moving it aside when it has reached 16 MiB, and installs
    /// `messageHandler`. Where the folder or the file cannot be had, it says so on the default
    /// output and leaves the messages there. Interface thread, once.
    void init();

    /// Writes one whole line per message, in one append, and so on disk at once. Any thread.
    static void messageHandler(QtMsgType type, const QMessageLogContext& context,
                               const QString& message);

    /// Where the log is written.
    const QString& filePath() const { return m_filePath; }

private:
    ApplicationLogging();

    QString m_filePath;
    QFile m_file;
};

} // namespace corv
