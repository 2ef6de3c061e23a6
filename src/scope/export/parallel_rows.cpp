// Hands batches of records to threads, and writes their rows.

#include "scope/export/parallel_rows.h"

#include <algorithm>
#include <utility>

#include "scope/worker_thread.h"

namespace sonaprobe::scope {

ParallelRows::ParallelRows(unsigned threads, Make make, TextOutput& out)
    : make_(std::move(make)),
      out_(&out),
      format_(make_(out)),
      threadsWanted_(std::clamp(threads, 1U, kMostThreads)),
      batches_(threadsWanted_ * kBatchesEach) {}

ParallelRows::~ParallelRows() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    filling_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void ParallelRows::record(const ToldRecord& told) {
    Batch& batch = at(filled_);
    batch.records.reserve(kRecords);
    batch.records.push_back(*told.record);
    ToldRecord& kept = batch.told.emplace_back(told);
    kept.record = kept.event.record = &batch.records.back();
    if (batch.records.size() == kRecords) handOver();
}

void ParallelRows::finish(const TraceClock& clock) {
    if (filled_ == 0) {
        for (const ToldRecord& told : at(filled_).told) format_->record(told);
    } else {
        handOver();
        while (written_ < filled_) writeNext();
    }
    format_->finish(clock);
}

void ParallelRows::begin() {
    for (Batch& batch : batches_) {
        batch.format = make_(batch.rows);
        batch.rows.clear();  // the head
    }
    while (threads_.size() + 1 < threadsWanted_) {
        threads_.push_back(workerThread([this] { work(); }));
    }
}

// The batch that is full goes to the threads, and the next one is made room for.
void ParallelRows::handOver() {
    if (filled_ == 0) begin();
    {
        const std::lock_guard lock(mutex_);
        ++filled_;
    }
    filling_.notify_one();
    if (filled_ - written_ == batches_.size()) writeNext();
}

void ParallelRows::writeNext() {
    Batch& batch = at(written_);
    {
        std::unique_lock lock(mutex_);
        while (!batch.made) {
            if (failure_ != nullptr) std::rethrow_exception(failure_);
            if (taken_ < filled_) {
                makeNext(lock);
            } else {
                making_.wait(lock);
            }
        }
    }
    out_->put(batch.early);
    out_->put(batch.rows.text());
    batch.records.clear();
    batch.told.clear();
    batch.early.clear();
    batch.rows.clear();
    batch.made = false;
    ++written_;
}

void ParallelRows::work() {
    std::unique_lock lock(mutex_);
    try {
        for (;;) {
            filling_.wait(lock, [&] { return ended_ || taken_ < filled_; });
            if (ended_) return;
            makeNext(lock);
        }
    } catch (...) {
        if (!lock.owns_lock()) lock.lock();
        failure_ = std::current_exception();
        making_.notify_one();
    }
}

// Gives the lock up meanwhile.
void ParallelRows::makeNext(std::unique_lock<std::mutex>& lock) {
    Batch& batch = at(taken_++);
    lock.unlock();
    for (const ToldRecord& told : batch.told) batch.format->record(told);
    lock.lock();
    batch.made = true;
    making_.notify_one();
}

}  // namespace sonaprobe::scope
