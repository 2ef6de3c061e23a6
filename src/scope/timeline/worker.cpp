// Hands work from one thread to another.

#include "scope/timeline/worker.h"

#include <utility>

#include "scope/worker_thread.h"

namespace sonaprobe::scope::timeline {

Worker::Worker(size_t most) : most_(most), thread_(workerThread([this] { run(); })) {}

Worker::~Worker() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void Worker::give(Work work) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return waiting_.size() < most_ || failure_; });
    rethrow();
    waiting_.push_back(std::move(work));
    changed_.notify_all();
}

void Worker::finish() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return (waiting_.empty() && !busy_) || failure_; });
    rethrow();
}

void Worker::rethrow() {
    if (failure_) std::rethrow_exception(failure_);
}

void Worker::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return stopped_ || (!waiting_.empty() && !failure_); });
        if (stopped_) return;
        const Work work = std::move(waiting_.front());
        waiting_.pop_front();
        busy_ = true;
        lock.unlock();
        std::exception_ptr failure;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        busy_ = false;
        failure_ = failure;
        changed_.notify_all();
    }
}

}  // namespace sonaprobe::scope::timeline
