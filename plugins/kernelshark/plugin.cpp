// The KernelShark plugin: a readout interface, by which raw files open as streams of their own.

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <kernelshark/libkshark-plugin.h>
#include <kernelshark/libkshark.h>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "common/likeness.h"
#include "common/number.h"
#include "common/printable.h"
#include "kernelshark/loaded_trace.h"

// KernelShark's types of functions give a `const int`.
#pragma GCC diagnostic ignored "-Wignored-qualifiers"

namespace sonaprobe::plugins {
namespace {

constexpr const char* kFormat = "sonaprobe raw";
static_assert(std::char_traits<char>::length("sonaprobe raw") < KS_DATA_FORMAT_SIZE);

// KernelShark asks from several threads; a trace answers one at a time.
struct Handle {
    LoadedTrace trace;
    std::mutex turn;
};

Handle& handleOf(kshark_data_stream* stream) {
    return *static_cast<Handle*>(
        static_cast<kshark_generic_stream_interface*>(stream->interface)->handle);
}

// Gives a text to KernelShark, which frees it; null for want of memory.
char* handOver(const std::string& text) { return ::strdup(text.c_str()); }

bool isGap(const kshark_entry* entry) { return entry->event_id == KS_EVENT_OVERFLOW; }

// Does what may throw or touches the trace: its answer, or `otherwise`.
template <typename Answer, typename Act>
Answer guarded(kshark_data_stream* stream, Answer otherwise, Act act) {
    try {
        Handle& handle = handleOf(stream);
        const std::lock_guard<std::mutex> turn(handle.turn);
        return act(handle.trace);
    } catch (const std::exception&) {
        return otherwise;
    }
}

// The event of an entry, or null where it is none of the trace's records.
const sonaprobe_event* eventOf(LoadedTrace& trace, const kshark_entry* entry) {
    const auto row = static_cast<uint64_t>(entry->offset);
    if (isGap(entry) || row >= trace.rows().size()) return nullptr;
    return trace.eventOf(trace.rows()[row].record);
}

std::string hexadecimal(const char* before, uint64_t number) {
    char text[64];
    std::snprintf(text, sizeof text, "%s0x%" PRIx64, before, number);
    return text;
}

// The text, or the arguments of an event without one; the object.
std::string infoOf(const sonaprobe_event* event) {
    constexpr const char* kArrows[] = {"", "-> ", "<- ", ""};
    std::string info = kArrows[sonaprobe_event_qualifier(event)];
    size_t length = 0;
    const char* text = sonaprobe_event_text(event, &length);
    appendPrintable(info, text, length);
    for (unsigned number = 1; length == 0 && number <= 4; ++number) {
        info += hexadecimal(number > 1 ? ", " : "", sonaprobe_event_argument(event, number));
    }
    if (sonaprobe_event_has_object(event)) {
        info += hexadecimal("  object: ", sonaprobe_event_object(event));
    }
    return info;
}

std::string gapInfo(const LoadedTrace& trace, const kshark_entry* entry) {
    const auto row = static_cast<uint64_t>(entry->offset);
    const uint64_t missing =
        row < trace.rows().size() ? trace.rows()[row].missing : trace.missingAtEnd();
    return "records missing: " + std::to_string(missing);
}

const int getPid(kshark_data_stream* /*stream*/, const kshark_entry* entry) { return entry->pid; }

const int getEventId(kshark_data_stream* /*stream*/, const kshark_entry* entry) {
    return entry->event_id;
}

std::string eventNameOf(const LoadedTrace& trace, const kshark_entry* entry) {
    if (isGap(entry)) return "missed_events";
    const auto event = static_cast<size_t>(entry->event_id);
    return event < trace.events().size() ? trace.events()[event].name : "[unknown event]";
}

std::string taskOf(const LoadedTrace& trace, const kshark_entry* entry) {
    return hexadecimal("thread ", trace.threadId(entry->pid));
}

char* getEventName(kshark_data_stream* stream, const kshark_entry* entry) {
    return guarded<char*>(stream, nullptr,
                          [&](LoadedTrace& trace) { return handOver(eventNameOf(trace, entry)); });
}

char* getTask(kshark_data_stream* stream, const kshark_entry* entry) {
    return guarded<char*>(stream, nullptr,
                          [&](LoadedTrace& trace) { return handOver(taskOf(trace, entry)); });
}

char* getInfo(kshark_data_stream* stream, const kshark_entry* entry) {
    return guarded<char*>(stream, nullptr, [&](LoadedTrace& trace) {
        const sonaprobe_event* event = eventOf(trace, entry);
        return handOver(event != nullptr ? infoOf(event) : gapInfo(trace, entry));
    });
}

// The slot, by which sonascope knows the record.
char* getAuxInfo(kshark_data_stream* stream, const kshark_entry* entry) {
    return guarded<char*>(stream, nullptr, [&](LoadedTrace& trace) {
        const sonaprobe_event* event = eventOf(trace, entry);
        if (event == nullptr) return handOver("");
        return handOver("slot " + std::to_string(sonaprobe_event_slot(event)));
    });
}

char* dumpEntry(kshark_data_stream* stream, const kshark_entry* entry) {
    return guarded<char*>(stream, nullptr, [&](LoadedTrace& trace) {
        const sonaprobe_event* event = eventOf(trace, entry);
        const std::string info = event != nullptr ? infoOf(event) : gapInfo(trace, entry);
        return handOver(std::to_string(entry->ts) + "; " + taskOf(trace, entry) + "-" +
                        std::to_string(entry->pid) + "; CPU " + std::to_string(entry->cpu) + "; " +
                        eventNameOf(trace, entry) + "; " + info);
    });
}

int findEventId(kshark_data_stream* stream, const char* name) {
    return guarded(stream, -1, [&](LoadedTrace& trace) {
        for (size_t number = 0; number < trace.events().size(); ++number) {
            if (trace.events()[number].name == name) return static_cast<int>(number);
        }
        return -1;
    });
}

int* getAllEventIds(kshark_data_stream* stream) {
    const auto count = static_cast<size_t>(stream->n_events);
    auto* ids = static_cast<int*>(std::calloc(count + 1, sizeof(int)));
    for (size_t number = 0; ids != nullptr && number < count; ++number) {
        ids[number] = static_cast<int>(number);
    }
    return ids;
}

// The names belong to KernelShark, each of them.
int getAllEventFieldNames(kshark_data_stream* stream, const kshark_entry* entry, char*** names) {
    *names = nullptr;
    return guarded(stream, -ENOMEM, [&](LoadedTrace& trace) {
        const auto event = static_cast<size_t>(entry->event_id);
        if (isGap(entry) || event >= trace.events().size()) return 0;
        const std::vector<std::string>& fields = trace.events()[event].fields;
        auto** copies = static_cast<char**>(std::calloc(fields.size() + 1, sizeof(char*)));
        if (copies == nullptr) return -ENOMEM;
        for (size_t number = 0; number < fields.size(); ++number) {
            copies[number] = handOver(fields[number]);
        }
        *names = copies;
        return static_cast<int>(fields.size());
    });
}

kshark_event_field_format getEventFieldType(kshark_data_stream* stream, const kshark_entry* entry,
                                            const char* field) {
    return guarded(stream, KS_INVALID_FIELD, [&](LoadedTrace& trace) {
        const auto event = static_cast<size_t>(entry->event_id);
        if (isGap(entry) || event >= trace.events().size()) return KS_INVALID_FIELD;
        for (const std::string& name : trace.events()[event].fields) {
            if (name == field) return KS_INTEGER_FIELD;
        }
        return KS_INVALID_FIELD;
    });
}

int readNumber(const sonaprobe_event* event, const char* field, int64_t* number) {
    const sonaprobe_value* value = event != nullptr ? numberNamed(event, field) : nullptr;
    if (value == nullptr) return -EINVAL;
    *number = static_cast<int64_t>(numberOf(value));
    return 0;
}

const int readEventField(kshark_data_stream* stream, const kshark_entry* entry, const char* field,
                         int64_t* number) {
    return guarded(stream, -ENOMEM, [&](LoadedTrace& trace) {
        return readNumber(eventOf(trace, entry), field, number);
    });
}

// `record` is what load() gives to KernelShark's other plugins.
const int readRecordField(kshark_data_stream* stream, void* record, const char* field,
                          int64_t* number) {
    return guarded(stream, -ENOMEM, [&](LoadedTrace& trace) {
        return readNumber(trace.eventOf(*static_cast<const sonaprobe_record*>(record)), field,
                          number);
    });
}

// The entries of a trace; those that nobody takes over are freed.
class Entries {
  public:
    explicit Entries(size_t room)
        : rows_(static_cast<kshark_entry**>(std::calloc(room + 1, sizeof(void*)))) {
        if (rows_ == nullptr) throw std::bad_alloc();
    }
    ~Entries() {
        for (size_t number = 0; rows_ != nullptr && number < count_; ++number) {
            std::free(rows_[number]);
        }
        std::free(rows_);
    }
    Entries(const Entries&) = delete;
    Entries& operator=(const Entries&) = delete;

