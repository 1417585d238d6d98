// SPDX-License-Identifier: MIT
// Minima and maxima of any stretch of a row of integers in a time that hardly grows with the stretch: each level holds
// those of eight neighbours of the level below.
import { FIRST_NUMBER, NOT_A_NUMBER } from "./blocks";

const BRANCHES = 8;
const HIGHEST = 0x7fffffff;

interface Level {
  min: Int32Array;
  max: Int32Array;
}

export class Levels {
  private readonly levels: Level[];
  private min = HIGHEST;
  private max = NOT_A_NUMBER;

  // One array twice for samples; else the extremes of stretches.
  constructor(min: Int32Array, max: Int32Array) {
    this.levels = [{ min, max }];
    while (this.levels[this.levels.length - 1].min.length > BRANCHES) {
      this.levels.push(levelAbove(this.levels[this.levels.length - 1]));
    }
  }

  // Of [from, to): into `out`, minimum and maximum. False, with `out` as it was, without any number in there.
  extremes(from: number, to: number, out: [number, number]): boolean {
    this.min = HIGHEST;
    this.max = NOT_A_NUMBER;
    let begin = from;
    let end = to;
    for (let i = 0; begin < end; i++) {
      const inner = Math.ceil(begin / BRANCHES);
      const outer = Math.floor(end / BRANCHES);
      if (inner >= outer || i + 1 === this.levels.length) {
        this.walk(i, begin, end);
        break;
      }
      // What doesn't fill a place of the level above, at both ends.
      this.walk(i, begin, inner * BRANCHES);
      this.walk(i, outer * BRANCHES, end);
      begin = inner;
      end = outer;
    }
    if (this.max < FIRST_NUMBER) return false;
    out[0] = this.min;
    out[1] = this.max;
    return true;
  }

  private walk(index: number, from: number, to: number): void {
    const level = this.levels[index];
    for (let i = from; i < to; i++) {
      if (level.min[i] < FIRST_NUMBER) continue;
      if (level.min[i] < this.min) this.min = level.min[i];
      if (level.max[i] > this.max) this.max = level.max[i];
    }
  }
}

function levelAbove(below: Level): Level {
  const count = Math.ceil(below.min.length / BRANCHES);
  const min = new Int32Array(count).fill(NOT_A_NUMBER);
  const max = new Int32Array(count).fill(NOT_A_NUMBER);
  for (let i = 0; i < below.min.length; i++) {
    if (below.min[i] < FIRST_NUMBER) continue;
    const k = Math.floor(i / BRANCHES);
    if (min[k] === NOT_A_NUMBER || below.min[i] < min[k]) min[k] = below.min[i];
    if (below.max[i] > max[k]) max[k] = below.max[i];
  }
  return { min, max };
}
