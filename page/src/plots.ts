// SPDX-License-Identifier: MIT
// The plots, one below the other over the same range. uPlot lays out axes, scales and grid; the lines are drawn from the
// channels' own rows, since laps of millions of samples have no common places on the axis.
import uPlot from "uplot";
import { ink, isOnPaper, onOtherColours } from "./colours";
import { columnTimes, curveOf, placesIn, type Frame } from "./curve";
import { button, make } from "./dom";
import { addGestures } from "./gestures";
import { titleOf, type Trace } from "./session";
import type { State } from "./state";

const HEIGHT_PX = 150;
const PAPER_PX = 680; // the width of a sheet
const STILL_MS = 150; // without a move, after which lines get all of their columns
const AXIS_WIDTH_PX = 64;
const DIFFERENCE = "difference"; // no key of a channel

class Plot {
  readonly element: HTMLElement;
  private readonly figure: HTMLElement;
  private readonly line = make("div", { class: "cursor" });
  private plot: uPlot;
  private low = 0;
  private high = 1;
  private isStale = true;
  isInSight = true;

  constructor(
    private readonly plots: Plots,
    readonly key: string,
  ) {
    const head = plots.state.headOf(key);
    const title = head === undefined ? "Time behind the reference lap (s)" : titleOf(head);
    const notes = head !== undefined && head.stretch > 1 ? `minimum and maximum of each ${head.stretch} samples` : "";
    const caption = make("figcaption", {}, make("b", {}, title), make("span", { class: "quiet" }, notes));
    if (head !== undefined) {
      const remove = button("×", () => plots.state.choose(key, false), { "aria-label": `Remove ${title}` });
      caption.append(remove);
    }
    this.figure = make("div", { class: "plot" });
    this.element = make("figure", { "data-key": key }, caption, this.figure);
    this.plot = this.make(head?.unit ?? "s");
  }

  private make(unit: string): uPlot {
    const axisText = (): string => (this.plots.state.axis === "distance" ? "m" : "s");
    const axis: uPlot.Axis = {
      stroke: () => ink().text,
      grid: { stroke: () => ink().grid, width: 1 },
      ticks: { stroke: () => ink().grid, width: 1 },
      font: "12px system-ui, sans-serif",
      labelFont: "12px system-ui, sans-serif",
    };
    const plot = new uPlot(
      {
        width: this.plots.width(),
        height: HEIGHT_PX,
        legend: { show: false },
        cursor: { show: false },
        scales: { x: { time: false, auto: false, min: 0, max: 1 }, y: { auto: false, min: 0, max: 1 } },
        series: [{}, { scale: "y" }],
        axes: [
          { ...axis, size: 28, values: (_, ticks) => ticks.map((tick) => `${tickText(tick)} ${axisText()}`) },
          {
            ...axis,
            scale: "y",
            size: AXIS_WIDTH_PX,
            label: unit === "" ? " " : unit,
            labelSize: 18,
            space: 28,
            values: (_, ticks) => ticks.map(tickText),
          },
        ],
        hooks: { draw: [() => this.drawLines()] },
      },
      [
        [0, 1],
        [null, null],
      ],
      this.figure,
    );
    plot.over.append(this.line);
    addGestures(plot.over, this.plots.state);
    return plot;
  }

  resize(width: number): void {
    this.plot.setSize({ width, height: HEIGHT_PX });
  }

  // Those that are scrolled away wait until they are seen, or until there is time.
  renew(evenUnseen: boolean): void {
    this.isStale = true;
    if (this.isInSight || evenUnseen) this.draw();
  }

  draw(): void {
    if (!this.isStale) return;
    this.isStale = false;
    const { view } = this.plots.state;
    this.findHeights();
    this.plot.setScale("x", { min: view.low, max: view.high });
    this.plot.setScale("y", { min: this.low, max: this.high });
    this.plot.redraw(false, false);
    this.moveCursor();
  }

  moveCursor(): void {
    const { view, cursor } = this.plots.state;
    const share = (cursor - view.low) / (view.high - view.low);
    this.line.hidden = share < 0 || share > 1;
    this.line.style.left = `${share * 100}%`;
  }

  destroy(): void {
    this.plot.destroy();
    this.element.remove();
  }

