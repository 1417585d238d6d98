// SPDX-License-Identifier: MIT
// Mouse, touch and keys over the plots.
import { make } from "./dom";
import type { State } from "./state";

const LEAST_DRAG_PX = 5;
const WHEEL_STEP = 0.002;
const ZOOM_STEP = 0.6;
const PAN_STEP = 0.2;

// over: the plot's area; its left and right edge are those of the range in sight.
export function addGestures(over: HTMLElement, state: State): void {
  const selection = make("div", { class: "selection" });
  over.append(selection);
  const pointers = new Map<number, number>(); // id to x, in pixels of the area
  let start = 0;
  let action: "select" | "pan" | "none" = "none";

  const pixel = (event: MouseEvent): number => event.clientX - over.getBoundingClientRect().left;
  const placeOf = (x: number): number =>
    state.view.low + (x / over.clientWidth) * (state.view.high - state.view.low);
  const showSelection = (x: number): void => {
    selection.style.left = `${Math.min(start, x)}px`;
    selection.style.width = `${Math.abs(x - start)}px`;
  };

  over.addEventListener("pointerdown", (event) => {
    if (event.button > 1) return;
    over.setPointerCapture(event.pointerId);
    start = pixel(event);
    pointers.set(event.pointerId, start);
    const pans = event.pointerType !== "mouse" || event.shiftKey || event.button === 1;
    action = pans ? "pan" : "select";
    if (event.button === 1) event.preventDefault();
    state.setCursor(placeOf(start));
  });

  over.addEventListener("pointermove", (event) => {
    const x = pixel(event);
    const last = pointers.get(event.pointerId);
    if (last === undefined) {
      if (event.pointerType === "mouse") state.setCursor(placeOf(x));
      return;
    }
    if (pointers.size === 2) {
      const other = [...pointers].find(([id]) => id !== event.pointerId)?.[1] ?? x;
      const [before, now] = [Math.abs(last - other), Math.abs(x - other)];
      if (before > LEAST_DRAG_PX && now > LEAST_DRAG_PX) state.zoom(before / now, placeOf(other));
    } else if (action === "pan") {
      state.pan((last - x) / over.clientWidth);
    } else if (action === "select") {
      showSelection(x);
      state.setCursor(placeOf(x));
    }
    pointers.set(event.pointerId, x);
  });

  const end = (event: PointerEvent): void => {
    const x = pointers.get(event.pointerId);
    pointers.delete(event.pointerId);
    selection.style.width = "0";
    if (x === undefined || action !== "select" || event.type === "pointercancel") return;
    action = "none";
    if (Math.abs(x - start) >= LEAST_DRAG_PX) state.setView(placeOf(Math.min(x, start)), placeOf(Math.max(x, start)));
  };
  over.addEventListener("pointerup", end);
  over.addEventListener("pointercancel", end);

  over.addEventListener("dblclick", () => state.setView(0, state.length()));

  over.addEventListener(
    "wheel",
    (event) => {
      event.preventDefault();
      if (Math.abs(event.deltaX) > Math.abs(event.deltaY)) state.pan(event.deltaX / over.clientWidth);
      else state.zoom(Math.exp(event.deltaY * WHEEL_STEP), placeOf(pixel(event)));
    },
    { passive: false },
  );
}

// What buttons and keys do.
export const moves = {
  zoomIn: (state: State): void => state.zoom(ZOOM_STEP, state.cursor),
  zoomOut: (state: State): void => state.zoom(1 / ZOOM_STEP, state.cursor),
  panLeft: (state: State): void => state.pan(-PAN_STEP),
  panRight: (state: State): void => state.pan(PAN_STEP),
  whole: (state: State): void => state.setView(0, state.length()),
  cursorBy: (state: State, share: number): void => {
    state.setCursor(state.cursor + share * (state.view.high - state.view.low));
    state.followCursor();
  },
  cursorTo: (state: State, x: number): void => {
    state.setCursor(x);
    state.followCursor();
  },
};

export function addKeys(region: HTMLElement, state: State): void {
  const FINE = 1 / 1000;
  const acts: Record<string, (shift: boolean) => void> = {
    ArrowLeft: (shift) => (shift ? moves.panLeft(state) : moves.cursorBy(state, -FINE)),
    ArrowRight: (shift) => (shift ? moves.panRight(state) : moves.cursorBy(state, FINE)),
    PageUp: () => moves.cursorBy(state, -FINE * 50),
    PageDown: () => moves.cursorBy(state, FINE * 50),
    Home: () => moves.cursorTo(state, 0),
    End: () => moves.cursorTo(state, state.length()),
    "+": () => moves.zoomIn(state),
    "=": () => moves.zoomIn(state),
    "-": () => moves.zoomOut(state),
    "0": () => moves.whole(state),
    Escape: () => moves.whole(state),
  };
  region.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey || !(event.key in acts)) return;
    event.preventDefault();
    acts[event.key](event.shiftKey);
  });
}
