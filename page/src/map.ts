// SPDX-License-Identifier: MIT
// The driven track, coloured by a channel, with the cursor's place on it.
import { ink, onOtherColours, scaleColour } from "./colours";
import type { Channel } from "./channel";
import { lowerBound } from "./channel";
import { make } from "./dom";
import { addKeys } from "./gestures";
import { coarse } from "./format";
import { titleOf, type Trace } from "./session";
import type { State } from "./state";

const STEPS = 1500; // of a line
const MARGIN_PX = 24;

interface Point {
  east: number;
  north: number;
}

type Projection = (point: Point) => [number, number];

interface Walk {
  trace: Trace;
  times: Float64Array;
  points: Point[];
}

export class TrackMap {
  readonly element = make("section", { class: "map" }, make("h2", {}, "Track"));
  private readonly canvas = make("canvas", { tabindex: "0" });
  private readonly marks = make("canvas", { class: "marks", "aria-hidden": "true" });
  private readonly scaleBar = make("canvas", { class: "scale", width: "200", height: "10", "aria-hidden": "true" });
  private readonly scaleText = make("span");
  private readonly select = make("select", { id: "map-channel" });
  private readonly scale = make("div", { class: "scale-line" });
  private walks: Walk[] = [];
  private project: Projection = () => [0, 0];
  private isWaiting = false;
  private isStale = true;

  constructor(private readonly state: State) {
    if (!state.files.some((file) => file.track !== null)) {
      this.element.append(make("p", { class: "quiet" }, "There is no GPS track in this page."));
      return;
    }
    this.canvas.setAttribute("role", "img");
    this.canvas.setAttribute("aria-label", "Map of the track; a click moves the cursor, arrow keys do, too");
    const frame = make("div", { class: "map-frame" }, this.canvas, this.marks);
    this.scale.append(this.scaleBar, this.scaleText);
    this.element.append(make("label", { for: "map-channel" }, "Colour by "), this.select, frame, this.scale);
    this.select.addEventListener("change", () => this.state.setMapChannel(this.select.value));
    this.canvas.addEventListener("click", (event) => this.takeClick(event));
    addKeys(this.canvas, state);
    state.on(["channels"], () => this.listChannels());
    state.on(["laps", "channels"], () => this.drawSoon(true));
    state.on(["cursor"], () => this.drawSoon(false));
    new ResizeObserver(() => this.drawSoon(true)).observe(frame);
    onOtherColours(() => this.draw(true));
    this.listChannels();
  }

  // Those of the plots: what else is chosen there is here, too.
  private listChannels(): void {
    const { channels, mapChannel } = this.state;
    const keys = mapChannel === "" || channels.includes(mapChannel) ? channels : [mapChannel, ...channels];
    const options = keys.map((key) => {
      const head = this.state.headOf(key);
      return make("option", { value: key, selected: key === mapChannel }, head === undefined ? key : titleOf(head));
    });
    this.select.replaceChildren(make("option", { value: "", selected: mapChannel === "" }, "Lap"), ...options);
  }

  private drawSoon(everything: boolean): void {
    this.isStale ||= everything;
    if (this.isWaiting) return;
    this.isWaiting = true;
    requestAnimationFrame(() => {
      this.isWaiting = false;
      this.draw(false);
    });
  }

  private draw(everything: boolean): void {
    if (this.isStale || everything) {
      this.isStale = false;
      this.walks = this.state.traces.flatMap(walkOf);
      this.project = this.projectionOfWalks();
      this.drawTrack();
    }
    this.drawMarks();
  }

  private context(canvas: HTMLCanvasElement): CanvasRenderingContext2D | null {
    const ratio = devicePixelRatio;
    const { clientWidth, clientHeight } = this.canvas;
    canvas.width = clientWidth * ratio;
    canvas.height = clientHeight * ratio;
    const context = canvas.getContext("2d");
    context?.scale(ratio, ratio);
    return context;
  }

  // Metres to pixels: the same both ways, everything in sight, north up.
  private projectionOfWalks(): Projection {
    const points = this.walks.flatMap((walk) => walk.points);
    const range = (values: number[]): [number, number] => [
      values.reduce((a, b) => Math.min(a, b), Infinity),
      values.reduce((a, b) => Math.max(a, b), -Infinity),
    ];
    const [west, east] = range(points.map((point) => point.east));
    const [south, north] = range(points.map((point) => point.north));
    const { clientWidth: width, clientHeight: height } = this.canvas;
    const inner = (size: number): number => Math.max(10, size - 2 * MARGIN_PX);
    const scale = Math.min(inner(width) / Math.max(1, east - west), inner(height) / Math.max(1, north - south));
    return ({ east: x, north: y }) => [
      width / 2 + (x - (west + east) / 2) * scale,
      height / 2 - (y - (south + north) / 2) * scale,
    ];
  }

  private drawTrack(): void {
    const context = this.context(this.canvas);
    if (context === null) return;
    const { project } = this;
    const coloured = this.colouredWalk();
    context.lineJoin = "round";
    for (const { trace, points } of this.walks) {
      context.strokeStyle = trace.colour;
      context.lineWidth = 2;
      context.setLineDash(trace.dash);
      context.beginPath();
      for (const point of points) context.lineTo(...project(point));
      context.stroke();
    }
    context.setLineDash([]);
    const channel = coloured === undefined ? undefined : this.state.channel(coloured.trace.file, this.state.mapChannel);
    if (coloured !== undefined && channel !== undefined) this.drawColours(context, coloured, channel, project);
    this.scale.hidden = coloured === undefined || channel === undefined;
    context.lineCap = "butt";
    this.drawSectors(context, project);
  }