  // Over the whole of the traces, so that nothing jumps while one pans, or over the range in sight.
  private findHeights(): void {
    let low = Infinity;
    let high = -Infinity;
    const take = (value: number): void => {
      if (!Number.isFinite(value)) return;
      low = Math.min(low, value);
      high = Math.max(high, value);
    };
    for (const trace of this.plots.state.traces) {
      if (this.key === DIFFERENCE) this.plots.differences(trace).forEach(take);
      else this.takeExtremes(trace, take);
    }
    if (low > high) [low, high] = [0, 1];
    const pad = high > low ? (high - low) * 0.06 : Math.max(1e-9, Math.abs(low) * 0.1, low === 0 ? 1 : 0);
    this.low = low - pad;
    this.high = high + pad;
  }

  private takeExtremes(trace: Trace, take: (value: number) => void): void {
    const { state } = this.plots;
    const channel = state.channel(trace.file, this.key);
    if (channel === undefined) return;
    const times = state.fitsHeight ? this.plots.columns(trace) : [trace.from_us, trace.to_us];
    const [from, to] = placesIn(channel, trace, times[0], times[times.length - 1]);
    const found: [number, number] = [0, 0];
    if (!channel.extremes(from, to, found)) return;
    take(channel.number(found[0]));
    take(channel.number(found[1]));
  }

  private drawLines(): void {
    const { state } = this.plots;
    const { ctx, bbox } = this.plot;
    const { isMoving } = this.plots;
    const frame: Frame = { axis: state.axis, view: state.view, box: bbox, low: this.low, high: this.high, isMoving };
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    if (state.axis === "session") this.drawLapStarts(ctx, frame);
    for (const trace of state.traces) {
      const path = this.key === DIFFERENCE ? this.differencePath(trace, frame) : this.channelPath(trace, frame);
      if (path === null) continue;
      ctx.strokeStyle = trace.colour;
      // A browser without a graphics card draws several lines of one pixel in a small part of the time of a wider one.
      ctx.lineWidth = 1;
      ctx.setLineDash(trace.dash.map((length) => length * uPlot.pxRatio));
      const lines = Math.round((trace.isReference ? 2 : 1) * uPlot.pxRatio);
      for (let i = 0; i < lines; i++) {
        ctx.stroke(path);
        ctx.translate(0, 1);
      }
      ctx.translate(0, -lines);
    }
    ctx.restore();
  }

  private channelPath(trace: Trace, frame: Frame): Path2D | null {
    const channel = this.plots.state.channel(trace.file, this.key);
    return channel === undefined ? null : curveOf(channel, trace, frame, this.plots.columns(trace));
  }

  private differencePath(trace: Trace, frame: Frame): Path2D {
    const path = new Path2D();
    const values = this.plots.differences(trace);
    const width = frame.box.width / (values.length - 1);
    values.forEach((value, i) => {
      const y = frame.box.top + ((frame.high - value) / (frame.high - frame.low)) * frame.box.height;
      if (Number.isFinite(value)) path.lineTo(frame.box.left + i * width, y);
    });
    return path;
  }

  private drawLapStarts(ctx: CanvasRenderingContext2D, frame: Frame): void {
    ctx.strokeStyle = ink().text;
    ctx.globalAlpha = 0.35;
    for (const lap of this.plots.state.files.flatMap((file) => file.head.laps)) {
      const share = (lap.start_us * 1e-6 - frame.view.low) / (frame.view.high - frame.view.low);
      if (share < 0 || share > 1) continue;
      ctx.beginPath();
      ctx.moveTo(frame.box.left + share * frame.box.width, frame.box.top);
      ctx.lineTo(frame.box.left + share * frame.box.width, frame.box.top + frame.box.height);
      ctx.stroke();
    }
    ctx.globalAlpha = 1;
  }
}

export class Plots {
  private plots: Plot[] = [];
  // Of the range in sight, by trace.
  private readonly times = new Map<Trace, Float64Array>();
  private readonly behind = new Map<Trace, Float64Array>();
  private readonly sight: IntersectionObserver;
  private isWaiting = false;
  isMoving = false;
  private stillTimer = 0;

