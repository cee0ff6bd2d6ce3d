#include "Log/transpose.h"

#include <algorithm>
#include <cstring>

namespace corv {
namespace {

constexpr size_t kLineBytes = 64; ///< of the cache: what a tile takes from each row

template <typename T>
T load(const unsigned char* from)
{
    T value;
    std::memcpy(&value, from, sizeof(T));
    return value;
}

template <typename T>
void store(unsigned char* to, T value)
{
    std::memcpy(to, &value, sizeof(T));
}

template <typename T>
void transposeColumn(const RowSource& from, size_t firstRow, size_t column, unsigned char* to,
                     size_t columnBytes)
{
    const unsigned char* const base = from.base + column * sizeof(T);
    unsigned char* const out = to + column * columnBytes;
    for (size_t row = firstRow; row < from.rows; ++row)
        store(out + row * sizeof(T), load<T>(base + from.offsets[row]));
}

// Eight rows of eight 16-bit words to eight columns, in registers: three rounds, each of which
// interleaves every line of the square with the one four lines below.
class WordSquare
{
public:
    static constexpr size_t kSide = 8;

    void loadRows(const RowSource& from, size_t row, size_t column)
    {
        const unsigned char* const base = from.base + column * sizeof(std::uint16_t);
        for (size_t i = 0; i < kSide; ++i)
            m_lines[i] = load<Line>(base + from.offsets[row + i]);
    }

    void transpose()
    {
        for (int round = 0; round < 3; ++round) {
            Line next[kSide];
            for (size_t i = 0; i < kSide / 2; ++i) {
                next[2 * i] =
                    __builtin_shufflevector(m_lines[i], m_lines[i + 4], 0, 8, 1, 9, 2, 10, 3, 11);
                next[2 * i + 1] =
                    __builtin_shufflevector(m_lines[i], m_lines[i + 4], 4, 12, 5, 13, 6, 14, 7, 15);
            }
            std::copy(next, next + kSide, m_lines);
        }
    }

    void storeColumns(unsigned char* to, size_t columnBytes) const
    {
        for (size_t i = 0; i < kSide; ++i)
            store(to + i * columnBytes, m_lines[i]);
    }

private:
    using Line = std::uint16_t __attribute__((vector_size(16)));

    Line m_lines[kSide];
};

// The words of one tile that fill whole squares; gives the first row that is left.
size_t transposeSquares(const RowSource& from, size_t column, size_t endColumn, unsigned char* to,
                        size_t columnBytes)
{
    size_t row = 0;
    for (; row + WordSquare::kSide <= from.rows; row += WordSquare::kSide) {
        for (size_t first = column; first < endColumn; first += WordSquare::kSide) {
            WordSquare square;
            square.loadRows(from, row, first);
            square.transpose();
            square.storeColumns(to + first * columnBytes + row * sizeof(std::uint16_t),
                                columnBytes);
        }
    }
    return row;
}

template <typename T>
void transposeTiles(const RowSource& from, size_t columns, unsigned char* to, size_t columnBytes)
{
    constexpr size_t kTileColumns = kLineBytes / sizeof(T);
    for (size_t column = 0; column < columns; column += kTileColumns) {
        const size_t end = std::min(column + kTileColumns, columns);
        size_t firstRow = 0;
        size_t squaresEnd = column;
        if constexpr (sizeof(T) == sizeof(std::uint16_t)) {
            squaresEnd = end - (end - column) % WordSquare::kSide;
            firstRow = transposeSquares(from, column, squaresEnd, to, columnBytes);
        }
        for (size_t i = column; i < end; ++i)
            transposeColumn<T>(from, i < squaresEnd ? firstRow : 0, i, to, columnBytes);
    }
}

} // namespace

void transposeRows(const RowSource& from, int elementSize, size_t columns, unsigned char* to,
                   size_t columnBytes)
{
    switch (elementSize) {
    case 8:
        transposeTiles<std::uint64_t>(from, columns, to, columnBytes);
        break;
    case 4:
        transposeTiles<std::uint32_t>(from, columns, to, columnBytes);
        break;
    case 2:
        transposeTiles<std::uint16_t>(from, columns, to, columnBytes);
        break;
    default:
        transposeTiles<std::uint8_t>(from, columns, to, columnBytes);
        break;
    }
}

} // namespace corv
