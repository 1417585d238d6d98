// SPDX-License-Identifier: MIT
// The values at the cursor, and what a channel did in each lap.
import { onOtherColours } from "./colours";
import { placesIn } from "./curve";
import { make, row } from "./dom";
import { lapClock, seconds } from "./format";
import { differenceAt } from "./plots";
import { titleOf, type Trace } from "./session";
import type { State } from "./state";
import { Swatch } from "./swatch";

function traceName(trace: Trace, files: number): string {
  const file = trace.file.head.name;
  if (trace.lap === null) return file;
  return files > 1 ? `${file}, lap ${trace.lap.number}` : `Lap ${trace.lap.number}`;
}

function traceHead(trace: Trace, files: number): HTMLElement {
  return make("span", { class: "nowrap" }, new Swatch(trace).element, traceName(trace, files));
}

function soon(act: () => void): () => void {
  let isWaiting = false;
  return () => {
    if (isWaiting) return;
    isWaiting = true;
    requestAnimationFrame(() => {
      isWaiting = false;
      act();
    });
  };
}

export class CursorTable {
  readonly element = make("section", { class: "values" }, make("h2", {}, "At the cursor"));
  private readonly table = make("table");

  constructor(private readonly state: State) {
    const label = { class: "scroller", tabindex: "0", role: "region", "aria-label": "Values at the cursor" };
    this.element.append(make("div", label, this.table));
    state.on(["laps", "channels", "cursor"], soon(() => this.fill()));
    onOtherColours(() => this.fill());
  }

  private fill(): void {
    const { state } = this;
    const times = state.traces.map((trace) => trace.timeAt(state.cursor, state.axis));
    const heads = state.traces.map((trace) => traceHead(trace, state.files.length));
    const rows = [row("td", "Time (s)", ...state.traces.map((trace, i) => this.timeText(trace, times[i])))];
    if (state.axis === "distance") {
      rows.push(row("td", "Behind the reference (s)", ...state.traces.map((trace) => this.behindText(trace))));
    }
    for (const key of state.channels) rows.push(this.channelRow(key, times));
    this.table.replaceChildren(make("thead", {}, row("th", "Channel", ...heads)), make("tbody", {}, ...rows));
  }

  private isInside(trace: Trace, time_us: number): boolean {
    return time_us >= trace.from_us && time_us <= trace.to_us;
  }

  private timeText(trace: Trace, time_us: number): string {
    const from = this.state.axis === "session" ? 0 : trace.from_us;
    return this.isInside(trace, time_us) ? seconds(time_us - from) : "–";
  }

  private behindText(trace: Trace): string {
    const value = differenceAt(trace, this.state.reference, this.state.axis, this.state.cursor);
    return Number.isFinite(value) ? value.toFixed(3) : "–";
  }

  // Each cell says which sample it shows: the last one not behind the cursor.
  private channelRow(key: string, times: number[]): HTMLTableRowElement {
    const { state } = this;
    const head = state.headOf(key);
    const cells = state.traces.map((trace, i) => {
      const channel = state.channel(trace.file, key);
      const place = channel?.placeAt(times[i], trace.from_us, trace.to_us) ?? -1;
      if (channel === undefined || place < 0) return "–";
      const sample = `sample at ${(channel.times_us[place] * 1e-6).toFixed(6)} s`;
      return make("span", { title: sample }, channel.valueText(place));
    });
    const cellRow = row("td", head === undefined ? key : titleOf(head), ...cells);
    cellRow.dataset.key = key;
    return cellRow;
  }
}

export class Statistics {
  readonly element = make("section", { class: "statistics" }, make("h2", {}, "Statistics per lap"));
  private readonly table = make("table");

  constructor(private readonly state: State) {
    const label = { class: "scroller", tabindex: "0", role: "region", "aria-label": "Statistics" };
    this.element.append(make("div", label, this.table));
    state.on(["laps", "channels"], soon(() => this.fill()));
    onOtherColours(() => this.fill());
  }

  private fill(): void {
    const { state } = this;
    const rows = state.channels.flatMap((key) => state.traces.map((trace) => this.traceRow(key, trace)));
    const head = row("th", "Channel", "Lap", "Time (min:s)", "Minimum", "Mean", "Maximum");
    this.table.replaceChildren(make("thead", {}, head), make("tbody", {}, ...rows));
  }

  private traceRow(key: string, trace: Trace): HTMLTableRowElement {
    const { state } = this;
    const head = state.headOf(key);
    const title = head === undefined ? key : titleOf(head);
    const clock = lapClock(trace.lap?.duration_us ?? trace.file.head.duration_us);
    const channel = state.channel(trace.file, key);
    const found: [number, number] = [0, 0];
    let texts = ["–", "–", "–"];
    if (channel !== undefined) {
      const from = channel.lowerBound(trace.from_us);
      const to = channel.lowerBound(trace.to_us);
      if (channel.extremes(from, to, found)) {
        const mean = channel.mean(from, to);
        const digits = Math.max(0, channel.head.decimals) + 1;
        const meanText = Number.isNaN(mean) ? "–" : channel.head.decimals < 0 ? mean.toPrecision(6) : mean.toFixed(digits);
        texts = [channel.text(found[0]), meanText, channel.text(found[1])];
      }
    }
    return row("td", title, traceHead(trace, state.files.length), clock, ...texts);
  }
}

// Every sample in sight of the chosen channels, one a line.
export function samplesInSight(state: State, most: number): { rows: (string | number)[][]; isCut: boolean } {
  const rows: (string | number)[][] = [["file", "lap", "channel", "unit", "time_s", "place", "value", "maximum"]];
  const { axis, view } = state;
  for (const trace of state.traces) {
    const low = Math.max(trace.from_us, trace.timeAt(Math.max(0, view.low), axis));
    const high = Math.min(trace.to_us, trace.timeAt(Math.min(view.high, trace.length(axis)), axis));
    for (const key of state.channels) {
      const channel = state.channel(trace.file, key);
      if (channel === undefined) continue;
      const [from, to] = placesIn(channel, trace, low, high);
      for (let i = from; i < to; i++) {
        const time_us = channel.times_us[i];
        if (time_us < low || time_us > high) continue;
        if (rows.length > most) return { rows, isCut: true };
        const [min, max] = channel.kept(i).map((kept) => channel.text(kept));
        const { name, unit } = channel.head;
        const place = trace.xAt(time_us, axis).toFixed(3);
        rows.push([trace.file.head.name, trace.lap?.number ?? "", name, unit, (time_us * 1e-6).toFixed(6), place, min, max]);
      }
    }
  }
  return { rows, isCut: false };
}
