#pragma once

#include <QtGlobal>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>

namespace valtrona {

/// Memory that conversions running at the same time may take together.
/// A conversion asks for what its header says it will need before it
/// decodes; it waits while others hold too much, and requests are served in
/// the order they came, so a large file is not starved by small ones.
class MemoryBudget
{
public:
    /// What a granted request holds; gives it back when destroyed.
    class Reservation
    {
    public:
        Reservation() = default;
        ~Reservation();
        Reservation(Reservation &&other) noexcept;
        Reservation &operator=(Reservation &&other) noexcept;
        Reservation(const Reservation &) = delete;
        Reservation &operator=(const Reservation &) = delete;

        bool isGranted() const;

    private:
        friend class MemoryBudget;
        MemoryBudget *m_budget = nullptr;
        qint64 m_bytes = 0;
    };

    explicit MemoryBudget(qint64 capacity);

    qint64 capacity() const;
    /// Bytes held by granted requests now.
    qint64 inUse() const;

    /// Waits until `bytes` fit beside what is held (and every earlier
    /// request was served), then holds them. A request larger than the whole
    /// capacity, or one made while `cancel` is set or that is still waiting
    /// when it is set, is refused: the reservation is not granted.
    Reservation acquire(qint64 bytes, const std::atomic_bool *cancel = nullptr);

    /// Wakes waiting requests so they look at their cancel flags again.
    void wakeWaiting();

private:
    void release(qint64 bytes);

    const qint64 m_capacity;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    qint64 m_inUse = 0;
    quint64 m_nextTicket = 0;
    quint64 m_serving = 0;
    std::set<quint64> m_abandoned; ///< tickets that gave up while waiting
};

} // namespace valtrona
