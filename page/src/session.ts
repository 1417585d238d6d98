// SPDX-License-Identifier: MIT
// The files of the page with what belongs to all of their laps, and the traces: stretches of a file that are drawn.
import { readValues, readTimes } from "./blocks";
import { Channel, lowerBound } from "./channel";
import { drivenBySpeed, Line } from "./distance";
import type { ChannelHead, FileHead, Head, LapHead } from "./head";

export type AxisKind = "distance" | "lap" | "session";

export interface Track {
  times_us: Float64Array;
  east_m: Line; // over microseconds
  north_m: Line;
}

export interface SessionFile {
  index: number;
  head: FileHead;
  channels: Map<string, ChannelHead>; // by keyOf
  driven_m: Line | null; // over microseconds
  drivenFrom: string;
  track: Track | null;
}

// Channels of one name are one channel of the page, but for other units.
export function keyOf(channel: ChannelHead): string {
  return `${channel.kind} ${channel.name} ${channel.unit}`;
}

export function titleOf(channel: ChannelHead): string {
  return channel.unit.trim() === "" ? channel.name : `${channel.name} (${channel.unit})`;
}

async function metres(block: number, count: number): Promise<Float64Array> {
  return Float64Array.from(await readValues(block, count), (centimetres) => centimetres / 100);
}

export async function openFiles(head: Head): Promise<SessionFile[]> {
  return Promise.all(
    head.files.map(async (file, index) => {
      const channels = new Map<string, ChannelHead>();
      for (const channel of file.channels) if (!channels.has(keyOf(channel))) channels.set(keyOf(channel), channel);
      const session: SessionFile = { index, head: file, channels, driven_m: null, drivenFrom: "", track: null };
      await readDistance(session);
      return session;
    }),
  );
}

async function readDistance(session: SessionFile): Promise<void> {
  const { channels, speed, track } = session.head;
  if (track !== null) {
    const times_us = await readTimes(track.times, track.count);
    session.track = {
      times_us,
      east_m: new Line(times_us, await metres(track.east_cm, track.count)),
      north_m: new Line(times_us, await metres(track.north_cm, track.count)),
    };
    session.driven_m = new Line(times_us, await metres(track.driven_cm, track.count));
    session.drivenFrom = "GPS track";
  }
  if (speed === null || channels[speed.channel].count < 2) return;
  session.driven_m = drivenBySpeed(await Channel.load(channels[speed.channel]), speed.metres_per_second);
  session.drivenFrom = channels[speed.channel].name;
}

// A lap, or a whole file, with the way from its times to the places on an axis and back.
export class Trace {
  readonly from_us: number;
  readonly to_us: number; // not in it
  // Metres from the start of the lap over microseconds; null where they aren't known.
  private readonly metres: Line | null;
  private scale = 1;
  colour = "";
  dash: number[] = [];
  isReference = false;

  constructor(
    readonly file: SessionFile,
    readonly lap: LapHead | null,
  ) {
    this.from_us = lap?.start_us ?? 0;
    this.to_us = lap === null ? file.head.duration_us + 1 : lap.start_us + lap.duration_us;
    this.metres = lap === null || file.driven_m === null ? null : metresOf(file.driven_m, this.from_us, this.to_us);
  }

  get id(): string {
    return this.lap === null ? `${this.file.index}` : `${this.file.index}:${this.lap.number}`;
  }

  get driven_m(): number {
    return this.metres === null || this.metres.y.length === 0 ? NaN : this.metres.y[this.metres.y.length - 1];
  }

  // Lines differ a little: a lap that ended at the same mark as the reference is drawn as long as that one.
  fit(reference: Trace | null): void {
    const LIKELY = 0.05;
    const ratio = reference === null ? NaN : reference.driven_m / this.driven_m;
    const comparable = this.lap?.finished === true && reference?.lap?.finished === true;
    this.scale = comparable && Math.abs(ratio - 1) < LIKELY ? ratio : 1;
  }

  hasDistance(): boolean {
    return this.metres !== null;
  }

  length(axis: AxisKind): number {
    if (axis === "distance") return this.driven_m * this.scale;
    return (axis === "lap" ? this.to_us - this.from_us : this.to_us) * 1e-6;
  }

  xAt(time_us: number, axis: AxisKind): number {
    if (axis === "distance") return this.metres === null ? NaN : this.metres.at(time_us) * this.scale;
    return (axis === "lap" ? time_us - this.from_us : time_us) * 1e-6;
  }

  timeAt(x: number, axis: AxisKind): number {
    if (axis === "distance") {
      if (this.metres === null || !(x >= 0 && x <= this.length(axis))) return NaN;
      return this.metres.where(x / this.scale);
    }
    return axis === "lap" ? this.from_us + x * 1e6 : x * 1e6;
  }
}

// Null where less than nearly all of the lap is known.
function metresOf(driven: Line, from_us: number, to_us: number): Line | null {
  const ENOUGH = 0.9;
  const known = driven.x;
  if (known.length < 2 || !(to_us > from_us)) return null;
  const covered = Math.min(to_us, known[known.length - 1]) - Math.max(from_us, known[0]);
  if (covered < (to_us - from_us) * ENOUGH) return null;
  const start = driven.at(from_us);
  const begin = lowerBound(known, from_us + 1);
  const count = lowerBound(known, to_us) - begin;
  const times = new Float64Array(count + 2);
  const metres = new Float64Array(count + 2);
  times.set(known.subarray(begin, begin + count), 1);
  for (let i = 0; i < count; i++) metres[i + 1] = driven.y[begin + i] - start;
  times[0] = from_us;
  times[count + 1] = to_us;
  metres[count + 1] = driven.at(to_us) - start;
  return metres[metres.length - 1] > 0 ? new Line(times, metres) : null;
}
