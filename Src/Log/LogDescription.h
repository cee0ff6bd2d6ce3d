#pragma once

#include "Base/limits.h"

#include "Log/LogFile.h"

#include <QtGlobal>
#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

class QFile;

namespace pugi {
class xml_document;
}

namespace corv {

/// A `var` element of the description: which var of the group it speaks of, and what it declares.
struct DescribedVar
{
    size_t var = 0; ///< index in the group; of two vars of one name, the first
    int nb = 0;
    LogVar::Type type = LogVar::Uint8;
};

/// A `group` element of the description.
struct DescribedGroup
{
    size_t group = 0; ///< index in the log; of two groups of one id, the first
    std::vector<DescribedVar> vars;
};

/// The XML document at the head of a log: where it ends, what it says, and the empty model that
/// follows from it. Used once per decode, in the order of its functions.
class LogDescription
{
public:
    /// A document takes up to eighteen times its length in memory. Descriptions of real logs have
    /// some hundred kilobytes.
    static constexpr qint64 kLongestBytes = limits::logDescriptionBytes;

    /// What is wrong with a document.
    struct Fault
    {
        enum class Kind { unreadable, tooLong, noMemory, malformed };

        Kind kind = Kind::unreadable;
        const char* text = nullptr; ///< a static text; null for a file that cannot be read
        bool hasEnd = false;        ///< the document has the end tag of its root
    };

    LogDescription();
    ~LogDescription();

    /// Finds the length of the description, separator included; the file's length if it has no
    /// end within `kLongestBytes`. Less than 0 when the file cannot be read. Gives up early when
    /// `abortFlag` is set.
    static qint64 findLength(QFile* file, const std::atomic<bool>* abortFlag);

    /// Reads and parses the first `lengthBytes` of the file. Nothing if that went well.
    std::optional<Fault> parse(QFile* file, qint64 lengthBytes);

    /// Adds the described groups and vars to an empty log. False when `abortFlag` was set, which is
    /// looked at after each group.
    bool build(LogFile* log, const std::atomic<bool>* abortFlag);

    /// The format version; 0 when the document has none.
    int version() const;

    /// The `group` elements in their order. The document itself is needed no more.
    std::vector<DescribedGroup> takeGroups();

private:
    std::unique_ptr<pugi::xml_document> m_document;
    std::vector<DescribedGroup> m_groups;
};

} // namespace corv
