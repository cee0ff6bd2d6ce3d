#pragma once

#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QtGlobal>
#include <cstdint>

namespace corv::fuzz {

/// A file that holds the input of one run, for parsers that take a path.
class ScratchFile
{
public:
    explicit ScratchFile(const QString& name) : m_path(m_folder.filePath(name))
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }

    const QString& path() const { return m_path; }

    const QString& hold(const uint8_t* data, size_t size)
    {
        QFile file(m_path);
        const auto sizeBytes = static_cast<qint64>(size);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(reinterpret_cast<const char*>(data), sizeBytes) != sizeBytes)
            qFatal("cannot write the input");
        return m_path;
    }

private:
    QTemporaryDir m_folder;
    QString m_path;
};

} // namespace corv::fuzz
