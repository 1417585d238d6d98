// SPDX-License-Identifier: MIT
// The session page: reads what the tool put into it and builds everything that is seen.
import "uplot/dist/uPlot.min.css";
import "./page.css";
import { ChannelList } from "./channel_list";
import { coloursOf, onOtherColours } from "./colours";
import { button, byId, copy, make, row } from "./dom";
import { csv, lapClock } from "./format";
import { addKeys, moves } from "./gestures";
import { readHead, type FileHead, type Head } from "./head";
import { LapTable } from "./lap_table";
import { TrackMap } from "./map";
import { Plots } from "./plots";
import { openFiles, type AxisKind, type SessionFile } from "./session";
import { State } from "./state";
import { CursorTable, samplesInSight, Statistics } from "./value_tables";

const MOST_CSV_ROWS = 500_000;
const AXES: [AxisKind, string][] = [
  ["distance", "Distance in the lap"],
  ["lap", "Time in the lap"],
  ["session", "Time in the session"],
];

const status = make("p", { role: "status", class: "status" });
const say = (text: string): void => {
  status.textContent = text;
};

function axisSelect(state: State): HTMLElement {
  const select = make("select", { id: "axis" });
  for (const [kind, text] of AXES) {
    const isPossible = kind === "session" || (kind === "lap" ? state.hasLaps() : state.hasDistance());
    select.append(make("option", { value: kind, disabled: !isPossible }, text));
  }
  select.addEventListener("change", () => state.setAxis(select.value as AxisKind));
  state.on(["laps"], () => {
    select.value = state.axis;
  });
  return make("span", { class: "nowrap" }, make("label", { for: "axis" }, "Over "), select);
}

// The cursor as a control of its own, for keys and fingers.
function cursorSlider(state: State): HTMLElement {
  const slider = make("input", { type: "range", id: "cursor", step: "any" });
  slider.addEventListener("input", () => state.setCursor(Number(slider.value)));
  const output = make("output", { for: "cursor" });
  state.on(["cursor", "view"], () => {
    const text = `${state.cursor.toFixed(state.axis === "distance" ? 1 : 3)} ${state.axis === "distance" ? "m" : "s"}`;
    slider.min = String(state.view.low);
    slider.max = String(state.view.high);
    slider.value = String(state.cursor);
    slider.setAttribute("aria-valuetext", text);
    output.textContent = text;
  });
  return make("span", { class: "nowrap slider" }, make("label", { for: "cursor" }, "Cursor "), slider, output);
}

function toolbar(state: State): HTMLElement {
  const act = (text: string, label: string, move: (state: State) => void): HTMLElement =>
    button(text, () => move(state), { "aria-label": label, title: label });
  const fit = make("input", { type: "checkbox" });
  fit.addEventListener("change", () => state.setFitsHeight(fit.checked));
  const copyRange = button("Copy range as CSV", () => {
    const { rows, isCut } = samplesInSight(state, MOST_CSV_ROWS);
    const note = isCut ? ", the rest left out: zoom in" : "";
    void copy(csv(rows)).then(() => say(`${rows.length - 1} samples copied${note}`));
  });
  return make(
    "div",
    { class: "toolbar" },
    axisSelect(state),
    make(
      "span",
      { class: "nowrap" },
      act("−", "Zoom out", moves.zoomOut),
      act("+", "Zoom in", moves.zoomIn),
      act("◀", "Pan left", moves.panLeft),
      act("▶", "Pan right", moves.panRight),
      act("Whole", "Whole length", moves.whole),
    ),
    make("label", { class: "nowrap" }, fit, "Heights by what is in sight"),
    cursorSlider(state),
    copyRange,
  );
}

function themeButton(state: State): HTMLElement {
  const root = document.documentElement;
  const names: Record<string, string> = { auto: "Colours: as the system", light: "Colours: light", dark: "Colours: dark" };
  const next: Record<string, string> = { auto: "light", light: "dark", dark: "auto" };
  const repaint = (): void => {
    coloursOf(state.traces, state.files.length > 1);
    state.retint();
  };
  const theme = button(names.auto, () => {
    const chosen = next[root.dataset.theme ?? "auto"];
    if (chosen === "auto") delete root.dataset.theme;
    else root.dataset.theme = chosen;
    theme.textContent = names[chosen];
    repaint();
  });
  onOtherColours(repaint);
  return theme;
}

