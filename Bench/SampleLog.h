#pragma once

#include "Playback.h"

#include "Base/videoTime.h"
#include "Log/LogParser.h"
#include "SampleFlight/SampleFlight.h"

#include <QTemporaryDir>

namespace corv::bench {

/// The log of the sample flight, decoded and tied to its video.
class SampleLog
{
public:
    SampleLog()
    {
        const SampleFlight flight;
        const QString path = m_folder.filePath(SampleFlight::logFile());
        if (!flight.writeLog(path))
            qFatal("cannot write the log of the sample flight");
        parser.setDuration(timeOfMs(flight.videoDurationMs()));
        parser.parseLog(path, false);
        waitUntil([this] { return parser.isSynced(); });
    }

    LogParser parser;

private:
    QTemporaryDir m_folder;
};

} // namespace corv::bench
