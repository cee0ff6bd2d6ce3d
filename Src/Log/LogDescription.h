#pragma once

#include <QtGlobal>
#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

class LogFile;
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
    int type = 0;
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
    LogDescription();
    ~LogDescription();

    /// Finds the length of the description, separator included; the file's length if it has no
    /// end. Less than 0 when the file cannot be read. Gives up early when `abortFlag` is set.
    static qint64 findLength(QFile* file, const std::atomic<bool>* abortFlag);

    /// Reads and parses the first `lengthBytes` of the file. `canRead` tells a failing file from a
    /// failing document; the result is null or says what is wrong with the document.
    const char* parse(QFile* file, qint64 lengthBytes, bool* canRead);

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
