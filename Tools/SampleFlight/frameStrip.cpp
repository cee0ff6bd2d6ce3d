#include "SampleFlight/frameStrip.h"

#include <algorithm>
#include <array>

namespace corv {
namespace {

constexpr int numberBits = 20;
constexpr int checkBits = 4;
// White and black before the bits, black and white behind them: they prove that a strip is there
// and say what white and black have become on the way.
constexpr int blockCount = 2 + numberBits + checkBits + 2;
constexpr double leastContrast = 40.0;

using Blocks = std::array<bool, blockCount>;

// The remainder by x^4 + x + 1, inverted: it detects every change of up to four blocks in a row,
// and of a picture whose bits are all equal.
unsigned checkOf(unsigned number)
{
    unsigned rest = number << checkBits;
    for (int bit = numberBits + checkBits - 1; bit >= checkBits; --bit) {
        if (rest >> bit & 1U)
            rest ^= 0x13U << (bit - checkBits);
    }
    return ~rest & 0xfU;
}

Blocks blocksOf(int number)
{
    Blocks blocks{};
    blocks[0] = true;
    blocks[blockCount - 1] = true;
    const auto value = static_cast<unsigned>(number);
    const unsigned bits = value << checkBits | checkOf(value);
    for (int i = 0; i < numberBits + checkBits; ++i)
        blocks[static_cast<size_t>(2 + i)] = bits >> (numberBits + checkBits - 1 - i) & 1U;
    return blocks;
}

int blockLeft(int block, int cols)
{
    return block * cols / blockCount;
}

// Mean of the block's inner half: its edges are where compression smears.
double brightnessOfBlock(const cv::Mat& picture, int block)
{
    const int left = blockLeft(block, picture.cols);
    const int width = blockLeft(block + 1, picture.cols) - left;
    const int height = frameStripHeight(picture.rows);
    const cv::Rect inner(left + width / 4, height / 4, std::max(1, width - 2 * (width / 4)),
                         std::max(1, height / 2));
    const cv::Scalar mean = cv::mean(picture(inner));
    const int channels = std::min(3, picture.channels());
    double sum = 0.0;
    for (int i = 0; i < channels; ++i)
        sum += mean[i];
    return sum / channels;
}

} // namespace

int frameStripHeight(int rows)
{
    return std::min(rows, std::max(8, rows / 40));
}

void drawFrameNumber(cv::Mat& bgr, int number)
{
    const Blocks blocks = blocksOf(number);
    const int height = frameStripHeight(bgr.rows);
    for (int i = 0; i < blockCount; ++i) {
        const int left = blockLeft(i, bgr.cols);
        const int width = blockLeft(i + 1, bgr.cols) - left;
        bgr(cv::Rect(left, 0, width, height))
            .setTo(cv::Scalar::all(blocks[static_cast<size_t>(i)] ? 255 : 0));
    }
}

int readFrameNumber(const cv::Mat& bgr)
{
    if (bgr.depth() != CV_8U || bgr.cols < blockCount || bgr.rows < 1)
        return -1;
    const double white = (brightnessOfBlock(bgr, 0) + brightnessOfBlock(bgr, blockCount - 1)) / 2.0;
    const double black = (brightnessOfBlock(bgr, 1) + brightnessOfBlock(bgr, blockCount - 2)) / 2.0;
    if (white - black < leastContrast)
        return -1;
    Blocks blocks{};
    for (int i = 0; i < blockCount; ++i)
        blocks[static_cast<size_t>(i)] = brightnessOfBlock(bgr, i) > (white + black) / 2.0;
    unsigned number = 0;
    for (int i = 0; i < numberBits; ++i)
        number = number << 1 | (blocks[static_cast<size_t>(2 + i)] ? 1U : 0U);
    return blocks == blocksOf(static_cast<int>(number)) ? static_cast<int>(number) : -1;
}

} // namespace corv
