#include "Video/ByteSource.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <utility>

namespace corv {
namespace {

class FileBytes : public ByteSource
{
public:
    explicit FileBytes(const QString& path) : m_file(path) {}

    bool open()
    {
        if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            return false;
        m_sizeBytes = m_file.size();
        return true;
    }

    bool isForbidden() const { return m_file.error() == QFileDevice::PermissionsError; }
    qint64 sizeBytes() const override { return m_sizeBytes; }

    qint64 readAt(qint64 position, uchar* bytes, qint64 count) override
    {
        if (position >= m_sizeBytes)
            return 0;
        if (m_file.pos() != position && !m_file.seek(position))
            return -1;
        const qint64 wanted = std::min(count, m_sizeBytes - position);
        const qint64 came = m_file.read(reinterpret_cast<char*>(bytes), wanted);
        // Nothing where there was something: the file was cut while it was open.
        return came > 0 ? came : -1;
    }

private:
    QFile m_file;
    qint64 m_sizeBytes = 0;
};

} // namespace

Result<std::unique_ptr<ByteSource>> openFileBytes(const QString& file)
{
    const QFileInfo info(file);
    if (!info.exists())
        return Failure{Failure::Kind::notFound,
                       QStringLiteral("There is no file \"%1\".").arg(file)};
    // Nothing but files, since opening a pipe waits for a writer.
    if (!info.isFile())
        return Failure{Failure::Kind::notAFile, QStringLiteral("\"%1\" is not a file.").arg(file)};
    auto bytes = std::make_unique<FileBytes>(info.absoluteFilePath());
    if (bytes->open())
        return std::unique_ptr<ByteSource>(std::move(bytes));
    return Failure{bytes->isForbidden() ? Failure::Kind::noPermission : Failure::Kind::unreadable,
                   QStringLiteral("The file \"%1\" cannot be read.").arg(file)};
}

bool readWhole(ByteSource& bytes, qint64 position, uchar* target, qint64 count)
{
    while (count > 0) {
        const qint64 came = bytes.readAt(position, target, count);
        if (came <= 0)
            return false;
        position += came;
        target += came;
        count -= came;
    }
    return true;
}

} // namespace corv
