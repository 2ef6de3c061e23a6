// Prints what the tracing viewers' engine makes of a trace: threads by id, with the slot and depth
// of each call.
import {readFileSync} from 'node:fs';
import {polyfillDOMRect} from '@paulirish/trace_engine/analyze-trace.mjs';
import * as Trace from '@paulirish/trace_engine/models/trace/trace.js';

polyfillDOMRect();
const {traceEvents} = JSON.parse(readFileSync(process.argv[2], 'utf8'));
const model = Trace.TraceModel.Model.createWithAllHandlers();
await model.parse(traceEvents);
const threads = {};
for (const process of model.parsedTrace().data.Renderer.processes.values()) {
  for (const [id, thread] of process.threads) {
    const calls = {};
    const visit = (node) => {
      if (node.entry.ph === 'X') calls[node.entry.args.slot] = node.depth;
      node.children.forEach(visit);
    };
    thread.tree.roots.forEach(visit);
    threads[id] = {name: thread.name, calls};
  }
}
console.log(JSON.stringify(threads));
