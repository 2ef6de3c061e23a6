// Where the page begins.

import { openTrace } from './data/open';

void openTrace(document).then((trace) => {
  const shown = document.querySelector('main')!;
  shown.textContent = `${trace.title}: ${trace.records} records, ${trace.dropouts.length} dropouts`;
});
