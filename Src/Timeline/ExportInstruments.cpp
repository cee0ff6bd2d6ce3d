#include "Timeline/ExportInstruments.h"

#include "Timeline/HeadUpPainter.h"
#include "Timeline/InstrumentsInset.h"

#include <memory>

namespace corv {

void ExportInstruments::setPlayer(VideoPlayer* player)
{
    if (m_player == player)
        return;
    if (m_player)
        m_player->setExportInset(nullptr);
    m_player = player;
    update();
}

void ExportInstruments::setLogParser(LogParser* logParser)
{
    if (m_logParser == logParser)
        return;
    if (m_logParser)
        disconnect(m_logParser, nullptr, this, nullptr);
    m_logParser = logParser;
    if (logParser) {
        for (const auto signal : {&LogParser::sourceChanged, &LogParser::sourceDataParsed})
            connect(logParser, signal, this, &ExportInstruments::update);
        connect(logParser, &LogParser::logParsingComplete, this, &ExportInstruments::update);
    }
    update();
}

void ExportInstruments::setShown(bool shown)
{
    if (m_isShown == shown)
        return;
    m_isShown = shown;
    update();
    emit shownChanged();
}

void ExportInstruments::setImperialUnits(bool imperialUnits)
{
    if (m_imperialUnits == imperialUnits)
        return;
    m_imperialUnits = imperialUnits;
    update();
    emit imperialUnitsChanged();
}

void ExportInstruments::update()
{
    if (!m_player)
        return;
    const std::shared_ptr<const LogFile> log = m_logParser ? m_logParser->log() : nullptr;
    if (!m_isShown || !log) {
        m_player->setExportInset(nullptr);
        return;
    }
    HeadUpPainter painter;
    painter.setLog(log);
    painter.setClock(m_logParser->clock());
    painter.setImperialUnits(m_imperialUnits);
    m_player->setExportInset(std::make_shared<InstrumentsInset>(painter));
}

} // namespace corv
