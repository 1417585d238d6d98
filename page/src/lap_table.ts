// SPDX-License-Identifier: MIT
// The lap table of one file: times, gaps, splits, the ideal lap of the best splits.
import { button, copy, make, row } from "./dom";
import { csv, lapClock, seconds, signedSeconds } from "./format";
import type { LapHead } from "./head";
import type { SessionFile } from "./session";
import { State } from "./state";
import { Swatch } from "./swatch";

interface Best {
  lap: LapHead | null;
  splits_us: number[]; // shortest ones; empty where laps have none
  ideal_us: number | null;
}

// Of the laps that were driven to their end.
export function bestOf(laps: LapHead[]): Best {
  const finished = laps.filter((lap) => lap.finished && lap.duration_us > 0);
  const lap = finished.reduce<LapHead | null>((a, b) => (a === null || b.duration_us < a.duration_us ? b : a), null);
  const count = Math.max(0, ...finished.map((one) => one.splits_us.length));
  const complete = finished.filter((one) => one.splits_us.length === count);
  const splits_us = Array.from({ length: count }, (_, i) => Math.min(...complete.map((one) => one.splits_us[i])));
  return { lap, splits_us, ideal_us: count > 1 ? splits_us.reduce((sum, split) => sum + split, 0) : null };
}

function gapText(lap: LapHead, best: Best): string {
  if (!lap.finished) return "unfinished";
  return best.lap === null ? "–" : seconds(lap.duration_us - best.lap.duration_us);
}

function asCsv(laps: LapHead[], best: Best): string {
  const splits = Math.max(0, ...laps.map((lap) => lap.splits_us.length));
  const head = ["lap", "start_s", "duration_s", "gap_s", "finished"];
  const names = Array.from({ length: splits }, (_, i) => `split_${i + 1}_s`);
  const rows = laps.map((lap) => [
    lap.number,
    (lap.start_us * 1e-6).toFixed(6),
    (lap.duration_us * 1e-6).toFixed(6),
    lap.finished && best.lap !== null ? ((lap.duration_us - best.lap.duration_us) * 1e-6).toFixed(6) : "",
    String(lap.finished),
    ...names.map((_, i) => (i < lap.splits_us.length ? (lap.splits_us[i] * 1e-6).toFixed(6) : "")),
  ]);
  return csv([[...head, ...names], ...rows]);
}

export class LapTable {
  readonly element = make("section", { class: "laps" });
  private readonly swatches = new Map<string, Swatch>();
  private readonly boxes = new Map<string, HTMLInputElement>();
  private readonly radios = new Map<string, HTMLInputElement>();

  constructor(
    private readonly state: State,
    private readonly file: SessionFile,
    say: (text: string) => void,
  ) {
    const { laps, name } = file.head;
    const best = bestOf(laps);
    const heading = make("h2", {}, state.files.length > 1 ? `Laps of ${name}` : "Laps");
    this.element.append(heading);
    if (laps.length === 0) {
      this.element.append(make("p", { class: "quiet" }, "This file has no laps."));
      return;
    }
    const csvButton = button("Copy as CSV", () => {
      void copy(asCsv(laps, best)).then(() => say(`${laps.length} laps copied`));
    });
    heading.append(" ", csvButton);
    const splits = Math.max(0, ...laps.map((lap) => lap.splits_us.length));
    const names = Array.from({ length: splits }, (_, i) => `S${i + 1} (s)`);
    const table = make("table", {}, make("thead", {}, row("th", "Show", "Ref.", "Lap", "Time (min:s)", "Gap (s)", ...names)));
    const body = make("tbody", {}, ...laps.map((lap) => this.lapRow(lap, best, splits)));
    table.append(body);
    if (best.ideal_us !== null) table.append(idealRow(best, splits));
    const scroller = make("div", { class: "scroller", tabindex: "0", role: "region", "aria-label": `Lap table, ${name}` });
    scroller.append(table);
    this.element.append(scroller);
    state.on(["laps"], () => this.update());
  }

  private lapRow(lap: LapHead, best: Best, splits: number): HTMLTableRowElement {
    const id = State.idOf(this.file, lap);
    const label = `lap ${lap.number}`;
    const box = make("input", { type: "checkbox", "aria-label": `Show ${label}`, disabled: !lap.kept });
    const swatch = new Swatch();
    box.addEventListener("change", () => this.state.show(id, box.checked));
    const radio = make("input", {
      type: "radio",
      name: "reference",
      "aria-label": `Take ${label} as the reference`,
      disabled: !lap.kept,
    });
    radio.addEventListener("change", () => this.state.setReference(this.file, lap));
    this.swatches.set(id, swatch);
    this.boxes.set(id, box);
    this.radios.set(id, radio);
    const splitCells = Array.from({ length: splits }, (_, i) => {
      // A mark that was missed leaves open which splits those are.
      const isMissing = lap.finished && lap.splits_us.length !== splits;
      if (isMissing || i >= lap.splits_us.length) return "–";
      const isBest = lap.finished && lap.splits_us[i] === best.splits_us.at(i);
      return make(isBest ? "b" : "span", isBest ? { title: "best split" } : {}, seconds(lap.splits_us[i]));
    });
    const shown = make("span", { class: "nowrap" }, box, swatch.element);
    const cells = row("td", shown, radio, String(lap.number), lapClock(lap.duration_us), gapText(lap, best), ...splitCells);
    if (lap === best.lap) cells.className = "best";
    if (!lap.finished) cells.className = "unfinished";
    if (!lap.kept) cells.title = "Its samples are not in this page.";
    // Anywhere in the row, as the box.
    cells.addEventListener("click", (event) => {
      if (event.target instanceof HTMLInputElement || !lap.kept) return;
      this.state.show(id, !this.state.shows(id));
    });
    return cells;
  }

  private update(): void {
    const colours = new Map(this.state.traces.map((trace) => [trace.id, trace]));
    for (const [id, box] of this.boxes) {
      box.checked = this.state.shows(id);
      this.swatches.get(id)?.paint(colours.get(id));
    }
    for (const [id, radio] of this.radios) radio.checked = this.state.reference?.id === id;
  }
}

function idealRow(best: Best, splits: number): HTMLElement {
  const gap = best.lap === null || best.ideal_us === null ? "–" : signedSeconds(best.ideal_us - best.lap.duration_us);
  const cells = Array.from({ length: splits }, (_, i) => (i < best.splits_us.length ? seconds(best.splits_us[i]) : "–"));
  return make("tfoot", {}, row("td", "", "", "Ideal", lapClock(best.ideal_us ?? 0), gap, ...cells));
}
