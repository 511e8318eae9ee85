#include "batch/memorybudget.h"

#include <utility>

namespace valtrona {

MemoryBudget::Reservation::~Reservation()
{
    if (m_budget)
        m_budget->release(m_bytes);
}

MemoryBudget::Reservation::Reservation(Reservation &&other) noexcept
    : m_budget(std::exchange(other.m_budget, nullptr))
    , m_bytes(std::exchange(other.m_bytes, 0))
{
}

MemoryBudget::Reservation &MemoryBudget::Reservation::operator=(Reservation &&other) noexcept
{
    if (this != &other) {
        if (m_budget)
            m_budget->release(m_bytes);
        m_budget = std::exchange(other.m_budget, nullptr);
        m_bytes = std::exchange(other.m_bytes, 0);
    }
    return *this;
}

bool MemoryBudget::Reservation::isGranted() const
{
    return m_budget != nullptr;
}

MemoryBudget::MemoryBudget(qint64 capacity)
    : m_capacity(capacity)
{
}

qint64 MemoryBudget::capacity() const
{
    return m_capacity;
}

qint64 MemoryBudget::inUse() const
{
    std::lock_guard lock(m_mutex);
    return m_inUse;
}

MemoryBudget::Reservation MemoryBudget::acquire(qint64 bytes, const std::atomic_bool *cancel)
{
    Reservation reservation;
    if (bytes > m_capacity)
        return reservation;
    bytes = bytes < 0 ? 0 : bytes;
    const auto cancelled = [cancel] { return cancel && cancel->load(); };

    std::unique_lock lock(m_mutex);
    const quint64 ticket = m_nextTicket++;
    m_changed.wait(lock, [&] { return cancelled() || (ticket == m_serving && m_inUse + bytes <= m_capacity); });
    if (ticket == m_serving)
        ++m_serving;
    else
        m_abandoned.insert(ticket); // gave up out of turn: the line skips it
    while (m_abandoned.erase(m_serving) > 0)
        ++m_serving;
    if (!cancelled()) {
        m_inUse += bytes;
        reservation.m_budget = this;
        reservation.m_bytes = bytes;
    }
    lock.unlock();
    m_changed.notify_all();
    return reservation;
}

void MemoryBudget::wakeWaiting()
{
    {
        std::lock_guard lock(m_mutex);
    }
    m_changed.notify_all();
}

void MemoryBudget::release(qint64 bytes)
{
    {
        std::lock_guard lock(m_mutex);
        m_inUse -= bytes;
    }
    m_changed.notify_all();
}

} // namespace valtrona
