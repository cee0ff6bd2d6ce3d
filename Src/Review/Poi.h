#pragma once

#include <QImage>
#include <QString>
#include <QTime>
#include <QVariantMap>

namespace corv {

/// Where a point of interest comes from.
enum class PoiOrigin { user, project, log };

/// A point of interest: a named moment of the video with a small picture of its frame. A plain
/// value. `time` is counted from the start of the video, and its millisecond is what a point of
/// interest is known by.
struct Poi
{
    QTime time;
    QString name;
    QString comment;
    QImage thumbnail; ///< null until the frame has been read
    PoiOrigin origin = PoiOrigin::user;
};

/// The list form towards the interface and project files: "time" (int, milliseconds), "name" and
/// "comment". The thumbnail is no part of it.
QVariantMap listForm(const Poi& poi);

/// `frame` as a timeline shows it: the smaller side 60 pixels, scaled fast. Scaling the result once
/// more changes nothing.
QImage thumbnailOf(const QImage& frame);

} // namespace corv
