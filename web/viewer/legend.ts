import { byId, fill, make, readable, say } from "./dom.js";
import type { Model, Ref } from "./model.js";
import type { Options } from "./options.js";
import type { Selection } from "./selection.js";
import { fields } from "./values.js";

/** A colour and what it stands for. */
export interface Entry {
  /** A byte each of red, green and blue from the lowest on. */
  tint: number;
  label: string;
  refs: Ref[];
}

/** Told apart by most eyes, after Okabe and Ito, and lighter ones of the same. */
const palette = [0xb27200, 0x009fe6, 0x739e00, 0xa779cc, 0x005ed5, 0xe9b456, 0x42e4f0, 0x8f8f8f,
  0x7a4a1a, 0x6fc9f2, 0xb9cf80, 0x4a2f7a];
const otherTint = 0xd8d8d8;
/** From low to high, where values are numbers. */
const scale = [0x8f5a20, 0xb98a3c, 0xcfc079, 0xb4d7c7, 0x7fc3e8, 0x4a90e0, 0x2450b5];

function cssOf(tint: number): string {
  return `rgb(${tint & 255} ${(tint >>> 8) & 255} ${(tint >>> 16) & 255})`;
}

/** Says on the page what colours stand for; a click on one selects what has it. */
export function showLegend(title: string, entries: Entry[], choose: (refs: Ref[]) => void): void {
  const card = byId("legend");
  fill(card, make("h2", {}, title), ...entries.map(({ tint, label, refs }) =>
    make("button", { className: "entry", onclick: () => choose(refs) },
      make("span", { className: "swatch", style: `background:${cssOf(tint)}` }),
      make("span", { className: "label" }, label),
      make("span", { className: "count" }, readable(refs.length)))));
  card.hidden = false;
}

/** The tints of entries, for the drawing. */
export function tintsOf(entries: Entry[]): (model: Model, element: number) => number | null {
  const tints = new Map<Model, Map<number, number>>();
  for (const { tint, refs } of entries) {
    for (const { model, element } of refs) {
      if (!tints.has(model)) tints.set(model, new Map());
      tints.get(model)!.set(element, tint);
    }
  }
  return (model, element) => tints.get(model)?.get(element) ?? null;
}

/** Groups values to at most as many entries as the eye tells apart. */
export function entriesOf(values: Map<string, Ref[]>): Entry[] {
  const none = values.get("") ?? [];
  const given = [...values].filter(([value]) => value !== "");
  const numbers = given.map(([value]) => Number.parseFloat(value));
  const entries = given.length > palette.length && numbers.every(Number.isFinite)
    ? rangesOf(given, numbers)
    : groupsOf(given);
  if (none.length > 0) entries.push({ tint: otherTint, label: "(none)", refs: none });
  return entries;
}

function groupsOf(given: [string, Ref[]][]): Entry[] {
  const sorted = given.sort(([, a], [, b]) => b.length - a.length);
  const fits = sorted.length <= palette.length;
  const own = fits ? sorted : sorted.slice(0, palette.length - 1);
  const entries = own.map(([label, refs], i) => ({ tint: palette[i]!, label, refs }));
  const others = sorted.slice(own.length);
  if (others.length > 0) {
    const refs = others.flatMap(([, each]) => each);
    entries.push({ tint: palette.at(-1)!, label: `${others.length} others`, refs });
  }
  return entries;
}

function rangesOf(given: [string, Ref[]][], numbers: number[]): Entry[] {
  const low = Math.min(...numbers), high = Math.max(...numbers);
  const step = (high - low) / scale.length;
  const entries: Entry[] = scale.map((tint, i) => ({
    tint, label: `${readable(low + i * step, 2)} – ${readable(low + (i + 1) * step, 2)}`, refs: [],
  }));
  given.forEach(([, refs], i) => {
    const at = step > 0 ? Math.floor((numbers[i]! - low) / step) : 0;
    entries[Math.min(at, scale.length - 1)]!.refs.push(...refs);
  });
  return entries.filter(({ refs }) => refs.length > 0);
}

/** Colours elements by what a field or a property of theirs says. */
export class ColourBy {
  property: string | null = null;
  private turn = 0;

  constructor(
    private readonly selection: Selection,
    private readonly options: Options,
  ) {}

  async start(): Promise<void> {
    this.show([]);
    const names = new Set<string>();
    for (const model of this.selection.models) {
      for (const { number } of model.floors.slice(0, 4)) {
        for (const name of await model.link.ask("propertyNames", number)) names.add(name);
      }
    }
    if (this.options.isOpen("colour")) this.show([...names]);
  }

  async set(property: string | null): Promise<void> {
    const turn = ++this.turn;
    this.property = property;
    if (property === null) {
      byId("legend").hidden = true;
      this.selection.setTints(null);
      return;
    }
    say(`Reading ${property} …`, 60);
    const values = new Map<string, Ref[]>();
    for (const model of this.selection.models) {
      for (const floor of model.floors) {
        const told = await model.link.ask("values", floor.number, property);
        if (turn !== this.turn) return;
        told.forEach((value, position) => {
          if (!values.has(value)) values.set(value, []);
          values.get(value)!.push({ model, element: floor.begin + position });
        });
      }
    }
    byId("message").hidden = true;
    const entries = entriesOf(values);
    this.selection.setTints(tintsOf(entries));
    showLegend(property, entries, (refs) => this.selection.select(refs));
  }

  private show(names: string[]): void {
    const all = [...fields, ...names];
    const input = make("input", {
      id: "colour-property", type: "text", value: this.property ?? "", placeholder: "class, type or SET.NAME",
      "aria-label": "Property", "list": undefined,
      onchange: () => void this.set(input.value.trim() || null),
    });
    const list = make("datalist", { id: "colour-names" }, ...all.map((value) => make("option", { value })));
    input.setAttribute("list", list.id);
    this.options.open("colour", "Colour by", [
      input, list,
      make("div", { className: "buttons", style: "margin-top:8px" },
        ...fields.slice(0, 3).map((name) =>
          make("button", { onclick: () => { input.value = name; void this.set(name); } }, name)),
        make("button", { onclick: () => { input.value = ""; void this.set(null); } }, "No colours")),
    ]);
  }
}
