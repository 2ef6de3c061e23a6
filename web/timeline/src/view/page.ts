// The page of a trace: puts its parts together and does what keys, pointer and panels ask for.
import type { Matches, RecordDetail, Trace } from '../trace';
import { CallsSheet } from './calls_sheet';
import { emptyDetails, fillDetails } from './details';
import { Drawing, firstAfter } from './drawing';
import { DropoutList, sentence } from './dropouts';
import { choiceOf, fragmentOf, readFragment } from './fragment';
import { type Frame, makeFrame } from './frame';
import { Heads, laneTitle } from './heads';
import { Overlays } from './help';
import { listenToKeys } from './keys';
import { legend } from './legend';
import { type Grouping, groupOf, kGroupings, LaneLayout } from './lanes';
import { callBeside, callInside, neighbourhood, spanFor } from './navigation';
import { listenToPointer } from './pointer';
import { pointedMoment } from './ruler';
import { Search } from './search';
import { type Sheet, Side } from './side';
import { type Commands, firstState, type State } from './state';
import { StatisticsSheet } from './statistics';
import { shown as safe } from './text';
import { Tip } from './tips';
import { duration, moment } from './units';
import { Viewport } from './viewport';

const kNarrow = 700; // CSS pixels of the lanes' place, below which titles stand above the calls
const kSettle = 250; // ms without a change, then the address and the table of calls follow

export function showPage(place: HTMLElement, trace: Trace): void {
  new Page(place, trace);
}

class Page implements Commands {
  private readonly state: State = firstState();
  private readonly view: Viewport;
  private readonly layout: LaneLayout;
  private readonly frame: Frame;
  private readonly drawing: Drawing;
  private readonly heads: Heads;
  private readonly overlays: Overlays;
  private readonly side: Side;
  private readonly dropouts: DropoutList;
  private readonly statistics: StatisticsSheet;
  private readonly calls: CallsSheet;
  private readonly search: Search;
  private readonly tip: Tip;
  private pointed: { x: number; y: number; event: PointerEvent } | null = null;
  private settle = 0;
  private written = '';
  private asked = 0; // the latest jump; what earlier ones waited for is too late
  private wanted: number | null = null; // the record whose detail is on its way

