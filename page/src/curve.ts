// SPDX-License-Identifier: MIT
// One channel of one trace as a line: sample by sample where there is room for each, else per column of pixels from its
// minimum to its maximum.
import { lowerBound, type Channel } from "./channel";
import type { AxisKind, Trace } from "./session";
import type { View } from "./state";

export interface Box {
  left: number;
  top: number;
  width: number;
  height: number;
}

export interface Frame {
  axis: AxisKind;
  view: View;
  box: Box;
  low: number; // values at the lower and the upper edge
  high: number;
  isMoving: boolean; // seen for a moment: minimum and maximum of columns by turns
}

// The times at which the columns of a view begin, and the end of the last one. They are the same for all channels.
export function columnTimes(trace: Trace, axis: AxisKind, view: View, columns: number): Float64Array {
  const length = trace.length(axis);
  const width = (view.high - view.low) / columns;
  return Float64Array.from({ length: columns + 1 }, (_, i) => {
    const x = view.low + i * width;
    return x <= 0 ? trace.from_us : x >= length ? trace.to_us : trace.timeAt(x, axis);
  });
}

// The places of a channel that lie in a trace and in sight, with a neighbour at each side.
export function placesIn(channel: Channel, trace: Trace, from_us: number, to_us: number): [number, number] {
  const first = channel.lowerBound(trace.from_us);
  const end = channel.lowerBound(trace.to_us);
  const from = lowerBound(channel.times_us, from_us, first, end);
  const to = lowerBound(channel.times_us, to_us, from, end);
  return [Math.max(first, from - 1), Math.min(end, to + 1)];
}

// The path of the line, in the pixels of the frame's box.
export function curveOf(channel: Channel, trace: Trace, frame: Frame, times: Float64Array): Path2D {
  const [from, to] = placesIn(channel, trace, times[0], times[times.length - 1]);
  const columns = times.length - 1;
  return to - from <= 2 * columns
    ? sampleBySample(channel, trace, frame, from, to)
    : columnByColumn(channel, frame, times, from, to);
}

function heights(frame: Frame): (value: number) => number {
  const scale = frame.box.height / (frame.high - frame.low);
  return (value) => frame.box.top + (frame.high - value) * scale;
}

function sampleBySample(channel: Channel, trace: Trace, frame: Frame, from: number, to: number): Path2D {
  const path = new Path2D();
  const y = heights(frame);
  const scale = frame.box.width / (frame.view.high - frame.view.low);
  let isOpen = false;
  for (let i = from; i < to; i++) {
    const low = channel.low(i);
    const high = channel.high(i);
    if (i > from && channel.times_us[i] - channel.times_us[i - 1] > channel.gap_us) isOpen = false;
    if (!Number.isFinite(low) || !Number.isFinite(high)) {
      isOpen = false;
      continue;
    }
    const x = frame.box.left + (trace.xAt(channel.times_us[i], frame.axis) - frame.view.low) * scale;
    if (isOpen && channel.head.held) path.lineTo(x, y(channel.low(i - 1)));
    if (isOpen) path.lineTo(x, y(low));
    else path.moveTo(x, y(low));
    // A sample between two gaps is seen as a point.
    path.lineTo(isOpen || low !== high ? x : x + 1, y(high));
    isOpen = true;
  }
  return path;
}

function columnByColumn(channel: Channel, frame: Frame, times: Float64Array, from: number, to: number): Path2D {
  const path = new Path2D();
  const y = heights(frame);
  const width = frame.box.width / (times.length - 1);
  const found: [number, number] = [0, 0];
  const usual = Math.ceil((to - from) / (times.length - 1));
  let isOpen = false;
  let isRising = false;
  for (let column = 0, i = from; i < to && column + 1 < times.length; column++) {
    const end = times[column + 1];
    // Most columns have about the same number of samples.
    let guess = i + usual;
    while (guess < to && channel.times_us[guess] < end) guess += usual;
    const next = lowerBound(channel.times_us, end, Math.max(i, guess - usual), Math.min(to, guess));
    if (next === i) continue;
    if (i > from && channel.times_us[i] - channel.times_us[i - 1] > channel.gap_us) isOpen = false;
    if (channel.extremes(i, next, found)) {
      const x = frame.box.left + (column + 0.5) * width;
      const low = y(channel.number(found[0]));
      const high = y(channel.number(found[1]));
      if (isOpen) path.lineTo(x, isRising ? low : high);
      else path.moveTo(x, isRising ? low : high);
      if (!frame.isMoving) path.lineTo(x, isRising ? high : low);
      isRising = !isRising;
      isOpen = true;
    } else {
      isOpen = false;
    }
    i = next;
  }
  return path;
}
