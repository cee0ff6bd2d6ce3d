#pragma once

#include <QIODevice>
#include <QString>
#include <QTemporaryFile>
#include <vector>

namespace corv {

/// The pictures of a document in the making, copied one behind the other into one temporary file:
/// three hundred frames need no memory, and the caller may overwrite the file of one at once.
class PictureSpool
{
public:
    /// Appends the file's bytes. Throws std::runtime_error if they cannot be copied; the spool is
    /// then as it was.
    void append(const QString& fileName, const QString& partName);

    /// Writes the picture with this index, in the order of appending, to `target`. False if that
    /// does not take it; throws std::runtime_error if it cannot be read.
    bool copyTo(int index, QIODevice& target);

    int count() const { return static_cast<int>(m_pictures.size()); }
    const QString& partName(int index) const { return m_pictures[static_cast<size_t>(index)].name; }

private:
    struct Picture
    {
        QString name;
        qint64 startBytes;
        qint64 sizeBytes;
    };

    QTemporaryFile m_file;
    std::vector<Picture> m_pictures;
    qint64 m_endBytes = 0;
};

} // namespace corv
