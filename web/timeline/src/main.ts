// Opens the trace that the page holds, and shows it.
import { openTrace } from './data/open';
import { showPage } from './view/page';

void openTrace(document).then((trace) => {
  showPage(document.getElementById('timeline')!, trace);
  void trace.ready.then(() => performance.mark('ready')); // for measurements
});
