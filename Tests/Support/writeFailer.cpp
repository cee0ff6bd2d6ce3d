// Loaded before a program's libraries, it lets one of the program's calls that change a disk fail,
// as a disk does that is full or broken. Of the calls that concern the folder VISTREL_FAIL_IN, the
// one of the number VISTREL_FAIL_AT fails with the error VISTREL_FAIL_WITH, and with
// VISTREL_FAIL_ON set all after it. The file VISTREL_FAILED gets a line for each that failed, and
// at the end of the program one with the number of all such calls. Nothing is flushed for real:
// that takes long, and no power fails here.

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::string given(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

struct Wish
{
    const std::string folder = given("VISTREL_FAIL_IN");
    const std::string report = given("VISTREL_FAILED");
    const long at = std::atol(given("VISTREL_FAIL_AT").c_str());
    const int error = std::atoi(given("VISTREL_FAIL_WITH").c_str());
    const bool goesOn = !given("VISTREL_FAIL_ON").empty();
};

const Wish& wish()
{
    static const Wish* const made = new Wish; // also for what is called at the very end
    return *made;
}

std::atomic<long> calls{0};

void report(const std::string& line)
{
    const auto file = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, wish().report.c_str(),
                                                 O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    if (file < 0)
        return;
    const std::string whole = line + '\n';
    if (::syscall(SYS_write, file, whole.data(), whole.size()) < 0)
        std::abort();
    ::syscall(SYS_close, file);
}

std::string pathOf(int descriptor)
{
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size() - 1);
    return length > 0 ? std::string(path.data(), static_cast<size_t>(length)) : std::string();
}

bool fails(const char* call, const std::string& path)
{
    const int before = errno;
    const bool concerns = !wish().folder.empty() && path.rfind(wish().folder + '/', 0) == 0;
    const long number = concerns ? ++calls : 0;
    const bool isWished =
        concerns && wish().at > 0 && (number == wish().at || (wish().goesOn && number > wish().at));
    if (isWished)
        report(std::string(call) + ' ' + path);
    errno = isWished ? wish().error : before;
    return isWished;
}

template <class Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

struct Count
{
    ~Count() { report("calls " + std::to_string(calls)); }
} const count;

bool creates(int flags)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

int openChecked(const char* name, const char* path, int flags, mode_t mode)
{
    if (creates(flags) && fails("open", std::string(path) + '/'))
        return -1;
    using Open = int (*)(const char*, int, ...);
    static const auto open = next<Open>("open");
    static const auto open64 = next<Open>("open64");
    return std::string(name) == "open" ? open(path, flags, mode) : open64(path, flags, mode);
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const mode_t mode = creates(flags) ? va_arg(more, mode_t) : 0;
    va_end(more);
    return openChecked("open", path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const mode_t mode = creates(flags) ? va_arg(more, mode_t) : 0;
    va_end(more);
    return openChecked("open64", path, flags, mode);
}

ssize_t write(int descriptor, const void* bytes, size_t size)
{
    if (fails("write", pathOf(descriptor)))
        return -1;
    return ::syscall(SYS_write, descriptor, bytes, size);
}

int ftruncate(int descriptor, off_t size) noexcept
{
    return fails("ftruncate", pathOf(descriptor))
               ? -1
               : static_cast<int>(::syscall(SYS_ftruncate, descriptor, size));
}

int ftruncate64(int descriptor, off64_t size) noexcept
{
    return ftruncate(descriptor, size);
}

int fsync(int descriptor)
{
    return fails("fsync", pathOf(descriptor) + '/') ? -1 : 0;
}

int fdatasync(int descriptor)
{
    return fails("fdatasync", pathOf(descriptor)) ? -1 : 0;
}

int mkdir(const char* path, mode_t mode) noexcept
{
    return fails("mkdir", path) ? -1 : static_cast<int>(::syscall(SYS_mkdir, path, mode));
}

int rename(const char* from, const char* to) noexcept
{
    return fails("rename", to) ? -1 : static_cast<int>(::syscall(SYS_rename, from, to));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    return fails("link", to)
               ? -1
               : static_cast<int>(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept
{
    return fails("rename", to)
               ? -1
               : static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

} // extern "C"
