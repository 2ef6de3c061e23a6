// Which colour is which: the families that the trace has, failures and dropouts.
import type { Trace } from '../trace';
import { familyVariable, hueOf } from './colours';
import { data, element } from './dom';

const kLongest = 30; // letters of a family's name

export function legend(trace: Trace): HTMLElement {
  const list = element('ul', { class: 'legend', 'aria-label': 'Colours' });
  const hues = new Map<number, string>();
  for (const event of trace.events) {
    const hue = hueOf(event.driver, event.family);
    const name =
      event.driver === '' ? 'no decoder' : (trace.families[event.family] ?? event.driver);
    if (!hues.has(hue)) hues.set(hue, name);
  }
  for (const [hue, name] of [...hues].sort(([one], [other]) => one - other))
    list.append(entry(`var(${familyVariable(hue)})`, name));
  list.append(entry('var(--amber)', 'failure'), entry('var(--red)', 'dropout'));
  return list;
}

function entry(colour: string, name: string): HTMLElement {
  const swatch = element('span');
  swatch.style.background = colour;
  return element('li', {}, swatch, data(name, kLongest));
}