    kshark_entry* add(kshark_data_stream* stream, const LoadedTrace::Row& row, size_t offset) {
        auto* entry = static_cast<kshark_entry*>(std::calloc(1, sizeof(kshark_entry)));
        if (entry == nullptr) throw std::bad_alloc();
        rows_[count_++] = entry;
        entry->visible = 0xFF;
        entry->stream_id = stream->stream_id;
        entry->event_id = row.event;
        entry->cpu = row.processor;
        entry->pid = row.thread;
        entry->offset = static_cast<int64_t>(offset);
        entry->ts = row.time;
        return entry;
    }

    void addGap(kshark_data_stream* stream, const LoadedTrace::Row& row, size_t offset) {
        add(stream, row, offset)->event_id = KS_EVENT_OVERFLOW;
    }

    size_t count() const { return count_; }
    kshark_entry* last() const { return rows_[count_ - 1]; }
    kshark_entry** handOver() { return std::exchange(rows_, nullptr); }

  private:
    kshark_entry** rows_;
    size_t count_ = 0;
};

ssize_t loadEntries(kshark_data_stream* stream, kshark_context* context, kshark_entry*** rows) {
    // Other plugins may ask for fields meanwhile, so the trace's turn is not taken.
    try {
        LoadedTrace& trace = handleOf(stream).trace;
        size_t gaps = 1;
        for (const LoadedTrace::Row& row : trace.rows()) gaps += row.missing > 0 ? 1 : 0;
        Entries entries(trace.rows().size() + gaps);
        const auto finish = [&](sonaprobe_record* record) {
            kshark_hash_id_add(stream->tasks, entries.last()->pid);
            kshark_postprocess_entry(stream, record, entries.last());
            kshark_apply_filters(context, stream, entries.last());
        };
        for (size_t number = 0; number < trace.rows().size(); ++number) {
            const LoadedTrace::Row& row = trace.rows()[number];
            if (row.missing > 0) {
                entries.addGap(stream, row, number);
                finish(nullptr);
            }
            entries.add(stream, row, number);
            sonaprobe_record record = row.record;
            finish(&record);
        }
        if (trace.missingAtEnd() > 0 && !trace.rows().empty()) {
            entries.addGap(stream, trace.rows().back(), trace.rows().size());
            finish(nullptr);
        }
        *rows = entries.handOver();
        return static_cast<ssize_t>(entries.count());
    } catch (const std::exception&) {
        return -ENOMEM;
    }
}

int open(kshark_data_stream* stream) {
    auto handle = std::make_unique<Handle>();
    if (const int result = handle->trace.load(stream->file); result < 0) return result;
    auto* interface = static_cast<kshark_generic_stream_interface*>(
        std::calloc(1, sizeof(kshark_generic_stream_interface)));
    if (interface == nullptr) return -ENOMEM;
    interface->type = KS_GENERIC_DATA_INTERFACE;
    interface->get_pid = getPid;
    interface->get_event_id = getEventId;
    interface->get_event_name = getEventName;
    interface->get_task = getTask;
    interface->get_info = getInfo;
    interface->aux_info = getAuxInfo;
    interface->find_event_id = findEventId;
    interface->get_all_event_ids = getAllEventIds;
    interface->dump_entry = dumpEntry;
    interface->get_all_event_field_names = getAllEventFieldNames;
    interface->get_event_field_type = getEventFieldType;
    interface->read_event_field_int64 = readEventField;
    interface->read_record_field_int64 = readRecordField;
    interface->load_entries = loadEntries;
    stream->n_cpus = handle->trace.processors();
    stream->n_events = static_cast<int>(handle->trace.events().size());
    stream->idle_pid = -1;  // thread 0 is one like any other
    interface->handle = handle.release();
    stream->interface = interface;
    return 0;
}

}  // namespace
}  // namespace sonaprobe::plugins

extern "C" {
#pragma GCC visibility push(default)

bool KSHARK_INPUT_CHECK(const char* file) {
    try {
        return sonaprobe::plugins::likenessOf(file) > 0;
    } catch (const std::exception&) {
        return false;
    }
}

const char* KSHARK_INPUT_FORMAT() { return sonaprobe::plugins::kFormat; }

int KSHARK_INPUT_INITIALIZER(kshark_data_stream* stream) {
    try {
        return sonaprobe::plugins::open(stream);
    } catch (const std::exception&) {
        return -ENOMEM;
    }
}

int KSHARK_INPUT_DEINITIALIZER(kshark_data_stream* stream) {
    if (stream->interface != nullptr) delete &sonaprobe::plugins::handleOf(stream);
    return 0;
}

#pragma GCC visibility pop
}
