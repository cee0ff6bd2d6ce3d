#pragma once

#include <QtGlobal>
#include <unistd.h>

namespace corv::test {

/// Gives up the rights of the administrator, who may read and write anywhere, while this lives.
/// Does nothing where the tests run without them.
class PlainUser
{
public:
    PlainUser() : m_before(::geteuid())
    {
        constexpr uid_t nobody = 65'534;
        if (m_before == 0 && ::seteuid(nobody) != 0)
            qFatal("cannot give up the administrator's rights");
    }
    ~PlainUser()
    {
        if (m_before == 0 && ::seteuid(m_before) != 0)
            qFatal("cannot take the administrator's rights back");
    }
    PlainUser(const PlainUser&) = delete;
    PlainUser& operator=(const PlainUser&) = delete;

private:
    uid_t m_before;
};

} // namespace corv::test
