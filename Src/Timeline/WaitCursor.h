#pragma once

namespace corv {

/// Shows the wait cursor over the whole application while it lives. Does nothing in a program
/// without a screen.
class WaitCursor
{
public:
    WaitCursor();
    ~WaitCursor();
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    bool m_shown;
};

} // namespace corv