  constructor(
    place: HTMLElement,
    private readonly trace: Trace,
  ) {
    this.view = new Viewport(trace.begin, trace.end);
    const calm = matchMedia('(prefers-reduced-motion: reduce)');
    this.view.calm = calm.matches;
    calm.addEventListener('change', () => (this.view.calm = calm.matches));
    this.layout = new LaneLayout(trace);
    this.frame = makeFrame(
      place,
      trace,
      this,
      () => this.overlays.showAbout(),
      (grouping) => this.regroup(grouping),
    );
    this.side = new Side(this.frame.side, () => this.changed());
    this.frame.side.append(legend(trace));
    const [list, details, statistics] = this.side.sheets;
    this.dropouts = new DropoutList(list, trace, this);
    emptyDetails(details);
    this.statistics = new StatisticsSheet(statistics, trace, this.state, this);
    this.search = new Search(
      this.frame.searchPlace,
      trace,
      (words, matches) => this.found(words, matches),
      (step) => this.nextMatch(step),
      () => this.frame.scroller.focus(),
    );
    this.overlays = new Overlays(place, legend(trace));
    this.tip = new Tip(this.frame.tip, trace);
    this.heads = new Heads(trace, this.frame, this.view, this.layout, this.state, this, (lane) =>
      this.choose(lane),
    );
    this.drawing = new Drawing(trace, this.frame, this.view, this.layout, this.state, () =>
      this.drawn(),
    );
    this.calls = new CallsSheet(this.side.sheets[3], trace, this.drawing, this);
    this.readAddress();
    this.drawing.resize();
    this.frame.scroller.addEventListener('scroll', () => this.drawing.scroll());
    listenToKeys(this, () => this.state.lane);
    this.listenToPointer();
    window.addEventListener('hashchange', () => {
      if (location.hash.replace(/^#/, '') !== this.written) this.readAddress();
    });
    new ResizeObserver(() => this.arrange()).observe(this.frame.scroller);
    trace.onUnpacked(() => this.drawing.invalidate());
  }

  // What changed is drawn in the next frame, and told in the address once it has come to rest.
  private changed(all = false): void {
    if (!this.drawing) return; // still being put together
    this.drawing.invalidate(all);
    window.clearTimeout(this.settle);
    this.settle = window.setTimeout(() => this.settled(), kSettle);
  }

  private drawn(): void {
    this.heads.follow(this.drawing);
  }

  private settled(): void {
    this.writeAddress();
    if (this.side.open === 3) this.calls.fill(this.currentLane());
    this.point();
  }

  private arrange(): void {
    const { state, frame, layout } = this;
    const { size } = this.view;
    const narrow = frame.scroller.clientWidth < kNarrow;
    frame.scroller.classList.toggle('narrow', narrow);
    layout.arrange(state.choice, narrow);
    frame.track.style.height = `${Math.max(layout.height * size, frame.scroller.clientHeight)}px`;
    frame.grouping.value = state.choice.grouping;
    this.changed();
  }

  // ---- the stretch of time

  move(share: number): void {
    this.view.step(share);
    this.changed();
  }
  zoom(factor: number): void {
    this.view.zoom(factor, this.view.width / 2);
    this.changed();
  }
  whole(): void {
    this.view.whole();
    this.changed();
  }
  edge(end: boolean): void {
    const span = this.view.targetTo - this.view.targetFrom;
    const middle = end ? this.trace.end - span * 0.45 : this.trace.begin + span * 0.45;
    this.view.show(middle - span / 2, middle + span / 2);
    this.changed();
  }
  zoomToSelected(): void {
    const { selected, measured } = this.state;
    const from = measured?.from ?? selected?.call?.begin ?? selected?.time;
    const to = measured?.to ?? selected?.call?.end ?? selected?.time;
    if (from === undefined || to === undefined) return;
    const margin = Math.max(500, Math.abs(to - from) * 0.1);
    this.view.show(Math.min(from, to) - margin, Math.max(from, to) + margin);
    this.changed();
  }

  // ---- dropouts, failures, matches

  // On from the one looked at; where that is not on the screen, the next from the screen's begin on,
  // or back from its end. After the last comes the first.
  nextDropout(step: number): void {
    const { dropouts } = this.trace;
    const { targetFrom, targetTo } = this.view;
    if (dropouts.length === 0) return this.speak('There is no dropout in this trace.');
    const last = dropouts[this.state.dropout]?.time ?? NaN;
    let next = this.state.dropout + step;
    if (!(last >= targetFrom && last <= targetTo))
      next =
        step > 0
          ? Math.max(0, dropouts.findIndex(({ time }) => time >= targetFrom))
          : dropouts.findLastIndex(({ time }) => time <= targetTo);
    this.dropout((next + dropouts.length) % dropouts.length);
  }

  dropout(index: number): void {
    const dropout = this.trace.dropouts[index];
    const named = dropout.culprit ? ` ${safe(dropout.culprit)}.` : '';
    this.speak(
      `Dropout ${index + 1} of ${this.trace.dropouts.length}, at ${moment(dropout.time, 1e5)}. ${sentence(dropout.meaning)}${named}`,
    );
    const asked = ++this.asked;
    void this.chooseDropout(index).then((culprit) => {
      if (asked !== this.asked) return;
      const span = neighbourhood(this.trace, dropout, culprit);
      this.view.show(span.from, span.to);
      if (dropout.lane >= 0) this.choose(dropout.lane);
      this.changed();
    });
  }

  // Its evidence stands in the list, its culprit is outlined.
  private async chooseDropout(index: number): Promise<RecordDetail | null> {
    const { culpritRecord } = this.trace.dropouts[index];
    this.state.dropout = index;
    this.state.blamed = null;
    this.side.show(0);
    this.dropouts.mark(index);
    const culprit = culpritRecord < 0 ? null : await this.trace.detail(culpritRecord);
    if (this.state.dropout !== index) return null;
    this.state.blamed = culprit;
    this.changed();
    return culprit;
  }

  private forgetDropout(): void {
    this.state.dropout = -1;
    this.state.blamed = null;
    this.dropouts.mark(-1);
  }

  culprit(): void {
    const dropout = this.trace.dropouts[Math.max(0, this.state.dropout)];
    if (!dropout) return this.speak('There is no dropout in this trace.');
    if (dropout.culpritRecord < 0) return this.speak('No call is named as its cause.');
    this.reveal(dropout.culpritRecord);
  }

  evidence(step: number): void {
    const dropout = this.trace.dropouts[Math.max(0, this.state.dropout)];
    if (!dropout) return this.speak('There is no dropout in this trace.');
    const { evidence } = dropout;
    const last = evidence.indexOf(this.state.selected?.record ?? -1);
    const next = last < 0 && step < 0 ? evidence.length - 1 : last + step;
    if (next < 0 || next >= evidence.length) return this.speak('No more evidence.');
    this.reveal(evidence[next]);
  }

  nextFailure(step: number): void {
    void this.trace.failures().then((failures) => this.goOn(failures, step, 'failure'));
  }

  startSearch(): void {
    this.search.input.focus();
    this.search.input.select();
  }

  // The match looked at stays so while more are found. Answers its place.
  private found(words: string, matches: Matches | null): number {
    const { state } = this;
    const record = state.words === words ? state.matches?.record[state.match] : undefined;
    state.words = words;
    state.matches = matches;
    state.match = record === undefined ? -1 : (matches?.record.indexOf(record) ?? -1);
    this.changed(true);
    return state.match;
  }

  nextMatch(step: number): void {
    const { matches } = this.state;
    if (!matches || matches.record.length === 0) return this.speak('No match.');
    this.state.match = this.goOn(matches, step, 'match', this.state.match);
    this.search.tell(this.state.match);
  }

  // On from the one looked at last; else from the selected record, or where the screen begins.
  private goOn(marks: Matches, step: number, name: string, last = -1): number {
    const many = marks.record.length;
    if (many === 0) {
      this.speak(`There is no ${name} in this trace.`);
      return -1;
    }
    let next = last + step;
    if (last < 0) {
      const { selected } = this.state;
      const time = selected?.time ?? this.view.targetFrom;
      next = firstAfter(marks.time, time);
      if (step < 0) next--;
      else while (next < many && marks.record[next] === selected?.record) next++;
    }
    next = ((next % many) + many) % many;
    this.speak(`${name} ${next + 1} of ${many}`);
    this.reveal(marks.record[next]);
    return next;
  }

  // ---- calls

  select(record: number): void {
    void this.detailOf(record);
  }

  reveal(record: number): void {
    const asked = ++this.asked;
    void this.detailOf(record).then((detail) => {
      if (!detail || asked !== this.asked) return;
      const span = spanFor(this.view, detail);
      if (span) this.view.show(span.from, span.to);
      this.choose(detail.lane);
      this.changed();
    });
  }

  private async detailOf(record: number): Promise<RecordDetail | null> {
    this.wanted = record;
    const detail = await this.trace.detail(record);
    if (this.wanted !== record) return null;
    this.state.selected = detail;
    fillDetails(this.side.sheets[1], this.trace, detail, this);
    this.side.show(1);
    const taken = detail.call ? `, ${duration(detail.call.end - detail.call.begin)}` : '';
    this.speak(`${safe(this.trace.events[detail.event].method)}${taken}`);
    return detail;
  }

  nextCall(step: number): void {
    const { selected } = this.state;
    const lane = selected?.lane ?? this.currentLane();
    if (lane < 0) return;
    const { targetFrom, targetTo } = this.view;
    const span = (targetTo - targetFrom) * 2;
    const time = selected
      ? (selected.call?.begin ?? selected.time)
      : step > 0
        ? targetFrom
        : targetTo;
    const depth = selected?.parents.length ?? 0;
    const record = callBeside(this.trace, lane, depth, time, span, step);
    if (record >= 0) this.reveal(record);
    else this.speak('No such call nearby.');
  }
  parent(): void {
    const outer = this.state.selected?.parents[0];
    if (outer !== undefined) this.reveal(outer);
  }
  child(): void {
    const inner = this.state.selected ? callInside(this.trace, this.state.selected) : -1;
    if (inner >= 0) this.reveal(inner);
  }

  measure(): void {
    const { selected } = this.state;
    const from = selected?.call?.begin ?? Math.max(this.trace.begin, this.view.targetFrom);
    const to = selected?.call?.end ?? Math.min(this.trace.end, this.view.targetTo);
    this.measured(from, to, true);
  }
  stretch(share: number): void {
    const span = this.state.measured;
    if (!span) return this.measure();
    this.measured(span.from, span.to + (this.view.targetTo - this.view.targetFrom) * share, true);
  }
  private measured(from: number, to: number, done: boolean): void {
    this.state.measured = { from, to };
    if (done) {
      this.statistics.show(this.state.measured);
      this.side.show(2);
      this.speak(`Measured ${duration(Math.abs(to - from))}`);
    }
    this.changed();
  }

  // ---- lanes

  private currentLane(): number {
    if (this.state.lane < 0)
      this.state.lane = this.layout.rows.find((row) => row.lane)?.lane?.id ?? -1;
    return this.state.lane;
  }

  // Makes a lane the current one, and brings it onto the screen; one that is not shown is shown.
  private choose(lane: number): void {
    this.state.lane = lane;
    const { choice } = this.state;
    if (!this.layout.rowOf(lane)) {
      choice.hidden.delete(lane);
      choice.closed.delete(groupOf(this.trace.lanes[lane], choice));
      if (this.layout.isIdle(this.trace.lanes[lane])) choice.idleShown = true;
      this.arrange();
    }
    const row = this.layout.rowOf(lane);
    if (row) this.bringUp(row.top * this.view.size, row.height * this.view.size);
    this.changed();
  }

  private bringUp(top: number, height: number): void {
    const { scroller } = this.frame;
    if (top < scroller.scrollTop) scroller.scrollTop = top;
    else if (top + height > scroller.scrollTop + scroller.clientHeight)
      scroller.scrollTop = Math.min(top, top + height - scroller.clientHeight);
  }

  scroll(pages: number): void {
    this.frame.scroller.scrollTop += pages * this.frame.scroller.clientHeight * 0.9;
  }
  nextLane(step: number): void {
    const lanes = this.layout.rows.flatMap((row) => (row.lane ? [row.lane] : []));
    const at = lanes.findIndex((lane) => lane.id === this.state.lane);
    const next = lanes[Math.min(lanes.length - 1, Math.max(0, at + step))];
    if (!next) return;
    this.choose(next.id);
    this.speak(safe(laneTitle(next)));
  }
  pin(lane: number): void {
    const { choice } = this.state;
    if (lane < 0) return;
    if (choice.pinned.includes(lane)) choice.pinned = choice.pinned.filter((one) => one !== lane);
    else choice.pinned.push(lane);
    this.arrange();
  }
  hide(lane: number): void {
    if (lane < 0) return;
    this.nextLane(1);
    this.state.choice.hidden.add(lane);
    if (this.state.lane === lane) this.state.lane = -1;
    this.arrange();
    this.speak('Hidden; X shows it again.');
  }
  showHidden(): void {
    this.state.choice.hidden.clear();
    this.arrange();
  }
  fold(lane: number): void {
    const { folded } = this.state.choice;
    if (lane < 0) return;
    if (!folded.delete(lane)) folded.add(lane);
    this.arrange();
  }
  foldGroup(name: string): void {
    const { closed } = this.state.choice;
    if (!closed.delete(name)) closed.add(name);
    this.arrange();
  }
  idle(): void {
    this.state.choice.idleShown = !this.state.choice.idleShown;
    this.arrange();
  }
  group(): void {
    const next = kGroupings.indexOf(this.state.choice.grouping) + 1;
    this.regroup(kGroupings[next % kGroupings.length]);
  }
  private regroup(grouping: Grouping): void {
    this.state.choice.grouping = grouping;
    this.arrange();
    this.speak(`Lanes by ${grouping}`);
  }

  // ---- panels

  panel(sheet: number): void {
    this.side.show(sheet as Sheet);
    this.side.sheets[sheet].focus();
  }
  help(): void {
    this.overlays.showKeys();
  }
  escape(): void {
    if (this.state.measured) {
      this.state.measured = null;
      this.statistics.show(null);
    } else if (this.state.selected) {
      this.state.selected = null;
      this.wanted = null;
      emptyDetails(this.side.sheets[1]);
    } else if (this.state.dropout >= 0) {
      this.forgetDropout();
    } else {
      this.search.set('');
    }
    this.changed();
  }

  private speak(text: string): void {
    this.frame.spoken.textContent = text;
  }

  // ---- the pointer

  private listenToPointer(): void {
    const { frame, view, drawing } = this;
    listenToPointer(frame, view, this.trace.begin, this.trace.end, {
      changed: () => this.changed(),
      hover: (x, y, event) => {
        this.pointed = { x, y, event };
        this.point();
      },
      leave: () => {
        this.pointed = null;
        frame.hairline.hidden = true;
        this.tip.hide();
      },
      click: (x, y) => {
        const row = this.layout.rowAt(y + drawing.scrolled);
        if (row?.lane) this.state.lane = row.lane.id;
        const hit = drawing.hit(x, y);
        if (hit) this.select(hit.record);
        this.changed();
      },
      doubleClick: (x, y) => {
        if (drawing.hit(x, y)) this.zoomToSelected();
      },
      measure: (from, to, done) => this.measured(from, to, done),
    });
  }

  // Tells what is under the pointer: as it moves, and when something else has moved under it.
  private point(): void {
    if (!this.pointed) return;
    const { x, y, event } = this.pointed;
    const { frame, view, drawing } = this;
    const hit = event.target === frame.lanes ? drawing.hit(x, y) : null;
    frame.hairline.hidden = false;
    frame.hairline.style.transform = `translateX(${x * view.size + frame.lanes.offsetLeft}px)`;
    this.tip.show(event.clientX, event.clientY, pointedMoment(view.time(x), view.nsPerPixel), hit);
  }

  // ---- the address

  private writeAddress(): void {
    this.written = fragmentOf(this.state, this.view);
    history.replaceState(null, '', `#${this.written}`);
  }

  private readAddress(): void {
    const shared = readFragment(location.hash);
    this.state.choice = choiceOf(shared, this.trace.lanes.length);
    if (shared.from !== null && shared.to !== null && shared.to > shared.from)
      this.view.show(shared.from, shared.to, false);
    if (shared.words) this.search.set(shared.words);
    if (shared.selection) this.measured(shared.selection[0], shared.selection[1], true);
    const { record, dropout } = shared;
    if (dropout !== null && dropout < this.trace.dropouts.length) void this.chooseDropout(dropout);
    else this.forgetDropout();
    if (record !== null && record < this.trace.records) this.select(record);
    this.arrange();
  }
}
