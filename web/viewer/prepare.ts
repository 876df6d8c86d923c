import type { Look, SceneChunk, Shape, Surface } from "../src/index.js";
import { creasesOf } from "./creases.js";
import type { BatchAddition, BatchName, Geometries } from "./messages.js";

/** Grows as numbers are put behind each other. */
class Numbers<Kind extends Float32Array | Uint32Array | Int8Array> {
  private length = 0;
  constructor(private array: Kind) {}

  put(values: ArrayLike<number>): void {
    const end = this.length + values.length;
    if (end > this.array.length) {
      const Make = this.array.constructor as new (length: number) => Kind;
      const grown = new Make(Math.max(end, 2 * this.array.length));
      grown.set(this.array.subarray(0, this.length));
      this.array = grown;
    }
    this.array.set(values, this.length);
    this.length = end;
  }
  /** A copy that is as long as what was put. */
  taken(): Kind {
    return this.array.slice(0, this.length) as Kind;
  }
}

/** What one floor adds to one batch. */
class Addition {
  private count = 0;
  private instances = 0;
  private readonly sizes = new Numbers(new Uint32Array(64));
  private readonly boxes = new Numbers(new Float32Array(192));
  private readonly points = new Numbers(new Float32Array(1024));
  private readonly normals = new Numbers(new Int8Array(1024));
  private readonly indices = new Numbers(new Uint32Array(1024));
  private readonly geometryOf = new Numbers(new Uint32Array(64));
  private readonly elementOf = new Numbers(new Uint32Array(64));
  private readonly colours = new Numbers(new Uint32Array(64));
  private readonly matrices = new Numbers(new Float32Array(768));

  addGeometry({ points, normals, indices }: Part): void {
    this.sizes.put([points.length / 3, indices.length]);
    this.boxes.put(boxAround(points));
    this.points.put(points);
    if (normals !== null) this.normals.put(normals);
    this.indices.put(indices);
    this.count += 1;
  }

  addInstance(geometry: number, element: number, colour: number, matrix: Float32Array): void {
    this.geometryOf.put([geometry]);
    this.elementOf.put([element]);
    this.colours.put([colour]);
    this.matrices.put(matrix);
    this.instances += 1;
  }

  taken(hasNormals: boolean): BatchAddition {
    const geometries: Geometries = {
      count: this.count,
      sizes: this.sizes.taken(),
      boxes: this.boxes.taken(),
      points: this.points.taken(),
      normals: hasNormals ? this.normals.taken() : null,
      indices: this.indices.taken(),
    };
    return {
      geometries,
      instances: this.instances,
      geometryOf: this.geometryOf.taken(),
      elementOf: this.elementOf.taken(),
      colours: this.colours.taken(),
      matrices: this.matrices.taken(),
    };
  }
}

/** Triangles or edges that look the same. */
interface Part {
  look: number | null;
  points: Float32Array;
  normals: Int8Array | null;
  indices: Uint32Array;
}

/** The least and the greatest coordinates. */
function boxAround(points: Float32Array): number[] {
  const box = [Infinity, Infinity, Infinity, -Infinity, -Infinity, -Infinity];
  for (let i = 0; i < points.length; ++i) {
    box[i % 3] = Math.min(box[i % 3]!, points[i]!);
    box[3 + (i % 3)] = Math.max(box[3 + (i % 3)]!, points[i]!);
  }
  return box;
}

/** Normals as bytes, each with one that pads. */
function asBytes(normals: Float32Array): Int8Array {
  const bytes = new Int8Array((normals.length / 3) * 4);
  for (let i = 0, to = 0; i < normals.length; i += 3, to += 4) {
    for (let axis = 0; axis < 3; ++axis) bytes[to + axis] = Math.round(normals[i + axis]! * 127);
  }
  return bytes;
}

/** One part of several surfaces. */
function joined(surfaces: Surface[]): Part {
  const points = new Numbers(new Float32Array(256));
  const normals = new Numbers(new Int8Array(256));
  const indices = new Numbers(new Uint32Array(256));
  let first = 0;
  for (const surface of surfaces) {
    points.put(surface.points);
    normals.put(asBytes(surface.normals ?? new Float32Array(surface.points.length)));
    indices.put(first === 0 ? surface.indices : surface.indices.map((index) => index + first));
    first += surface.points.length / 3;
  }
  return {
    look: surfaces[0]!.look,
    points: points.taken(),
    normals: normals.taken(),
    indices: indices.taken(),
  };
}

/** Turns triangles that show their insides, as some authors write bodies; sections tell the inside by
 * the side that a triangle shows. Seen from the middle of an open body, its volume decides as well. */
