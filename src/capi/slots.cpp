// Taking slots from where they are.

#include "capi/slots.h"

#include <cstring>
#include <unistd.h>

namespace sonaprobe {

Slots::Slots(int file, Closing closing) {
    reader_.emplace(file);
    if (closing == Closing::withSlots) ownFile_ = file;
}

Slots::~Slots() {
    if (ownFile_ >= 0) ::close(ownFile_);
}

int Slots::next(TraceRecord& slot) {
    if (!reader_) {
        if (bytes_.size() < sizeof slot) return 0;
        std::memcpy(&slot, bytes_.data(), sizeof slot);
        bytes_ = bytes_.subspan(sizeof slot);
        return 1;
    }
    if (read_.empty()) read_ = reader_->next();
    if (read_.empty()) return -reader_->error();
    slot = read_.front();
    read_ = read_.subspan(1);
    return 1;
}

}  // namespace sonaprobe
