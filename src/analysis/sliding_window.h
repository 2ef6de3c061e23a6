// The latest part of a sequence, in one piece of memory: items come at its end and go at its begin.

#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace sonaprobe {

template <class T>
class SlidingWindow {
  public:
    // To be filled where it stands.
    T& emplace_back() { return kept_.emplace_back(); }

    // So many, which have to be there.
    void pop_front(size_t count) {
        gone_ += count;
        // Each item is moved once, on average, by the time that it goes.
        if (gone_ < kLeastGone || gone_ < kept_.size() / 2) return;
        kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(gone_));
        gone_ = 0;
    }

    // Until it slides on.
    std::span<const T> items() const { return std::span(kept_).subspan(gone_); }

  private:
    static constexpr size_t kLeastGone = 1024;

    std::vector<T> kept_;
    size_t gone_ = 0;  // at its begin
};

}  // namespace sonaprobe
