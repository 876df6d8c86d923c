import type { Look, SceneChunk, Shape, Surface } from "../src/index.js";
import { Addition, type Part, boxAround } from "./addition.js";
import { creasesOf } from "./creases.js";
import type { At, BatchAddition, BatchName } from "./messages.js";
import { Numbers } from "./numbers.js";

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
  if (surfaces.length === 1) {
    const { look, points, normals, indices } = surfaces[0]!;
    const given = normals ?? new Float32Array(points.length);
    return { look, points: points as Float32Array, normals: asBytes(given), indices };
  }
  const points = new Numbers(new Float32Array(256));
  const normals = new Numbers(new Int8Array(256));
  const indices = new Numbers(new Uint32Array(256));
  let first = 0;
  for (const surface of surfaces) {
    points.put(surface.points);
    normals.put(asBytes(surface.normals ?? new Float32Array(surface.points.length)));
    indices.put(surface.indices, first);
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
  const mx = (box[0]! + box[3]!) / 2, my = (box[1]! + box[4]!) / 2, mz = (box[2]! + box[5]!) / 2;
  let volume = 0;
  for (let i = 0; i < indices.length; i += 3) {
    const a = 3 * indices[i]!, b = 3 * indices[i + 1]!, c = 3 * indices[i + 2]!;
    const ax = points[a]!, ay = points[a + 1]!, az = points[a + 2]!;
    const ux = points[b]! - ax, uy = points[b + 1]! - ay, uz = points[b + 2]! - az;
    const vx = points[c]! - ax, vy = points[c + 1]! - ay, vz = points[c + 2]! - az;
    volume += (uy * vz - uz * vy) * (ax - mx) + (uz * vx - ux * vz) * (ay - my)
      + (ux * vy - uy * vx) * (az - mz);
  }
  if (volume >= 0) return { look, points, normals, indices };
  for (let i = 0; i < indices.length; i += 3) {
    [indices[i + 1], indices[i + 2]] = [indices[i + 2]!, indices[i + 1]!];
  }
  return { look, points, normals: normals && normals.map((each) => -each), indices };
}

/** What of a shape is drawn, and where it is in its batch once it was placed. */
interface Piece {
  part: Part;
  box: number[];
  batch: BatchName;
  /** -1 until it is placed. */
  geometry: number;
}

type Additions = Record<BatchName, Addition>;

/** A shape that was drawn where it stands, and is not there to be placed again. */
interface Spent {
  at: At;
  /** Among the shapes of that element, as they are placed. */
  which: number;
}

/** Shapes by their numbers: those that may be placed again, edges last in their pieces, and what is
 * left of the others. */
class KnownShapes {
  private readonly pieces = new Map<number, Piece[]>();
  /** Three each: floor, position, and one more than which; nothing where that is 0. */
  private spent = new Uint32Array(192);

  keep(number: number, pieces: Piece[]): void {
    this.pieces.set(number, pieces);
  }
  spend(number: number, [floor, position]: At, which: number): void {
    this.pieces.delete(number);
    if (3 * number + 3 > this.spent.length) {
      const grown = new Uint32Array(6 * number);
      grown.set(this.spent);
      this.spent = grown;
    }
    this.spent.set([floor, position, which + 1], 3 * number);
  }
  forget(): void {
    this.pieces.clear();
  }
  piecesOf(number: number): Piece[] | undefined {
    return this.pieces.get(number);
  }
  spentOf(number: number): Spent | undefined {
    const [floor, position, behind] = this.spent.subarray(3 * number, 3 * number + 3);
    if (!behind || this.pieces.has(number)) return undefined;
    return { at: [floor!, position!], which: behind - 1 };
  }
}

/** A chunk's placements, each with the place of its shape among those of its element. */
function* placedOf({ placements: { count, elements, shapes } }: SceneChunk) {
  const own = new Map<number, number>();
  for (let i = 0; i < count; ++i) {
    const element = elements[i]!, shape = shapes[i]!;
    if (i > 0 && element !== elements[i - 1]) own.clear();
    if (!own.has(shape)) own.set(shape, own.size);
    yield { i, element, shape, which: own.get(shape)! };
  }
}

/** Larger pieces are not copied to where they stand, by how often their shape stands on a floor: a copy
 * of a small one takes the graphics card far less time than a call, but more memory. */
const mostPoints = { once: 3000, often: 64 } as const;
type Copied = keyof typeof mostPoints;
/** What copies of what stands often may have together. */
const mostPointsOften = 4_000_000;

/**
 * Makes of what a file answers what a page draws: a shape's surfaces joined by their looks, its
 * edges, and placements relative to an origin, since graphics cards calculate in 32 bits. What a
 * floor places once, or what is small, is copied to where it stands and drawn together with others of
 * its kind, since calls cost more than copies.
 */
export class Preparer {
  private readonly looks: number[] = [];
  private readonly shapes = new KnownShapes();
  private readonly counts: Record<BatchName, number> = { solid: 0, edges: 0, glass: 0 };
  private pointsOften = 0;

  /** `origin` is that of what is drawn already; else the first placement gives it. */
  constructor(public origin: readonly number[] | null) {}

