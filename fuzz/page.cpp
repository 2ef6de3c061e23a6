// The timeline's page of any records, packed as a whole: each chunk unpacks, the head is JSON, and
// each record is in a block but those that were merged.
//
// An input is a byte for how many records the page may have, then slots.

#include <string>
#include <vector>
#include <zlib.h>

#include "analysis/selection.h"
#include "fuzz.h"
#include "named_trace.h"
#include "page_reader.h"
#include "scope/failure.h"
#include "scope/json.h"
#include "scope/timeline/packer.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

namespace {

std::string unpacked(const std::string& chunk) {
    const std::string bytes = fuzz::bytesOfPage(chunk);
    // Far more than is packed of so few records.
    static std::string room(size_t{1} << 20, '\0');
    uLongf length = room.size();
    require(uncompress(reinterpret_cast<Bytef*>(room.data()), &length,
                       reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()) == Z_OK,
            "a chunk unpacks");
    return room.substr(0, length);
}

void check(const timeline::PackedTrace& page, uint64_t records) {
    const Json head = Json::parse(unpacked(page.head));
    require(head["records"] == records, "the head counts the records");
    require(head["levels"].size() == page.levels.size(), "the head knows all levels");
    for (const std::string& level : page.levels) unpacked(level);
    unpacked(page.longBars);
    unpacked(page.cycles);
    uint64_t inBlocks = 0;
    for (const std::string& block : page.blocks) {
        const std::string bytes = unpacked(block);
        fuzz::Reader all(bytes);
        inBlocks += all.part(all.number()).number();
    }
    require(inBlocks == records, "the blocks have the records");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::Input input(data, size);
    const uint64_t most = uint64_t{1} + input.number<uint8_t>();
    const TraceOptions trace = fuzz::takeTrace(input);
    try {
        timeline::IoObserving io(trace);
        const timeline::Survey survey = timeline::survey(trace, Selection());
        const timeline::Thinning thinning = timeline::thinned(trace, survey, io, most);
        check(timeline::pack(trace, "trace", survey, thinning, io),
              thinning.merged == 0 ? survey.records : thinning.kept);
    } catch (const Failure& failure) {
        require(!failure.message.empty(), "a failure is told");
    }
    return 0;
}
