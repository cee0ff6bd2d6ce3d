#pragma once

#include <QByteArray>
#include <QString>
#include <cstdio>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace corv::test {

/// Gives this process, and those that it starts, mounts of their own, so that a test may mount a
/// small disk, which is gone when they end. For the beginning of `main`, before there are threads.
/// False where the system allows that neither as administrator nor as a user.
inline bool takeOwnMounts()
{
    const auto writeFile = [](const char* path, const QByteArray& text) {
        std::FILE* file = std::fopen(path, "w");
        const bool isWritten = file && std::fputs(text.constData(), file) >= 0;
        return file && std::fclose(file) == 0 && isWritten;
    };
    const QByteArray user = QByteArray::number(static_cast<qint64>(::geteuid()));
    const QByteArray group = QByteArray::number(static_cast<qint64>(::getegid()));
    if (::geteuid() == 0) {
        if (::unshare(CLONE_NEWNS) != 0)
            return false;
    } else if (::unshare(CLONE_NEWNS | CLONE_NEWUSER) != 0 ||
               !writeFile("/proc/self/setgroups", "deny") ||
               !writeFile("/proc/self/uid_map", "0 " + user + " 1") ||
               !writeFile("/proc/self/gid_map", "0 " + group + " 1")) {
        return false;
    }
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// A disk of a few kilobytes on an existing folder, while this lives. After takeOwnMounts().
class ScratchDisk
{
public:
    ScratchDisk(const QString& folder, int sizeKb) : m_folder(folder.toLocal8Bit())
    {
        m_isMounted = ::mount("tmpfs", m_folder.constData(), "tmpfs", 0, sizeOption(sizeKb)) == 0;
    }
    ~ScratchDisk()
    {
        if (m_isMounted)
            ::umount2(m_folder.constData(), MNT_DETACH);
    }
    ScratchDisk(const ScratchDisk&) = delete;
    ScratchDisk& operator=(const ScratchDisk&) = delete;

    bool isMounted() const { return m_isMounted; }

    /// Another size for the same contents.
    bool resize(int sizeKb)
    {
        return ::mount("tmpfs", m_folder.constData(), "tmpfs", MS_REMOUNT, sizeOption(sizeKb)) == 0;
    }

private:
    const char* sizeOption(int sizeKb)
    {
        m_option = "size=" + QByteArray::number(sizeKb) + "k";
        return m_option.constData();
    }

    QByteArray m_folder;
    QByteArray m_option;
    bool m_isMounted = false;
};

} // namespace corv::test
