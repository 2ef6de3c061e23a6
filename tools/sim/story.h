// The vocabulary of the stories that simulated drivers play: tables of steps, one after the other
// as the drivers' code would run.
//
//   start(code, a1, a2, a3, a4)    a trace point on qualifier 1, with its argument words
//   end(code, ...)                 on qualifier 2; closes the latest start that is open
//   other(code, ...)               on qualifier 0
//   sel(n, code, a1, a2, a3, hi)   other, with n in the low half and hi in the high half of arg4
//   instant(code, ...)             on qualifier 1, without an end
//   wait(least, most)              time passes; wait(value), as much of it as the value says
//   set(variable, value)           and mark(variable), set to the time of now, for since()
//   add(variable, value, limit)    begins at 0 again at the limit, if there is one
//   tell(table)                    the steps of another table
//   oneOf(table, ...)              those of one of them, by chance
//   every(period, count, table)    those of a table at each beat of a clock, and on to the next
//   everyWhile(period, variable, table)
//                                  until the variable is 0 when a beat comes
//   fork(thread, table)            another thread begins with a table as soon as it is free
//   join(thread)                   waits until a thread is free
//
// Words are numbers, objects, or made when their step's time comes: var, between, pair, now and
// others below. Times are ticks of the trace clock: us(n), ms(n).

#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace sonaprobe::sim {

