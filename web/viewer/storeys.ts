import { byId, fill, lengthText, make } from "./dom.js";
import { Hidden, type Model } from "./model.js";
import type { Selection } from "./selection.js";

interface Level {
  name: string;
  elevation: number;
}

/** Which storeys are shown: all up to one, or that one alone. */
export interface Storeys {
  /** From the lowest on; null shows all. */
  upTo: number | null;
  only: boolean;
}

/** A slider through the storeys of all files. */
export class StoreySlider {
  state: Storeys = { upTo: null, only: false };
  readonly changed = new Set<(level: Level | null) => void>();
  private levels: Level[] = [];

  constructor(private readonly selection: Selection) {}

  /** The storey that the slider is at. */
  get level(): Level | null {
    return this.state.upTo === null ? null : this.levels[this.state.upTo] ?? null;
  }

  /** Reads the storeys anew, behind a file that came or went. */
  refresh(): void {
    const byElevation = new Map<string, Level>();
    for (const { levels } of this.selection.models) {
      for (const { name, elevation, elements } of levels) {
        if (elements > 0) byElevation.set(`${elevation.toFixed(3)} ${name}`, { name, elevation });
      }
    }
    this.levels = [...byElevation.values()].sort((a, b) => a.elevation - b.elevation);
    if ((this.state.upTo ?? 0) >= this.levels.length) this.state.upTo = null;
    this.set(this.state);
  }

  set(state: Storeys): void {
    this.state = { ...state };
    this.apply();
    this.show();
  }

  private apply(): void {
    const at = this.level;
    const hiddenFloors = new Map<Model, Set<number>>();
    for (const model of this.selection.models) {
      const hides = model.levels.map(({ elevation }) => at !== null
        && (elevation > at.elevation + 1e-3
          || (this.state.only && elevation < at.elevation - 1e-3)));
      hiddenFloors.set(model, new Set(hides.flatMap((is, number) => (is ? [number] : []))));
    }
    this.selection.hideWhere(Hidden.byFloor, (model, element) =>
      hiddenFloors.get(model)!.has(model.floorOf(element).number));
    for (const tell of this.changed) tell(at);
  }

  private show(): void {
    const card = byId("storeys");
    card.hidden = this.levels.length < 2;
    if (card.hidden) return;
    const { levels, state } = this;
    const at = state.upTo ?? levels.length - 1;
    const name = () => {
      const level = this.level;
      if (level === null) return "All floors";
      return `${this.state.only ? "Only" : "Up to"} ${level.name} (${lengthText(level.elevation)})`;
    };
    const label = make("output", { id: "storey-name" }, name());
    const input = make("input", {
      id: "storey-slider", type: "range", min: "0", max: String(levels.length - 1), step: "1",
      value: String(at), "aria-label": "Floors up to",
      oninput: () => {
        const chosen = Number(input.value);
        const isAll = chosen === levels.length - 1 && !this.state.only;
        this.state.upTo = isAll ? null : chosen;
        label.textContent = name();
        input.setAttribute("aria-valuetext", name());
        this.apply();
      },
    });
    const only = make("input", {
      type: "checkbox", checked: state.only,
      onchange: () => this.set({ upTo: only.checked ? Number(input.value) : null, only: only.checked }),
    });
    fill(card, label, input,
      make("label", { style: "display:flex;gap:8px;align-items:center" }, only, "This floor alone"));
  }
}
