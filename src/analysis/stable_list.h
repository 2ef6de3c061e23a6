// A list that grows at its end and moves no item, not even where the list itself is moved. Its
// pieces of memory are each twice as long as the one before: what is not used yet takes no memory,
// and nothing is copied. A list that was moved from is not used again.

#pragma once

#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

namespace sonaprobe {

template <class T>
class StableList {
  public:
    T& push_back(const T& item) {
        if (size_ == room_) addPiece();
        ++size_;
        return pieces_.back().emplace_back(item);
    }

    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    const T& operator[](size_t place) const {
        const auto piece = static_cast<size_t>(std::bit_width((place + kFirst) / kFirst)) - 1;
        return pieces_[piece][place + kFirst - (kFirst << piece)];
    }
    T& operator[](size_t place) { return const_cast<T&>(std::as_const(*this)[place]); }

    const T& back() const { return pieces_.back().back(); }

    // Each item in turn.
    template <class Visit>
    void forEach(const Visit& visit) const {
        for (const std::vector<T>& piece : pieces_) {
            for (const T& item : piece) visit(item);
        }
    }
    template <class Visit>
    void forEach(const Visit& visit) {
        for (std::vector<T>& piece : pieces_) {
            for (T& item : piece) visit(item);
        }
    }

    // How many have a field that is not above the value; it ascends in the list.
    template <class Value, class Field>
    size_t countUpTo(const Value& value, Field field) const {
        size_t from = 0;
        size_t to = size_;
        while (from < to) {
            const size_t middle = from + (to - from) / 2;
            if (value < (*this)[middle].*field) {
                to = middle;
            } else {
                from = middle + 1;
            }
        }
        return from;
    }

  private:
    static constexpr size_t kFirst = 4;  // items in the first piece, a power of two

    void addPiece() {
        pieces_.emplace_back().reserve(room_ + kFirst);
        room_ += room_ + kFirst;
    }

    std::vector<std::vector<T>> pieces_;
    size_t size_ = 0;
    size_t room_ = 0;  // of all pieces
};

}  // namespace sonaprobe