using Ticks = uint64_t;
constexpr Ticks kTicksPerSecond = 24'000'000;
constexpr Ticks us(uint64_t n) { return n * 24; }
constexpr Ticks ms(uint64_t n) { return n * 24'000; }

// A driver's object, by its kernel address.
struct Object {
    uint64_t address;
};

enum class Source : uint8_t {
    number,
    object,
    variable,      // of the story, plus a number
    between,       // by chance, from a number to most
    now,           // time stamp, plus a number of ticks
    nanoseconds,   // now in nanoseconds
    milliseconds,  // now in milliseconds, as a bus counts frames
    beat,          // time stamp of the present beat, plus a number of ticks
    since,         // nanoseconds since a variable's mark
};

struct Term {
    Source source = Source::number;
    uint8_t variable = 0;
    uint64_t number = 0;
    uint64_t most = 0;
};

// A number of any type, a truth value, an enumerator.
template <typename T>
concept Number = std::integral<T> || std::is_enum_v<T>;

// An argument word: one term, or a pair of them in its high and its low half.
struct Value {
    Term term;
    Term low;
    bool isPair = false;

    constexpr Value() = default;
    constexpr Value(Term whole) : term(whole) {}
    constexpr Value(Number auto number) : term{.number = static_cast<uint64_t>(number)} {}
    constexpr Value(Object object) : term{.source = Source::object, .number = object.address} {}
};

constexpr Value var(uint8_t variable, int64_t plus = 0) {
    return Term{Source::variable, variable, static_cast<uint64_t>(plus)};
}
constexpr Value between(uint64_t least, uint64_t most) {
    return Term{Source::between, 0, least, most};
}
constexpr Value now(int64_t plus = 0) { return Term{Source::now, 0, static_cast<uint64_t>(plus)}; }
constexpr Value nowNanoseconds() { return Term{Source::nanoseconds}; }
constexpr Value nowMilliseconds() { return Term{Source::milliseconds}; }
constexpr Value beat(int64_t plus = 0) {
    return Term{Source::beat, 0, static_cast<uint64_t>(plus)};
}
constexpr Value since(uint8_t variable) { return Term{Source::since, variable}; }

constexpr Value pair(Value high, Value low) {
    Value value = high;
    value.low = low.term;
    value.isPair = true;
    return value;
}

constexpr uint64_t nanoseconds(Ticks ticks) { return ticks * 125 / 3; }

// A code of four characters, as in 'hdpn'.
constexpr uint32_t chars(const char (&text)[5]) {
    uint32_t code = 0;
    for (size_t i = 0; i < 4; i++) code = code << 8 | static_cast<unsigned char>(text[i]);
    return code;
}

struct Step;

struct Table {
    const Step* steps = nullptr;
    size_t count = 0;

    constexpr Table() = default;
    template <size_t N>
    constexpr Table(const Step (&list)[N]) : steps(list), count(N) {}
};

enum class Act : uint8_t { record, instant, wait, set, add, play, every, everyWhile, fork, join };

struct Step {
    Act act = Act::record;
    uint8_t index = 0;     // a variable or a thread
    uint32_t debugid = 0;  // record, instant
    std::array<Value, 4> values{};
    Ticks period = 0;
    std::array<Table, 4> tables{};  // play: one of them
    uint8_t tableCount = 0;
};

constexpr Step trace(Act act, uint32_t debugid, Value a1, Value a2, Value a3, Value a4) {
    return {.act = act, .debugid = debugid, .values = {a1, a2, a3, a4}};
}
constexpr Step start(uint32_t code, Value a1 = {}, Value a2 = {}, Value a3 = {}, Value a4 = {}) {
    return trace(Act::record, code | 1, a1, a2, a3, a4);
}
constexpr Step end(uint32_t code, Value a1 = {}, Value a2 = {}, Value a3 = {}, Value a4 = {}) {
    return trace(Act::record, code | 2, a1, a2, a3, a4);
}
constexpr Step other(uint32_t code, Value a1 = {}, Value a2 = {}, Value a3 = {}, Value a4 = {}) {
    return trace(Act::record, code, a1, a2, a3, a4);
}
constexpr Step sel(uint32_t n, uint32_t code, Value a1, Value a2 = {}, Value a3 = {},
                   Value high = {}) {
    return trace(Act::record, code, a1, a2, a3, pair(high, n));
}
constexpr Step instant(uint32_t code, Value a1 = {}, Value a2 = {}, Value a3 = {}, Value a4 = {}) {
    return trace(Act::instant, code | 1, a1, a2, a3, a4);
}

constexpr Step wait(Value ticks) { return {.act = Act::wait, .values = {ticks}}; }
constexpr Step wait(Ticks least, Ticks most) { return wait(between(least, most)); }
constexpr Step set(uint8_t variable, Value value) {
    return {.act = Act::set, .index = variable, .values = {value}};
}
constexpr Step mark(uint8_t variable) { return set(variable, now()); }
constexpr Step add(uint8_t variable, Value value, uint64_t limit = 0) {
    return {.act = Act::add, .index = variable, .values = {value, limit}};
}

constexpr Step oneOf(std::convertible_to<Table> auto const&... tables) {
    static_assert(0 < sizeof...(tables) && sizeof...(tables) <= 4);
    return {.act = Act::play, .tables = {Table(tables)...}, .tableCount = sizeof...(tables)};
}
constexpr Step tell(Table table) { return oneOf(table); }
constexpr Step every(Ticks period, Value count, Table table) {
    return {
        .act = Act::every, .values = {count}, .period = period, .tables = {table}, .tableCount = 1};
}
constexpr Step everyWhile(Ticks period, uint8_t variable, Table table) {
    return {.act = Act::everyWhile,
            .index = variable,
            .period = period,
            .tables = {table},
            .tableCount = 1};
}
constexpr Step fork(uint8_t thread, Table table) {
    return {.act = Act::fork, .index = thread, .tables = {table}, .tableCount = 1};
}
constexpr Step join(uint8_t thread) { return {.act = Act::join, .index = thread}; }

// A thread of a story. Its id goes into arg5 of what it traces.
struct Thread {
    uint64_t id;
    uint32_t cpu;  // where it begins
};

constexpr size_t kVariables = 16;

struct Story {
    std::span<const Thread> threads;
    Table plot;  // of the first thread; the story ends when no thread has anything left to do
};

// Whether each start of a table has its end in the same table, nested as calls nest, and each
// variable and thread exists; and so for the tables that it plays.
consteval bool isSound(Table table, size_t threads) {
    std::array<uint32_t, 64> open{};
    size_t depth = 0;
    for (const Step& step : std::span(table.steps, table.count)) {
        const bool ofThread = step.act == Act::fork || step.act == Act::join;
        if (step.index >= (ofThread ? threads : kVariables)) return false;
        for (const Value& value : step.values) {
            if (value.term.variable >= kVariables || value.low.variable >= kVariables) return false;
        }
        if (step.act == Act::record) {
            const uint32_t code = step.debugid & ~3U;
            const uint32_t qualifier = step.debugid & 3;
            if (qualifier == 1) open.at(depth++) = code;
            if (qualifier == 2 && (depth == 0 || open.at(--depth) != code)) return false;
        }
        for (const Table& played : std::span(step.tables).first(step.tableCount)) {
            if (!isSound(played, threads)) return false;
        }
    }
    return depth == 0;
}

// Not constexpr, so that calling it while compiling is an error that shows the reason.
void refuse(const char* reason);

// A story whose tables are not sound does not compile.
template <size_t kThreads>
consteval Story story(const Thread (&threads)[kThreads], Table plot) {
    if (!isSound(plot, kThreads)) refuse("a start without its end, an unknown variable or thread");
    return {threads, plot};
}

}  // namespace sonaprobe::sim
