// What the records of a page mean: its events, the texts that their lines have, and the kinds of
// record that there are on each thread.

#pragma once

#include <cstdint>
#include <tsl/robin_map.h>
#include <vector>

#include "analysis/keyed_hash.h"
#include "events/event.h"
#include "lines/code_names.h"
#include "scope/json.h"

namespace sonaprobe::scope::timeline {

// A kind of record on one thread.
struct Symbol {
    uint32_t kind = 0;
    uint32_t thread = 0;
    uint16_t event = 0;
    uint8_t words = 0;  // bit n: arg n + 1 is shown
    uint64_t records = 0;
};

class EventTables {
  public:
    explicit EventTables(const CodeNames& names) : names_(&names) {}

    // The number of a record's symbol.
    uint32_t symbolOf(const Event& event, uint32_t thread);
    Symbol& symbol(uint32_t number) { return symbols_[number]; }
    const std::vector<Symbol>& symbols() const { return symbols_; }

    const CodeNames& names() const { return *names_; }

    // Of the event's place in the page's list.
    std::string driverOf(uint16_t event) const;

    // "events", "families", "texts", "kinds", "symbols".
    void describe(Json& page) const;

  private:
    // Events of a page are numbers of 16 bits; codes beyond share the last one.
    static constexpr uint16_t kLastEvent = 0xFFFF;

    struct Kind {
        uint32_t debugid;
        const Decoder* decoder;
        const Row* event;  // null of an unknown code
        const Row* text;   // null where none answers
    };
    struct Key {
        uint32_t debugid;
        const Row* text;
        uint32_t thread;
        bool operator==(const Key&) const = default;
    };
    struct Hash {
        size_t operator()(const Key& key) const {
            return keyedHash(reinterpret_cast<uintptr_t>(key.text),
                             uint64_t{key.thread} << 32 | key.debugid);
        }
    };

    uint32_t kindOf(const Event& event);
    uint16_t eventOf(uint32_t code);
    uint8_t wordsOf(const Kind& kind) const;
    Json textOf(const Kind& kind) const;

    static constexpr size_t kRecent = 4096;
    struct Recent {
        Key key{};
        uint32_t symbolAfter = 0;  // 0: nothing here
    };

    const CodeNames* names_;
    std::vector<uint32_t> events_;  // codes
    std::vector<Kind> kinds_;
    std::vector<Symbol> symbols_;
    tsl::robin_map<uint32_t, uint16_t> eventByCode_;
    tsl::robin_map<Key, uint32_t, Hash> kindByKey_;  // of thread 0
    tsl::robin_map<Key, uint32_t, Hash> symbolByKey_;
    std::vector<Recent> recent_ = std::vector<Recent>(kRecent);
};

}  // namespace sonaprobe::scope::timeline
