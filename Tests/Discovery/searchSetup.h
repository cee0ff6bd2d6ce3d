#pragma once

#include "FlightCards.h"

#include <QSignalSpy>
#include <QVariantList>
#include <memory>

namespace corv::test {

/// A parser on cards of its own.
struct Setup : FlightCards
{
    Setup() : parser(makeParser()) {}

    std::unique_ptr<DirectoryParser> makeParser()
    {
        return std::make_unique<DirectoryParser>(parserMachine());
    }

    /// Starts a search of the folders "videos" and "logs".
    void searchFolders(bool quickMode = false)
    {
        parser->parseDirectories(path("videos"), path("logs"), false, false, quickMode);
    }

    std::unique_ptr<DirectoryParser> parser;
};

/// The rows that came with an emission of `matchingComplete`.
inline QVariantList rowsOf(const QSignalSpy& complete, int emission = 0)
{
    return complete.at(emission).at(0).toList();
}

/// One value of each row.
inline QStringList column(const QVariantList& rows, const QString& key)
{
    QStringList values;
    for (const QVariant& row : rows)
        values.append(row.toMap()[key].toString());
    return values;
}

} // namespace corv::test
