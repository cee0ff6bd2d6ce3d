#pragma once

#include <QStringList>
#include <QtGlobal>

namespace corv::test {

/// Collects all diagnostics of the process, from every thread, while it lives. One at a time.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    /// The messages so far, in the order of their arrival, without pattern; of one type only if
    /// given.
    QStringList messages() const;
    QStringList messages(QtMsgType type) const;

    /// Whether a message contains `text`; how many do.
    bool contains(const QString& text) const;
    int count(const QString& text) const;

    void clear();
};

} // namespace corv::test
