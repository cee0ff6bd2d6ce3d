#pragma once

#include "../Discovery/FlightCards.h"

#include <QVariantList>

namespace corv::test {

/// The cards that the importer finds. Only one may exist at a time; it must outlive every importer.
class CardWorld : public FlightCards
{
public:
    CardWorld();
    ~CardWorld();
    CardWorld(const CardWorld&) = delete;
    CardWorld& operator=(const CardWorld&) = delete;

    /// Adds a copy of a real video.
    void addCopy(const QString& path, int second, const QString& video);

    QVariantList lastSearch; ///< the arguments of the last call of parseDirectories
};

/// The parser that the importer makes here: a real one, on the machine of the `CardWorld`.
class CardParser : public DirectoryParser
{
    Q_OBJECT

public:
    explicit CardParser(QObject* parent = nullptr);

    /// Makes the QML documents create this parser where they ask for a DirectoryParser. Call it
    /// after the native types have been registered.
    static void registerInPlaceOfTheReal();

    Q_INVOKABLE void parseDirectories(QString videoDirectory, QString logDirectory,
                                      bool videoFromDrive, bool logFromDrive, bool quickMode);
};

} // namespace corv::test
