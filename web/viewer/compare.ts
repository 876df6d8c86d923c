import { byId, make, say } from "./dom.js";
import { type Entry, showLegend, tintsOf } from "./legend.js";
import type { Fingerprints } from "./messages.js";
import { Hidden, type Model, type Ref } from "./model.js";
import type { Options } from "./options.js";
import type { Selection } from "./selection.js";

/** What became of the elements between two files, by their GUIDs. */
export interface Comparison {
  added: Ref[];
  removed: Ref[];
  /** In the newer file. */
  moved: Ref[];
  altered: Ref[];
  same: Ref[];
  /** In the older file, what the newer has as well. */
  older: Ref[];
}

export function comparisonOf(older: [Model, Fingerprints], newer: [Model, Fingerprints]): Comparison {
  const refOf = ([model, { places }]: [Model, Fingerprints], i: number): Ref =>
    ({ model, element: model.at(...places[i]!) });
  const result: Comparison = { added: [], removed: [], moved: [], altered: [], same: [], older: [] };
  const before = new Map(older[1].guids.map((guid, i) => [guid, i]));
  newer[1].guids.forEach((guid, i) => {
    const ref = refOf(newer, i);
    const was = before.get(guid);
    if (was === undefined) {
      result.added.push(ref);
      return;
    }
    before.delete(guid);
    result.older.push(refOf(older, was));
    if (older[1].bodies[was] !== newer[1].bodies[i]) result.moved.push(ref);
    else if (older[1].said[was] !== newer[1].said[i]) result.altered.push(ref);
    else result.same.push(ref);
  });
  for (const was of before.values()) result.removed.push(refOf(older, was));
  for (const list of Object.values(result) as Ref[][]) {
    list.splice(0, list.length, ...list.filter(({ element }) => element >= 0));
  }
  return result;
}

function entriesOf({ added, removed, moved, altered, same }: Comparison): Entry[] {
  return [
    { tint: 0x4a9a1a, label: "Added", refs: added },
    { tint: 0x2a2ad0, label: "Removed", refs: removed },
    { tint: 0x0098f0, label: "Changed in form or place", refs: moved },
    { tint: 0xc88a3c, label: "Changed in properties alone", refs: altered },
    { tint: 0xd8d8d8, label: "Unchanged", refs: same },
  ];
}

/** Shows two files of one building as one, coloured by what changed from one to the other. */
export class Compare {
  private order: [number, number] = [0, 1];
  private isOn = false;

  constructor(
    private readonly selection: Selection,
    private readonly options: Options,
    private readonly ask: () => void,
  ) {}

  start(): void {
    const { models } = this.selection;
    if (models.length < 2) {
      this.options.open("compare", "Compare", [
        make("p", {}, "Open a second file to compare with."),
        make("button", { onclick: this.ask }, "Open a file"),
      ]);
      return;
    }
    const choice = (which: 0 | 1, label: string) => {
      const select = make("select", {
        "aria-label": label, onchange: () => (this.order[which] = Number(select.value)),
      }, ...models.map(({ name }, i) => make("option", { value: String(i) }, name)));
      select.value = String(this.order[which]);
      return make("label", {}, label, select);
    };
    this.options.open("compare", "Compare", [
      choice(0, "Older"), choice(1, "Newer"),
      make("div", { className: "buttons", style: "margin-top:8px" },
        make("button", { className: "main", onclick: () => void this.run() }, "Compare"),
        make("button", { onclick: () => this.end() }, "No comparison")),
    ]);
  }

  end(): void {
    if (!this.isOn) return;
    this.isOn = false;
    this.selection.hideWhere(Hidden.byComparison, () => false);
    this.selection.setTints(null);
    byId("legend").hidden = true;
  }

  private async run(): Promise<void> {
    const [older, newer] = this.order.map((i) => this.selection.models[i]) as [Model, Model];
    if (older === undefined || newer === undefined || older === newer) {
      say("Choose two files.");
      return;
    }
    say(`Comparing ${older.name} with ${newer.name} …`, 600);
    try {
      const asked = [older, newer].map((model) => model.link.ask("fingerprints"));
      const [a, b] = (await Promise.all(asked)) as [Fingerprints, Fingerprints];
      this.show(comparisonOf([older, a], [newer, b]));
      byId("message").hidden = true;
    } catch (error) {
      say(`They could not be compared: ${error instanceof Error ? error.message : error}`, 15);
    }
  }

  private show(comparison: Comparison): void {
    this.isOn = true;
    const hidden = new Map<Model, Set<number>>();
    for (const { model, element } of comparison.older) {
      if (!hidden.has(model)) hidden.set(model, new Set());
      hidden.get(model)!.add(element);
    }
    this.selection.hideWhere(Hidden.byComparison, (model, element) =>
      hidden.get(model)?.has(element) ?? false);
    const entries = entriesOf(comparison);
    this.selection.setTints(tintsOf(entries));
    showLegend("What changed", entries, (refs) => this.selection.select(refs));
  }
}
