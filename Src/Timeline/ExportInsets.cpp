#include "Timeline/ExportInsets.h"

#include "Timeline/HeadUpPainter.h"
#include "Timeline/InstrumentsInset.h"
#include "Timeline/ThermalBarInset.h"

#include <memory>
#include <utility>

namespace corv {

void ExportInsets::setPlayer(VideoPlayer* player)
{
    if (m_player == player)
        return;
    if (m_player)
        m_player->setExportInsets({});
    m_player = player;
    update();
}

void ExportInsets::setLogParser(LogParser* logParser)
{
    if (m_logParser == logParser)
        return;
    if (m_logParser)
        disconnect(m_logParser, nullptr, this, nullptr);
    m_logParser = logParser;
    if (logParser) {
        for (const auto signal : {&LogParser::sourceChanged, &LogParser::sourceDataParsed})
            connect(logParser, signal, this, &ExportInsets::update);
        connect(logParser, &LogParser::logParsingComplete, this, &ExportInsets::update);
    }
    update();
}

void ExportInsets::setShowsInstruments(bool shown)
{
    set(m_showsInstruments, shown, &ExportInsets::instrumentsChanged);
}

void ExportInsets::setShowsThermalBar(bool shown)
{
    set(m_showsThermalBar, shown, &ExportInsets::thermalBarChanged);
}

void ExportInsets::setImperialUnits(bool imperialUnits)
{
    set(m_imperialUnits, imperialUnits, &ExportInsets::imperialUnitsChanged);
}

void ExportInsets::set(bool& field, bool value, Notify changed)
{
    if (field == value)
        return;
    field = value;
    update();
    emit(this->*changed)();
}

void ExportInsets::update()
{
    if (!m_player)
        return;
    PictureInsets insets;
    const std::shared_ptr<const LogFile> log = m_logParser ? m_logParser->log() : nullptr;
    if (m_showsInstruments && log) {
        HeadUpPainter painter;
        painter.setLog(log);
        painter.setClock(m_logParser->clock());
        painter.setImperialUnits(m_imperialUnits);
        insets.push_back(std::make_shared<InstrumentsInset>(painter));
    }
    if (m_showsThermalBar)
        insets.push_back(std::make_shared<ThermalBarInset>());
    m_player->setExportInsets(std::move(insets));
}

} // namespace corv
