// A page over a made trace: what the browser tests open. The title says which.
import { showPage } from '../../src/view/page';
import { madeTrace } from '../made_trace';

const place = document.getElementById('timeline')!;
showPage(place, madeTrace(JSON.parse(place.dataset.making ?? '{}')));
