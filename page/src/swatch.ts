// SPDX-License-Identifier: MIT
// The line of a trace in small, for tables: its colour and its dashes.

const SVG = "http://www.w3.org/2000/svg";

interface Look {
  colour: string;
  dash: number[];
}

export class Swatch {
  readonly element = document.createElementNS(SVG, "svg");
  private readonly line = document.createElementNS(SVG, "line");

  constructor(look?: Look) {
    const place = { class: "swatch", width: "24", height: "8", "aria-hidden": "true" };
    for (const [name, value] of Object.entries(place)) this.element.setAttribute(name, value);
    for (const [name, value] of Object.entries({ x1: "0", y1: "4", x2: "24", y2: "4", "stroke-width": "3" })) {
      this.line.setAttribute(name, value);
    }
    this.element.append(this.line);
    this.paint(look);
  }

  // Nothing for a lap that isn't shown.
  paint(look: Look | undefined): void {
    this.line.setAttribute("stroke", look?.colour ?? "none");
    this.line.setAttribute("stroke-dasharray", look?.dash.join(" ") ?? "");
  }
}
