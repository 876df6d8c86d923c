import { byId, make } from "./dom.js";

/** A button of the toolbar. */
export interface Tool {
  id: string;
  label: string;
  title: string;
  /** Pressed while the view has focus; upper case in titles. */
  key?: string;
  /** An outline in a square of 24 units. */
  icon: string;
  act(): void;
  /** Whether it is on, of one that switches. */
  isOn?(): boolean;
}

/** The tools in groups, one beside the other. */
export class Toolbar {
  private readonly buttons = new Map<Tool, HTMLButtonElement>();

  constructor(groups: Tool[][]) {
    const bar = byId("tools");
    groups.forEach((group, i) => {
      if (i > 0) bar.append(make("span", { className: "gap" }));
      for (const tool of group) bar.append(this.button(tool));
    });
    bar.addEventListener("keydown", (event) => this.onKey(event));
    byId("canvas").addEventListener("keydown", (event) => {
      if (event.ctrlKey || event.metaKey || event.altKey || event.defaultPrevented) return;
      const tool = groups.flat().find(({ key }) => key === event.key.toLowerCase());
      if (tool === undefined) return;
      event.preventDefault();
      tool.act();
      this.refresh();
    });
    this.refresh();
  }

  /** Shows which tools are on. */
  refresh(): void {
    for (const [tool, button] of this.buttons) {
      if (tool.isOn) button.setAttribute("aria-pressed", String(tool.isOn()));
    }
  }

  private button(tool: Tool): HTMLButtonElement {
    const key = tool.key ? ` (${tool.key.toUpperCase()})` : "";
    const button = make("button", {
      id: `tool-${tool.id}`, title: tool.title + key,
      onclick: () => { tool.act(); this.refresh(); },
    });
    // The outlines are this file's own callers', never a model's.
    button.innerHTML = `<svg viewBox="0 0 24 24" aria-hidden="true"><path d="${tool.icon}"/></svg>`;
    button.append(tool.label);
    this.buttons.set(tool, button);
    return button;
  }

  /** Arrow keys go along the bar. */
  private onKey(event: KeyboardEvent): void {
    const step = Number(event.key === "ArrowRight") - Number(event.key === "ArrowLeft");
    const all = [...this.buttons.values()];
    const at = all.indexOf(document.activeElement as HTMLButtonElement);
    if (step === 0 || at < 0) return;
    event.preventDefault();
    all[(at + step + all.length) % all.length]!.focus();
  }
}
