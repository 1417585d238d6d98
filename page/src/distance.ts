// SPDX-License-Identifier: MIT
// How far a car had come at which moment: by its speed over time, or along its GPS track.
import { lowerBound, type Channel } from "./channel";

// A line through known points, level before the first and behind the last one.
export class Line {
  // Both ascend.
  constructor(
    readonly x: Float64Array,
    readonly y: Float64Array,
  ) {}

  at(x: number): number {
    return interpolated(this.x, this.y, x);
  }

  // Where it first is this high.
  where(y: number): number {
    return interpolated(this.y, this.x, y);
  }
}

function interpolated(from: Float64Array, to: Float64Array, x: number): number {
  const last = from.length - 1;
  if (last < 0) return NaN;
  const i = lowerBound(from, x);
  if (i === 0) return to[0];
  if (i > last) return to[last];
  return to[i - 1] + ((x - from[i - 1]) / (from[i] - from[i - 1])) * (to[i] - to[i - 1]);
}

// Metres over microseconds, from a channel of speeds.
export function drivenBySpeed(channel: Channel, metresPerSecond: number): Line {
  const factor = metresPerSecond * 1e-6;
  const times = channel.times_us;
  const metres = new Float64Array(times.length);
  let last = 0;
  for (let i = 0; i < times.length; i++) {
    const speed = Math.max(0, (channel.low(i) + channel.high(i)) / 2) * factor;
    const known = Number.isFinite(speed) ? speed : last;
    if (i > 0) metres[i] = metres[i - 1] + ((known + last) / 2) * (times[i] - times[i - 1]);
    last = known;
  }
  return new Line(times, metres);
}
