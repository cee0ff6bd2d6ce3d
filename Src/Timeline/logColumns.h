#pragma once

#include "Log/LogFile.h"

namespace corv {

/// One column of a log's field, as numbers of type T.
template <typename T>
struct LogColumn
{
    const T* rows = nullptr;
    int count = 0;
};

/// The column as it lies in the log. No rows if there is no such var or column, if it has no
/// packets, or if its elements have another size than T: then the log means something else.
template <typename T>
LogColumn<T> logColumn(const LogVar* var, int column)
{
    if (!var || var->getElementSize() != static_cast<int>(sizeof(T)) || var->getNbPackets() < 1)
        return {};
    void* rows = nullptr;
    var->getColumn(column, &rows);
    if (!rows)
        return {};
    return {static_cast<const T*>(rows), var->getNbPackets()};
}

} // namespace corv
