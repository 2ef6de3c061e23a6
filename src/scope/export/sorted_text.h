// Pieces of text that come in one order and go out in another, in bounded memory: what does not fit
// waits, sorted, in files without a name.

#pragma once

#include <compare>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace sonaprobe::scope {

// Pieces go out by `first`, then by `second`.
struct TextKey {
    int64_t first;
    uint64_t second;
    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the result's 0 for a pointer.
    auto operator<=>(const TextKey&) const = default;
};

class SortedText {
  public:
    // What a piece may take.
    static constexpr size_t kPieceRoom = 1 << 16;

    explicit SortedText(size_t memory = kMemory);
    ~SortedText();

    // A piece is written at the cursor and then added. Throw a Failure where a file cannot be
    // written or read.
    char* cursor() { return text_.get() + used_; }
    void add(const TextKey& key, const char* end);

    // Pieces that are visited are dropped. Of those before a key, none may come any more. What is
    // left is put in order again each time, so it pays once there is twice as much.
    using Visit = std::function<void(const TextKey&, std::string_view)>;
    void forEachBefore(const TextKey& end, const Visit& visit);
    bool hasDoubled() const { return taken() >= doubled_; }

    // Once, after the last piece.
    void forEach(const Visit& visit);

  private:
    static constexpr size_t kMemory = 64 << 20;

    struct Piece {
        TextKey key;
        size_t begin;
        size_t length;
    };
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Close>;
    class Run;

    std::string_view textOf(const Piece& piece) const {
        return {text_.get() + piece.begin, piece.length};
    }
    size_t taken() const { return used_ + pieces_.size() * sizeof(Piece); }
    void sortPieces();
    void spill();
    void drop(size_t count);

    static constexpr size_t kLeast = 4 << 20;

    size_t memory_;
    size_t used_ = 0;
    size_t doubled_ = kLeast;       // of what the last visit left
    std::unique_ptr<char[]> text_;  // touched only as far as it is used
    std::vector<Piece> pieces_;
    std::vector<Run> spilled_;  // a heap, the one with the first piece on top
};

}  // namespace sonaprobe::scope