function turnedOutwards({ look, points, normals, indices }: Part): Part {
  const box = boxAround(points);
  const middle = [0, 1, 2].map((axis) => (box[axis]! + box[axis + 3]!) / 2);
  let volume = 0;
  for (let i = 0; i < indices.length; i += 3) {
    const [a, b, c] = [0, 1, 2].map((corner) => 3 * indices[i + corner]!) as [number, number, number];
    for (let axis = 0; axis < 3; ++axis) {
      const next = (axis + 1) % 3, last = (axis + 2) % 3;
      const cross = (points[b + next]! - points[a + next]!) * (points[c + last]! - points[a + last]!)
        - (points[b + last]! - points[a + last]!) * (points[c + next]! - points[a + next]!);
      volume += cross * (points[a + axis]! - middle[axis]!);
    }
  }
  if (volume >= 0) return { look, points, normals, indices };
  for (let i = 0; i < indices.length; i += 3) {
    [indices[i + 1], indices[i + 2]] = [indices[i + 2]!, indices[i + 1]!];
  }
  return { look, points, normals: normals && normals.map((each) => -each), indices };
}

/** What of a shape is drawn: its surfaces joined by their looks, and its edges. */
interface Drawable {
  parts: { part: Part | null; look: number | null; batch: BatchName | null; geometry: number }[];
  edges: number | null;
}

/**
 * Makes of what a file answers what a page draws: a shape's surfaces joined by their looks, its
 * edges, and placements relative to an origin, since graphics cards calculate in 32 bits.
 */
export class Preparer {
  private readonly looks: number[] = [];
  private readonly shapes: Drawable[] = [];
  private readonly counts: Record<BatchName, number> = { solid: 0, edges: 0, glass: 0 };

  /** `origin` is that of what is drawn already; else the first placement gives it. */
  constructor(public origin: readonly number[] | null) {}

  /** `rooms` tells which positions of the floor are rooms, which are drawn as glass. */
  floor(chunk: SceneChunk, rooms: Set<number>): Record<BatchName, BatchAddition> {
    for (const look of chunk.looks) this.looks[look.number] = packed(look);
    const additions = { solid: new Addition(), edges: new Addition(), glass: new Addition() };
    for (const shape of chunk.shapes) this.shapes[shape.number] = this.drawableOf(shape, additions);
    const { count, matrices, shapes, looks, elements } = chunk.placements;
    for (let i = 0; i < count; ++i) {
      const placed = matrices.subarray(12 * i, 12 * i + 12);
      if (!placed.every(Number.isFinite)) continue;
      this.place(this.shapes[shapes[i]!]!, placed, looks[i]!, elements[i]!,
        rooms.has(elements[i]!), additions);
    }
    return {
      solid: additions.solid.taken(true),
      edges: additions.edges.taken(false),
      glass: additions.glass.taken(true),
    };
  }

  private drawableOf(shape: Shape, additions: Record<BatchName, Addition>): Drawable {
    const byLook = new Map<number | null, Surface[]>();
    for (const surface of shape.surfaces) {
      if (surface.indices.length === 0) continue;
      const same = byLook.get(surface.look);
      if (same) same.push(surface);
      else byLook.set(surface.look, [surface]);
    }
    const parts = [...byLook.values()].map((surfaces) => {
      const part = turnedOutwards(joined(surfaces));
      return { part, look: part.look, batch: null, geometry: 0 };
    });
    const creases = creasesOf(parts.map(({ part }) => part));
    let edges: number | null = null;
    if (creases.indices.length > 0) {
      additions.edges.addGeometry({ look: null, normals: null, ...creases });
      edges = this.counts.edges++;
    }
    return { parts, edges };
  }

  private place(drawable: Drawable, placed: Float64Array, look: number, element: number,
    isRoom: boolean, additions: Record<BatchName, Addition>): void {
    this.origin ??= [placed[3]!, placed[7]!, placed[11]!].map((at) => Math.round(at / 10) * 10);
    const matrix = new Float32Array(placed);
    for (let row = 0; row < 3; ++row) {
      matrix[4 * row + 3] = placed[4 * row + 3]! - this.origin[row]!;
    }
    for (const each of drawable.parts) {
      const colour = this.looks[each.look ?? look] ?? 0xffb0b0b0;
      // A part stands in the batch that its first placement asks for; that others of the same part
      // look through it and this one does not is not met in files.
      if (each.batch === null) {
        each.batch = isRoom || colour >>> 24 < 255 ? "glass" : "solid";
        each.geometry = this.counts[each.batch]++;
        additions[each.batch].addGeometry(each.part!);
        each.part = null;
      }
      const shown = isRoom ? ((colour & 0xffffff) | 0x50000000) >>> 0 : colour;
      additions[each.batch].addInstance(each.geometry, element, shown, matrix);
    }
    if (drawable.edges !== null) {
      additions.edges.addInstance(drawable.edges, element, 0xff000000, matrix);
    }
  }
}

function packed({ colour: [red, green, blue, alpha] }: Look): number {
  return (red | (green << 8) | (blue << 16) | (alpha << 24)) >>> 0;
}
