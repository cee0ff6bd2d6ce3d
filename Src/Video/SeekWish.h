#pragma once

#include <optional>

namespace corv {

/// A place on the timeline that the picture is to go to.
struct SeekWish
{
    enum class From {
        time,    ///< `value` is a time in milliseconds
        frame,   ///< `value` is a frame number
        lastWish ///< the place that the wish before this one led to
    };

    From from = From::frame;
    int value = 0;
    int steps = 0;           ///< frames to go on from there, or back
    bool mayPreview = false; ///< whether a preview may come first where the picture takes long
};

/// The wish that waits while an earlier one is being served. There is never more than one: an
/// absolute place replaces what waits, steps add up.
class PendingWish
{
public:
    void goTo(const SeekWish& place) { m_wish = place; }

    /// Goes on by `frames` from what waits, else from the wish being served.
    void step(int frames);

    void clear() { m_wish.reset(); }
    bool isEmpty() const { return !m_wish.has_value(); }

    /// The wish that waits, which then waits no longer. Only if there is one.
    SeekWish take();

private:
    std::optional<SeekWish> m_wish;
};

} // namespace corv
