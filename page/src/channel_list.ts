// SPDX-License-Identifier: MIT
// Channels by a search field. Sessions have up to thousands of them: the list shows the first that fit.
import { make } from "./dom";
import { keyOf, titleOf } from "./session";
import type { State } from "./state";

const MOST_SHOWN = 40;

export class ChannelList {
  readonly element = make("section", { class: "channels" }, make("h2", {}, "Channels"));
  private readonly input = make("input", { type: "search", "aria-label": "Search channels", placeholder: "Search channels" });
  private readonly list = make("ul");
  private readonly count = make("p", { class: "quiet", role: "status" });
  private readonly all: { key: string; title: string; isGps: boolean; count: number }[] = [];

  constructor(
    private readonly state: State,
    private readonly say: (text: string) => void,
  ) {
    const seen = new Set<string>();
    for (const channel of state.files.flatMap((file) => file.head.channels)) {
      const key = keyOf(channel);
      if (seen.has(key)) continue;
      seen.add(key);
      this.all.push({ key, title: titleOf(channel), isGps: channel.kind === "gps", count: channel.count });
    }
    if (this.all.length === 0) {
      this.element.append(make("p", { class: "quiet" }, "There are no channels in this page."));
      return;
    }
    this.element.append(this.input, this.count, this.list);
    this.input.addEventListener("input", () => this.fill());
    this.input.addEventListener("keydown", (event) => {
      if (event.key !== "Enter") return;
      this.list.querySelector("input")?.click();
    });
    // Nothing moves away from under a finger: the order is that of the last search.
    state.on(["channels"], () => this.tick());
  }

  fill(): void {
    const words = this.input.value.toLowerCase().split(/\s+/);
    const found = this.all.filter(({ title }) => words.every((word) => title.toLowerCase().includes(word)));
    const chosen = new Set(this.state.channels);
    // Chosen ones stay in reach.
    const ordered = [...found.filter(({ key }) => chosen.has(key)), ...found.filter(({ key }) => !chosen.has(key))];
    const shown = ordered.slice(0, MOST_SHOWN);
    this.count.textContent =
      shown.length < found.length
        ? `${shown.length} of ${found.length} shown: type to find others`
        : `${found.length} of ${this.all.length}`;
    this.list.replaceChildren(...shown.map((channel) => this.item(channel)));
    this.tick();
  }

  private tick(): void {
    const chosen = new Set(this.state.channels);
    for (const box of this.list.querySelectorAll("input")) box.checked = chosen.has(box.dataset.key ?? "");
  }

  private item(channel: { key: string; title: string; isGps: boolean; count: number }): HTMLElement {
    const box = make("input", { type: "checkbox" });
    box.dataset.key = channel.key;
    box.addEventListener("change", () => {
      if (this.state.choose(channel.key, box.checked)) return;
      box.checked = false;
      this.say("More plots than a page can show: remove one first");
    });
    const note = channel.count === 0 ? "no samples" : channel.isGps ? "GPS" : "";
    return make("li", {}, make("label", {}, box, channel.title, make("span", { class: "quiet" }, note)));
  }
}
