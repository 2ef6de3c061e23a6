// sonascope why: each dropout, its cause and the records that prove it.

#include <nlohmann/json.hpp>

#include "analysis/dropout_causes.h"
#include "analysis/event_names.h"
#include "scope/command.h"
#include "scope/options.h"
#include "scope/output.h"
#include "scope/input.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

struct Options {
    TraceOptions trace;
    OutputOptions output;
};

using Json = nlohmann::ordered_json;

Json culpritJson(const Culprit& culprit) {
    Json json;
    if (culprit.code) {
        const EventName name = nameOf(*culprit.code);
        if (!name.full.empty()) {
            json["driver"] = name.group;
            json["method"] = name.method;
        }
        json["code"] = codeText(*culprit.code);
        json["thread"] = wordText(culprit.thread);
        json["cpu"] = culprit.cpu;
    }
    json["slot"] = culprit.slot;
    return json;
}

Status run(const Options& options) {
    Input input(options.trace.path);
    Output out(options.output);
    IoObserver observer;
    for (auto slots = input.next(); !slots.empty(); slots = input.next()) {
        for (const TraceRecord& slot : slots) observer.take(slot);
    }
    IoTrace trace = observer.finish();
    const std::vector<TimedThread> threads = timeThreads(trace);
    const std::vector<Dropout> dropouts = judgeDropouts(trace, threads);
    Json list = Json::array();
    for (const Dropout& dropout : dropouts) {
        const Verdict& verdict = dropout.verdict;
        Json json{{"slot", dropout.slot},
                  {"time_ns", dropout.time},
                  {"thread", wordText(dropout.thread)}};
        json["budget_ns"] = dropout.budget ? Json(*dropout.budget) : Json();
        json["lacking_ns"] = dropout.lacking ? Json(*dropout.lacking) : Json();
        json["cause"] = kDropoutCauses.at(static_cast<size_t>(verdict.cause));
        json["certainty"] = kCertainties.at(static_cast<size_t>(verdict.certainty));
        json["share"] = verdict.share;
        json["culprit"] = verdict.culprit ? culpritJson(*verdict.culprit) : Json();
        json["evidence"] = verdict.evidence;
        list.push_back(json);
    }
    out.line(Json{{"dropouts", list}}.dump(1));
    out.finish();
    return dropouts.empty() ? Status::done : Status::findings;
}

}  // namespace

Run setUpWhy(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addTraceOptions(app, options->trace);
    addOutputOptions(app, options->output);
    addExamples(app, "  sonascope why trace.raw\n");
    return [options] { return run(*options); };
}

}  // namespace sonaprobe::scope
