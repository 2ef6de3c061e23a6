// Interprets the stories' steps.

#include "sim/stage.h"

#include <algorithm>

namespace sonaprobe::sim {
namespace {

// Between one trace point and the next of straight code, and how late a thread wakes.
constexpr Ticks kLeastCall = us(1);
constexpr Ticks kMostCall = us(6);
constexpr Ticks kLeastWake = us(6);
constexpr Ticks kMostWake = us(38);
constexpr uint32_t kCpus = 8;
constexpr uint64_t kWakesOnOneCpu = 24;  // on the average

struct Moment {
    Stage& stage;
    StoryState& story;
    Actor& actor;
};

void open(Actor& actor, const Scene& scene) { actor.scenes.at(actor.depth++) = scene; }

void wake(Moment& moment, Ticks due) {
    Actor& actor = moment.actor;
    Random& random = moment.story.random;
    actor.time = std::max(actor.time, due + drawBetween(random, kLeastWake, kMostWake));
    if (drawBetween(random, 1, kWakesOnOneCpu) == 1) {
        actor.cpu = static_cast<uint32_t>(drawBetween(random, 0, kCpus - 1));
    }
}

Ticks presentBeat(const Actor& actor) {
    for (size_t i = actor.depth; i-- > 0;) {
        if (actor.scenes[i].period != 0) return actor.scenes[i].beat;
    }
    return actor.time;
}

uint64_t evaluate(Moment& moment, const Term& term) {
    const auto& [stage, story, actor] = moment;
    switch (term.source) {
        case Source::number: return term.number;
        case Source::object: return term.number + stage.objectSlide;
        case Source::variable: return story.variables[term.variable] + term.number;
        case Source::between: return drawBetween(story.random, term.number, term.most);
        case Source::now: return stampOf(stage.clock, actor.time + term.number);
        case Source::nanoseconds: return nanoseconds(stampOf(stage.clock, actor.time));
        case Source::milliseconds: return stampOf(stage.clock, actor.time) / ms(1);
        case Source::beat: return stampOf(stage.clock, presentBeat(actor) + term.number);
        case Source::since:
            return nanoseconds(stampOf(stage.clock, actor.time) - story.variables[term.variable]);
    }
    return 0;
}

uint64_t evaluate(Moment& moment, const Value& value) {
    const uint64_t word = evaluate(moment, value.term);
    if (!value.isPair) return word;
    return word << 32 | (evaluate(moment, value.low) & 0xFFFFFFFF);
}

void fill(TraceRecord& record, Moment& moment, const Step& step) {
    record.timestamp = stampOf(moment.stage.clock, moment.actor.time);
    record.arg1 = evaluate(moment, step.values[0]);
    record.arg2 = evaluate(moment, step.values[1]);
    record.arg3 = evaluate(moment, step.values[2]);
    record.arg4 = evaluate(moment, step.values[3]);
    record.arg5 = moment.actor.thread.id + moment.stage.threadSlide;
    record.debugid = step.debugid;
    record.cpuid = moment.actor.cpu;
    record.reserved = 0;
}

// Whether a thread has work to do until later than the actor's present time, who then looks again.
bool waitFor(Actor& actor, const Actor& busy) {
    if (busy.depth == 0) return false;
    actor.time = std::max(actor.time, busy.time) + 1;
    return true;
}

// At a beat the scene begins once more or closes; at its last step it closes or waits for a beat.
void turnScene(Moment& moment, Scene& scene) {
    Actor& actor = moment.actor;
    if (scene.next != kAtBeat) {
        if (scene.period == 0) {
            actor.depth--;
            return;
        }
        scene.beat += scene.period;
        scene.next = kAtBeat;
        wake(moment, scene.beat);
        return;
    }
    const bool goesOn = scene.variable < 0
                            ? scene.beatsLeft > 0
                            : moment.story.variables[static_cast<size_t>(scene.variable)] != 0;
    if (!goesOn) {
        actor.depth--;
        return;
    }
    if (scene.variable < 0) scene.beatsLeft--;
    scene.next = 0;
}

// Takes the actor's next step. True when it has traced a record.
bool takeStep(Moment& moment, TraceRecord& record) {
    auto& [stage, story, actor] = moment;
    Scene& scene = actor.scenes[actor.depth - 1];
    if (scene.next >= scene.table.count) {
        turnScene(moment, scene);
        return false;
    }
    const Step& step = scene.table.steps[scene.next++];
    switch (step.act) {
        case Act::record:
        case Act::instant:
            fill(record, moment, step);
            actor.time += drawBetween(story.random, kLeastCall, kMostCall);
            return true;
        case Act::wait: wake(moment, actor.time + evaluate(moment, step.values[0])); break;
        case Act::set: story.variables[step.index] = evaluate(moment, step.values[0]); break;
        case Act::add: {
            uint64_t& variable = story.variables[step.index];
            variable += evaluate(moment, step.values[0]);
            const uint64_t limit = step.values[1].term.number;
            if (limit != 0) variable %= limit;
            break;
        }
        case Act::play: {
            const uint64_t which =
                step.tableCount == 1 ? 0 : drawBetween(story.random, 0, step.tableCount - 1U);
            open(actor, {.table = step.tables.at(which), .next = 0});
            break;
        }
        case Act::every:
            open(actor, {.table = step.tables[0],
                         .next = kAtBeat,
                         .period = step.period,
                         .beat = actor.time,
                         .beatsLeft = evaluate(moment, step.values[0])});
            break;
        case Act::everyWhile:
            open(actor, {.table = step.tables[0],
                         .next = kAtBeat,
                         .period = step.period,
                         .beat = actor.time,
                         .variable = step.index});
            break;
        case Act::fork: {
            Actor& other = story.actors.at(step.index);
            if (waitFor(actor, other)) {
                scene.next--;
                break;
            }
            open(other, {.table = step.tables[0], .next = 0});
            Moment begun{stage, story, other};
            other.time = actor.time;
            wake(begun, actor.time);
            break;
        }
        case Act::join:
            if (waitFor(actor, story.actors.at(step.index))) scene.next--;
            break;
    }
    return false;
}

}  // namespace

Stage makeStage(const Scenario& scenario, uint64_t seed, uint32_t number) {
    Stage stage;
    stage.objectSlide = uint64_t{number} << 32;
    stage.threadSlide = uint64_t{number} << 16;
    Random seeds{seed + number};
    for (const Story* story : scenario.stories) {
        StoryState state{.story = story, .random = {draw(seeds)}};
        for (const Thread& thread : story->threads) {
            state.actors.push_back({.thread = thread, .cpu = thread.cpu});
        }
        stage.stories.push_back(std::move(state));
    }
    return stage;
}

void beginRound(Stage& stage) {
    for (StoryState& story : stage.stories) {
        story.variables = {};
        Actor& first = story.actors.front();
        first.time = stage.time;
        open(first, {.table = story.story->plot, .next = 0});
    }
}

void beginTable(Actor& actor, Table table, Ticks time) {
    actor.time = time;
    open(actor, {.table = table, .next = 0});
}

bool nextRecordOf(Stage& stage, StoryState& story, Actor& actor, TraceRecord& record) {
    Moment moment{stage, story, actor};
    while (actor.depth > 0) {
        if (takeStep(moment, record)) return true;
    }
    return false;
}

bool nextRecord(Stage& stage, TraceRecord& record) {
    for (;;) {
        Actor* earliest = nullptr;
        StoryState* itsStory = nullptr;
        for (StoryState& story : stage.stories) {
            for (Actor& actor : story.actors) {
                if (actor.depth == 0) continue;
                if (earliest != nullptr && earliest->time <= actor.time) continue;
                earliest = &actor;
                itsStory = &story;
            }
        }
        if (earliest == nullptr) return false;
        stage.time = earliest->time;
        Moment moment{stage, *itsStory, *earliest};
        if (takeStep(moment, record)) return true;
    }
}

}  // namespace sonaprobe::sim
