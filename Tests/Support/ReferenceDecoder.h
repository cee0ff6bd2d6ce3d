#pragma once

#include <QByteArray>
#include <array>
#include <string>
#include <vector>

namespace corv::test {

/// A flight log as the format's table of states gives it, decoded a byte at a time with no regard
/// for speed. Shares no code with the decoder of the program, the XML reader included.
struct ReferenceLog
{
    struct Var
    {
        std::string name;
        int nb = 0;
        int elementSize = 0;
        bool allotted = false;
        std::vector<unsigned char> data;
    };

    struct Group
    {
        std::string name;
        int id = 0;
        int packets = 0;
        int packetSize = 0;
        int stored = 0;
        std::vector<Var> vars;
    };

    bool decoded = false; ///< false: the decoder gives null
    int version = 0;
    long long total = 0;
    long long valid = 0;
    long long wrongCrc = 0;
    long long wrongSize = 0;
    long long wrongId = 0;
    bool incompleteLast = false;
    std::vector<Group> groups;
    std::vector<std::array<int, 3>> progress; ///< stage, done, total
};

/// Decodes the bytes of a whole file.
ReferenceLog decodeByReference(const QByteArray& file);

} // namespace corv::test
