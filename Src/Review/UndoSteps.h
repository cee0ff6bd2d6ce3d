#pragma once

#include "Review/PoiModel.h"

#include <QPointer>
#include <QUndoCommand>
#include <QVariantMap>
#include <vector>

namespace corv {

class LogParser;

/// A step on the points of interest. Steps of one batch that follow each other are one: a restore
/// from the log comes in frame by frame.
class PoiStep : public QUndoCommand
{
public:
    /// `batch` is -1 for a step of its own. The model outlives the stack's use of this.
    PoiStep(PoiModel& model, const QString& text, std::vector<PoiChange> changes, int batch);

    int id() const override { return m_batch; }
    bool mergeWith(const QUndoCommand* other) override;
    void undo() override;
    void redo() override;

private:
    PoiModel& m_model;
    std::vector<PoiChange> m_changes;
    int m_batch;
};

/// A change of the flight's names, in the map form of `LogParser::flightNaming`.
class NamingStep : public QUndoCommand
{
public:
    NamingStep(LogParser& logParser, const QVariantMap& before, const QVariantMap& after);

    void undo() override;
    void redo() override;

private:
    QPointer<LogParser> m_logParser;
    QVariantMap m_before;
    QVariantMap m_after;
};

} // namespace corv
