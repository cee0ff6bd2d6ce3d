#pragma once

namespace corv {

/// While it lives, a program that finds no display ends with status 1 and a sentence on standard
/// error, and not by an abort: for the time in which the application object is made. That also
/// covers a display that is named and does not answer, which only the attempt shows. One at a time,
/// interface thread.
class NoDisplayMessage
{
public:
    NoDisplayMessage();
    ~NoDisplayMessage();
    NoDisplayMessage(const NoDisplayMessage&) = delete;
    NoDisplayMessage& operator=(const NoDisplayMessage&) = delete;
};

} // namespace corv
