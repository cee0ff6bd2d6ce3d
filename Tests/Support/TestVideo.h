#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVideoFrame>
#include <opencv2/core.hpp>

namespace corv::test {

/// A video to be made for a test: every frame shows moving shapes and carries its number in its
/// pixels.
struct TestVideo
{
    int frames = 30;
    QString fps = QStringLiteral("30"); ///< a number or a fraction such as "30000/1001"
    QSize size{320, 240};
    int firstNumber = 0; ///< of the file's first frame
    QStringList encoding = {"-c:v", "mpeg4", "-q:v", "3", "-g", "12"}; ///< for the ffmpeg program

    /// Makes the file; false, with the program's complaint in the log, if it cannot.
    bool write(const QString& path) const;
};

/// One frame of such a video, as BGR.
cv::Mat testPicture(int number, QSize size);

/// Runs the ffmpeg program with these arguments, over what may be there already.
bool runFfmpeg(const QStringList& arguments);

/// The number that a picture carries; -1 if it carries none.
int numberIn(const QImage& image);
int numberIn(const QVideoFrame& frame);

} // namespace corv::test
