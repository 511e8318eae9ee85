#include "batch/workerpool.h"

#include <utility>

namespace valtrona {

WorkerPool::WorkerPool(int workers)
{
    const int count = workers < 1 ? 1 : workers;
    m_threads.reserve(size_t(count));
    for (int i = 0; i < count; ++i)
        m_threads.emplace_back([this] { work(); });
}

WorkerPool::~WorkerPool()
{
    {
        std::lock_guard lock(m_mutex);
        m_closing = true;
        m_queue.clear();
    }
    m_queued.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

int WorkerPool::workerCount() const
{
    return int(m_threads.size());
}

void WorkerPool::submit(Job job)
{
    {
        std::lock_guard lock(m_mutex);
        m_queue.push_back(std::move(job));
    }
    m_queued.notify_one();
}

void WorkerPool::setJobFinished(std::function<void()> callback)
{
    std::lock_guard lock(m_mutex);
    m_jobFinished = std::move(callback);
}

int WorkerPool::dropQueued()
{
    std::deque<Job> dropped;
    {
        std::lock_guard lock(m_mutex);
        dropped.swap(m_queue);
    }
    // Destroyed outside the lock: a job's captures may release resources.
    const int count = int(dropped.size());
    dropped.clear();
    m_finished.notify_all();
    return count;
}

bool WorkerPool::isBusy() const
{
    std::lock_guard lock(m_mutex);
    return m_running > 0 || !m_queue.empty();
}

void WorkerPool::waitForJob(std::chrono::milliseconds timeout)
{
    std::unique_lock lock(m_mutex);
    if (m_running == 0 && m_queue.empty())
        return;
    const unsigned seen = m_finishedCount;
    m_finished.wait_for(lock, timeout, [&] { return m_finishedCount != seen || (m_running == 0 && m_queue.empty()); });
}

void WorkerPool::waitUntilIdle()
{
    std::unique_lock lock(m_mutex);
    m_finished.wait(lock, [&] { return m_running == 0 && m_queue.empty(); });
}

void WorkerPool::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_queued.wait(lock, [&] { return m_closing || !m_queue.empty(); });
        if (m_queue.empty())
            return;
        Job job = std::move(m_queue.front());
        m_queue.pop_front();
        ++m_running;
        lock.unlock();

        job();
        job = nullptr;

        lock.lock();
        --m_running;
        ++m_finishedCount;
        const std::function<void()> callback = m_jobFinished;
        lock.unlock();
        m_finished.notify_all();
        if (callback)
            callback();
        lock.lock();
    }
}

} // namespace valtrona
