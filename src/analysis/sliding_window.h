// The latest part of a sequence, in memory that is used over and over: items come at its end and go
// at its begin.

#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace sonaprobe {

template <class T>
class SlidingWindow {
  public:
    void push_back(const T& item) {
        if (size_ == room_) grow();
        ring_[placeOf(size_++)] = item;
    }

    // So many, which have to be there.
    void pop_front(size_t count) {
        first_ = placeOf(count);
        size_ -= count;
    }

    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const T& operator[](size_t item) const { return ring_[placeOf(item)]; }
    T& back() { return ring_[placeOf(size_ - 1)]; }

  private:
    static constexpr size_t kLeastRoom = 1024;

    size_t placeOf(size_t item) const { return (first_ + item) & (room_ - 1); }

    void grow() {
        std::vector<T> larger(room_ == 0 ? kLeastRoom : 2 * room_);
        for (size_t i = 0; i < size_; ++i) larger[i] = (*this)[i];
        ring_ = std::move(larger);
        room_ = ring_.size();
        first_ = 0;
    }

    std::vector<T> ring_;
    size_t room_ = 0;  // its size, a power of two
    size_t first_ = 0;
    size_t size_ = 0;
};

}  // namespace sonaprobe
