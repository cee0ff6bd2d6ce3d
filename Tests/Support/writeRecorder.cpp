// Loaded before a program's libraries, it records the order in which the program makes its files
// durable: a line in the file VISTREL_WRITES for each flush and each name that is given. What is
// flushed is named by the path of its descriptor.

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

void record(const std::string& line)
{
    const char* const path = std::getenv("VISTREL_WRITES");
    if (!path)
        return;
    const int file = ::open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0)
        return;
    const std::string whole = line + '\n';
    if (::write(file, whole.data(), whole.size()) < 0)
        std::abort();
    ::close(file);
}

std::string pathOf(int descriptor)
{
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size() - 1);
    return length > 0 ? std::string(path.data(), static_cast<size_t>(length)) : std::string();
}

} // namespace

extern "C" {

int fsync(int descriptor)
{
    record("fsync " + pathOf(descriptor));
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    const auto result =
        static_cast<int>(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
    if (result == 0)
        record(std::string("link ") + to);
    return result;
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept
{
    const auto result =
        static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
    if (result == 0)
        record(std::string("rename ") + to);
    return result;
}

} // extern "C"
