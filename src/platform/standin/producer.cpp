// Posts records: enable state, filter, ticket, slot.

#include "platform/standin/producer.h"

#include "platform/standin/attachment.h"
#include "platform/standin/filter.h"

namespace sonaprobe::standin {
namespace {

void refreshInterest(Producer& producer) {
    producer.interest = interestOf(producer.state->interest.read(producer.interestVersion));
}

// Has the ring of a set-up mapped, and no other.
bool haveRing(Producer& producer, uint16_t number) {
    if (producer.ring.entries != 0 && producer.ring.number == number) return true;
    const auto hold = holdAttachment();
    return attach() == producer.state && mapRing(folderDescriptor(), number, producer.ring) == 0;
}

}  // namespace

bool attachProducer(Producer& producer) {
    const auto hold = holdAttachment();
    State* state = attach();
    if (state == nullptr) return false;
    if (state != producer.state) {
        unmapRing(producer.ring);
        producer.state = state;
        refreshInterest(producer);
    }
    // Set-up numbers come round again, so a number alone does not tell a ring that was replaced.
    if (producer.ring.entries != 0 &&
        fileOf(folderDescriptor(), producer.ring) != RingFile::inPlace) {
        unmapRing(producer.ring);
    }
    return true;
}

void detachProducer(Producer& producer) {
    unmapRing(producer.ring);
    producer = Producer{};
}

bool post(Producer& producer, const RecordWords& words) {
    State& state = *producer.state;
    const uint64_t control = state.control.load(std::memory_order_acquire);
    if (!enabledIn(control)) {
        // A ring that was removed keeps its memory as long as it is mapped.
        if (producer.ring.number != numberIn(control)) unmapRing(producer.ring);
        return false;
    }
    if (!haveRing(producer, numberIn(control))) return false;
    if (state.interest.version.load(std::memory_order_acquire) != producer.interestVersion) {
        refreshInterest(producer);
    }
    if (!passes(producer.interest, debugidOf(words))) return false;

    const uint64_t drawn = state.control.fetch_add(1, std::memory_order_acq_rel);
    if (!enabledIn(drawn)) return false;
    // Another ring may have been set up since: the ticket is one of that ring.
    if (!haveRing(producer, numberIn(drawn))) return false;
    writeSlot(producer.ring, ticketsIn(drawn), words);
    return true;
}

uint32_t audioDebugFlags(const Producer& producer) {
    return producer.state->audioFlags.load(std::memory_order_relaxed);
}

}  // namespace sonaprobe::standin
