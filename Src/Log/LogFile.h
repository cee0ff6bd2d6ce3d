#pragma once

#include "Log/ZeroedBlock.h"

#include <QString>
#include <string>
#include <type_traits>
#include <vector>

/// One column of a field: its value in each packet, in the order of the file. A view into a
/// `LogFile`, valid while the log lives; empty where the log has no such values.
template <typename T>
class LogColumn
{
public:
    LogColumn() = default;
    LogColumn(const T* rows, int count) : m_rows(rows), m_count(count) {}

    const T* data() const { return m_rows; }
    const T* begin() const { return m_rows; }
    const T* end() const { return m_rows + m_count; }
    int size() const { return m_count; }
    bool empty() const { return m_count == 0; }
    const T& operator[](int row) const { return m_rows[row]; }

private:
    const T* m_rows = nullptr;
    int m_count = 0;
};

/// One field of a record type: all its values, as one block.
///
/// The block is column-major: element `column` of packet `row` is at element index
/// `nbPackets * column + row`. So each column is a plain array over time, and the elements of one
/// packet's array are `nbPackets` elements apart.
class LogVar
{
public:
    /// The type words of a description, by number.
    enum Type { Int32, Uint32, Int16, Uint16, Int8, Uint8, Float, Double };

    explicit LogVar(std::string name) : m_name(std::move(name)) {}

    const std::string& getName() const { return m_name; }

    /// The declared type of the elements; `Uint8` for an unknown type word.
    Type getType() const { return m_type; }

    /// Elements per packet: the columns. As the file declares it, so it may be 0 or less.
    int getNb() const { return m_nb; }

    /// The rows.
    int getNbPackets() const { return m_nbPackets; }

    /// Bytes per element: 1, 2, 4 or 8; 0 when no block was allotted.
    int getElementSize() const { return m_elementSize; }

    // Each getter leaves its output alone when there is no block or when column or row do not
    // exist, so callers initialise it first.

    /// Reads one byte, the first of the element.
    void getU8(int column, int row, quint8* out) const;

    /// Reads four bytes from the start of the element.
    void getU32(int column, int row, quint32* out) const;

    /// Hands out the first row of a column. The caller casts the pointer to the element type and
    /// does not write through it. Valid while the `LogFile` lives. Prefer `column`, which checks
    /// the type.
    void getColumn(int column, void** out) const;

    /// Whether the elements can be read as T: the declared type is of T's size, and a number with
    /// or without a fraction as T is. Signed and unsigned whole numbers of one size are read as
    /// each other: firmware has declared the same counters both ways.
    template <typename T>
    bool holds() const
    {
        static_assert(std::is_arithmetic_v<T>);
        const bool isFraction = m_type == Float || m_type == Double;
        return typeSize(m_type) == static_cast<int>(sizeof(T)) &&
               isFraction == std::is_floating_point_v<T>;
    }

    /// The values of a column as numbers of type T. Empty where there is no such column, where it
    /// has no rows, and where the declared type cannot be read as T.
    template <typename T>
    LogColumn<T> column(int column = 0) const
    {
        void* rows = nullptr;
        if (holds<T>())
            getColumn(column, &rows);
        return rows ? LogColumn<T>(static_cast<const T*>(rows), m_nbPackets) : LogColumn<T>();
    }

    /// One byte from each column of the row, up to the first NUL or 50 bytes, taken as UTF-8.
    QString getString(int row) const;

    /// The whole block and its length, `elementSize * nb * nbPackets`; null before `allocate`.
    const void* getData() const { return m_block.data(); }
    size_t getDataSize() const;

    // Writing, for the decoder only. A write out of range is ignored.

    /// Gives the var its shape alone, without a block.
    void declare(int nb, int nbPackets, Type type);

    /// Gives the var its shape and a zeroed block. False, with no block, when the block would reach
    /// 2 GiB or the system has no memory for it. `dense` as in `ZeroedBlock::allocate`.
    bool allocate(int nb, int nbPackets, Type type, bool dense = false);

    /// Whether a block of that shape is below 2 GiB, the limit of the format.
    static bool fits(int nb, int nbPackets, Type type);

    void setU8(int column, int row, quint8 value);
    void setU16(int column, int row, quint16 value);
    void setU32(int column, int row, quint32 value);
    void setFloat(int column, int row, float value);
    void setDouble(int column, int row, double value);

    /// The start of the block for bulk stores, which keep to its bounds themselves.
    unsigned char* block() { return m_block.data(); }

    /// The number of a type word; any unknown word counts as `Uint8`.
    static Type typeFromName(const std::string& name);

    /// The word of a type, such as "UINT32".
    static const char* typeName(Type type);

    /// Bytes per element of a type number; 1 for an unknown one.
    static int typeSize(int type);

private:
    unsigned char* element(int column, int row) const;
    template <typename T>
    void set(int column, int row, T value);

    std::string m_name;
    Type m_type = Uint8;
    int m_nb = 0;
    int m_nbPackets = 0;
    int m_elementSize = 0;
    corv::ZeroedBlock m_block;
};

/// One record type of a log, with its fields in the order of the description.
class LogGroup
{
public:
    LogGroup(std::string name, int id) : m_name(std::move(name)), m_id(id) {}

    const std::string& getName() const { return m_name; }
    int getId() const { return m_id; }

    /// Good packets of this type in the file: the rows of every var.
    int getNbPackets() const { return m_nbPackets; }
    void setNbPackets(int nbPackets) { m_nbPackets = nbPackets; }

    /// Payload bytes that each packet must have.
    int getPacketSize() const { return m_packetSize; }
    void setPacketSize(int packetSize) { m_packetSize = packetSize; }

    /// The next row to be written while decoding.
    int getNbStored() const { return m_nbStored; }
    void setNbStored(int nbStored) { m_nbStored = nbStored; }

    /// The first var of that name, or null. Linear.
    LogVar* getVar(const std::string& name);
    const LogVar* getVar(const std::string& name) const;

    /// A column of the first var of that name, as `LogVar::column` gives it; empty without the var.
    template <typename T>
    LogColumn<T> column(const std::string& name, int column = 0) const
    {
        const LogVar* var = getVar(name);
        return var ? var->column<T>(column) : LogColumn<T>();
    }

    void addVar(const std::string& name) { m_vars.emplace_back(name); }

    std::vector<LogVar>& getVars() { return m_vars; }
    const std::vector<LogVar>& getVars() const { return m_vars; }

private:
    std::vector<LogVar> m_vars;
    std::string m_name;
    int m_id;
    int m_nbPackets = 0;
    int m_packetSize = 0;
    int m_nbStored = 0;
};

/// A decoded flight log: every record type that the file describes, with all its values in memory.
/// Made by `corv::LogDecoder` and constant afterwards, so that any thread may read it. It is passed
/// on as `std::shared_ptr<const LogFile>`; code that keeps a column keeps that pointer too.
class LogFile
{
public:
    /// The first group of that name, or null. Linear: readers look up once and keep the result.
    LogGroup* getGroup(const std::string& name);
    const LogGroup* getGroup(const std::string& name) const;

    /// The first group of that packet id, or null.
    LogGroup* getGroup(int id);

    void addGroup(const std::string& name, int id) { m_groups.emplace_back(name, id); }

    std::vector<LogGroup>& getGroups() { return m_groups; }
    const std::vector<LogGroup>& getGroups() const { return m_groups; }

    /// The log's path.
    const std::string& getFileName() const { return m_fileName; }
    void setFileName(const std::string& fileName) { m_fileName = fileName; }

private:
    std::vector<LogGroup> m_groups;
    std::string m_fileName;
};
