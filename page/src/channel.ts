// SPDX-License-Identifier: MIT
// A channel with its samples in memory.
import { FIRST_NUMBER, INFINITY, MINUS_INFINITY, readExtremes, readTimes, readValues } from "./blocks";
import type { ChannelHead } from "./head";
import { Levels } from "./levels";

const WHOLE_FLOATS = -1;
// A pause of this many usual steps is a gap: nothing is drawn across it, and no value holds in it.
const GAP_STEPS = 10;

const bits = new DataView(new ArrayBuffer(4));

// Integers in the order of the floats, as the tool made them of the bits.
function floatOf(ordered: number): number {
  bits.setInt32(0, ordered >= 0 ? ordered : -0x80000000 - ordered);
  return bits.getFloat32(0);
}

// The shortest decimal that reads back to the same 32 bits.
function shortestFloat(value: number): string {
  for (let digits = 1; digits < 9; digits++) {
    const text = value.toPrecision(digits);
    if (Math.fround(Number(text)) === value) return String(Number(text));
  }
  return String(Number(value.toPrecision(9)));
}

// Channels of one rate share their times.
const loadedTimes = new Map<number, Promise<Float64Array>>();

function timesOf(block: number, count: number): Promise<Float64Array> {
  let times = loadedTimes.get(block);
  if (times === undefined) loadedTimes.set(block, (times = readTimes(block, count)));
  return times;
}

export class Channel {
  readonly gap_us: number;
  private readonly levels: Levels;
  private readonly divisor: number;

  static async load(head: ChannelHead): Promise<Channel> {
    const rows = Math.ceil(head.count / head.stretch);
    const times = await timesOf(head.times, rows);
    if (head.stretch > 1) {
      const { min, max } = await readExtremes(head.values, rows);
      return new Channel(head, times, min, max);
    }
    const values = await readValues(head.values, rows);
    return new Channel(head, times, values, values);
  }

  private constructor(
    readonly head: ChannelHead,
    readonly times_us: Float64Array, // ascending
    private readonly min: Int32Array,
    private readonly max: Int32Array,
  ) {
    this.levels = new Levels(min, max);
    this.divisor = head.decimals === WHOLE_FLOATS ? 1 : 10 ** head.decimals;
    this.gap_us = usualStep(times_us) * GAP_STEPS;
  }

  // --- By integers as they are kept

  number(kept: number): number {
    if (kept < FIRST_NUMBER) return kept === INFINITY ? Infinity : kept === MINUS_INFINITY ? -Infinity : NaN;
    return this.head.decimals === WHOLE_FLOATS ? floatOf(kept) : kept / this.divisor;
  }

  text(kept: number): string {
    if (kept < FIRST_NUMBER) return kept === INFINITY ? "inf" : kept === MINUS_INFINITY ? "-inf" : "nan";
    const value = this.number(kept);
    return this.head.decimals === WHOLE_FLOATS ? shortestFloat(value) : value.toFixed(this.head.decimals);
  }

  // --- By places in the rows

  kept(i: number): [number, number] {
    return [this.min[i], this.max[i]];
  }

  valueText(i: number): string {
    const [min, max] = this.kept(i);
    return min === max ? this.text(min) : `${this.text(min)} … ${this.text(max)}`;
  }

  // NaN where there is no number.
  low(i: number): number {
    return this.min[i] < FIRST_NUMBER ? NaN : this.number(this.min[i]);
  }
  high(i: number): number {
    return this.max[i] < FIRST_NUMBER ? NaN : this.number(this.max[i]);
  }

  // Of the places [from, to), as kept; see Levels.
  extremes(from: number, to: number, out: [number, number]): boolean {
    return this.levels.extremes(from, to, out);
  }

  // The mean of the numbers in [from, to); NaN where stretches stand for samples.
  mean(from: number, to: number): number {
    if (this.head.stretch > 1) return NaN;
    let sum = 0;
    let count = 0;
    const whole = this.head.decimals === WHOLE_FLOATS;
    for (let i = from; i < to; i++) {
      if (this.min[i] < FIRST_NUMBER) continue;
      sum += whole ? floatOf(this.min[i]) : this.min[i];
      count++;
    }
    return sum / count / this.divisor;
  }

  // The first place whose time is not below this one.
  lowerBound(time_us: number): number {
    return lowerBound(this.times_us, time_us);
  }

  // The place whose value holds at a time within [from_us, to_us); -1 for none, as in a gap.
  placeAt(time_us: number, from_us: number, to_us: number): number {
    if (!(time_us >= from_us && time_us <= to_us)) return -1;
    const i = lowerBound(this.times_us, Math.min(Math.floor(time_us) + 1, to_us)) - 1;
    if (i < 0 || this.times_us[i] < from_us) return -1;
    return time_us - this.times_us[i] > this.gap_us ? -1 : i;
  }
}

export function lowerBound(sorted: Float64Array, wanted: number, from = 0, to = sorted.length): number {
  let low = from;
  let high = to;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (sorted[middle] < wanted) low = middle + 1;
    else high = middle;
  }
  return low;
}

// The median of some of the steps; endless for fewer than two samples.
function usualStep(times: Float64Array): number {
  const steps: number[] = [];
  const stride = Math.max(1, Math.floor(times.length / 1000));
  for (let i = 1; i < times.length; i += stride) steps.push(times[i] - times[i - 1]);
  steps.sort((a, b) => a - b);
  return steps[Math.floor(steps.length / 2)] ?? Infinity;
}
