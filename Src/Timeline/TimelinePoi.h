#pragma once

#include "Review/Poi.h"

class QPainter;

namespace corv {

/// How the flag of a point of interest is drawn.
struct PoiLook
{
    bool hovered = false;
    bool selected = false;
    bool dimmed = false;
    bool omitThumbnail = false;
};

/// A point of interest: a named moment of the video with a small picture of its frame. The timeline
/// shows it as a flag, which is the name on a stem with the picture below. A plain value; no thread
/// of its own.
class TimelinePoi
{
public:
    TimelinePoi() = default;

    /// `frame` may be null: the picture can come later.
    TimelinePoi(QTime time, const QImage& frame);

    /// With everything that the model has of it.
    explicit TimelinePoi(const Poi& poi);

    QTime time() const { return m_time; }
    const QString& name() const { return m_name; }
    const QString& comment() const { return m_comment; }
    const QImage& thumbnail() const { return m_thumbnail; }

    /// In pixels; 0 while there is no picture.
    int thumbnailWidth() const { return m_thumbnail.width(); }

    void setName(const QString& name) { m_name = name; }
    void setComment(const QString& comment) { m_comment = comment; }

    /// Takes the scaled `frame`; a null one changes nothing.
    void setThumbnail(const QImage& frame);

    /// Draws flag, name, stem and thumbnail at item x. Leaves the pen black.
    void drawPoi(QPainter& painter, int x, const PoiLook& look) const;

private:
    QTime m_time;
    QString m_name;
    QString m_comment;
    QImage m_thumbnail;
};

} // namespace corv
