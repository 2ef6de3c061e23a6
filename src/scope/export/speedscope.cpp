// speedscope's own format: a profile for each thread, in which calls open and close.

#include <limits>
#include <vector>

#include "scope/export/put_json.h"
#include "scope/export/rows.h"
#include "scope/export/sorted_text.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

class Speedscope final : public Format {
  public:
    Speedscope(const FormatOptions& options, TextOutput& out)
        : file_(options.file), names_(options.names), out_(&out) {}

    void closed(const ToldCall& told) override {
        if (!told.selected) return;
        const Call& call = *told.call;
        const uint32_t frame = frameOf(call.code);
        add(call.thread, told.startOrder, R"({"type":"O","frame":)", frame, call.start);
        add(call.thread, told.endOrder, R"({"type":"C","frame":)", frame, told.closing->time);
        Span& span = spanOf(call.thread);
        span.begin = std::min(span.begin, call.start);
        span.end = std::max(span.end, told.closing->time);
    }

    void finish(const TraceClock& clock) override {
        out_->put(R"({"$schema":"https://www.speedscope.app/file-format-schema.json")");
        putMember(R"(,"exporter":)", "sonascope");
        putMember(R"(,"name":)", file_);
        out_->put(",\n\"profiles\":[");
        int64_t thread = -1;
        events_.forEach([&](const TextKey& key, std::string_view event) {
            if (key.first != thread) {
                out_->put(thread < 0 ? "\n" : "\n]},\n");
                thread = key.first;
                putProfile(clock, static_cast<uint32_t>(thread));
            } else {
                out_->put(",\n");
            }
            out_->put(event);
        });
        // A file without a profile is none to the viewer.
        if (thread < 0) {
            out_->put(
                "\n"
                R"({"type":"evented","name":"no calls","unit":"nanoseconds",)"
                R"("startValue":0,"endValue":0,"events":[)");
        }
        out_->put("\n]}],\n\"shared\":{\"frames\":[");
        for (size_t i = 0; i < frameCodes_.size(); ++i) {
            out_->put(i == 0 ? "\n" : ",\n");
            putMember(R"({"name":)", eventText(frameCodes_[i], *names_));
            out_->put("}");
        }
        out_->put("\n]}}\n");
    }

  private:
    struct Span {
        Nanoseconds begin = std::numeric_limits<Nanoseconds>::max();
        Nanoseconds end = std::numeric_limits<Nanoseconds>::min();
    };

    Span& spanOf(uint32_t thread) {
        if (thread >= spans_.size()) spans_.resize(thread + 1);
        return spans_[thread];
    }

    uint32_t frameOf(uint32_t code) {
        const auto next = static_cast<uint32_t>(frameCodes_.size());
        const auto [entry, added] = frames_.try_emplace(code, next);
        if (added) frameCodes_.push_back(code);
        return entry->second;
    }

    void add(uint32_t thread, uint64_t order, std::string_view head, uint32_t frame,
             Nanoseconds time) {
        char* at = putUnsigned(putText(events_.cursor(), head), frame);
        at = putSigned(putText(at, R"(,"at":)"), time);
        events_.add({thread, order}, putText(at, "}"));
    }

    void putMember(std::string_view key, std::string_view text) {
        out_->put(key);
        out_->moveTo(putJsonText(out_->cursor(), text));
    }

    void putProfile(const TraceClock& clock, uint32_t thread) {
        const Span& span = spanOf(thread);
        putMember(R"({"type":"evented","name":)",
                  "thread " + shortWordText(clock.threadId(thread)));
        char* at = putText(out_->cursor(), R"(,"unit":"nanoseconds","startValue":)");
        at = putSigned(putText(putSigned(at, span.begin), R"(,"endValue":)"), span.end);
        out_->moveTo(putText(at, ",\"events\":[\n"));
    }

    std::string file_;
    const CodeNames* names_;
    TextOutput* out_;
    SortedText events_;  // by thread
    std::vector<Span> spans_;
    tsl::robin_map<uint32_t, uint32_t> frames_;  // by code
    std::vector<uint32_t> frameCodes_;
};

}  // namespace

std::unique_ptr<Format> makeSpeedscope(const FormatOptions& options, TextOutput& out) {
    return std::make_unique<Speedscope>(options, out);
}

}  // namespace sonaprobe::scope
