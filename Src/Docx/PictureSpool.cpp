#include "Docx/PictureSpool.h"

#include <QFile>
#include <stdexcept>

namespace corv {
namespace {

constexpr qint64 chunkBytes = qint64(256) * 1024;

[[noreturn]] void fail(const char* what, const QIODevice& device)
{
    throw std::runtime_error(
        QStringLiteral("%1: %2").arg(QLatin1String(what), device.errorString()).toStdString());
}

} // namespace

void PictureSpool::append(const QString& fileName, const QString& partName)
{
    QFile source(fileName);
    if (!source.open(QIODevice::ReadOnly))
        fail("cannot read the picture", source);
    if (!m_file.isOpen() && !m_file.open())
        fail("cannot make a temporary file", m_file);
    if (!m_file.seek(m_endBytes))
        fail("cannot write the temporary file", m_file);
    qint64 sizeBytes = 0;
    while (!source.atEnd()) {
        const QByteArray chunk = source.read(chunkBytes);
        if (chunk.isEmpty())
            fail("cannot read the picture", source);
        if (m_file.write(chunk) != chunk.size())
            fail("cannot write the temporary file", m_file);
        sizeBytes += chunk.size();
    }
    if (!m_file.flush())
        fail("cannot write the temporary file", m_file);
    m_pictures.push_back({partName, m_endBytes, sizeBytes});
    m_endBytes += sizeBytes;
}

bool PictureSpool::copyTo(int index, QIODevice& target)
{
    const Picture& picture = m_pictures[static_cast<size_t>(index)];
    if (!m_file.seek(picture.startBytes))
        fail("cannot read the temporary file", m_file);
    for (qint64 left = picture.sizeBytes; left > 0;) {
        const QByteArray chunk = m_file.read(qMin(left, chunkBytes));
        if (chunk.isEmpty())
            fail("cannot read the temporary file", m_file);
        if (target.write(chunk) != chunk.size())
            return false;
        left -= chunk.size();
    }
    return true;
}

} // namespace corv
