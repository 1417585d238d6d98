// SPDX-License-Identifier: MIT
// What the tool wrote into the page beside the samples; docs/page.md describes it. All times are microseconds from the
// start of their file.

export interface ChannelHead {
  name: string;
  unit: string;
  kind: "logged" | "gps";
  held: boolean; // a value stays until the next sample; others change in a straight line
  count: number; // samples in the session, or in the laps that were chosen
  decimals: number; // that are kept and shown; -1: 32-bit floats, whole
  stretch: number; // samples that one minimum and one maximum stand for; 1: each sample stands for itself
  times: number; // block
  values: number; // block
}

export interface LapHead {
  number: number;
  start_us: number;
  duration_us: number;
  finished: boolean;
  kept: boolean; // its samples are in the page
  splits_us: number[]; // durations, in order
}

export interface TrackHead {
  count: number;
  times: number; // blocks: microseconds; centimetres east and north of the page's origin, and driven
  east_cm: number;
  north_cm: number;
  driven_cm: number;
}

export interface FileHead {
  name: string;
  texts: [string, string][];
  damage: [string, string][];
  notes: string[]; // what is not in the page, and why
  duration_us: number;
  laps: LapHead[];
  channels: ChannelHead[];
  speed: { channel: number; metres_per_second: number } | null; // what distances come from: place in `channels`, factor
  track: TrackHead | null;
}

export interface Head {
  version: number;
  tool: string;
  files: FileHead[];
}

const VERSION = 1;

export function readHead(): Head {
  const head = JSON.parse(document.getElementById("head")?.textContent ?? "null") as Head | null;
  if (head === null) throw new Error("The page is cut short: its data is missing.");
  if (head.version !== VERSION) throw new Error("The page's data has another version than its script.");
  return head;
}
