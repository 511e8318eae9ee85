#pragma once

// A small stand-in for std::expected (C++23): either a value or an error.
// Fallible core calls return one of these; exceptions are kept for
// programmer errors.

#include <utility>
#include <variant>

namespace valtrona {

template <typename E>
class Unexpected
{
public:
    explicit Unexpected(E error) : m_error(std::move(error)) {}
    const E &error() const & { return m_error; }
    E &&error() && { return std::move(m_error); }

private:
    E m_error;
};

template <typename E>
Unexpected<E> unexpected(E error)
{
    return Unexpected<E>(std::move(error));
}

template <typename T, typename E>
class [[nodiscard]] Expected
{
public:
    Expected(T value) : m_data(std::in_place_index<0>, std::move(value)) {}
    Expected(Unexpected<E> error) : m_data(std::in_place_index<1>, std::move(error).error()) {}

    bool has_value() const { return m_data.index() == 0; }
    explicit operator bool() const { return has_value(); }

    T &value() & { return std::get<0>(m_data); }
    const T &value() const & { return std::get<0>(m_data); }
    T &&value() && { return std::get<0>(std::move(m_data)); }
    const E &error() const { return std::get<1>(m_data); }

    T &operator*() & { return value(); }
    const T &operator*() const & { return value(); }
    T *operator->() { return &value(); }
    const T *operator->() const { return &value(); }

    T value_or(T fallback) const { return has_value() ? value() : std::move(fallback); }

private:
    std::variant<T, E> m_data;
};

// Expected<void, E>: success carries nothing.
template <typename E>
class [[nodiscard]] Expected<void, E>
{
public:
    Expected() = default;
    Expected(Unexpected<E> error) : m_hasError(true), m_error(std::move(error).error()) {}

    bool has_value() const { return !m_hasError; }
    explicit operator bool() const { return has_value(); }
    const E &error() const { return m_error; }

private:
    bool m_hasError = false;
    E m_error {};
};

} // namespace valtrona
