// Owning pointers to Babeltrace's counted objects.

#pragma once

#include <babeltrace2/babeltrace.h>
#include <memory>
#include <new>

namespace sonaprobe::plugins {

inline void release(const bt_clock_class* object) { bt_clock_class_put_ref(object); }
inline void release(const bt_event_class* object) { bt_event_class_put_ref(object); }
inline void release(const bt_field_class* object) { bt_field_class_put_ref(object); }
inline void release(const bt_integer_range_set_unsigned* object) {
    bt_integer_range_set_unsigned_put_ref(object);
}
inline void release(const bt_message* object) { bt_message_put_ref(object); }
inline void release(const bt_packet* object) { bt_packet_put_ref(object); }
inline void release(const bt_stream* object) { bt_stream_put_ref(object); }
inline void release(const bt_stream_class* object) { bt_stream_class_put_ref(object); }
inline void release(const bt_trace* object) { bt_trace_put_ref(object); }
inline void release(const bt_trace_class* object) { bt_trace_class_put_ref(object); }

struct Release {
    template <typename Object>
    void operator()(Object* object) const {
        release(object);
    }
};

template <typename Object>
using Reference = std::unique_ptr<Object, Release>;

// Takes over a new object, which is null for want of memory.
template <typename Object>
Reference<Object> owned(Object* object) {
    if (object == nullptr) throw std::bad_alloc();
    return Reference<Object>(object);
}

// Of Babeltrace's calls that answer a status, those here can fail for want of memory alone.
template <typename Status>
void check(Status status) {
    if (status != 0) throw std::bad_alloc();
}

}  // namespace sonaprobe::plugins
