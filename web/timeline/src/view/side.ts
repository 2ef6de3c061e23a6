// The panel at the side: four sheets, one of them open.
import { element } from './dom';

export const kSheets = ['Dropouts', 'Record', 'Statistics', 'Calls'] as const;
export type Sheet = 0 | 1 | 2 | 3;

export class Side {
  readonly sheets: HTMLElement[] = [];
  open: Sheet = 0;
  private readonly tabs: HTMLButtonElement[] = [];

  constructor(
    place: HTMLElement,
    private readonly opened: (sheet: Sheet) => void,
  ) {
    const list = element('div', { role: 'tablist', 'aria-label': 'Findings' });
    place.append(list);
    kSheets.forEach((name, at) => {
      const tab = element(
        'button',
        { type: 'button', role: 'tab', id: `tab-${at}`, 'aria-controls': `sheet-${at}` },
        name,
      );
      const sheet = element('div', {
        class: 'sheet',
        role: 'tabpanel',
        id: `sheet-${at}`,
        'aria-labelledby': `tab-${at}`,
        tabindex: '0',
      });
      tab.addEventListener('click', () => this.show(at as Sheet));
      this.tabs.push(tab);
      this.sheets.push(sheet);
      list.append(tab);
      place.append(sheet);
    });
    list.addEventListener('keydown', (event) => this.walk(event));
    this.show(0);
  }

  show(sheet: Sheet): void {
    this.open = sheet;
    this.tabs.forEach((tab, at) => {
      tab.setAttribute('aria-selected', String(at === sheet));
      tab.tabIndex = at === sheet ? 0 : -1;
      this.sheets[at].hidden = at !== sheet;
    });
    this.opened(sheet);
  }

  private walk(event: KeyboardEvent): void {
    const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
    if (!step) return;
    event.preventDefault();
    event.stopPropagation();
    const next = ((this.open + step + kSheets.length) % kSheets.length) as Sheet;
    this.show(next);
    this.tabs[next].focus();
  }
}
