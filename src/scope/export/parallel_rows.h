// Rows of records, made on several processors and written in the order of the records.

#pragma once

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "scope/export/format.h"

namespace sonaprobe::scope {

// Stands before a format that looks at each record by itself. Memory is bounded: what is not yet
// written is at most some batches of records for each thread.
class ParallelRows final : public Format {
  public:
    // Makes a format that writes to an output.
    using Make = std::function<std::unique_ptr<Format>(TextOutput& out)>;

    // Rows are made by so many threads, of which one is that which reads and writes: it makes some
    // while it would wait for others. What formats write before the first record, such as a head,
    // is written once. `out` must outlive this. With fewer records than one batch holds, no thread
    // is started.
    ParallelRows(unsigned threads, Make make, TextOutput& out);
    ~ParallelRows() override;

    // Throws what writing throws, and what a thread has thrown.
    void record(const ToldRecord& told) override;
    void finish(const TraceClock& clock) override;

  private:
    static constexpr size_t kRecords = 256;      // of a batch
    static constexpr size_t kText = 128 << 10;   // bytes that its rows seldom exceed
    static constexpr size_t kBatchesEach = 3;    // of a thread: filled, in work, written
    static constexpr unsigned kMostThreads = 8;  // the one that reads feeds no more

    struct Batch {
        std::vector<TraceRecord> records;
        std::vector<ToldRecord> told;  // of these
        std::string early;             // what `rows` could not hold of their text
        TextOutput rows{{.write = append, .context = &early}, kText};
        std::unique_ptr<Format> format;  // writes into `rows`
        bool made = false;

        static void append(void* text, const char* more, size_t length) {
            static_cast<std::string*>(text)->append(more, length);
        }
    };

    Batch& at(uint64_t number) { return batches_[number % batches_.size()]; }
    void begin();
    void handOver();
    void writeNext();
    void work();
    void makeNext(std::unique_lock<std::mutex>& lock);

    Make make_;
    TextOutput* out_;
    std::unique_ptr<Format> format_;
    unsigned threadsWanted_;

    // A ring: batches are counted from the first of all.
    std::vector<Batch> batches_;
    uint64_t written_ = 0;  // this many, then those in work or waiting for it, then the one to fill

    std::mutex mutex_;  // guards what follows, and each batch's `made`
    std::condition_variable filling_;
    std::condition_variable making_;
    uint64_t filled_ = 0;
    uint64_t taken_ = 0;
    bool ended_ = false;
    std::exception_ptr failure_;

    std::vector<std::thread> threads_;
};

}  // namespace sonaprobe::scope