  constructor(
    private readonly region: HTMLElement,
    readonly state: State,
  ) {
    state.on(["laps", "channels"], () => this.arrange());
    state.on(["view"], () => this.move());
    state.on(["laps", "channels"], () => this.drawSoon());
    state.on(["cursor"], () => this.plots.forEach((plot) => plot.moveCursor()));
    this.sight = new IntersectionObserver((entries) => this.see(entries));
    new ResizeObserver(() => {
      for (const plot of this.plots) plot.resize(this.width());
      this.drawSoon();
    }).observe(region);
    // At once and all of them: a printer doesn't wait for the next frame.
    onOtherColours(() => {
      for (const plot of this.plots) plot.resize(this.width());
      this.draw(true);
    });
  }

  private see(entries: IntersectionObserverEntry[]): void {
    for (const { target, isIntersecting } of entries) {
      const plot = this.plots.find(({ element }) => element === target);
      if (plot === undefined) continue;
      plot.isInSight = isIntersecting;
      if (isIntersecting) plot.draw();
    }
  }

  private move(): void {
    this.isMoving = true;
    this.drawSoon();
  }

  width(): number {
    return isOnPaper() ? PAPER_PX : Math.max(200, this.region.clientWidth);
  }

  columns(trace: Trace): Float64Array {
    const columns = Math.max(50, Math.round((this.width() - AXIS_WIDTH_PX - 20) / (this.isMoving ? 2 : 1)));
    return remembered(this.times, trace, () => columnTimes(trace, this.state.axis, this.state.view, columns));
  }

  // Seconds behind the reference at the columns' edges; NaN where one of both isn't there.
  differences(trace: Trace): Float64Array {
    const { axis, reference, view } = this.state;
    return remembered(this.behind, trace, () => {
      const times = this.columns(trace);
      const width = (view.high - view.low) / (times.length - 1);
      return times.map((_, i) => differenceAt(trace, reference, axis, view.low + i * width));
    });
  }

  private arrange(): void {
    const { state } = this;
    const comparable = state.axis === "distance" && state.reference?.hasDistance() === true && state.traces.length > 0;
    const wanted = [...(comparable ? [DIFFERENCE] : []), ...state.channels];
    for (const plot of this.plots) {
      if (wanted.includes(plot.key)) continue;
      this.sight.unobserve(plot.element);
      plot.destroy();
    }
    const kept = this.plots.filter((plot) => wanted.includes(plot.key));
    this.plots = wanted.map((key) => kept.find((plot) => plot.key === key) ?? new Plot(this, key));
    for (const plot of this.plots) {
      if (plot.element.parentNode !== null) continue;
      this.region.append(plot.element);
      this.sight.observe(plot.element);
    }
    const first = this.plots.at(0);
    if (first?.key === DIFFERENCE && this.region.firstChild !== first.element) this.region.prepend(first.element);
    this.region.dataset.empty = this.plots.length === 0 ? "yes" : "no";
  }

  // What is seen in the next frame, all of it and in full when nothing moves any more.
  private drawSoon(): void {
    clearTimeout(this.stillTimer);
    this.stillTimer = setTimeout(() => {
      this.isMoving = false;
      this.draw(true);
    }, STILL_MS);
    if (this.isWaiting) return;
    this.isWaiting = true;
    requestAnimationFrame(() => {
      this.isWaiting = false;
      this.draw(false);
    });
  }

  private draw(all: boolean): void {
    this.times.clear();
    this.behind.clear();
    for (const plot of this.plots) plot.renew(all);
    if (this.state.isLoading() || this.region.dataset.drawn === "yes") return;
    this.region.dataset.drawn = "yes";
    performance.mark("first-plot");
  }
}

export function differenceAt(trace: Trace, reference: Trace | null, axis: "distance" | "lap" | "session", x: number): number {
  if (reference === null || axis !== "distance") return NaN;
  const own = trace.timeAt(x, axis) - trace.from_us;
  return (own - (reference.timeAt(x, axis) - reference.from_us)) * 1e-6;
}

// As many digits as the tick has, without those of its float.
function tickText(tick: number): string {
  return String(Number(tick.toPrecision(9)));
}

function remembered(map: Map<Trace, Float64Array>, trace: Trace, compute: () => Float64Array): Float64Array {
  let known = map.get(trace);
  if (known === undefined) map.set(trace, (known = compute()));
  return known;
}
