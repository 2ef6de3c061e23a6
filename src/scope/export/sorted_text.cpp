// Sorts in memory, and merges from files what did not fit.

#include "scope/export/sorted_text.h"

#include <algorithm>
#include <queue>
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

// The pieces of one file, in their order.
class SortedText::Run {
  public:
    explicit Run(std::FILE* file) : file_(file) { std::rewind(file); }

    // Reads the next piece; false at the end.
    bool next() {
        if (std::fread(&head_, sizeof head_, 1, file_) != 1) {
            if (std::ferror(file_) != 0) refuse();
            return false;
        }
        text_.resize(head_.length);
        if (std::fread(text_.data(), 1, text_.size(), file_) != text_.size()) refuse();
        return true;
    }

    const TextKey& key() const { return head_.key; }
    std::string_view text() const { return text_; }

  private:
    std::FILE* file_;
    Head head_{};
    std::string text_;
};

SortedText::SortedText(size_t memory)
    : memory_(memory), text_(std::make_unique_for_overwrite<char[]>(memory + kPieceRoom)) {}

void SortedText::add(const TextKey& key, const char* end) {
    const size_t length = static_cast<size_t>(end - text_.get()) - used_;
    pieces_.push_back({key, used_, length});
    used_ += length;
    if (used_ + pieces_.size() * sizeof(Piece) >= memory_) spill();
}

void SortedText::sortPieces() { std::ranges::sort(pieces_, {}, &Piece::key); }

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
    spilled_.push_back(std::move(file));
    pieces_.clear();
    used_ = 0;
}

void SortedText::forEach(const Visit& visit) {
    if (!spilled_.empty()) return merge(visit);
    sortPieces();
    for (const Piece& piece : pieces_) visit(piece.key, textOf(piece));
}

void SortedText::merge(const Visit& visit) {
    spill();
    std::vector<Run> runs;
    for (const File& file : spilled_) runs.emplace_back(file.get());
    const auto isLater = [&](size_t one, size_t other) {
        return runs[one].key() > runs[other].key();
    };
    std::priority_queue<size_t, std::vector<size_t>, decltype(isLater)> waiting(isLater);
    for (size_t i = 0; i < runs.size(); ++i) {
        if (runs[i].next()) waiting.push(i);
    }
    while (!waiting.empty()) {
        const size_t first = waiting.top();
        waiting.pop();
        visit(runs[first].key(), runs[first].text());
        if (runs[first].next()) waiting.push(first);
    }
}

}  // namespace sonaprobe::scope
