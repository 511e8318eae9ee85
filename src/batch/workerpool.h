#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace valtrona {

/// The threads a run works on: jobs are started in the order they were
/// queued, by a fixed number of workers that live as long as the pool.
/// Whoever queues work is told when a job has finished (from the worker's
/// thread), so a window can post itself a call and a command line can wait.
class WorkerPool
{
public:
    using Job = std::function<void()>;

    /// `workers` below 1 count as 1.
    explicit WorkerPool(int workers);
    /// Lets running jobs finish, drops queued ones, joins the workers.
    ~WorkerPool();
    WorkerPool(const WorkerPool &) = delete;
    WorkerPool &operator=(const WorkerPool &) = delete;

    int workerCount() const;

    /// Queues a job behind those queued before it.
    void submit(Job job);

    /// Called on a worker's thread after each job; set before any submit().
    void setJobFinished(std::function<void()> callback);

    /// Drops the jobs not started yet; running ones go on. Returns how many
    /// were dropped.
    int dropQueued();

    /// True while a job is queued or running.
    bool isBusy() const;

    /// Blocks until a job finishes or `timeout` passes, whichever comes
    /// first; returns at once when nothing is queued or running.
    void waitForJob(std::chrono::milliseconds timeout);

    /// Blocks until nothing is queued or running.
    void waitUntilIdle();

private:
    void work();

    mutable std::mutex m_mutex;
    std::condition_variable m_queued;
    std::condition_variable m_finished;
    std::deque<Job> m_queue;
    int m_running = 0;
    unsigned m_finishedCount = 0;
    bool m_closing = false;
    std::function<void()> m_jobFinished;
    std::vector<std::thread> m_threads;
};

} // namespace valtrona
