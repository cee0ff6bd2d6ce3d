#pragma once

#include "Log/LogDecoder.h"
#include "Support/LogBuilder.h"

#include <QFile>
#include <QTemporaryDir>
#include <atomic>
#include <memory>

/// A decoder, the file that it reads, and what watches and aborts it.
class DecodingFixture
{
protected:
    void reset()
    {
        m_abortFlag = false;
        m_progress = [](int, int, int) {};
    }

    std::unique_ptr<LogFile> decode(const QByteArray& bytes)
    {
        const QString path = m_folder.filePath(QStringLiteral("a.log"));
        QFile::remove(path); // writing over it would wait for the disk
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        file.close();
        return std::unique_ptr<LogFile>(m_decoder.parseLog(path, m_progress));
    }

    std::unique_ptr<LogFile> decode(const corv::test::LogBuilder& builder)
    {
        return decode(builder.bytes());
    }

    /// A log of one group, "pair", of the id 3, with two bytes a packet.
    static corv::test::LogBuilder pairLog(int version = 1)
    {
        corv::test::LogBuilder log(version);
        log.addGroup("pair", 3, {{"v", "UINT8", 2}});
        return log;
    }

    QTemporaryDir m_folder;
    std::atomic<bool> m_abortFlag{false};
    corv::LogDecoder m_decoder{&m_abortFlag};
    corv::LogDecoder::Progress m_progress;
};
