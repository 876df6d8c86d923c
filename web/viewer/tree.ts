import { byId, make } from "./dom.js";
import { Hidden, type Model, type ModelFloor, type Ref } from "./model.js";
import type { Selection } from "./selection.js";
import { VirtualList } from "./virtuallist.js";

const rowHeight = 30;

/** A row: a file, a floor, a class on it, or an element. */
interface Row {
  key: string;
  level: number;
  label: string;
  model: Model;
  floor: ModelFloor | null;
  /** Among the floor's. */
  classNumber: number | null;
  /** In the model. */
  element: number | null;
  count: number;
}

/** The files by floor and class, with counts, and boxes that show and hide. */
export class Tree {
  private readonly list: VirtualList;
  private readonly open = new Set<string>();
  private rows: Row[] = [];
  /** The row that the keyboard is at. */
  private active = 0;

  constructor(
    private readonly selection: Selection,
    private readonly chosen: (refs: Ref[], adds: boolean) => void,
    private readonly closed: (model: Model) => void,
  ) {
    this.list = new VirtualList(byId("tree"), rowHeight, (index) => this.make(index));
    byId("tree").addEventListener("keydown", (event) => this.onKey(event));
    selection.changed.add(() => this.redraw());
    selection.shownChanged.add(() => this.redraw());
  }

  /** Lists what is there now. */
  refresh(): void {
    const rows: Row[] = [];
    for (const model of this.selection.models) this.addModel(rows, model);
    this.rows = rows;
    this.active = Math.min(this.active, Math.max(rows.length - 1, 0));
    this.list.refresh(rows.length);
  }

  /** Opens what an element lies in, and scrolls to it. */
  reveal({ model, element }: Ref): void {
    const floor = model.floorOf(element);
    const classNumber = floor.classOf[element - floor.begin]!;
    const key = keyOf(model, floor);
    this.open.add(keyOf(model)).add(key).add(`${key}/${classNumber}`);
    this.refresh();
    this.active = this.rows.findIndex((row) => row.model === model && row.element === element);
    this.list.reveal(this.active);
  }

  private redraw(): void {
    this.list.refresh(this.rows.length);
  }

  private addModel(rows: Row[], model: Model): void {
    const base = { model, floor: null, classNumber: null, element: null };
    const key = keyOf(model);
    const several = this.selection.models.length > 1;
    if (several || model.floors.length === 0) {
      rows.push({ ...base, key, level: 1, label: model.name, count: model.elementCount });
      if (!this.open.has(key)) return;
    }
    for (const floor of [...model.floors].reverse()) {
      this.addFloor(rows, model, floor, several ? 2 : 1);
    }
  }

  private addFloor(rows: Row[], model: Model, floor: ModelFloor, level: number): void {
    const key = keyOf(model, floor);
    const base = { model, floor, classNumber: null, element: null };
    const label = floor.name || `Floor ${floor.number + 1}`;
    rows.push({ ...base, key, level, label, count: floor.guids.length });
    if (!this.open.has(key)) return;
    const counts = floor.classNames.map(() => 0);
    for (const number of floor.classOf) counts[number]! += 1;
    const order = [...floor.classNames.keys()].sort((a, b) =>
      floor.classNames[a]! < floor.classNames[b]! ? -1 : 1);
    for (const classNumber of order) {
      const own = `${key}/${classNumber}`;
      const name = floor.classNames[classNumber]!;
      rows.push({ ...base, key: own, level: level + 1, label: name, classNumber,
        count: counts[classNumber]! });
      if (!this.open.has(own)) continue;
      for (const element of model.elementsOf(floor, classNumber)) {
        rows.push({ ...base, key: `${own}/${element}`, level: level + 2, element, classNumber,
          label: floor.names[element - floor.begin] || "(no name)", count: 0 });
      }
    }
  }

