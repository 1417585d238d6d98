// SPDX-License-Identifier: MIT
// Colours that people who see colours differently can tell apart, each with enough contrast on its ground, and dashes
// where colours come again.
import type { Trace } from "./session";

const ON_LIGHT = ["#0072b2", "#d55e00", "#00805c", "#a8458a", "#8a6a00", "#2b83ba", "#5b5b5b", "#000000"];
const ON_DARK = ["#56b4e9", "#e69f00", "#2bc29a", "#f0a6cc", "#f0e442", "#ff8a5c", "#b9b9b9", "#ffffff"];
const DASHES: number[][] = [[], [7, 3], [2, 3], [9, 3, 2, 3]];

// A scale from low to high (cividis, at even steps): its lightness rises all along.
const SCALE = [
  [0, 34, 78],
  [18, 53, 112],
  [59, 73, 108],
  [87, 93, 109],
  [112, 113, 115],
  [138, 134, 120],
  [165, 156, 116],
  [195, 179, 105],
  [225, 204, 85],
  [254, 232, 56],
];

const onPaper = matchMedia("print");
const systemIsDark = matchMedia("(prefers-color-scheme: dark)");

// When other colours may be due.
export function onOtherColours(act: () => void): void {
  onPaper.addEventListener("change", act);
  systemIsDark.addEventListener("change", act);
}

export function isOnPaper(): boolean {
  return onPaper.matches;
}

function isDark(): boolean {
  if (onPaper.matches) return false;
  const chosen = document.documentElement.dataset.theme;
  return chosen === undefined ? systemIsDark.matches : chosen === "dark";
}

function palette(): string[] {
  return isDark() ? ON_DARK : ON_LIGHT;
}

// With several files a colour is a file's, and its laps differ by their dashes.
export function coloursOf(traces: Trace[], byFile: boolean): void {
  const colours = palette();
  const seen = new Map<number, number>();
  for (const trace of traces) {
    const place = byFile ? trace.file.index : 0;
    const nth = seen.get(place) ?? 0;
    seen.set(place, nth + 1);
    trace.colour = colours[(byFile ? place : nth) % colours.length];
    const turn = byFile ? nth + Math.floor(place / colours.length) : Math.floor(nth / colours.length);
    trace.dash = DASHES[turn % DASHES.length];
  }
}

export function scaleColour(share: number): string {
  const at = Math.min(1, Math.max(0, share)) * (SCALE.length - 1);
  const i = Math.min(SCALE.length - 2, Math.floor(at));
  const mixed = SCALE[i].map((low, k) => Math.round(low + (SCALE[i + 1][k] - low) * (at - i)));
  return `rgb(${mixed.join(",")})`;
}

export interface Ink {
  text: string;
  grid: string;
  ground: string;
}

export function ink(): Ink {
  return isDark()
    ? { text: "#e6e6e6", grid: "#3a3f46", ground: "#16191d" }
    : { text: "#1b1f24", grid: "#d9dde2", ground: "#ffffff" };
}
