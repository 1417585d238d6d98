// SPDX-License-Identifier: MIT
// How far a car had come at which moment: along its GPS track, or without one by its speed over time.
import { lowerBound, type Channel } from "./channel";

const METRES_PER_SECOND: Record<string, number> = {
  "m/s": 1,
  "km/h": 1 / 3.6,
  kmh: 1 / 3.6,
  kph: 1 / 3.6,
  mph: 0.44704,
  kn: 1852 / 3600,
};

export function isSpeed(unit: string): boolean {
  return unit.toLowerCase() in METRES_PER_SECOND;
}

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
export function drivenBySpeed(channel: Channel): Line {
  const factor = METRES_PER_SECOND[channel.head.unit.toLowerCase()] * 1e-6;
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