  private *refsOf({ model, floor, classNumber, element }: Row): Generator<Ref> {
    if (element !== null) return yield { model, element };
    for (const each of floor ? [floor] : model.floors) {
      for (const found of model.elementsOf(each, classNumber ?? undefined)) {
        yield { model, element: found };
      }
    }
  }

  /** Whether all, some or none of a row's elements are shown, as far as the user decides. */
  private stateOf(row: Row): "all" | "some" | "none" {
    let shown = 0, hidden = 0;
    const reasons = Hidden.byUser | Hidden.byIsolation;
    for (const { model, element } of this.refsOf(row)) {
      if (model.hidden[element]! & reasons) hidden += 1;
      else shown += 1;
      if (shown > 0 && hidden > 0) return "some";
    }
    return hidden > 0 ? "none" : "all";
  }

  private make(index: number): HTMLElement {
    const row = this.rows[index]!;
    const isLeaf = row.element !== null;
    const isOpen = this.open.has(row.key);
    const state = this.stateOf(row);
    const box = make("input", {
      type: "checkbox", checked: state !== "none", indeterminate: state === "some", tabIndex: -1,
      "aria-label": `Show ${row.label}`,
      onchange: () => this.toggleShown(row),
    });
    const isSelected = isLeaf && this.selection.has({ model: row.model, element: row.element! });
    const line = make("div", {
      className: "row" + (isSelected ? " selected" : ""), role: "treeitem",
      tabIndex: index === this.active ? 0 : -1,
      "aria-level": row.level, "aria-selected": isSelected,
      "aria-expanded": isLeaf ? undefined : isOpen, title: row.label,
      onclick: (event: MouseEvent) => {
        this.active = index;
        if (event.target === box) return;
        if (isLeaf) this.chosen([{ model: row.model, element: row.element! }], event.ctrlKey);
        else this.toggleOpen(row);
      },
      ondblclick: () => this.chosen([...this.refsOf(row)], false),
    },
    make("span", { className: "twist", "aria-hidden": "true" }, isLeaf ? "" : isOpen ? "▾" : "▸"),
    box,
    make("span", { className: "label" }, row.label),
    !isLeaf && make("span", { className: "count" }, String(row.count)),
    row.floor === null && make("button", {
      className: "plain", title: `Close ${row.label}`, "aria-label": `Close ${row.label}`,
      onclick: () => this.closed(row.model),
    }, "×"));
    line.style.paddingLeft = `${(row.level - 1) * 14 + 4}px`;
    return line;
  }

  private toggleOpen(row: Row): void {
    if (!this.open.delete(row.key)) this.open.add(row.key);
    this.refresh();
  }
  private toggleShown(row: Row): void {
    const hides = this.stateOf(row) === "all";
    if (!hides) this.selection.hide(this.refsOf(row), Hidden.byIsolation, false);
    this.selection.hide(this.refsOf(row), Hidden.byUser, hides);
  }

  private onKey(event: KeyboardEvent): void {
    const row = this.rows[this.active];
    if (row === undefined) return;
    const isOpen = this.open.has(row.key);
    let to = this.active;
    if (event.key === "ArrowDown") to += 1;
    else if (event.key === "ArrowUp") to -= 1;
    else if (event.key === "Home") to = 0;
    else if (event.key === "End") to = this.rows.length - 1;
    else if (event.key === "ArrowRight" && row.element === null && !isOpen) this.toggleOpen(row);
    else if (event.key === "ArrowLeft" && isOpen) this.toggleOpen(row);
    else if (event.key === " ") this.toggleShown(row);
    else if (event.key === "Enter") this.chosen([...this.refsOf(row)], event.ctrlKey);
    else return;
    event.preventDefault();
    event.stopPropagation();
    this.active = Math.min(Math.max(to, 0), this.rows.length - 1);
    this.redraw();
    this.list.reveal(this.active)?.focus();
  }
}

function keyOf(model: Model, floor?: ModelFloor): string {
  return floor ? `${model.number}/${floor.number}` : String(model.number);
}
