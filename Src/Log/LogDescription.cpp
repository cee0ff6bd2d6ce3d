#include "Log/LogDescription.h"

#include "Log/FileWindow.h"
#include "Log/LogFile.h"

#include <QFile>
#include <algorithm>
#include <map>
#include <pugixml.hpp>
#include <string_view>
#include <utility>

namespace corv {
namespace {

constexpr std::string_view kEndOfDescription = "</main>";

// Finds the group of an id and the var of a name as a search from the front would, the first of
// several, but without becoming slow when a file declares a million of them. Ordered maps, since no
// file can be made up that degrades them.
class FirstIndex
{
public:
    size_t groupOf(int id, size_t index) { return m_groups.emplace(id, index).first->second; }

    size_t varOf(size_t group, const char* name, size_t index)
    {
        return m_vars.emplace(std::make_pair(group, std::string_view(name)), index).first->second;
    }

private:
    std::map<int, size_t> m_groups;
    std::map<std::pair<size_t, std::string_view>, size_t> m_vars;
};

int intOf(const pugi::xml_node& element, const char* child)
{
    return element.child(child).text().as_int();
}

const char* textOf(const pugi::xml_node& element, const char* child)
{
    return element.child(child).text().as_string();
}

} // namespace

LogDescription::LogDescription() : m_document(std::make_unique<pugi::xml_document>()) {}

LogDescription::~LogDescription() = default;

qint64 LogDescription::findLength(QFile* file, const std::atomic<bool>* abortFlag)
{
    const qint64 fileBytes = file->size();
    // A description is short compared with the packets that follow it.
    constexpr size_t kWindowBytes = size_t(1) << 14;
    FileWindow window(file, 0, fileBytes, kWindowBytes);
    qint64 windowBegin = 0; // offset in the file
    while (!window.atEnd() && windowBegin <= kLongestBytes &&
           !abortFlag->load(std::memory_order_relaxed)) {
        const auto held = static_cast<size_t>(window.end() - window.begin());
        const size_t kept = std::min(held, kEndOfDescription.size() - 1);
        windowBegin += static_cast<qint64>(held - kept);
        if (!window.advance(window.end() - kept))
            return -1;
        const std::string_view bytes(reinterpret_cast<const char*>(window.begin()),
                                     static_cast<size_t>(window.end() - window.begin()));
        const size_t found = bytes.find(kEndOfDescription);
        if (found != std::string_view::npos) {
            const qint64 behindSeparator =
                windowBegin + static_cast<qint64>(found + kEndOfDescription.size()) + 1;
            return std::min(behindSeparator, fileBytes);
        }
    }
    return window.hasFailed() ? -1 : fileBytes;
}

std::optional<LogDescription::Fault> LogDescription::parse(QFile* file, qint64 lengthBytes)
{
    if (lengthBytes > kLongestBytes)
        return Fault{Fault::Kind::tooLong, "The description is too long"};
    const auto length = static_cast<size_t>(lengthBytes);
    void* const buffer = pugi::get_memory_allocation_function()(length ? length : 1);
    if (!buffer)
        return Fault{Fault::Kind::noMemory, "Could not allocate memory"};
    if (!file->seek(0) || file->read(static_cast<char*>(buffer), lengthBytes) != lengthBytes) {
        pugi::get_memory_deallocation_function()(buffer);
        return Fault{};
    }
    const bool hasEnd =
        std::string_view(static_cast<const char*>(buffer), length).find(kEndOfDescription) !=
        std::string_view::npos;
    const pugi::xml_parse_result result = m_document->load_buffer_inplace_own(buffer, length);
    if (result)
        return std::nullopt;
    const bool noMemory = result.status == pugi::status_out_of_memory;
    return Fault{noMemory ? Fault::Kind::noMemory : Fault::Kind::malformed, result.description(),
                 hasEnd};
}

bool LogDescription::build(LogFile* log, const std::atomic<bool>* abortFlag)
{
    FirstIndex firstIndex;
    const pugi::xml_node groups = m_document->child("main").child("groups");
    for (pugi::xml_node element = groups.child("group"); element;
         element = element.next_sibling("group")) {
        const int id = intOf(element, "id");
        log->addGroup(textOf(element, "name"), id);
        DescribedGroup described;
        described.group = firstIndex.groupOf(id, log->getGroups().size() - 1);
        LogGroup& group = log->getGroups()[described.group];
        quint32 packetSize = 0;
        for (pugi::xml_node var = element.child("var"); var; var = var.next_sibling("var")) {
            const char* name = textOf(var, "name");
            group.addVar(name);
            DescribedVar item;
            item.var = firstIndex.varOf(described.group, name, group.getVars().size() - 1);
            item.nb = intOf(var, "nb");
            item.type = LogVar::typeFromName(textOf(var, "type"));
            described.vars.push_back(item);
            // Sizes wrap around as 32-bit numbers; a negative one matches no packet.
            packetSize +=
                static_cast<quint32>(item.nb) * static_cast<quint32>(LogVar::typeSize(item.type));
        }
        group.setPacketSize(static_cast<int>(packetSize));
        m_groups.push_back(std::move(described));
        if (abortFlag->load(std::memory_order_relaxed))
            return false;
    }
    return true;
}

int LogDescription::version() const
{
    return intOf(m_document->child("main"), "log_version");
}

std::vector<DescribedGroup> LogDescription::takeGroups()
{
    m_document.reset();
    return std::move(m_groups);
}

} // namespace corv
