#pragma once

#include "../Discovery/FakeMachine.h"
#include "Discovery/DirectoryParser.h"

#include <QHash>
#include <QSemaphore>
#include <QVariantList>
#include <atomic>

namespace corv::test {

/// The cards that the importer finds: folders with files at the times that a test gives them, and a
/// gate at which a search can be held. One at a time, and it outlives every importer.
class CardWorld
{
public:
    CardWorld();
    ~CardWorld();
    CardWorld(const CardWorld&) = delete;
    CardWorld& operator=(const CardWorld&) = delete;

    QString path(const QString& below) const { return machine.path(below); }

    /// Adds a video, by default an empty file that counts as one of 60 s, or a copy of a real one.
    void addVideo(const QString& path, int second, const QString& copyOf = QString());

    /// Adds a log with one recording of that duration, named by the pilot.
    void addLog(const QString& path, int second, const QByteArray& flight, int durationMs = 60'000);

    /// Lets a held search go on to its end.
    void release();

    FakeMachine machine;
    QHash<QString, int> seconds; ///< after the start of the day, by file name
    std::atomic<bool> held{false};
    QSemaphore reached;
    QSemaphore gate;
    QVariantList lastSearch; ///< the arguments of the last call of parseDirectories
};

/// The parser that the importer makes here: a real one, on the machine of the `CardWorld`.
class CardParser : public DirectoryParser
{
    Q_OBJECT

public:
    explicit CardParser(QObject* parent = nullptr);

    /// Makes the documents use it. After the native types have been registered.
    static void registerInPlaceOfTheReal();

    Q_INVOKABLE void parseDirectories(QString videoDirectory, QString logDirectory,
                                      bool videoFromDrive, bool logFromDrive, bool quickMode);
};

} // namespace corv::test
