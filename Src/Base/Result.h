#pragma once

#include "Base/Failure.h"

#include <QtGlobal>
#include <optional>
#include <utility>
#include <variant>

namespace corv {

/// Either a value or the reason why there is none. Both convert to it: `return value;` or
/// `return Failure{kind, sentence};`.
template <typename T>
class [[nodiscard]] Result
{
public:
    Result(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    Result(Failure failure) : m_state(std::in_place_index<1>, std::move(failure)) {}

    bool ok() const { return m_state.index() == 0; }
    explicit operator bool() const { return ok(); }

    /// Only where ok() is true.
    T& value()
    {
        Q_ASSERT(ok());
        return *std::get_if<0>(&m_state);
    }
    const T& value() const
    {
        Q_ASSERT(ok());
        return *std::get_if<0>(&m_state);
    }
    T& operator*() { return value(); }
    const T& operator*() const { return value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    /// Only where ok() is false.
    const Failure& failure() const
    {
        Q_ASSERT(!ok());
        return *std::get_if<1>(&m_state);
    }

private:
    std::variant<T, Failure> m_state;
};

/// The result of work that gives no value: success, or the reason.
template <>
class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Failure failure) : m_failure(std::move(failure)) {}

    bool ok() const { return !m_failure.has_value(); }
    explicit operator bool() const { return ok(); }

    /// Only where ok() is false.
    const Failure& failure() const
    {
        Q_ASSERT(!ok());
        return *m_failure;
    }

private:
    std::optional<Failure> m_failure;
};

/// For functions that give no value.
using Status = Result<void>;

} // namespace corv
