#include "Support/MessageLog.h"

#include <mutex>
#include <utility>
#include <vector>

namespace corv::test {
namespace {

struct Collected
{
    std::mutex mutex;
    std::vector<std::pair<QtMsgType, std::string>> messages;
};

Collected& collected()
{
    static Collected instance;
    return instance;
}

QtMessageHandler previousHandler = nullptr;

void collect(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    Collected& all = collected();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.messages.emplace_back(type, message.toStdString());
}

} // namespace

MessageLog::MessageLog()
{
    clear();
    previousHandler = qInstallMessageHandler(collect);
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(previousHandler);
}

QStringList MessageLog::messages() const
{
    Collected& all = collected();
    const std::lock_guard<std::mutex> lock(all.mutex);
    QStringList texts;
    for (const auto& message : all.messages)
        texts << QString::fromStdString(message.second);
    return texts;
}

QStringList MessageLog::messages(QtMsgType type) const
{
    Collected& all = collected();
    const std::lock_guard<std::mutex> lock(all.mutex);
    QStringList texts;
    for (const auto& message : all.messages) {
        if (message.first == type)
            texts << QString::fromStdString(message.second);
    }
    return texts;
}

bool MessageLog::contains(const QString& text) const
{
    return count(text) > 0;
}

int MessageLog::count(const QString& text) const
{
    int found = 0;
    for (const QString& message : messages())
        found += message.contains(text) ? 1 : 0;
    return found;
}

void MessageLog::clear()
{
    Collected& all = collected();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.messages.clear();
}

} // namespace corv::test
