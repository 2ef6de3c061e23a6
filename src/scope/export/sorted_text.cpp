// Sorts in memory, and merges from files what did not fit.

#include "scope/export/sorted_text.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// What stands before each piece in a file.
struct Head {
    TextKey key;
    uint64_t length;
};

[[noreturn]] void refuse() { throw systemFailure("could not keep what is to be sorted in a file"); }

}  // namespace

// The pieces of one file, in their order: the one that is next, and those after it.
class SortedText::Run {
  public:
    explicit Run(File file) : file_(std::move(file)) {
        std::rewind(file_.get());
        next();
    }

    // Reads the next piece; false at the end.
    bool next() {
        if (std::fread(&head_, sizeof head_, 1, file_.get()) != 1) {
            if (std::ferror(file_.get()) != 0) refuse();
            return false;
        }
        text_.resize(head_.length);
        if (std::fread(text_.data(), 1, text_.size(), file_.get()) != text_.size()) refuse();
        return true;
    }

    const TextKey& key() const { return head_.key; }
    std::string_view text() const { return text_; }

  private:
    File file_;
    Head head_{};
    std::string text_;
};

SortedText::SortedText(size_t memory)
    : memory_(memory), text_(std::make_unique_for_overwrite<char[]>(memory + kPieceRoom)) {}

SortedText::~SortedText() = default;

void SortedText::add(const TextKey& key, const char* end) {
    const size_t length = static_cast<size_t>(end - text_.get()) - used_;
    pieces_.push_back({key, used_, length});
    used_ += length;
    if (taken() >= memory_) spill();
}

void SortedText::sortPieces() { std::ranges::stable_sort(pieces_, {}, &Piece::key); }

void SortedText::spill() {
    sortPieces();
    File file(std::tmpfile());
    if (file == nullptr) refuse();
    for (const Piece& piece : pieces_) {
        const Head head{piece.key, piece.length};
        if (std::fwrite(&head, sizeof head, 1, file.get()) != 1 ||
            std::fwrite(text_.get() + piece.begin, 1, piece.length, file.get()) != piece.length) {
            refuse();
        }
    }
    if (std::fflush(file.get()) != 0) refuse();
    spilled_.emplace_back(std::move(file));
    std::ranges::push_heap(spilled_, std::greater(), &Run::key);
    pieces_.clear();
    used_ = 0;
}

void SortedText::forEachBefore(const TextKey& end, const Visit& visit) {
    sortPieces();
    size_t visited = 0;
    for (;;) {
        const bool inMemory = visited < pieces_.size();
        if (!spilled_.empty() && (!inMemory || spilled_.front().key() < pieces_[visited].key)) {
            if (spilled_.front().key() >= end) break;
            std::ranges::pop_heap(spilled_, std::greater(), &Run::key);
            visit(spilled_.back().key(), spilled_.back().text());
            if (spilled_.back().next()) {
                std::ranges::push_heap(spilled_, std::greater(), &Run::key);
            } else {
                spilled_.pop_back();
            }
        } else {
            if (!inMemory || pieces_[visited].key >= end) break;
            visit(pieces_[visited].key, textOf(pieces_[visited]));
            ++visited;
        }
    }
    drop(visited);
}

// Closes the gaps that the first pieces leave.
void SortedText::drop(size_t count) {
    pieces_.erase(pieces_.begin(), pieces_.begin() + static_cast<ptrdiff_t>(count));
    std::ranges::sort(pieces_, {}, &Piece::begin);
    used_ = 0;
    for (Piece& piece : pieces_) {
        std::memmove(text_.get() + used_, text_.get() + piece.begin, piece.length);
        piece.begin = used_;
        used_ += piece.length;
    }
    doubled_ = std::max(kLeast, 2 * taken());
}

void SortedText::forEach(const Visit& visit) {
    forEachBefore({std::numeric_limits<int64_t>::max(), std::numeric_limits<uint64_t>::max()},
                  visit);
}

}  // namespace sonaprobe::scope