  // The reference if it is in sight, else the first lap.
  private colouredWalk(): Walk | undefined {
    if (this.state.mapChannel === "") return undefined;
    return this.walks.find((walk) => walk.trace.isReference) ?? this.walks.at(0);
  }

  private drawColours(
    context: CanvasRenderingContext2D,
    { trace, times, points }: Walk,
    channel: Channel,
    project: Projection,
  ): void {
    const found: [number, number] = [0, 0];
    if (!channel.extremes(channel.lowerBound(trace.from_us), channel.lowerBound(trace.to_us), found)) return;
    const [low, high] = found.map((kept) => channel.number(kept));
    context.lineWidth = 9;
    context.strokeStyle = ink().text;
    context.beginPath();
    for (const point of points) context.lineTo(...project(point));
    context.stroke();
    context.lineWidth = 6;
    context.lineCap = "round"; // without seams
    for (let i = 1; i < points.length; i++) {
      const place = channel.placeAt(times[i], trace.from_us, trace.to_us);
      const value = place < 0 ? NaN : channel.low(place);
      context.strokeStyle = Number.isFinite(value) ? scaleColour((value - low) / (high - low || 1)) : ink().ground;
      context.beginPath();
      context.moveTo(...project(points[i - 1]));
      context.lineTo(...project(points[i]));
      context.stroke();
    }
    const bar = this.scaleBar.getContext("2d");
    for (let x = 0; bar !== null && x < this.scaleBar.width; x++) {
      bar.fillStyle = scaleColour(x / this.scaleBar.width);
      bar.fillRect(x, 0, 1, this.scaleBar.height);
    }
    const unit = channel.head.unit === "" ? "" : ` ${channel.head.unit}`;
    this.scaleText.textContent = `${coarse(low, high - low)} to ${coarse(high, high - low)}${unit}`;
  }

  // Where laps begin and splits end, across the track.
  private drawSectors(context: CanvasRenderingContext2D, project: Projection): void {
    const lap = this.state.reference?.lap ?? null;
    const trace = this.walks.find((walk) => walk.trace.isReference)?.trace ?? this.walks.at(0)?.trace;
    if (trace?.lap === null || trace === undefined || lap === null) return;
    const marks: [number, string][] = [[trace.from_us, "Start"]];
    let end = trace.from_us;
    trace.lap.splits_us.slice(0, -1).forEach((split, i) => marks.push([(end += split), `S${i + 1}`]));
    context.fillStyle = ink().text;
    context.font = "bold 12px system-ui, sans-serif";
    for (const [time, text] of marks) {
      const AHEAD_US = 500_000;
      const [x, y] = project(placeOf(trace, time));
      const [nextX, nextY] = project(placeOf(trace, time + AHEAD_US));
      const length = Math.hypot(nextX - x, nextY - y) || 1;
      const [acrossX, acrossY] = [(-(nextY - y) / length) * 12, ((nextX - x) / length) * 12];
      context.lineWidth = text === "Start" ? 4 : 2;
      context.strokeStyle = ink().text;
      context.beginPath();
      context.moveTo(x - acrossX, y - acrossY);
      context.lineTo(x + acrossX, y + acrossY);
      context.stroke();
      // With a rim, as it may lie on the track.
      context.lineWidth = 4;
      context.strokeStyle = ink().ground;
      context.strokeText(text, x + acrossX * 1.4, y + acrossY * 1.4);
      context.fillText(text, x + acrossX * 1.4, y + acrossY * 1.4);
    }
  }

  private drawMarks(): void {
    const context = this.context(this.marks);
    if (context === null) return;
    const { project } = this;
    for (const { trace } of this.walks) {
      const time = trace.timeAt(this.state.cursor, this.state.axis);
      if (!(time >= trace.from_us && time <= trace.to_us)) continue;
      const [x, y] = project(placeOf(trace, time));
      context.beginPath();
      context.arc(x, y, 6, 0, 2 * Math.PI);
      context.fillStyle = trace.colour;
      context.fill();
      context.lineWidth = 2.5;
      context.strokeStyle = ink().ground;
      context.stroke();
    }
  }

  private takeClick(event: MouseEvent): void {
    const { project } = this;
    const box = this.canvas.getBoundingClientRect();
    const [clickX, clickY] = [event.clientX - box.left, event.clientY - box.top];
    let nearest = Infinity;
    let place = NaN;
    for (const { trace, times, points } of this.walks) {
      points.forEach((point, i) => {
        const [x, y] = project(point);
        const distance = Math.hypot(x - clickX, y - clickY);
        if (distance >= nearest) return;
        nearest = distance;
        place = trace.xAt(times[i], this.state.axis);
      });
    }
    if (!Number.isFinite(place)) return;
    this.state.setCursor(place);
    this.state.followCursor();
  }
}

function placeOf(trace: Trace, time_us: number): Point {
  const track = trace.file.track;
  return track === null ? { east: NaN, north: NaN } : { east: track.east_m.at(time_us), north: track.north_m.at(time_us) };
}

// The solutions within a trace, thinned where they are many.
function walkOf(trace: Trace): Walk[] {
  const track = trace.file.track;
  if (track === null) return [];
  const from = lowerBound(track.times_us, trace.from_us);
  const to = lowerBound(track.times_us, trace.to_us);
  const stride = Math.max(1, Math.ceil((to - from) / STEPS));
  const times = track.times_us.subarray(from, to).filter((_, i) => i % stride === 0);
  return times.length < 2 ? [] : [{ trace, times, points: Array.from(times, (time) => placeOf(trace, time)) }];
}
