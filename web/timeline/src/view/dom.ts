// Elements of the page, made without a line of markup: every text goes in as text.
import { kNameLimit, shown } from './text';

type Child = Node | string | null;

// element('button', { class: 'chip', title: '...' }, 'text', child): attributes are the page's own
// words; what the trace says goes through data() or shown().
export function element<Tag extends keyof HTMLElementTagNameMap>(
  tag: Tag,
  attributes: Record<string, string> = {},
  ...children: readonly Child[]
): HTMLElementTagNameMap[Tag] {
  const made = document.createElement(tag);
  for (const name in attributes) made.setAttribute(name, attributes[name]);
  made.append(...children.filter((child) => child !== null));
  return made;
}

// A text of the trace, kept apart from the writing direction around it.
export function data(text: string, limit = kNameLimit): HTMLElement {
  return element('bdi', {}, shown(text, limit));
}

// A text that begins with a driver and its method, to be broken between them if need be.
export function method(text: string, limit = 2 * kNameLimit): HTMLElement {
  const made = element('bdi');
  shown(text, limit)
    .split(/(?<=::)/)
    .forEach((part, at) => made.append(...(at > 0 ? [element('wbr')] : []), part));
  return made;
}

export function button(
  attributes: Record<string, string>,
  press: () => void,
  ...children: readonly Child[]
): HTMLButtonElement {
  const made = element('button', { type: 'button', ...attributes }, ...children);
  made.addEventListener('click', press);
  return made;
}

// A table with a caption for those who do not see it; the first cell of a row is its head.
export function table(
  attributes: Record<string, string>,
  caption: string,
  heads: readonly string[],
  rows: readonly (readonly Child[])[],
): HTMLTableElement {
  const made = element('table', attributes, element('caption', {}, caption));
  const head = element('tr');
  for (const title of heads) head.append(element('th', { scope: 'col' }, title));
  const body = element('tbody');
  for (const cells of rows) {
    const row = element('tr');
    cells.forEach((cell, at) => {
      row.append(at === 0 ? element('th', { scope: 'row' }, cell) : element('td', {}, cell));
    });
    body.append(row);
  }
  made.append(element('thead', {}, head), body);
  return made;
}
