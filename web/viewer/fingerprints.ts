import type { BlockFile, Element, SceneChunk, Shape } from "../src/index.js";
import type { At, Fingerprints } from "./messages.js";

/** Bodies count as equal whose points differ by less than about this, in metres. */
const grain = 1e-3;

/** Two 32-bit FNV-1a walks with different beginnings, of which 53 bits are kept. */
class Hash {
  private a = 0x811c9dc5;
  private b = 0x5bd1e995;
  put(number: number): void {
    this.a = Math.imul(this.a ^ number, 0x01000193);
    this.b = Math.imul(this.b ^ (number >>> 7) ^ (number << 9), 0x01000193);
  }
  get value(): number {
    return (this.a >>> 0) * 2 ** 21 + (this.b >>> 11);
  }
}

/** What an element says: all of it but where it stands in the file. */
function hashOfTexts(element: Element): number {
  const { floor: _floor, position: _position, colour: _colour, ...said } = element;
  said.properties = [...said.properties].sort((a, b) =>
    `${a.set}\n${a.name}` < `${b.set}\n${b.name}` ? -1 : 1);
  const text = JSON.stringify(said);
  const hash = new Hash();
  for (let i = 0; i < text.length; ++i) hash.put(text.charCodeAt(i));
  return hash.value;
}

/** A shape where it stands, by its points in the model's coordinates. */
function hashOfPlaced(shape: Shape, m: Float64Array): number {
  const hash = new Hash();
  for (const { points, indices } of shape.surfaces) {
    for (const index of indices) {
      for (let row = 0; row < 12; row += 4) {
        const at = m[row]! * points[3 * index]! + m[row + 1]! * points[3 * index + 1]!
          + m[row + 2]! * points[3 * index + 2]! + m[row + 3]!;
        hash.put(Math.round(at / grain));
      }
    }
  }
  return hash.value;
}

/** The bodies of a floor's elements, whatever order their parts have. */
function bodiesOf(chunk: SceneChunk, shapes: Map<number, Shape>): Map<number, number> {
  const sums = new Map<number, number>();
  const { count, matrices, elements, shapes: numbers } = chunk.placements;
  for (let i = 0; i < count; ++i) {
    const shape = shapes.get(numbers[i]!);
    if (shape === undefined) continue;
    const hash = hashOfPlaced(shape, matrices.subarray(12 * i, 12 * i + 12));
    sums.set(elements[i]!, ((sums.get(elements[i]!) ?? 0) + hash) % 2 ** 53);
  }
  return sums;
}

/** What stands for each element where two files are compared. */
export async function fingerprintsOf(file: BlockFile): Promise<Fingerprints> {
  const guids: string[] = [];
  const places: At[] = [];
  const said: number[] = [];
  const bodies: number[] = [];
  const shapes = new Map<number, Shape>();
  const sums = new Map<number, Map<number, number>>();
  for await (const chunk of file.scene()) {
    for (const shape of chunk.shapes) shapes.set(shape.number, shape);
    sums.set(chunk.floor, bodiesOf(chunk, shapes));
  }
  for (const { floor, position, guid } of await file.find({})) {
    guids.push(guid);
    places.push([floor, position]);
    said.push(hashOfTexts(await file.element(floor, position)));
    bodies.push(sums.get(floor)?.get(position) ?? 0);
  }
  return { guids, places, said: new Float64Array(said), bodies: new Float64Array(bodies) };
}
