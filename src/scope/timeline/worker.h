// Work that is done in a thread of its own, in the order in which it was given.

#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace sonaprobe::scope::timeline {

class Worker {
  public:
    using Work = std::function<void()>;

    // So many pieces of work wait at most.
    explicit Worker(size_t most);
    // Waits for the piece in hand; what still waits is not done.
    ~Worker();

    // Waits until there is room. Throws what an earlier piece has thrown.
    void give(Work work);

    // Waits until all is done. Throws what a piece has thrown.
    void finish();

  private:
    void run();
    void rethrow();

    const size_t most_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Work> waiting_;
    bool busy_ = false;
    bool stopped_ = false;
    std::exception_ptr failure_;
    std::thread thread_;  // the last, as it uses the rest
};

}  // namespace sonaprobe::scope::timeline
