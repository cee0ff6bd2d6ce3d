#include "SampleFlight/SolarPark.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace corv {
namespace {

constexpr double panelWidthM = 1.0;
constexpr double panelHeightM = 1.64;
constexpr double gapM = 0.03;
constexpr double frameM = 0.035;
constexpr double rowPitchM = 5.2;
constexpr int panelsPerTable = 9;
constexpr double tablePitchM = panelsPerTable * (panelWidthM + gapM) + 0.45;
constexpr int cellCols = 6;
constexpr int cellRows = 10;
constexpr double cellWidthM = (panelWidthM - 2.0 * frameM) / cellCols;
constexpr double cellHeightM = (panelHeightM - 2.0 * frameM) / cellRows;
constexpr double tableHeightM = 2.0 * panelHeightM + gapM;

constexpr int hotCol = 3;
constexpr int hotRow = 6;
// The upper panel whose left edge is at 0.
const cv::Point2d hotPanel(0.0, -tableHeightM / 2.0);

constexpr int fixedBits = 4;
constexpr double fixedOne = 1 << fixedBits;

cv::Point fixed(cv::Point2d ground, double density)
{
    const cv::Point2d pixel = (ground - SolarPark::origin()) * density;
    return {cvRound(pixel.x * fixedOne), cvRound(pixel.y * fixedOne)};
}

// Noise whose grains are `grain` pixels wide, with values around 0 and deviation 1.
cv::Mat softNoise(cv::Size size, int grain, cv::RNG& random)
{
    cv::Mat small(size.height / grain + 2, size.width / grain + 2, CV_32FC1);
    random.fill(small, cv::RNG::NORMAL, 0.0, 1.0);
    cv::Mat noise;
    cv::resize(small, noise, size, 0.0, 0.0, cv::INTER_CUBIC);
    return noise;
}

template <typename Visit>
void forEachTable(double halfWidthM, const Visit& visit)
{
    const int tables = static_cast<int>(halfWidthM / tablePitchM) + 1;
    for (int row = -1; row <= 1; ++row) {
        for (int table = -tables; table < tables; ++table)
            visit(cv::Point2d(table * tablePitchM, row * rowPitchM - tableHeightM / 2.0));
    }
}

} // namespace

cv::Point2d SolarPark::hotCell()
{
    return hotPanel +
           cv::Point2d(frameM + (hotCol + 0.5) * cellWidthM, frameM + (hotRow + 0.5) * cellHeightM);
}

SolarPark::SolarPark(unsigned seed)
    : m_picture(cvRound(2.0 * halfHeightM * pictureDensity),
                cvRound(2.0 * halfWidthM * pictureDensity), CV_8UC3),
      m_temperature(cvRound(2.0 * halfHeightM * temperatureDensity),
                    cvRound(2.0 * halfWidthM * temperatureDensity), CV_32FC1)
{
    cv::RNG random(seed + 1);
    paintGrass(random);
    paintBushes(random);
    paintShadows();
    paintTables(random);
    paintHotCell();
    cv::GaussianBlur(m_temperature, m_temperature, {0, 0}, 0.8);
}

void SolarPark::paintGrass(cv::RNG& random)
{
    const cv::Size size = m_picture.size();
    const cv::Mat tone = softNoise(size, 160, random) * 9.0 + softNoise(size, 40, random) * 6.0 +
                         softNoise(size, 9, random) * 6.0 + softNoise(size, 4, random) * 4.0;
    const cv::Mat dry = softNoise(size, 220, random);
    for (int y = 0; y < size.height; ++y) {
        // Wheels have run along the middle between two rows.
        const double groundY = y / pictureDensity - halfHeightM;
        const double lane = std::abs(std::remainder(groundY - rowPitchM / 2.0, rowPitchM));
        const double track = std::exp(-std::pow((lane - 0.55) / 0.14, 2.0));
        for (int x = 0; x < size.width; ++x) {
            const double t = tone.at<float>(y, x);
            const double d = std::clamp(0.35 + 0.4 * dry.at<float>(y, x) + 0.5 * track, 0.0, 1.0);
            m_picture.at<cv::Vec3b>(y, x) = {cv::saturate_cast<uchar>(58 + 26 * d + 0.7 * t),
                                             cv::saturate_cast<uchar>(112 + 22 * d + 1.2 * t),
                                             cv::saturate_cast<uchar>(84 + 62 * d + 1.1 * t)};
        }
    }
    m_temperature = softNoise(m_temperature.size(), 30, random) * 0.8 +
                    softNoise(m_temperature.size(), 5, random) * 0.6 + 25.0;
}

