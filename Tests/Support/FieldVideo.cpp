#include "Support/FieldVideo.h"

#include "Support/TestVideo.h"

#include <QByteArray>
#include <QFile>
#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace corv::test {
namespace {

constexpr int block = 16;
constexpr int framesFromKeyToKey = 10;
constexpr int frameNumberBits = 4;
constexpr int orderBits = 8;

/// The bits of one unit of the stream, first to last.
class Bits
{
public:
    void put(unsigned value, int count)
    {
        for (int bit = count - 1; bit >= 0; --bit) {
            m_byte = static_cast<uchar>(m_byte << 1 | (value >> bit & 1));
            if (++m_used == 8) {
                m_bytes.append(static_cast<char>(m_byte));
                m_used = 0;
            }
        }
    }

    /// As many zeros as there are bits behind the first, and then these.
    void putGolomb(unsigned value)
    {
        int length = 0;
        while ((value + 1) >> (length + 1))
            ++length;
        put(0, length);
        put(value + 1, length + 1);
    }

    void align()
    {
        while (m_used)
            put(0, 1);
    }

    /// With the sign, the length and the escapes of a unit in a stream.
    QByteArray unit(int importance, int kind)
    {
        put(1, 1);
        align();
        QByteArray stream("\0\0\0\1", 4);
        stream.append(static_cast<char>(importance << 5 | kind));
        int zeros = 0;
        for (const char byte : qAsConst(m_bytes)) {
            if (zeros >= 2 && static_cast<uchar>(byte) <= 3) {
                stream.append('\3');
                zeros = 0;
            }
            zeros = byte ? 0 : zeros + 1;
            stream.append(byte);
        }
        return stream;
    }

private:
    QByteArray m_bytes;
    uchar m_byte = 0;
    int m_used = 0;
};

QByteArray sequence(QSize size)
{
    Bits bits;
    bits.put(77, 8); // main profile
    bits.put(0, 8);
    bits.put(40, 8); // level 4
    bits.putGolomb(0);
    bits.putGolomb(frameNumberBits - 4);
    bits.putGolomb(0);
    bits.putGolomb(orderBits - 4);
    bits.putGolomb(1); // frames for reference
    bits.put(0, 1);
    bits.putGolomb(static_cast<unsigned>(size.width() / block - 1));
    bits.putGolomb(static_cast<unsigned>(size.height() / (2 * block) - 1));
    bits.put(0, 1); // fields ...
    bits.put(0, 1); // ... of whole pictures
    bits.put(1, 1);
    bits.put(0, 2); // neither cropped nor with more to say
    return bits.unit(3, 7);
}

QByteArray pictureParameters()
{
    Bits bits;
    bits.putGolomb(0);
    bits.putGolomb(0);
    bits.put(0, 2);
    bits.putGolomb(0);
    bits.putGolomb(0);
    bits.putGolomb(0);
    bits.put(0, 3);
    for (int i = 0; i < 3; ++i)
        bits.putGolomb(0); // quantisers
    bits.put(0, 3);
    return bits.unit(3, 8);
}

void putSamples(Bits& bits, const cv::Mat& plane, int x, int y, int side)
{
    for (int row = y; row < y + side; ++row) {
        for (int column = x; column < x + side; ++column)
            bits.put(std::clamp<unsigned>(plane.at<uchar>(row, column), 16, 235), 8);
    }
}

/// The samples of every block as they are.
QByteArray field(const cv::Mat& luma, int number, bool isBottom)
{
    const int inGroup = number % framesFromKeyToKey;
    const bool isKey = inGroup == 0 && !isBottom;
    Bits bits;
    bits.putGolomb(0);
    bits.putGolomb(7); // intra
    bits.putGolomb(0);
    bits.put(static_cast<unsigned>(inGroup), frameNumberBits);
    bits.put(1, 1);
    bits.put(isBottom ? 1 : 0, 1);
    if (isKey)
        bits.putGolomb(static_cast<unsigned>(number / framesFromKeyToKey % 2));
    bits.put(static_cast<unsigned>(2 * inGroup + (isBottom ? 1 : 0)), orderBits);
    bits.put(0, isKey ? 2 : 1); // references are kept as usual
    bits.putGolomb(0);
    const cv::Mat chroma(luma.rows / 2, luma.cols / 2, CV_8UC1, cv::Scalar(128));
    for (int y = 0; y < luma.rows; y += block) {
        for (int x = 0; x < luma.cols; x += block) {
            bits.putGolomb(25);
            bits.align();
            putSamples(bits, luma, x, y, block);
            putSamples(bits, chroma, 0, 0, block / 2);
            putSamples(bits, chroma, 0, 0, block / 2);
        }
    }
    return bits.unit(3, isKey ? 5 : 1);
}

cv::Mat everySecondRow(const cv::Mat& picture, int first)
{
    cv::Mat rows(picture.rows / 2, picture.cols, CV_8UC1);
    for (int row = 0; row < rows.rows; ++row)
        picture.row(2 * row + first).copyTo(rows.row(row));
    return rows;
}

} // namespace

bool writeFieldPairs(const QString& path, int frames, QSize size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (int i = 0; i < frames; ++i) {
        cv::Mat grey;
        cv::cvtColor(testPicture(i, size), grey, cv::COLOR_BGR2GRAY);
        QByteArray bytes;
        if (i % framesFromKeyToKey == 0)
            bytes = sequence(size) + pictureParameters();
        bytes += field(everySecondRow(grey, 0), i, false) + field(everySecondRow(grey, 1), i, true);
        if (file.write(bytes) != bytes.size())
            return false;
    }
    return true;
}

} // namespace corv::test
