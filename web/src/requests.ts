/** Where an element stands. */
export interface Place {
  /** The number of its floor. */
  floor: number;
  /** Its number on that floor. */
  position: number;
}

/** Which elements are wanted; what is not named takes all. */
export interface Selection {
  /** A floor's number, else its name. */
  floor?: number | string;
  /** Any of these classes, such as IfcWall. */
  classNames?: readonly string[];
  /** Any of these elements. */
  elements?: readonly Place[];
  /** Rooms as well, where no class and no element is named; true unless said. */
  rooms?: boolean;
  /** All of these: "SET.NAME" or the name alone, and the value as the file has it. */
  properties?: readonly { name: string; value: string }[];
}

/** What to look for. `guid` and `name` are looked up, whatever classes and elements are selected. */
export interface Query extends Selection {
  guid?: string;
  /** The whole name. */
  name?: string;
  /** A text in GUID, name, class, type, material or a property, in any case of ASCII letters. */
  text?: string;
}

/** How bodies are wanted. */
export interface SceneOptions {
  /** Normals of surfaces: none unless said. */
  normals?: "none" | "flat" | "smooth";
  /** Radians, for smooth normals; 0.5236 (30 degrees) unless said. */
  creaseAngle?: number;
  /** Curves beside bodies as well. */
  curves?: boolean;
  /** How far chords of arcs may be off, in metres; 0.001 unless said. */
  chordError?: number;
  /** Points in 64 bits, as they are stored; else in 32, from an origin near each shape. */
  doubles?: boolean;
  /** Where no floor, class or element is named: chunks of at most so many elements, so that the
   * first comes sooner and each takes less memory; else each chunk is a floor. */
  elementsAtOnce?: number;
}

function* textsOf(wanted: Query & SceneOptions): Generator<string> {
  const { floor, classNames, elements, properties } = wanted;
  if (floor !== undefined) yield* ["floor", String(floor)];
  for (const name of classNames ?? []) yield* ["class", name];
  for (const place of elements ?? []) yield* ["element", `${place.floor}:${place.position}`];
  for (const { name, value } of properties ?? []) yield* ["property", name, value];
  const others = ["rooms", "guid", "name", "text", "normals", "creaseAngle", "curves", "chordError",
    "doubles", "elementsAtOnce"] as const;
  for (const key of others) {
    const value = wanted[key];
    if (value !== undefined) yield* [key, String(value)];
  }
}

/** A request as web/native/CallRequest.h describes it. */
export function requestOf(wanted: Query & SceneOptions): Uint8Array {
  const encoder = new TextEncoder();
  const texts = Array.from(textsOf(wanted), (text) => encoder.encode(text));
  const bytes = new Uint8Array(texts.reduce((sum, text) => sum + 4 + text.byteLength, 0));
  const numbers = new DataView(bytes.buffer);
  let at = 0;
  for (const text of texts) {
    numbers.setUint32(at, text.byteLength, true);
    bytes.set(text, at + 4);
    at += 4 + text.byteLength;
  }
  return bytes;
}