  /** The shapes that a floor places and that are spent, by their numbers. */
  spentOf({ placements }: SceneChunk): Map<number, Spent> {
    const found = new Map<number, Spent>();
    for (const number of placements.shapes) {
      const known = this.shapes.spentOf(number);
      if (known !== undefined) found.set(number, known);
    }
    return found;
  }
  /** Takes spent shapes anew, out of a walk over the elements that they were drawn for. */
  async restore(spent: Map<number, Spent>, walk: AsyncIterable<SceneChunk>): Promise<void> {
    const numbers = new Map<string, number>();
    for (const [number, { at, which }] of spent) numbers.set([...at, which].join(), number);
    const shapes: Shape[] = [], same: number[] = []; // by the walk's own numbers
    for await (const chunk of walk) {
      for (const look of chunk.looks) same[look.number] = this.looks.indexOf(packed(look));
      for (const shape of chunk.shapes) shapes[shape.number] = shape;
      for (const { element, which, shape } of placedOf(chunk)) {
        const number = numbers.get([chunk.floor, element, which].join());
        if (number === undefined) continue;
        const surfaces = shapes[shape]!.surfaces.map((surface) =>
          ({ ...surface, look: surface.look === null ? null : same[surface.look]! }));
        this.shapes.keep(number, piecesOf({ ...shapes[shape]!, surfaces }));
      }
    }
  }

  /** `rooms` tells which positions of the floor are rooms, which are drawn as glass. */
  floor(chunk: SceneChunk, rooms: Set<number>): Record<BatchName, BatchAddition> {
    for (const look of chunk.looks) this.looks[look.number] = packed(look);
    const { solid, edges, glass } = this.counts;
    const additions: Additions = {
      solid: new Addition(solid, false), edges: new Addition(edges, true),
      glass: new Addition(glass, false),
    };
    const uses = new Map(chunk.shapes.map(({ number }) => [number, { all: 0, left: 0 }]));
    const { matrices, shapes, looks } = chunk.placements;
    for (const shape of shapes) {
      const use = uses.get(shape);
      if (use !== undefined) use.left = ++use.all;
    }
    for (const shape of chunk.shapes) this.shapes.keep(shape.number, piecesOf(shape));
    for (const { i, element, shape: number, which } of placedOf(chunk)) {
      const placed = matrices.subarray(12 * i, 12 * i + 12);
      const pieces = this.shapes.piecesOf(number);
      if (!placed.every(Number.isFinite) || pieces === undefined) continue;
      const use = uses.get(number);
      const copied = this.copiedAs(pieces, use?.all === 1 ? "once" : "often");
      this.place(pieces, placed, looks[i]!, element, rooms.has(element), copied, additions);
      // What was here before comes again, and is kept.
      if (copied && use && --use.left === 0) this.shapes.spend(number, [chunk.floor, element], which);
    }
    const result = {
      solid: additions.solid.taken(), edges: additions.edges.taken(), glass: additions.glass.taken(),
    };
    for (const name of ["solid", "edges", "glass"] as const) {
      this.counts[name] = additions[name].nextGeometry;
    }
    return result;
  }

  /** Nothing more comes. */
  end(): void {
    this.shapes.forget();
  }

  /** As what pieces are copied to where they stand next; null where they are not. */
  private copiedAs(pieces: Piece[], standing: Copied): Copied | null {
    let points = 0;
    for (const { part, geometry } of pieces) {
      const own = part.points.length / 3;
      if (geometry >= 0 || own >= mostPoints[standing]) return null;
      points += own;
    }
    if (standing === "often") {
      this.pointsOften += points;
      if (this.pointsOften > mostPointsOften) return null;
    }
    return standing;
  }

  private place(pieces: Piece[], placed: Float64Array, look: number, element: number,
    isRoom: boolean, copied: Copied | null, additions: Additions): void {
    this.origin ??= [placed[3]!, placed[7]!, placed[11]!].map((at) => Math.round(at / 10) * 10);
    const matrix = new Float32Array(placed);
    for (let row = 0; row < 3; ++row) {
      matrix[4 * row + 3] = placed[4 * row + 3]! - this.origin[row]!;
    }
    for (const piece of pieces) {
      const isEdges = piece.batch === "edges";
      const own = isEdges ? 0xff000000 : this.looks[piece.part.look ?? look] ?? 0xffb0b0b0;
      const colour = isRoom && !isEdges ? ((own & 0xffffff) | 0x50000000) >>> 0 : own;
      // A piece stands in the batch that its first placement asks for; that others of the same shape
      // are looked through and this one is not is not met in files.
      const name = piece.geometry < 0 && colour >>> 24 < 255 ? "glass" : piece.batch;
      const addition = additions[name];
      if (copied) {
        addition.addCopy(piece.part, element, colour, matrix, copied === "once" ? null : piece.box);
      } else {
        if (piece.geometry < 0) {
          piece.batch = name;
          piece.geometry = addition.addGeometry(piece.part);
          // Its look is still asked for.
          piece.part = { look: piece.part.look, points: none, normals: null, indices: noIndices };
        }
        addition.addInstance(piece.geometry, element, colour, matrix, piece.box);
      }
    }
  }
}

const none = new Float32Array(0);
const noIndices = new Uint32Array(0);

function piecesOf(shape: Shape): Piece[] {
  const byLook = new Map<number | null, Surface[]>();
  for (const surface of shape.surfaces) {
    if (surface.indices.length === 0) continue;
    const same = byLook.get(surface.look);
    if (same) same.push(surface);
    else byLook.set(surface.look, [surface]);
  }
  const parts = [...byLook.values()].map((surfaces) => turnedOutwards(joined(surfaces)));
  const pieces: Piece[] = parts.map((part) =>
    ({ part, box: boxAround(part.points), batch: "solid", geometry: -1 }));
  const creases = creasesOf(parts);
  if (creases.indices.length > 0) {
    const part = { look: null, normals: null, ...creases };
    pieces.push({ part, box: boxAround(part.points), batch: "edges", geometry: -1 });
  }
  return pieces;
}

function packed({ colour: [red, green, blue, alpha] }: Pick<Look, "colour">): number {
  return (red | (green << 8) | (blue << 16) | (alpha << 24)) >>> 0;
}
