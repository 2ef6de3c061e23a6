// What the causes of dropouts mean, in a sentence that a stranger understands.

const kSentences: Record<string, string> = {
  client: 'A client took the time.',
  'driver-call': "A driver's call on the I/O thread took the time.",
  'blocked-by': "Another thread's call held the I/O thread up.",
  preempted: 'Another thread had the processor.',
  'late-wake': 'The cycle began late; nothing on its processor says why.',
  clock: 'A time stamp was off its line, so the deadline moved.',
  'engine-change': 'The engine was stopped or changed across the cycle.',
  'lost-records': 'Records are missing here.',
  unknown: 'The records do not say why.',
};

export function causeSentence(cause: string): string {
  return kSentences[cause] ?? cause;
}
