// SPDX-License-Identifier: MIT
// What a person has chosen, and who wants to know when that changes.
import { Channel } from "./channel";
import type { ChannelHead, LapHead } from "./head";
import { keyOf, Trace, type AxisKind, type SessionFile } from "./session";
import { coloursOf } from "./colours";

export interface View {
  low: number;
  high: number;
}

// laps: which traces there are; channels: which plots; view: the range in sight; cursor: its place.
type Change = "laps" | "channels" | "view" | "cursor";

const MOST_CHANNELS = 24;

export class State {
  axis: AxisKind = "session";
  view: View = { low: 0, high: 1 };
  cursor = 0; // a place on the axis
  traces: Trace[] = []; // the visible ones
  reference: Trace | null = null; // for differences, among the visible ones or not
  channels: string[] = []; // keys of the chosen ones
  mapChannel = ""; // key; empty: each lap in its colour
  fitsHeight = false;

  private readonly visible = new Set<string>();
  private readonly listeners: [Change[], () => void][] = [];
  private readonly loaded = new Map<ChannelHead, Channel>();
  private readonly loading = new Set<ChannelHead>();

  constructor(readonly files: SessionFile[]) {}

  on(changes: Change[], act: () => void): void {
    this.listeners.push([changes, act]);
  }

  private tell(...changes: Change[]): void {
    for (const [wanted, act] of this.listeners) if (wanted.some((change) => changes.includes(change))) act();
  }

  // --- Laps

  static idOf(file: SessionFile, lap: LapHead): string {
    return `${file.index}:${lap.number}`;
  }

  shows(id: string): boolean {
    return this.visible.has(id);
  }

  show(id: string, visible: boolean): void {
    if (visible) this.visible.add(id);
    else this.visible.delete(id);
    this.renewTraces(false);
  }

  setReference(file: SessionFile, lap: LapHead): void {
    this.reference = new Trace(file, lap);
    this.renewTraces(false);
  }

  setAxis(axis: AxisKind): void {
    this.axis = axis;
    this.renewTraces(true);
  }

  hasDistance(): boolean {
    return this.files.some((file) => file.driven_m !== null && file.head.laps.some((lap) => lap.kept));
  }

  hasLaps(): boolean {
    return this.files.some((file) => file.head.laps.some((lap) => lap.kept));
  }

  private renewTraces(wholeView: boolean): void {
    const before = this.length();
    const traces = this.axis === "session" ? this.files.map((file) => new Trace(file, null)) : this.visibleLaps();
    for (const trace of traces) {
      trace.fit(this.reference);
      trace.isReference = trace.id === this.reference?.id;
    }
    this.traces = this.axis === "distance" ? traces.filter((trace) => trace.hasDistance()) : traces;
    coloursOf(this.traces, this.files.length > 1);
    const wasWhole = this.view.low === 0 && this.view.high === before;
    const length = this.length();
    if (wholeView || wasWhole || this.view.low >= length) this.view = { low: 0, high: length };
    if (wholeView || this.cursor > length) this.cursor = length / 3;
    this.tell("laps", "view", "cursor");
  }

  private visibleLaps(): Trace[] {
    return this.files.flatMap((file) =>
      file.head.laps.filter((lap) => this.visible.has(State.idOf(file, lap))).map((lap) => new Trace(file, lap)),
    );
  }

  // --- The range in sight, and the cursor

  length(): number {
    const longest = Math.max(0, ...this.traces.map((trace) => trace.length(this.axis)));
    return longest > 0 ? longest : 1;
  }

  setView(low: number, high: number): void {
    const LEAST = 1e-6; // of the whole
    const whole = this.length();
    const width = Math.min(whole, Math.max(whole * LEAST, high - low));
    const from = Math.min(Math.max(0, low), whole - width);
    this.view = { low: from, high: width === whole ? whole : from + width };
    this.tell("view");
  }

