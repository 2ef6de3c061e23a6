// The programs of a build, and what the tests make with them.

import { execFileSync } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after } from 'node:test';

import { openPage, type OpenedPage } from './opened_page';

const build = process.env['SONAPROBE_BUILD_DIR'];
if (build === undefined) throw new Error('SONAPROBE_BUILD_DIR does not name a build');

const folder = mkdtempSync(join(tmpdir(), 'timeline-'));
after(() => rmSync(folder, { recursive: true }));

export function run(program: string, ...words: string[]): Buffer {
  return execFileSync(join(build!, program), words, { maxBuffer: 2 ** 30 });
}

export interface Slot {
  readonly debugid: number;
  readonly time?: bigint;
  readonly words?: readonly bigint[]; // arg1 to arg5
  readonly cpu?: number;
}

export const kDivisor = 0xfeedface;

export function divisor(ticksPerMicrosecond: bigint): Slot {
  return { debugid: kDivisor, time: ticksPerMicrosecond };
}

export function writeTrace(name: string, slots: readonly Slot[]): string {
  const bytes = Buffer.alloc(64 * slots.length);
  slots.forEach(({ debugid, time, words, cpu }, place) => {
    bytes.writeBigUInt64LE(time ?? 0n, 64 * place);
    words?.forEach((word, i) => bytes.writeBigUInt64LE(BigInt.asUintN(64, word), 64 * place + 8 + 8 * i));
    bytes.writeUInt32LE(debugid >>> 0, 64 * place + 48);
    bytes.writeUInt32LE(cpu ?? 0, 64 * place + 52);
  });
  const path = join(folder, name);
  writeFileSync(path, bytes);
  return path;
}

// A story of the simulator.
export function story(name: string, records: number): string {
  const path = join(folder, `${name}.raw`);
  run('sonaprobe-sim', 'write', name, path, '--records', String(records), '--seed', '7');
  return path;
}

export async function pageOf(trace: string, ...options: string[]): Promise<OpenedPage> {
  const page = `${trace}.html`;
  run('sonascope', 'timeline', trace, '-o', page, '--force', ...options);
  return openPage(page);
}

// A line of `sonascope lines --json`.
export interface Line {
  readonly slot: number;
  readonly time_ns: number;
  readonly thread: string;
  readonly cpu: number;
  readonly qualifier: 'none' | 'start' | 'end' | 'both';
  readonly depth: number;
  readonly name?: string;
  readonly driver?: string;
  readonly method?: string;
  readonly object?: string;
  readonly duration_ns?: number;
  readonly failure?: boolean;
  readonly text?: string;
  readonly values?: Record<string, unknown>;
  readonly arguments?: readonly string[];
}

export function linesOf(trace: string, ...options: string[]): Line[] {
  const lines = run('sonascope', 'lines', '--json', trace, ...options).toString().trimEnd().split('\n');
  return lines.slice(1).map((line) => JSON.parse(line) as Line);
}

// A row of `sonascope stats --json`.
export interface Row {
  readonly code: string;
  readonly calls: number;
  readonly failures: number;
  readonly total_ns: number;
  readonly self_ns: number;
  readonly p50_ns: number;
  readonly max_ns: number;
  readonly cut_off: number;
  readonly unfinished: number;
  readonly points: number;
  readonly orphan_ends: number;
}

export function statisticsOf(trace: string, ...options: string[]): Row[] {
  const answer = run('sonascope', 'stats', '--json', trace, ...options).toString();
  return (JSON.parse(answer) as { rows: Row[] }).rows;
}

// As JSON documents escape a text.
export function escaped(text: string): string {
  return text.replace(/[^\x20-\x7e]/g, (character) => {
    const named = { '\n': '\\n', '\t': '\\t', '\r': '\\r' }[character];
    return named ?? `\\x${character.charCodeAt(0).toString(16).padStart(2, '0')}`;
  });
}

// The same numbers in each run.
export function randomFrom(seed: number): (below: number) => number {
  let state = seed;
  return (below) => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return Math.floor((state / 2 ** 32) * below);
  };
}
