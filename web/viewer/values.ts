import type { Element } from "../src/index.js";

/** What can be asked of every element beside its properties. */
export const fields = ["class", "type", "material", "predefined type", "group"] as const;

/** How a property is named where a text has to stand for it. */
export function fullName(set: string, name: string): string {
  return set === "" ? name : `${set}.${name}`;
}

/** An element's value of a field or of a property, with its unit; "" where it has none. */
export function valueOf(element: Element, property: string): string {
  switch (property) {
    case "class": return element.className;
    case "type": return element.typeName;
    case "material": return element.materialName;
    case "predefined type": return element.predefinedType;
    case "group": return element.group;
  }
  const found = element.properties.find(({ set, name }) => fullName(set, name) === property);
  if (found === undefined) return "";
  return found.unit === "" ? found.value : `${found.value} ${found.unit}`;
}

/** The names of the properties that elements bear, the most frequent first. */
export function propertyNamesOf(elements: Element[]): string[] {
  const counts = new Map<string, number>();
  for (const { properties } of elements) {
    for (const { set, name } of properties) {
      const full = fullName(set, name);
      counts.set(full, (counts.get(full) ?? 0) + 1);
    }
  }
  return [...counts].sort(([, a], [, b]) => b - a).map(([name]) => name);
}

const roomClasses = new Set(["IfcSpace", "IfcSpatialZone", "IfcZone"]);

/** Whether elements of a class are rooms, which are a layer of their own. */
export function isRoom(className: string): boolean {
  return roomClasses.has(className);
}
