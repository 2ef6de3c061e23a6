// Packs blocks, and gives their memory back to be filled again.

#include "scope/timeline/block_packing.h"

#include "scope/timeline/columns.h"

namespace sonaprobe::scope::timeline {

std::unique_ptr<RecordBlock> BlockPacking::fresh() {
    const std::lock_guard lock(mutex_);
    if (unused_.empty()) return std::make_unique<RecordBlock>();
    std::unique_ptr<RecordBlock> block = std::move(unused_.back());
    unused_.pop_back();
    return block;
}

void BlockPacking::take(std::unique_ptr<RecordBlock> block) {
    // What is given to a thread has to be copyable.
    worker_.give([this, shared = std::make_shared<std::unique_ptr<RecordBlock>>(std::move(block))] {
        chunks_.push_back(asPageText(deflated(packed(**shared))));
        (*shared)->clear();
        const std::lock_guard lock(mutex_);
        unused_.push_back(std::move(*shared));
    });
}

std::vector<std::string> BlockPacking::finish() {
    worker_.finish();
    return std::move(chunks_);
}

}  // namespace sonaprobe::scope::timeline
