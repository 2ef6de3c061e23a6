// The search: matches come in while blocks are still looked at, and are counted as they come.
import type { Matches, Trace } from '../trace';
import { button, element } from './dom';
import { count, counted } from './units';

const kWait = 120; // ms after the last letter

export class Search {
  readonly input: HTMLInputElement;
  private readonly told: HTMLOutputElement;
  private stop = new AbortController();
  private timer = 0;
  private matches: Matches | null = null;
  private wanted = 0; // a step that waits for the first match

  constructor(
    place: HTMLElement,
    private readonly trace: Trace,
    private readonly found: (words: string, matches: Matches | null) => number,
    private readonly step: (step: number) => void,
    private readonly leave: () => void,
  ) {
    this.input = element('input', {
      type: 'search',
      placeholder: 'Search ( / )',
      'aria-label': 'Search names and texts (key /)',
      autocomplete: 'off',
      spellcheck: 'false',
    });
    this.told = element('output');
    place.append(
      this.input,
      this.told,
      button({ 'aria-label': 'match before (key N)', title: 'Key N' }, () => step(-1), '‹'),
      button({ 'aria-label': 'next match (key n)', title: 'Key n' }, () => step(1), '›'),
    );
    this.input.addEventListener('input', () => {
      window.clearTimeout(this.timer);
      this.timer = window.setTimeout(() => this.start(), kWait);
    });
    this.input.addEventListener('keydown', (event) => this.key(event));
  }

  // Takes words that did not come from the keyboard.
  set(words: string): void {
    if (this.input.value === words) return;
    this.input.value = words;
    this.start();
  }

  tell(match: number): void {
    const { matches } = this;
    if (!matches) this.told.textContent = '';
    else if (matches.record.length === 0)
      this.told.textContent = matches.complete ? 'no match' : 'searching…';
    else {
      const all = `${count(matches.record.length)}${matches.complete ? '' : ' so far'}`;
      this.told.textContent =
        match >= 0
          ? `${count(match + 1)} of ${all}`
          : counted(matches.record.length, 'match', 'matches');
    }
  }

  private start(): void {
    window.clearTimeout(this.timer);
    this.timer = 0;
    this.wanted = 0;
    this.stop.abort();
    this.stop = new AbortController();
    const { signal } = this.stop;
    const words = this.input.value.trim();
    this.take(words, null);
    if (words === '') return;
    this.trace.search(
      words,
      (matches) => {
        if (!signal.aborted) this.take(words, matches);
      },
      signal,
    );
  }

  private take(words: string, matches: Matches | null): void {
    this.matches = matches;
    this.tell(this.found(words, matches));
    if (this.wanted) this.go(this.wanted);
  }

  private go(step: number): void {
    const { matches } = this;
    const none = !matches || (matches.record.length === 0 && !matches.complete);
    this.wanted = none ? step : 0;
    if (!none) this.step(step);
  }

  private key(event: KeyboardEvent): void {
    if (event.key === 'Enter') {
      if (this.timer) this.start();
      this.go(event.shiftKey ? -1 : 1);
      this.leave();
    } else if (event.key === 'Escape') {
      this.input.value = '';
      this.start();
      this.leave();
    } else {
      return;
    }
    event.preventDefault();
    event.stopPropagation();
  }
}
