// SPDX-License-Identifier: MIT
// Elements made by hand: text goes in as text, whatever it says.

type Attributes = Record<string, string | boolean>;

export function make<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: (Node | string)[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value === true) element.setAttribute(name, "");
    else if (value !== false) element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

export function button(text: string, act: () => void, attributes: Attributes = {}): HTMLButtonElement {
  const element = make("button", { type: "button", ...attributes }, text);
  element.addEventListener("click", act);
  return element;
}

export function row(kind: "td" | "th", ...cells: (Node | string)[]): HTMLTableRowElement {
  return make("tr", {}, ...cells.map((cell) => make(kind, kind === "th" ? { scope: "col" } : {}, cell)));
}

export function byId(id: string): HTMLElement {
  const element = document.getElementById(id);
  if (element === null) throw new Error(`The page has no element ${id}.`);
  return element;
}

// Into the clipboard, also where a browser gives a local file no access to it.
export async function copy(text: string): Promise<void> {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    const area = make("textarea", { class: "offscreen", "aria-hidden": "true" }, text);
    document.body.append(area);
    area.select();
    document.execCommand("copy");
    area.remove();
  }
}
