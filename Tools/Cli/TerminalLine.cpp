#include "Cli/TerminalLine.h"

#include "Cli/terminalText.h"
#include "Log/printable.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <unistd.h>

namespace corv::cli {
namespace {

constexpr int usualColumns = 80;

} // namespace

TerminalLine::TerminalLine(std::FILE* stream)
    : m_stream(stream), m_isTerminal(isatty(fileno(stream)) == 1)
{
}

TerminalLine::~TerminalLine()
{
    if (m_isTerminal)
        write(QString());
    std::fflush(m_stream);
}

// The last column stays free: many terminals go to the next line when it is written.
int TerminalLine::columns() const
{
    winsize size{};
    const bool isKnown = ioctl(fileno(m_stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return (isKnown ? size.ws_col : usualColumns) - 1;
}

void TerminalLine::show(const QString& line)
{
    if (!m_isTerminal)
        return;
    write(clippedToColumns(printable(line), columns()));
    std::fflush(m_stream);
}

void TerminalLine::printAbove(const QString& sentence)
{
    if (!m_isTerminal)
        return;
    write(QString());
    std::fprintf(m_stream, "%s\n", printable(sentence).toLocal8Bit().constData());
}

// Without an escape sequence, so that every terminal does it.
void TerminalLine::write(const QString& line)
{
    if (line == m_shown)
        return;
    const int left = std::min(columnsOf(m_shown), columns()) - columnsOf(line);
    std::fprintf(m_stream, "\r%s%*s%s", line.toLocal8Bit().constData(), std::max(0, left), "",
                 line.isEmpty() ? "\r" : "");
    m_shown = line;
}

} // namespace corv::cli