void SolarPark::paintBushes(cv::RNG& random)
{
    for (int i = 0; i < 90; ++i) {
        const cv::Point2d middle(random.uniform(-halfWidthM, halfWidthM),
                                 random.uniform(-halfHeightM, halfHeightM));
        const double size = random.uniform(0.06, 0.22);
        for (int leaf = 0; leaf < 14; ++leaf) {
            const double light = leaf / 14.0;
            const cv::Point2d at = middle +
                                   cv::Point2d(random.gaussian(size), random.gaussian(size)) +
                                   cv::Point2d(0.09, 0.11) * (1.0 - light);
            cv::circle(m_picture, fixed(at, pictureDensity),
                       cvRound(size * 0.5 * pictureDensity * fixedOne),
                       cv::Scalar(34 + 30 * light, 62 + 62 * light, 40 + 44 * light), cv::FILLED,
                       cv::LINE_AA, fixedBits);
        }
        cv::circle(m_temperature, fixed(middle, temperatureDensity),
                   cvRound(size * temperatureDensity * fixedOne), cv::Scalar(22.5), cv::FILLED,
                   cv::LINE_AA, fixedBits);
    }
}

void SolarPark::paintShadows()
{
    cv::Mat light(m_picture.size(), CV_8UC1, cv::Scalar(255));
    forEachTable(halfWidthM, [&](cv::Point2d corner) {
        const cv::Point2d thrown(0.28, 0.62);
        const cv::Point2d far = corner + thrown + cv::Point2d(tablePitchM - 0.45, tableHeightM);
        cv::rectangle(light, fixed(corner + thrown, pictureDensity), fixed(far, pictureDensity),
                      cv::Scalar(112), cv::FILLED, cv::LINE_8, fixedBits);
        warm(corner + thrown, {tablePitchM - 0.45, tableHeightM}, 21.0);
    });
    cv::GaussianBlur(light, light, {0, 0}, 5.0);
    cv::cvtColor(light, light, cv::COLOR_GRAY2BGR);
    cv::multiply(m_picture, light, m_picture, 1.0 / 255.0);
}

void SolarPark::paintTables(cv::RNG& random)
{
    forEachTable(halfWidthM, [&](cv::Point2d corner) {
        for (int column = 0; column < panelsPerTable; ++column) {
            for (int half = 0; half < 2; ++half) {
                const double right = column * (panelWidthM + gapM);
                paintPanel(corner + cv::Point2d(right, half * (panelHeightM + gapM)), random);
            }
        }
    });
}

