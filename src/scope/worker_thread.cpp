// A thread has the signal mask of the one that starts it.

#include "scope/worker_thread.h"

#include <csignal>
#include <utility>

namespace sonaprobe::scope {

namespace {

class NoSignals {
  public:
    NoSignals() {
        sigset_t all{};
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

  private:
    sigset_t before_{};
};

}  // namespace

std::thread workerThread(std::function<void()> work) {
    const NoSignals meanwhile;
    return std::thread(std::move(work));
}

}  // namespace sonaprobe::scope
