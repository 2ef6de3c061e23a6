// The hues of driver families: one set that colour-blind people tell apart, without red, which is the
// dropouts', and amber, which is the failures'. Depth is lightness.

interface Hue {
  readonly lift: number; // lighter or darker than the others, for those who see no hue
  readonly chroma: number;
  readonly angle: number;
}

// Of OKLCH, the colour space in which equal steps look equal.
const kHues: readonly Hue[] = [
  { lift: -0.01, chroma: 0.17, angle: 272 }, // blue
  { lift: -0.07, chroma: 0.13, angle: 148 }, // green
  { lift: 0.09, chroma: 0.14, angle: 232 }, // sky
  { lift: -0.09, chroma: 0.06, angle: 296 }, // plum
  { lift: 0.09, chroma: 0.17, angle: 119 }, // lime
  { lift: 0.06, chroma: 0.06, angle: 165 }, // mint
  { lift: -0.02, chroma: 0.15, angle: 322 }, // orchid
];
const kGrey: Hue = { lift: 0, chroma: 0.008, angle: 255 };
export const kHueCount = kHues.length + 1; // with the grey of codes without decoder
export const kShades = 6;

export interface Scheme {
  readonly lightness: number; // of depth 0
  readonly step: number; // from depth to depth
}
export const kLight: Scheme = { lightness: 0.74, step: 0.027 };
export const kDark: Scheme = { lightness: 0.48, step: -0.014 };

// Which hue an event's family has, and the last one for codes without decoder.
export function hueOf(driver: string, family: number): number {
  return driver === '' ? kHues.length : family % kHues.length;
}

export function shadeOf(depth: number): number {
  return Math.min(depth, kShades - 1);
}

// Red, green and blue from 0 to 1; what a screen cannot show loses chroma until it can.
export function barRgb(hue: number, shade: number, scheme: Scheme): [number, number, number] {
  const { lift, chroma, angle } = kHues[hue] ?? kGrey;
  const lightness = scheme.lightness + lift * 0.85 + shade * scheme.step;
  for (let strength = chroma; ; strength *= 0.9) {
    const rgb = fromOklch(lightness, strength, angle);
    if (strength < 0.005 || rgb.every((part) => part >= 0 && part <= 1)) return rgb;
  }
}

export function hex(rgb: readonly number[]): string {
  const part = (value: number) =>
    Math.round(Math.min(1, Math.max(0, value)) * 255)
      .toString(16)
      .padStart(2, '0');
  return `#${rgb.map(part).join('')}`;
}

function fromOklch(lightness: number, chroma: number, angle: number): [number, number, number] {
  const a = chroma * Math.cos((angle * Math.PI) / 180);
  const b = chroma * Math.sin((angle * Math.PI) / 180);
  const l = (lightness + 0.3963377774 * a + 0.2158037573 * b) ** 3;
  const m = (lightness - 0.1055613458 * a - 0.0638541728 * b) ** 3;
  const s = (lightness - 0.0894841775 * a - 1.291485548 * b) ** 3;
  return [
    gamma(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
    gamma(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
    gamma(-0.0041960863 * l - 0.7034186147 * m + 1.707614701 * s),
  ];
}

function gamma(linear: number): number {
  if (linear <= 0.0031308) return 12.92 * linear;
  return 1.055 * linear ** (1 / 2.4) - 0.055;
}

// The name of a family's colour in the style sheet.
export function familyVariable(hue: number): string {
  return `--family-${hue}`;
}

// What the canvases paint with: the colours of page.css, and the bars' by hue and shade.
export interface Theme {
  readonly paper: string;
  readonly ink: string;
  readonly dim: string;
  readonly line: string;
  readonly faint: string; // of waiting, and of cycles
  readonly strong: string; // of cycles past their deadline
  readonly red: string;
  readonly amber: string;
  readonly barInk: string;
  readonly bars: readonly string[]; // [hue * kShades + shade]
}

// The style sheet's colours go to the canvases, the families' the other way.
export function currentTheme(dark: boolean): Theme {
  const root = document.documentElement;
  const style = getComputedStyle(root);
  const colour = (name: string) => style.getPropertyValue(`--${name}`).trim();
  const scheme = dark ? kDark : kLight;
  const bars: string[] = [];
  for (let hue = 0; hue < kHueCount; hue++)
    for (let shade = 0; shade < kShades; shade++) bars.push(hex(barRgb(hue, shade, scheme)));
  for (let hue = 0; hue < kHueCount; hue++)
    root.style.setProperty(familyVariable(hue), bars[hue * kShades]);
  return {
    paper: colour('paper'),
    ink: colour('ink'),
    dim: colour('dim'),
    line: colour('line'),
    faint: colour('faint'),
    strong: colour('strong'),
    red: colour('red'),
    amber: colour('amber'),
    barInk: colour('bar-ink'),
    bars,
  };
}
