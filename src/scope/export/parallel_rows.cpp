// Hands batches of records to workers, and writes their rows.

#include "scope/export/parallel_rows.h"

#include <algorithm>
#include <utility>

#include "scope/worker_thread.h"

namespace sonaprobe::scope {

ParallelRows::ParallelRows(unsigned workers, Make make, TextOutput& out)
    : make_(std::move(make)),
      out_(&out),
      format_(make_(out)),
      workers_(std::clamp(workers, 1U, kMostWorkers)),
      batches_(workers_ * kBatchesEach) {}

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
    if (threads_.empty()) {
        for (const ToldRecord& told : at(filled_).told) format_->record(told);
    } else {
        handOver();
        while (written_ < filled_) writeNext();
    }
    format_->finish(clock);
}

// The batch that is full goes to the workers, and the next one is made room for.
void ParallelRows::handOver() {
    if (threads_.empty()) {
        while (threads_.size() < workers_) threads_.push_back(workerThread([this] { work(); }));
    }
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
        making_.wait(lock, [&] { return batch.made || failure_ != nullptr; });
        if (failure_ != nullptr) std::rethrow_exception(failure_);
    }
    out_->put(batch.text);
    batch.records.clear();
    batch.told.clear();
    batch.text.clear();
    batch.made = false;
    ++written_;
}

void ParallelRows::work() {
    try {
        makeRows();
    } catch (...) {
        const std::lock_guard lock(mutex_);
        failure_ = std::current_exception();
        making_.notify_one();
    }
}

void ParallelRows::makeRows() {
    std::string text;
    TextOutput out(
        {.write = [](void* to, const char* piece,
                     size_t length) { static_cast<std::string*>(to)->append(piece, length); },
         .context = &text});
    const std::unique_ptr<Format> format = make_(out);
    out.handOver();
    text.clear();  // the head
    for (;;) {
        std::unique_lock lock(mutex_);
        filling_.wait(lock, [&] { return ended_ || taken_ < filled_; });
        if (ended_) return;
        Batch& batch = at(taken_++);
        lock.unlock();
        for (const ToldRecord& told : batch.told) format->record(told);
        out.handOver();
        std::swap(text, batch.text);
        lock.lock();
        batch.made = true;
        making_.notify_one();
    }
}

}  // namespace sonaprobe::scope
