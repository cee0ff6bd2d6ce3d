#pragma once

#include "Timeline/HeadUpPainter.h"
#include "Video/PictureInset.h"

#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>
#include <optional>
#include <vector>

namespace corv {

/// Where the instruments are in a picture, and in which form.
struct InstrumentsPlace
{
    QRect rect;
    bool showsDials = true;
};

/// The place of the instruments in the upper right corner of a picture of this size, at a size that
/// can be read. Pictures too low for the dials get the numbers alone. `fullHeight` and
/// `numbersHeight` are the heights of both forms at the painter's natural width.
InstrumentsPlace instrumentsPlace(QSize picture, double fullHeight, double numbersHeight);

/// The flight instruments in a corner of exported pictures, on a plate that lets the picture
/// through. What was painted is kept: only the rows that show something else are painted again.
class InstrumentsInset : public PictureInset
{
public:
    /// `painter` has the flight's log and clock. Where they are not synchronised nothing is shown.
    explicit InstrumentsInset(const HeadUpPainter& painter);

    Part partAt(const Moment& moment) override;

private:
    /// What a row shows, as far as it changes.
    struct Shown
    {
        QString text;
        std::optional<float> needle;

        bool operator==(const Shown& other) const
        {
            return text == other.text && needle == other.needle;
        }
    };

    const HeadUpPainter& painter() const { return m_place.showsDials ? m_full : m_numbers; }
    void setPicture(QSize picture);
    void paintRows(const QRegion& rows, int videoMs);

    const HeadUpPainter m_full;
    const HeadUpPainter m_numbers;
    QSize m_picture;
    InstrumentsPlace m_place;
    QImage m_image;
    std::vector<Shown> m_shown; ///< by row; empty while the image is not painted
};

} // namespace corv
