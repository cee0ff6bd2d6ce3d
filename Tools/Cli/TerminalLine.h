#pragma once

#include <QString>
#include <cstdio>

namespace corv::cli {

/// A line on a terminal that is written over to show how long work is going. Where the stream is no
/// terminal, nothing is written.
class TerminalLine
{
public:
    /// `stream` is standard output or standard error.
    explicit TerminalLine(std::FILE* stream);

    /// Takes the line away.
    ~TerminalLine();
    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;

    bool isTerminal() const { return m_isTerminal; }

    /// How many columns there are now.
    int columns() const;

    /// Shows this in place of the line; what does not fit is cut off, and characters that steer a
    /// terminal are replaced.
    void show(const QString& line);

    /// Prints a sentence above the line, which is gone until it is shown again.
    void printAbove(const QString& sentence);

private:
    void write(const QString& line);

    std::FILE* const m_stream;
    const bool m_isTerminal;
    QString m_shown;
};

} // namespace corv::cli