function pairs(caption: string, rows: [string, string][]): HTMLElement {
  const body = make("tbody", {}, ...rows.map(([name, value]) => make("tr", {}, make("th", { scope: "row" }, name), make("td", {}, value))));
  return make("table", { class: "pairs" }, make("caption", {}, caption), body);
}

function sessionSection(file: SessionFile, tool: string): HTMLElement {
  const { head } = file;
  const reduced = head.channels.filter((channel) => channel.stretch > 1).length;
  const page: [string, string][] = [
    ["Written by", tool],
    ["Length", `${lapClock(head.duration_us)} (min:s)`],
    ["Channels", String(head.channels.length)],
    ["Distances from", file.driven_m === null ? "nothing: no GPS track and no speed" : file.drivenFrom],
    ...head.notes.map((note): [string, string] => ["Not in the page", note]),
  ];
  if (reduced > 0) {
    page.push(["Reduced", `${reduced} channels: minimum and maximum of some samples at a time, to keep the page small`]);
  }
  const damage = head.damage.length > 0 ? [pairs("Damage", head.damage)] : [];
  const parts = [pairs("Session", head.texts), ...damage, pairs("Page", page)];
  return make("section", { class: "session" }, make("h2", {}, head.name), make("div", { class: "columns" }, ...parts));
}

function help(): HTMLElement {
  const rows = [
    ["Move the cursor", "point, tap, or ← →; Page up and down for more; Home, End"],
    ["Zoom", "drag over a range, wheel, two fingers, or + −"],
    ["Pan", "Shift and drag, one finger, or Shift and ← →"],
    ["Whole length", "double click, 0 or Escape"],
  ];
  const body = make("tbody", {}, ...rows.map((cells) => row("td", ...cells)));
  const note = "Keys work in the plots and on the map. Values at the cursor are those of the last sample not behind it. Over distance, finished laps are drawn as long as the reference.";
  return make("details", { class: "help" }, make("summary", {}, "Controls"), make("table", {}, body), make("p", {}, note));
}

function titleText(files: FileHead[]): string {
  return files.map((file) => file.name).join(", ");
}

async function build(head: Head, page: HTMLElement): Promise<void> {
  const state = new State(await openFiles(head));
  const region = make("div", {
    class: "plots",
    tabindex: "0",
    role: "group",
    "aria-label": "Plots: arrow keys move the cursor, plus and minus zoom",
  });
  const empty = state.files.every((file) => file.head.channels.every((channel) => channel.count === 0));
  const notice = make("p", { class: "notice" }, empty ? "There are no samples in this page." : "No channel is chosen: tick some in the list.");
  const header = make("header", {}, make("h1", {}, titleText(head.files)), themeButton(state), help(), status);
  const tables = state.files.map((file) => new LapTable(state, file, say).element);
  const list = new ChannelList(state, say);
  const map = new TrackMap(state);
  const cursorTable = new CursorTable(state);
  const statistics = new Statistics(state);
  const sessions = state.files.map((file) => sessionSection(file, head.tool));
  page.replaceChildren(
    header,
    make("div", { class: "left" }, ...tables, list.element),
    make("div", { class: "middle" }, toolbar(state), notice, region),
    make("div", { class: "right" }, map.element, cursorTable.element),
    make("div", { class: "below" }, statistics.element, ...sessions),
  );
  new Plots(region, state);
  addKeys(region, state);
  state.on(["laps", "channels"], () => {
    notice.hidden = !empty && state.channels.length > 0;
  });
  state.begin();
  list.fill();
}

const page = byId("page");
try {
  await build(readHead(), page);
} catch (problem) {
  page.replaceChildren(make("p", { class: "notice" }, problem instanceof Error ? problem.message : String(problem)));
}