void SolarPark::paintPanel(cv::Point2d corner, cv::RNG& random)
{
    fill(corner, {panelWidthM, panelHeightM}, {196, 192, 188});
    fill(corner + cv::Point2d(frameM, frameM),
         {panelWidthM - 2.0 * frameM, panelHeightM - 2.0 * frameM}, {150, 140, 132});
    const double tint = random.gaussian(3.0);
    const double degrees = 41.0 + random.gaussian(0.5);
    warm(corner, {panelWidthM, panelHeightM}, 36.0);
    for (int row = 0; row < cellRows; ++row) {
        for (int col = 0; col < cellCols; ++col) {
            const cv::Point2d cell =
                corner + cv::Point2d(frameM + col * cellWidthM, frameM + row * cellHeightM);
            // The sky is brighter towards one side, and lies on the glass as a soft streak.
            const double streak =
                std::exp(-std::pow(std::remainder(cell.x + 0.8 * cell.y, 7.0) / 1.1, 2.0));
            const double sky =
                10.0 * (cell.y / halfHeightM) + 26.0 * streak + tint + random.gaussian(1.2);
            fill(cell + cv::Point2d(0.008, 0.008), {cellWidthM - 0.016, cellHeightM - 0.016},
                 {88.0 + sky, 50.0 + 0.8 * sky, 26.0 + 0.7 * sky});
            for (int bar = 1; bar <= 2; ++bar)
                fill(cell + cv::Point2d(bar * cellWidthM / 3.0 - 0.004, 0.0), {0.008, cellHeightM},
                     {118.0 + sky, 92.0 + 0.8 * sky, 72.0 + 0.7 * sky});
            warm(cell, {cellWidthM, cellHeightM}, degrees + 0.8 * row / cellRows);
        }
    }
}

void SolarPark::paintHotCell()
{
    // A third of the panel is bypassed and runs warm; the cell itself is scorched.
    warm(hotPanel + cv::Point2d(frameM + 2 * cellWidthM, frameM),
         {2 * cellWidthM, panelHeightM - 2.0 * frameM}, 45.5);
    const cv::Point2d corner = hotCell() - cv::Point2d(cellWidthM, cellHeightM) / 2.0;
    fill(corner, {cellWidthM, cellHeightM}, {52, 78, 118});
    fill(corner + cv::Point2d(0.03, 0.035), {cellWidthM - 0.06, cellHeightM - 0.07}, {40, 58, 84});
    const cv::Scalar trail(170, 196, 214);
    const cv::Point2d ends[][2] = {{{-0.07, -0.07}, {0.05, 0.02}}, {{-0.02, 0.07}, {0.07, -0.05}}};
    for (const auto& end : ends)
        cv::line(m_picture, fixed(hotCell() + end[0], pictureDensity),
                 fixed(hotCell() + end[1], pictureDensity), trail, 1, cv::LINE_AA, fixedBits);
    const cv::Point2d middle = (hotCell() - origin()) * temperatureDensity;
    for (int y = 0; y < m_temperature.rows; ++y) {
        for (int x = 0; x < m_temperature.cols; ++x) {
            const double distance = cv::norm(cv::Point2d(x, y) - middle) / temperatureDensity;
            if (distance < 1.2)
                m_temperature.at<float>(y, x) +=
                    static_cast<float>(44.0 * std::exp(-std::pow(distance / 0.17, 2.0)));
        }
    }
}

void SolarPark::fill(cv::Point2d corner, cv::Size2d size, const cv::Scalar& colour)
{
    const cv::Point2d far = corner + cv::Point2d(size.width, size.height);
    const cv::Point pixel(cvRound((corner - origin()).x * pictureDensity),
                          cvRound((corner - origin()).y * pictureDensity));
    const cv::Point farPixel(cvRound((far - origin()).x * pictureDensity),
                             cvRound((far - origin()).y * pictureDensity));
    m_picture(cv::Rect(pixel, farPixel) & cv::Rect({0, 0}, m_picture.size())).setTo(colour);
}

void SolarPark::warm(cv::Point2d corner, cv::Size2d size, double degrees)
{
    const cv::Point2d far = corner + cv::Point2d(size.width, size.height);
    const cv::Point pixel(cvRound((corner - origin()).x * temperatureDensity),
                          cvRound((corner - origin()).y * temperatureDensity));
    const cv::Point farPixel(cvRound((far - origin()).x * temperatureDensity),
                             cvRound((far - origin()).y * temperatureDensity));
    m_temperature(cv::Rect(pixel, farPixel) & cv::Rect({0, 0}, m_temperature.size()))
        .setTo(degrees);
}

} // namespace corv
