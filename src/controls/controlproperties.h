#pragma once

#include <utility>

#include <QMetaEnum>

namespace valtrona {

// Helpers that keep a control's property accessors to one line each, so the
// rules of the control stand out in its other files.

/// Stores `value` in `member` when it differs; returns whether it changed.
template <typename T, typename V>
bool assign(T &member, V &&value)
{
    if (member == value)
        return false;
    member = std::forward<V>(value);
    return true;
}

/// Stores `value` in `member` when it differs and then lets `owner` catch
/// up by `refresh`; returns whether it changed.
template <typename Owner, typename T, typename V>
bool assign(Owner *owner, T &member, V &&value, void (Owner::*refresh)())
{
    if (!assign(member, std::forward<V>(value)))
        return false;
    (owner->*refresh)();
    return true;
}

/// Stores `value` in `member` and lets `owner` catch up by `refresh` even
/// when the value is the same, for settings whose refresh also takes in
/// what changed elsewhere.
template <typename Owner, typename T, typename V>
void store(Owner *owner, T &member, V &&value, void (Owner::*refresh)())
{
    member = std::forward<V>(value);
    (owner->*refresh)();
}

/// The enumerator an integer property's code stands for, or `fallback` for a
/// code that names none. Integer properties keep the code as it was set (it
/// is persisted and read back); the control switches on the enumerator.
template <typename Enum>
Enum enumFromCode(int code, Enum fallback)
{
    return QMetaEnum::fromType<Enum>().valueToKey(code) ? static_cast<Enum>(code) : fallback;
}

} // namespace valtrona
