#include "Log/transpose.h"

#include "Platform/streamingCopy.h"
#include "Threads/pool.h"

#include <QThread>
#include <QtEndian>
#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <thread>

namespace corv {
namespace {

constexpr size_t kLineBytes = platform::cacheLineBytes;

// Most of the time goes into memory that is touched for the first time, which two cores do nearly
// twice as fast. Below this much it would not pay to wake another one.
constexpr size_t kSharedFromBytes = size_t(256) << 10;
constexpr int kMostHelpers = 3;

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

template <typename T, WordBytes bytes>
T ordered(T value)
{
    return bytes == WordBytes::exchanged ? qbswap(value) : value;
}

template <typename T, WordBytes bytes>
void transposeColumn(const RowSource& from, size_t column, unsigned char* to, size_t columnBytes)
{
    const unsigned char* const base = from.base + column * sizeof(T);
    unsigned char* const out = to + column * columnBytes;
    for (size_t row = 0; row < from.rows; ++row)
        store(out + row * sizeof(T), ordered<T, bytes>(load<T>(base + from.offsets[row])));
}

// Eight rows of eight 16-bit words to eight columns, in registers: three rounds, each of which
// interleaves every line of the square with the one four lines below.
template <WordBytes bytes>
class WordSquare
{
public:
    static constexpr size_t kSide = 8;

    void loadRows(const RowSource& from, size_t row, size_t column)
    {
        const unsigned char* const base = from.base + column * sizeof(std::uint16_t);
        for (size_t i = 0; i < kSide; ++i)
            m_lines[i] = exchanged(load<Line>(base + from.offsets[row + i]));
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

    static Line exchanged(Line line)
    {
        return bytes == WordBytes::exchanged ? line << 8 | line >> 8 : line;
    }

    Line m_lines[kSide];
};

// A tile of 16-bit words on its way from rows to columns. It takes whole cache lines from each row
// and gives long runs to each column, and stays in the cache in between.
template <WordBytes bytes>
class WordTile
{
public:
    static constexpr size_t kColumns = 2 * kLineBytes / sizeof(std::uint16_t);
    static constexpr size_t kRows = 512;

    // Columns from `column` on of rows from `row` on. Both fit the tile.
    void gather(const RowSource& from, size_t row, size_t rows, size_t column, size_t columns)
    {
        const size_t squareRows = rows - rows % Square::kSide;
        const size_t squareColumns = columns - columns % Square::kSide;
        for (size_t i = 0; i < squareRows; i += Square::kSide) {
            fetchAhead(from, row + i, column + columns);
            for (size_t k = 0; k < squareColumns; k += Square::kSide) {
                Square square;
                square.loadRows(from, row + i, column + k);
                square.transpose();
                square.storeColumns(at(k, i), kColumnBytes);
            }
        }
        for (size_t i = 0; i < rows; ++i) {
            const unsigned char* const words =
                from.base + from.offsets[row + i] + column * sizeof(std::uint16_t);
            for (size_t k = i < squareRows ? squareColumns : 0; k < columns; ++k)
                store(at(k, i), ordered<std::uint16_t, bytes>(
                                    load<std::uint16_t>(words + k * sizeof(std::uint16_t))));
        }
    }

    void giveColumns(size_t rows, size_t columns, unsigned char* to, size_t columnBytes)
    {
        for (size_t k = 0; k < columns; ++k)
            platform::streamingCopy(to + k * columnBytes, at(k, 0), rows * sizeof(std::uint16_t));
    }

private:
    using Square = WordSquare<bytes>;

    // A line more than the rows need: columns a power of two apart would push each other out.
    static constexpr size_t kColumnBytes = kRows * sizeof(std::uint16_t) + kLineBytes;

    unsigned char* at(size_t column, size_t row)
    {
        return m_words + column * kColumnBytes + row * sizeof(std::uint16_t);
    }

    // Rows lie too far apart for the processor to guess where the next tile begins.
    static void fetchAhead(const RowSource& from, size_t row, size_t column)
    {
        for (size_t i = 0; i < Square::kSide; ++i) {
            const unsigned char* const next =
                from.base + from.offsets[row + i] + column * sizeof(std::uint16_t);
            __builtin_prefetch(next);
            __builtin_prefetch(next + kLineBytes);
        }
    }

