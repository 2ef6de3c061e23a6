// Depth and duration for lines.

#include "scope/call_view.h"

namespace sonaprobe::scope {

CallView::Thread& CallView::threadOf(uint32_t number) {
    if (number >= threads_.size()) threads_.resize(number + 1);
    return threads_[number];
}

uint32_t CallView::opened(const TraceRecord&, const Call& call, const Call*) {
    place_.depth = call.depth;
    placed_ = true;
    threadOf(call.thread).open = call.depth + 1;
    return 0;
}

void CallView::closed(const Call& call, const Call*, const Closing& closing) {
    threadOf(call.thread).open = call.depth;
    if (closing.how != CallEnd::finished) return;
    place_.depth = call.depth;
    placed_ = true;
    place_.ends = true;
    place_.duration = closing.lengthOf(call);
}

const CallView::Place* CallView::take(const TraceRecord& slot) {
    place_ = Place{};
    placed_ = false;
    const Moment* const moment = tracker_.take(slot);
    if (moment == nullptr) return nullptr;
    Thread& thread = threadOf(moment->thread);
    if (!placed_) place_.depth = thread.open;
    place_.time = moment->time;
    place_.first = !thread.seen;
    place_.sinceLast = thread.seen ? moment->time - thread.last : 0;
    thread.seen = true;
    thread.last = moment->time;
    return &place_;
}

}  // namespace sonaprobe::scope
