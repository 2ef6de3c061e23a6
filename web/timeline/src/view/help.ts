// The overlays: the keys, and what this page is.
import { button, element, table } from './dom';
import { kKeys } from './keys';

export class Overlays {
  private readonly keys = overlay('Keys', ...keyTables());
  private readonly about: HTMLDialogElement;

  constructor(place: HTMLElement, legend: HTMLElement) {
    this.about = overlay('About', ...aboutTexts(), legend);
    place.append(this.keys, this.about);
  }

  showKeys(): void {
    this.keys.showModal();
  }
  showAbout(): void {
    this.about.showModal();
  }
}

function overlay(title: string, ...content: readonly Node[]): HTMLDialogElement {
  const made = element('dialog', { 'aria-label': title }, element('h2', {}, title), ...content);
  made.prepend(button({ class: 'close', 'aria-label': 'Close' }, () => made.close(), '×'));
  made.addEventListener('click', (event) => {
    if (event.target === made) made.close(); // outside of its content
  });
  made.addEventListener('keydown', (event) => {
    if (event.key === '?') made.close();
  });
  return made;
}

function keyTables(): Node[] {
  const columns = element('div', { class: 'columns' });
  for (const group of kKeys) {
    const rows = group.keys.map((key) => [element('kbd', {}, key.shown), key.does]);
    columns.append(table({ class: 'keys' }, group.title, ['key', 'does'], rows));
  }
  const pointer = table(
    { class: 'keys' },
    'With the pointer',
    ['do', 'for'],
    [
      ['wheel, pinch', 'closer and farther, where the pointer is'],
      ['drag', 'another time, other lanes'],
      ['click', "a call's line and values"],
      ['double click', 'zoom to a call'],
      ['Shift and drag', 'measure, with statistics'],
      ['Shift and wheel', 'earlier and later'],
    ],
  );
  columns.append(pointer);
  return [columns];
}

function aboutTexts(): Node[] {
  const texts = [
    'This page is a trace of audio drivers, made by sonascope timeline. It is one file: the trace is packed inside, nothing is asked of any network, and nothing leaves it.',
    'Red is a dropout, and nothing else: a moment where the sound broke off. Amber is a failure: a record that says that something went wrong. The other colours are the families of drivers; the deeper a call lies inside others, the paler or darker it is.',
    'The strip on top of an I/O thread shows its cycles against their budget: a column as high as the line has used all the time there was.',
    'The page is written without any library of others; its texts are made by the same tables as the lines of sonaprobe.',
  ];
  return texts.map((text) => element('p', {}, text));
}
