#pragma once

#include <QStringList>
#include <QtGlobal>

namespace corv::test {

/// Collects all diagnostics of the process, from every thread, while it lives. Only one may
/// exist at a time.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    /// The messages so far, all or those of one type, in the order of their arrival and without the
    /// pattern that log files add.
    QStringList messages() const;
    QStringList messages(QtMsgType type) const;

    /// Whether any message contains `text`, and how many do.
    bool contains(const QString& text) const;
    int count(const QString& text) const;

    void clear();
};

} // namespace corv::test
