// Blocks packed beside the thread that fills them.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scope/timeline/record_block.h"
#include "scope/timeline/worker.h"

namespace sonaprobe::scope::timeline {

class BlockPacking {
  public:
    // An empty block, with the room of one that has been packed where there is one.
    std::unique_ptr<RecordBlock> fresh();

    // Packs the block after those that came before it.
    void take(std::unique_ptr<RecordBlock> block);

    // After the last: the chunks of all blocks.
    std::vector<std::string> finish();

  private:
    static constexpr size_t kMostWaiting = 2;

    std::mutex mutex_;
    std::vector<std::unique_ptr<RecordBlock>> unused_;
    std::vector<std::string> chunks_;
    Worker worker_{kMostWaiting};  // the last, as it uses the rest
};

}  // namespace sonaprobe::scope::timeline
