#include "Review/UndoSteps.h"

#include "Log/LogParser.h"

#include <QCoreApplication>
#include <utility>

namespace corv {

PoiStep::PoiStep(PoiModel& model, const QString& text, std::vector<PoiChange> changes, int batch)
    : QUndoCommand(text), m_model(model), m_changes(std::move(changes)), m_batch(batch)
{
}

bool PoiStep::mergeWith(const QUndoCommand* other)
{
    const auto& later = static_cast<const PoiStep&>(*other);
    m_changes.insert(m_changes.end(), later.m_changes.begin(), later.m_changes.end());
    return true;
}

void PoiStep::undo()
{
    m_model.apply(m_changes, false);
}

void PoiStep::redo()
{
    m_model.apply(m_changes, true);
}

NamingStep::NamingStep(LogParser& logParser, const QVariantMap& before, const QVariantMap& after)
    : QUndoCommand(QCoreApplication::translate("corv::Review", "edit flight properties")),
      m_logParser(&logParser), m_before(before), m_after(after)
{
}

void NamingStep::undo()
{
    if (m_logParser)
        m_logParser->setFlightNaming(m_before);
}

void NamingStep::redo()
{
    if (m_logParser)
        m_logParser->setFlightNaming(m_after);
}

} // namespace corv