  // about: the place that stays where it is.
  zoom(factor: number, about: number): void {
    const { low, high } = this.view;
    this.setView(about - (about - low) * factor, about + (high - about) * factor);
  }

  pan(share: number): void {
    const shift = (this.view.high - this.view.low) * share;
    this.setView(this.view.low + shift, this.view.high + shift);
  }

  setCursor(x: number): void {
    this.cursor = Math.min(Math.max(0, x), this.length());
    this.tell("cursor");
  }

  // Brings the cursor back into sight.
  followCursor(): void {
    const { low, high } = this.view;
    if (this.cursor >= low && this.cursor <= high) return;
    this.setView(this.cursor - (high - low) / 2, this.cursor + (high - low) / 2);
  }

  // --- Channels

  // The first file's where several have it.
  headOf(key: string): ChannelHead | undefined {
    for (const file of this.files) {
      const head = file.channels.get(key);
      if (head !== undefined) return head;
    }
    return undefined;
  }

  // False where there are too many already.
  choose(key: string, chosen: boolean): boolean {
    if (chosen && this.channels.length >= MOST_CHANNELS) return false;
    this.channels = this.channels.filter((other) => other !== key);
    if (chosen) this.channels.push(key);
    this.tell("channels", "cursor");
    return true;
  }

  setMapChannel(key: string): void {
    this.mapChannel = key;
    this.tell("channels");
  }

  setFitsHeight(fits: boolean): void {
    this.fitsHeight = fits;
    this.tell("view");
  }

  // For other colours.
  retint(): void {
    this.tell("laps", "view", "cursor");
  }

  // A channel with its samples; undefined where the file has no such channel, or as long as it is being read.
  channel(file: SessionFile, key: string): Channel | undefined {
    const head = file.channels.get(key);
    if (head === undefined) return undefined;
    const channel = this.loaded.get(head);
    if (channel === undefined) void this.load(head);
    return channel;
  }

  isLoading(): boolean {
    return this.loading.size > 0;
  }

  private async load(head: ChannelHead): Promise<void> {
    if (this.loading.has(head)) return;
    this.loading.add(head);
    const channel = await Channel.load(head);
    this.loaded.set(head, channel);
    this.loading.delete(head);
    this.tell("channels", "cursor");
  }

  // --- What a page begins with

  begin(): void {
    for (const file of this.files) {
      const laps = file.head.laps.filter((lap) => lap.kept && lap.duration_us > 0);
      const finished = laps.filter((lap) => lap.finished);
      const ranked = (finished.length > 0 ? finished : laps).sort((a, b) => a.duration_us - b.duration_us);
      for (const lap of ranked.slice(0, this.files.length > 1 ? 1 : 2)) this.visible.add(State.idOf(file, lap));
      const best = ranked.at(0);
      if (best !== undefined && (this.reference?.lap?.duration_us ?? Infinity) > best.duration_us) {
        this.reference = new Trace(file, best);
      }
    }
    this.channels = this.firstChannels();
    this.mapChannel = this.channels[0] ?? "";
    this.setAxis(this.visible.size === 0 ? "session" : this.hasDistance() ? "distance" : "lap");
  }

  // A speed and a rate of turns are what people look at first.
  private firstChannels(): string[] {
    const COUNT = 3;
    const all = this.files.flatMap((file) => file.head.channels.filter((channel) => channel.count > 0));
    const rank = (unit: string): number => (/^(km\/h|mph|m\/s|kn)$/i.test(unit) ? 0 : unit === "rpm" ? 1 : 2);
    const ordered = [...all].sort((a, b) => rank(a.unit) - rank(b.unit));
    const speed = ordered.filter((channel) => rank(channel.unit) === 0).slice(0, 1);
    const others = ordered.filter((channel) => rank(channel.unit) > 0 && channel.kind === "logged");
    return [...new Set([...speed, ...others].map(keyOf))].slice(0, COUNT);
  }
}
