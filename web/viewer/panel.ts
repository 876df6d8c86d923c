import type { Element, Material, Property } from "../src/index.js";
import { byId, copy, fill, lengthText, make, readable, say } from "./dom.js";
import type { Ref } from "./model.js";

/** A name and its value; a click on the value copies it. */
function line(name: string, value: string): HTMLElement {
  return make("div", { className: "pair" },
    make("dt", {}, name),
    make("dd", {}, make("button", {
      className: "value", title: "Copy",
      onclick: () => void copy(value).then(() => say(`Copied: ${value}`)),
    }, value)));
}

function section(title: string, lines: HTMLElement[], isOpen = true): HTMLElement | false {
  return lines.length > 0 && make("details", { open: isOpen },
    make("summary", {}, title), make("dl", {}, ...lines));
}

/** The value with its unit; numbers without the digits that only calculation brings in. */
function valueText({ value, unit }: Property): string {
  const number = Number(value);
  const isFraction = value.trim() !== "" && Number.isFinite(number) && /\.\d{5,}/.test(value);
  const text = isFraction ? readable(number, 4) : value;
  return unit === "" ? text : `${text} ${unit}`;
}

function setsOf(properties: Property[]): Map<string, Property[]> {
  const sets = new Map<string, Property[]>();
  for (const each of properties) {
    const same = sets.get(each.set);
    if (same) same.push(each);
    else sets.set(each.set, [each]);
  }
  return sets;
}

function materialLines({ name, category, thickness, properties }: Material): HTMLElement[] {
  const said = [category, thickness === null ? "" : lengthText(thickness)].filter(Boolean);
  return [
    line(name || "(no name)", said.join(", ") || "–"),
    ...properties.map((each) => line(`  ${each.name}`, valueText(each))),
  ];
}

/** All that is said of an element, as text that a table takes. */
export function asText(element: Element): string {
  const { name, guid, className, floorName, properties } = element;
  const lines = [["Name", name], ["GUID", guid], ["Class", className], ["Floor", floorName]];
  for (const each of properties) lines.push([`${each.set}.${each.name}`, valueText(each)]);
  return lines.map((each) => each.join("\t")).join("\n");
}

/** Shows what is selected. */
export class Panel {
  private asked = 0;

  /** Says what there is; nothing where nothing is selected. */
  async show(refs: Ref[]): Promise<void> {
    const turn = ++this.asked;
    const panel = byId("panel"), body = byId("panel-body");
    panel.hidden = refs.length === 0;
    document.body.classList.toggle("has-panel", refs.length > 0);
    if (refs.length === 0) return;
    if (refs.length > 1) {
      byId("panel-title").textContent = `${refs.length} elements`;
      fill(body, section("Classes", [...countsOf(refs)].map(([name, n]) => line(name, String(n)))));
      return;
    }
    const { model, element } = refs[0]!;
    byId("panel-title").textContent = model.title(element);
    let said: Element;
    try {
      said = await model.link.ask("element", ...model.place(element));
    } catch (error) {
      if (turn === this.asked) fill(body, make("p", { className: "bad" }, String(error)));
      return;
    }
    if (turn !== this.asked) return;
    this.fill(body, said);
  }

  private fill(body: HTMLElement, said: Element): void {
    const identity: [string, string][] = [
      ["Name", said.name], ["Class", said.className], ["Type", said.typeName],
      ["Predefined type", said.predefinedType], ["GUID", said.guid], ["Floor", said.floorName],
      ["Building", said.buildingName], ["Site", said.siteName], ["Group", said.group],
      ["Material", said.materialName],
    ];
    const present = identity.filter(([, value]) => value !== "");
    fill(body,
      section("Identity", present.map(([name, value]) => line(name, value))),
      section("Materials", said.materials.flatMap(materialLines)),
      ...[...setsOf(said.properties)].map(([set, properties]) =>
        section(set || "Properties", properties.map((each) => line(each.name, valueText(each))))),
      make("p", {}, make("button", {
        onclick: () => void copy(asText(said)).then(() => say("Copied all that is listed.")),
      }, "Copy all")));
    body.scrollTop = 0;
  }
}

function countsOf(refs: Ref[]): Map<string, number> {
  const counts = new Map<string, number>();
  for (const { model, element } of refs) {
    const name = model.className(element);
    counts.set(name, (counts.get(name) ?? 0) + 1);
  }
  return counts;
}
