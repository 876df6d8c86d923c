import { byId, make, readable } from "./dom.js";
import type { Ref } from "./model.js";
import type { Selection } from "./selection.js";
import { VirtualList } from "./virtuallist.js";

/** Finds elements by any text that they bear: name, GUID, class, type, material or a property. */
export class Search {
  private found: Ref[] = [];
  private turn = 0;
  private readonly list: VirtualList;
  private readonly summary = make("div", { className: "buttons", style: "padding:4px 10px" });

  constructor(
    private readonly selection: Selection,
    private readonly chosen: (refs: Ref[], fits: boolean) => void,
  ) {
    const results = byId("results");
    const rows = make("div", { style: "overflow:auto;flex:1;min-height:0", role: "listbox",
      "aria-label": "Found elements" });
    results.style.display = "flex";
    results.style.flexDirection = "column";
    results.append(this.summary, rows);
    this.list = new VirtualList(rows, 30, (index) => this.row(index));
    let wait: ReturnType<typeof setTimeout>;
    const query = byId<HTMLInputElement>("query");
    query.addEventListener("input", () => {
      clearTimeout(wait);
      wait = setTimeout(() => void this.find(query.value.trim()), 250);
    });
    byId("search").addEventListener("submit", (event) => {
      event.preventDefault();
      clearTimeout(wait);
      void this.find(query.value.trim()).then(() => this.found.length > 0 && this.takeAll());
    });
    selection.changed.add(() => this.list.refresh(this.found.length));
  }

  private async find(text: string): Promise<void> {
    const turn = ++this.turn;
    const results = byId("results");
    if (text === "") {
      results.hidden = true;
      this.found = [];
      return;
    }
    results.hidden = false;
    this.summary.textContent = "Searching …";
    const found: Ref[] = [];
    for (const model of this.selection.models) {
      try {
        for (const [floor, position] of await model.link.ask("find", text)) {
          const element = model.at(floor, position);
          if (element >= 0) found.push({ model, element });
        }
      } catch (error) {
        this.summary.textContent = error instanceof Error ? error.message : String(error);
        return;
      }
      if (turn !== this.turn) return; // another text was typed meanwhile
    }
    this.found = found;
    this.summary.replaceChildren(
      make("span", { id: "found", style: "flex:1;align-self:center" },
        `${readable(found.length)} found`),
      make("button", { disabled: found.length === 0, onclick: () => this.takeAll() }, "Select all"));
    this.list.refresh(found.length);
  }

  private takeAll(): void {
    this.chosen(this.found, true);
  }

  private row(index: number): HTMLElement {
    const ref = this.found[index]!;
    const { model, element } = ref;
    const isSelected = this.selection.has(ref);
    const choose = () => this.chosen([ref], true);
    return make("div", {
      className: "row" + (isSelected ? " selected" : ""), role: "option", tabIndex: 0,
      "aria-selected": isSelected, style: "padding-left:12px",
      title: `${model.guid(element)}, ${model.floorOf(element).name}`,
      onclick: choose,
      onkeydown: (event: KeyboardEvent) => event.key === "Enter" && choose(),
    },
    make("span", { className: "label" }, model.title(element)),
    make("span", { className: "count" }, model.className(element).replace(/^Ifc/, "")));
  }
}
