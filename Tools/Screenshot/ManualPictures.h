#pragma once

#include "WindowUnderReview.h"

#include <QString>

namespace corv {

/// Takes the pictures of the manual, each of the window as a pilot has it before him at that point
/// of the text. Interface thread.
class ManualPictures
{
public:
    /// `project` is the flight under review, `card` a folder with a "DCIM/101_CORV" of videos and
    /// with their logs, `outDir` the folder that gets the pictures.
    ManualPictures(const QString& project, const QString& card, const QString& outDir);

    /// Throws std::runtime_error with what did not come or could not be written.
    void takeAll();

private:
    void takeStart();
    void takeImporter();
    void takeFlight();
    void takePoiProperties();
    void takeMove();
    void takeAdjustments();
    void takeFramesExport();

    void selectPoi(int timeMs);
    QRect placeOf(const char* id) const;
    void save(const QImage& picture, const QString& name) const;

    WindowUnderReview m_review;
    QString m_project;
    QString m_card;
    QString m_outDir;
};

} // namespace corv
