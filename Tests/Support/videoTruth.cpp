#include "Support/videoTruth.h"

#include "SampleFlight/frameStrip.h"

#include <QList>
#include <QProcess>
#include <cmath>
#include <opencv2/core.hpp>

namespace corv::test {

QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.closeWriteChannel();
    process.waitForFinished(-1);
    return process.readAllStandardOutput();
}

std::vector<double> trueTimes(const QString& file)
{
    const QByteArray listed =
        outputOf("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                             "frame=best_effort_timestamp_time", "-of", "csv=p=0", file});
    std::vector<double> times;
    for (const QByteArray& line : listed.split('\n')) {
        const QByteArray value = line.split(',').first();
        bool isNumber = false;
        const double seconds = value.toDouble(&isNumber);
        if (!value.isEmpty())
            times.push_back(isNumber ? seconds * 1000.0 : std::nan(""));
    }
    for (size_t i = times.size(); i-- > 0;)
        times[i] -= times[0];
    return times;
}

double trueLengthMs(const QString& file)
{
    const QByteArray listed = outputOf(
        "ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                    "frame=best_effort_timestamp_time,pkt_duration_time", "-of", "csv=p=0", file});
    double first = std::nan("");
    double end = 0.0;
    for (const QByteArray& line : listed.split('\n')) {
        const QList<QByteArray> fields = line.split(',');
        if (fields.size() < 2)
            continue;
        if (std::isnan(first))
            first = fields[0].toDouble();
        end = fields[0].toDouble() + fields[1].toDouble();
    }
    return (end - first) * 1000.0;
}

std::vector<int> trueNumbers(const QString& file, QSize size)
{
    const QByteArray pixels =
        outputOf("ffmpeg", {"-v", "quiet", "-nostdin", "-noautorotate", "-i", file, "-map", "0:v:0",
                            "-vsync", "passthrough", "-f", "rawvideo", "-pix_fmt", "gray", "-"});
    std::vector<int> numbers;
    const int bytes = size.width() * size.height();
    for (int at = 0; at + bytes <= pixels.size(); at += bytes) {
        const cv::Mat picture(size.height(), size.width(), CV_8UC1,
                              const_cast<char*>(pixels.constData() + at));
        numbers.push_back(readFrameNumber(picture));
    }
    return numbers;
}

} // namespace corv::test