    alignas(kLineBytes) unsigned char m_words[kColumns * kColumnBytes];
};

// The tiles of one piece of a table, taken one by one by the caller and by tasks on the pool. A
// task that comes late finds nothing left and touches nothing, so nobody waits for one.
template <WordBytes bytes>
class WordTiles
{
public:
    WordTiles(const RowSource& from, size_t columns, unsigned char* to, size_t columnBytes)
        : m_from(from), m_columns(columns), m_to(to), m_columnBytes(columnBytes),
          m_count((columns + Tile::kColumns - 1) / Tile::kColumns)
    {
    }

    void takeTiles()
    {
        Tile tile;
        for (;;) {
            const size_t index = m_next.fetch_add(1, std::memory_order_relaxed);
            if (index >= m_count)
                return;
            transposeTile(&tile, index * Tile::kColumns);
            platform::finishStreaming();
            m_done.fetch_add(1, std::memory_order_release);
        }
    }

    /// Only tiles that somebody is at are waited for, some microseconds each.
    void waitForAll() const
    {
        while (m_done.load(std::memory_order_acquire) < m_count)
            std::this_thread::yield();
    }

private:
    using Tile = WordTile<bytes>;

    void transposeTile(Tile* tile, size_t column) const
    {
        const size_t width = std::min(Tile::kColumns, m_columns - column);
        for (size_t row = 0; row < m_from.rows; row += Tile::kRows) {
            const size_t rows = std::min(Tile::kRows, m_from.rows - row);
            tile->gather(m_from, row, rows, column, width);
            tile->giveColumns(rows, width,
                              m_to + column * m_columnBytes + row * sizeof(std::uint16_t),
                              m_columnBytes);
        }
    }

    const RowSource m_from;
    const size_t m_columns;
    unsigned char* const m_to;
    const size_t m_columnBytes;
    const size_t m_count;
    std::atomic<size_t> m_next{0};
    std::atomic<size_t> m_done{0};
};

template <WordBytes bytes>
void transposeWideWords(const RowSource& from, size_t columns, unsigned char* to,
                        size_t columnBytes)
{
    const auto tiles = std::make_shared<WordTiles<bytes>>(from, columns, to, columnBytes);
    if (from.rows * columns * sizeof(std::uint16_t) >= kSharedFromBytes) {
        const int helpers = std::min(QThread::idealThreadCount() - 1, kMostHelpers);
        for (int i = 0; i < helpers; ++i)
            runOnPool([tiles] { tiles->takeTiles(); });
    }
    tiles->takeTiles();
    tiles->waitForAll();
}

template <typename T, WordBytes bytes = WordBytes::kept>
void transposeTiles(const RowSource& from, size_t columns, unsigned char* to, size_t columnBytes)
{
    constexpr size_t kTileColumns = kLineBytes / sizeof(T);
    for (size_t column = 0; column < columns; column += kTileColumns) {
        const size_t end = std::min(column + kTileColumns, columns);
        for (size_t i = column; i < end; ++i)
            transposeColumn<T, bytes>(from, i, to, columnBytes);
    }
}

template <WordBytes bytes>
void transposeWordsAs(const RowSource& from, size_t columns, unsigned char* to, size_t columnBytes)
{
    if (columns >= WordTile<bytes>::kColumns)
        transposeWideWords<bytes>(from, columns, to, columnBytes);
    else
        transposeTiles<std::uint16_t, bytes>(from, columns, to, columnBytes);
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
        transposeWords(from, columns, to, columnBytes, WordBytes::kept);
        break;
    default:
        transposeTiles<std::uint8_t>(from, columns, to, columnBytes);
        break;
    }
}

void transposeWords(const RowSource& from, size_t columns, unsigned char* to, size_t columnBytes,
                    WordBytes bytes)
{
    if (bytes == WordBytes::exchanged)
        transposeWordsAs<WordBytes::exchanged>(from, columns, to, columnBytes);
    else
        transposeWordsAs<WordBytes::kept>(from, columns, to, columnBytes);
}

} // namespace corv
