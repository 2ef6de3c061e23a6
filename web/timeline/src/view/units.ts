// Times and durations as a person says them: "12.345 678 s", "2.85 ms", "1 min 04.2 s".

// Three digits that matter, in the unit that fits: "412 µs", "16.9 ms".
export function duration(ns: number): string {
  const size = Math.abs(ns);
  if (size < 1000) return `${Math.round(ns)} ns`;
  if (size < 999_500) return `${threeDigits(ns / 1e3)} µs`;
  if (size < 999_500_000) return `${threeDigits(ns / 1e6)} ms`;
  if (size < 119_500_000_000) return `${threeDigits(ns / 1e9)} s`;
  const seconds = Math.round(size / 1e9);
  const sign = ns < 0 ? '-' : '';
  if (seconds < 7200) return `${sign}${Math.floor(seconds / 60)} min ${seconds % 60} s`;
  return `${sign}${Math.floor(seconds / 3600)} h ${Math.floor((seconds % 3600) / 60)} min`;
}

function threeDigits(value: number): string {
  const size = Math.abs(value);
  return value.toFixed(size < 9.995 ? 2 : size < 99.95 ? 1 : 0);
}

// A moment, exact to `step` nanoseconds, with its digits in groups of three.
export function moment(ns: number, step = 1): string {
  const digits = Math.max(0, Math.min(9, Math.ceil(9 - Math.log10(Math.max(1, step)) - 1e-9)));
  const unit = 10 ** (9 - digits);
  const size = Math.round(Math.abs(ns) / unit) * unit;
  const sign = ns < 0 && size > 0 ? '-' : '';
  let whole = Math.floor(size / 1e9);
  const rest = Math.round(size - whole * 1e9)
    .toString()
    .padStart(9, '0')
    .slice(0, digits)
    .replace(/(\d{3})(?=\d)/g, '$1 ');
  const fraction = rest ? `.${rest}` : '';
  if (whole < 120) return `${sign}${whole}${fraction} s`;
  const hours = Math.floor(whole / 3600);
  whole -= hours * 3600;
  const minutes = Math.floor(whole / 60);
  const seconds = String(whole % 60).padStart(2, '0');
  return `${sign}${hours ? `${hours} h ` : ''}${minutes} min ${seconds}${fraction} s`;
}

export function count(value: number): string {
  return Math.round(value)
    .toString()
    .replace(/\B(?=(\d{3})+$)/g, ',');
}

// "1 dropout", "3 dropouts".
export function counted(value: number, one: string, many = `${one}s`): string {
  return `${count(value)} ${value === 1 ? one : many}`;
}

export function percent(share: number): string {
  if (share > 0 && share < 0.001) return 'less than 0.1 %';
  return `${(share * 100).toFixed(share < 0.0995 ? 1 : 0)} %`;
}

// The smallest of 1, 2, 5, 10, 20, ... nanoseconds that is not below `least`.
export function roundStep(least: number): number {
  const power = 10 ** Math.floor(Math.log10(Math.max(1, least)));
  for (const times of [1, 2, 5]) if (power * times >= least * (1 - 1e-9)) return power * times;
  return power * 10;
}
