// Numbers kinds of records, and describes them for the page.

#include "scope/timeline/event_tables.h"

#include <array>

#include "analysis/event_names.h"
#include "analysis/event_traits.h"
#include "scope/event_text.h"
#include "scope/units.h"

namespace sonaprobe::scope::timeline {

namespace {

// By hue.
constexpr std::array kFamilies = {"other",      "HDA",      "headset",     "USB",
                                  "microphone", "embedded", "audio server"};

Json sliceJson(const Slice& slice) { return {slice.word, slice.dropHigh, slice.dropLow}; }

}  // namespace

uint32_t EventTables::symbolOf(const Event& event, uint32_t thread) {
    const Key key{event.record->debugid, event.text, thread};
    Recent& recent = recent_[Hash()(key) % kRecent];
    if (recent.symbolAfter != 0 && recent.key == key) return recent.symbolAfter - 1;
    const auto [found, isNew] =
        symbolByKey_.try_emplace(key, static_cast<uint32_t>(symbols_.size()));
    if (isNew) {
        const uint32_t kind = kindOf(event);
        symbols_.push_back({.kind = kind,
                            .thread = thread,
                            .event = eventOf(codeOf(key.debugid)),
                            .words = wordsOf(kinds_[kind])});
    }
    recent = {key, found->second + 1};
    return found->second;
}

uint32_t EventTables::kindOf(const Event& event) {
    const Key key{event.record->debugid, event.text, 0};
    const auto [found, isNew] = kindByKey_.try_emplace(key, static_cast<uint32_t>(kinds_.size()));
    if (isNew) kinds_.push_back({key.debugid, event.decoder, event.event, event.text});
    return found->second;
}

uint16_t EventTables::eventOf(uint32_t code) {
    const auto found = eventByCode_.find(code);
    if (found != eventByCode_.end()) return found->second;
    if (events_.size() == kLastEvent) return kLastEvent;
    const auto number = static_cast<uint16_t>(events_.size());
    eventByCode_.emplace(code, number);
    events_.push_back(code);
    return number;
}

uint8_t EventTables::wordsOf(const Kind& kind) const {
    constexpr uint8_t kAll = 0x0F;
    if (kind.event == nullptr) return kAll;
    unsigned words = hasObject(kind.debugid) ? 1 : 0;
    if (kind.text == nullptr) return static_cast<uint8_t>(words);
    for (const Piece& piece : kind.decoder->piecesOf(*kind.text)) {
        if (piece.reading == Reading::nothing) continue;
        words |= 1U << (piece.slice.word - 1);
        if (piece.reading == Reading::seconds) words |= 1U << (piece.later.word - 1);
    }
    return static_cast<uint8_t>(words & kAll);
}

std::string EventTables::driverOf(uint16_t event) const {
    return event < events_.size() ? std::string(nameOf(events_[event]).group) : std::string();
}

Json EventTables::textOf(const Kind& kind) const {
    const Decoder& decoder = *kind.decoder;
    const Row& row = kind.text != nullptr ? *kind.text : *kind.event;
    const std::string_view name = decoder.text(row.name).view();
    Json text{{"group", name.substr(0, row.groupLength)},
              {"method", name.substr(row.groupLength + kNameSeparator.size())}};
    if (kind.text == nullptr) return text;
    Json& pieces = text["pieces"] = Json::array();
    const BlockText literals = decoder.text(row.text);
    for (const Piece& piece : decoder.piecesOf(row)) {
        Json entry{{"literal", literals.part(piece.literalBegin, piece.literalLength).view()}};
        if (piece.reading != Reading::nothing) {
            entry["reading"] = static_cast<unsigned>(piece.reading);
            entry["slice"] = sliceJson(piece.slice);
            entry["name"] = decoder.nameOf(piece);
        }
        if (piece.signExtend) entry["signExtend"] = true;
        if (piece.zeroFill) entry["zeroFill"] = true;
        if (piece.alternate) entry["alternate"] = true;
        if (piece.width != 0) entry["width"] = piece.width;
        if (piece.reading == Reading::seconds) entry["later"] = sliceJson(piece.later);
        if (piece.reading == Reading::words) {
            const WordPair& words = decoder.wordsOf(row, piece);
            entry["words"] = {decoder.text(words.notZero).view(), decoder.text(words.zero).view()};
        }
        pieces.push_back(std::move(entry));
    }
    return text;
}

void EventTables::describe(Json& page) const {
    Json& events = page["events"] = Json::array();
    for (const uint32_t code : events_) {
        const EventName name = nameOf(code);
        events.push_back(
            {{"code", code},
             {"driver", name.group},
             {"method", name.full.empty() ? eventText(code, *names_) : std::string(name.method)},
             {"family", hueOf(code)}});
    }
    if (events_.size() == kLastEvent) {
        events.push_back({{"code", 0}, {"driver", ""}, {"method", "other codes"}, {"family", 0}});
    }
    page["families"] = kFamilies;
    Json& kinds = page["kinds"] = Json::array();
    for (const Kind& kind : kinds_) {
        const uint32_t code = codeOf(kind.debugid);
        const auto event = eventByCode_.find(code);
        Json entry{{"event", event != eventByCode_.end() ? event->second : kLastEvent},
                   {"qualifier", static_cast<uint32_t>(qualifierOf(kind.debugid))}};
        if (hasObject(code)) entry["object"] = true;
        if (startsArePoints(code)) entry["point"] = true;
        if (code == kIoThread) entry["waits"] = true;
        if (kind.event != nullptr) {
            entry["text"] = textOf(kind);
        } else {
            entry["name"] = eventText(code, *names_);
        }
        kinds.push_back(std::move(entry));
    }
    Json& symbols = page["symbols"] = Json::array();
    for (const Symbol& symbol : symbols_) {
        symbols.push_back(symbol.kind);
        symbols.push_back(symbol.thread);
        symbols.push_back(symbol.words);
    }
}

}  // namespace sonaprobe::scope::timeline
