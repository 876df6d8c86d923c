import type { BatchAddition } from "./messages.js";
import { Numbers } from "./numbers.js";

/** Triangles or edges that look the same. */
export interface Part {
  look: number | null;
  points: Float32Array;
  /** Four bytes a point, of which the last pads; null for edges. */
  normals: Int8Array | null;
  indices: Uint32Array;
}

/** The least and the greatest coordinates. */
export function boxAround(points: Float32Array): number[] {
  const box = [Infinity, Infinity, Infinity, -Infinity, -Infinity, -Infinity];
  for (let axis = 0; axis < 3; ++axis) {
    let low = Infinity, high = -Infinity;
    for (let i = axis; i < points.length; i += 3) {
      const at = points[i]!;
      if (at < low) low = at;
      if (at > high) high = at;
    }
    box[axis] = low;
    box[axis + 3] = high;
  }
  return box;
}

/** Parts that one call draws together, as a byte numbers them. */
const mostTogether = 250;
const mostPointsTogether = 50_000;

const unmoved = new Float32Array([1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0]);

/** Puts points where a matrix moves them, and answers the box around them there. */
function putMoved(m: Float32Array, points: Float32Array, to: Numbers<Float32Array>): number[] {
  const a = m[0]!, b = m[1]!, c = m[2]!, d = m[3]!, e = m[4]!, f = m[5]!, g = m[6]!, h = m[7]!;
  const i = m[8]!, j = m[9]!, k = m[10]!, l = m[11]!;
  let at = to.grow(points.length);
  const { array } = to;
  let lowX = Infinity, lowY = Infinity, lowZ = Infinity;
  let highX = -Infinity, highY = -Infinity, highZ = -Infinity;
  for (let from = 0; from < points.length; from += 3, at += 3) {
    const px = points[from]!, py = points[from + 1]!, pz = points[from + 2]!;
    array[at] = a * px + b * py + c * pz + d;
    array[at + 1] = e * px + f * py + g * pz + h;
    array[at + 2] = i * px + j * py + k * pz + l;
    const x = array[at]!, y = array[at + 1]!, z = array[at + 2]!;
    if (x < lowX) lowX = x;
    if (y < lowY) lowY = y;
    if (z < lowZ) lowZ = z;
    if (x > highX) highX = x;
    if (y > highY) highY = y;
    if (z > highZ) highZ = z;
  }
  return [lowX, lowY, lowZ, highX, highY, highZ];
}

function putTurned(m: Float32Array, normals: Int8Array, to: Numbers<Int8Array>): void {
  let at = to.grow(normals.length);
  const { array } = to;
  for (let i = 0; i < normals.length; i += 4, at += 4) {
    const nx = normals[i]!, ny = normals[i + 1]!, nz = normals[i + 2]!;
    const x = m[0]! * nx + m[1]! * ny + m[2]! * nz;
    const y = m[4]! * nx + m[5]! * ny + m[6]! * nz;
    const z = m[8]! * nx + m[9]! * ny + m[10]! * nz;
    const scale = 127 / (Math.sqrt(x * x + y * y + z * z) || 1);
    array[at] = Math.round(x * scale);
    array[at + 1] = Math.round(y * scale);
    array[at + 2] = Math.round(z * scale);
  }
}

function isMirror(m: Float32Array): boolean {
  return m[0]! * (m[5]! * m[10]! - m[6]! * m[9]!) - m[1]! * (m[4]! * m[10]! - m[6]! * m[8]!)
    + m[2]! * (m[4]! * m[9]! - m[5]! * m[8]!) < 0;
}

/** Geometries one behind the other. */
class Bodies {
  readonly points = new Numbers(new Float32Array(1024));
  readonly parts = new Numbers(new Uint8Array(1024));
  readonly normals = new Numbers(new Int8Array(1024));
  readonly indices = new Numbers(new Uint32Array(1024));

  take(others: Bodies): void {
    this.points.take(others.points);
    this.parts.take(others.parts);
    this.normals.take(others.normals);
    this.indices.take(others.indices);
  }
}

/** What instances are of, and how they look. */
class Instances {
  readonly elements = new Numbers(new Uint32Array(64));
  readonly colours = new Numbers(new Uint32Array(64));
  readonly boxes = new Numbers(new Float32Array(384));

  take(others: Instances): void {
    this.elements.take(others.elements);
    this.colours.take(others.colours);
    this.boxes.take(others.boxes);
  }
}

/** What one floor adds to one batch. */
export class Addition {
  private count = 0;
  private readonly sizes = new Numbers(new Uint32Array(64));
  private readonly parted = new Numbers(new Uint8Array(64));
  private readonly boxes = new Numbers(new Float32Array(192));
  private readonly bodies = new Bodies();
  private readonly geometryOf = new Numbers(new Uint32Array(64));
  private readonly matrices = new Numbers(new Float32Array(768));
  private readonly instances = new Instances();
  /** Copies that are drawn together, and are not among the others yet. */
  private readonly copies = new Bodies();
  private readonly copied = new Instances();

  /** `first` is the number of the batch's next geometry. */
  constructor(private first: number, private readonly isEdges: boolean) {}

  get nextGeometry(): number {
    return this.first + this.count;
  }

  /** Adds a geometry that may be placed often, and answers its number. */
  addGeometry({ points, normals, indices }: Part): number {
    this.bodies.points.put(points);
    this.bodies.parts.fill(0, points.length / 3);
    if (normals !== null) this.bodies.normals.put(normals);
    this.bodies.indices.put(indices);
    this.number(points.length / 3, indices.length, boxAround(points), false);
    return this.nextGeometry - 1;
  }

  addInstance(geometry: number, element: number, colour: number, matrix: Float32Array,
    box: ArrayLike<number>): void {
    this.geometryOf.put([geometry]);
    this.matrices.put(matrix);
    this.instances.elements.put([element]);
    this.instances.colours.put([colour]);
    this.instances.boxes.put(boxMoved(matrix, box));
  }

  /** Adds a copy of a part: moved to where it stands, and drawn with others in one go. With a box
   * around the part its own is as wide as that of an instance, so that views are fitted alike. */
  addCopy({ points, normals, indices }: Part, element: number, colour: number,
    matrix: Float32Array, box: ArrayLike<number> | null): void {
    const { copies, copied } = this;
    const count = points.length / 3;
    if (copies.parts.length + count > mostPointsTogether) this.flush();
    const begin = copies.parts.length;
    copies.parts.fill(copied.elements.length, count);
    const around = putMoved(matrix, points, copies.points);
    copied.boxes.put(box === null ? around : boxMoved(matrix, box));
    if (normals !== null) putTurned(matrix, normals, copies.normals);
    let at = copies.indices.length;
    copies.indices.put(indices, begin);
    if (!this.isEdges && isMirror(matrix)) {
      const { array } = copies.indices;
      for (; at < copies.indices.length; at += 3) {
        [array[at + 1], array[at + 2]] = [array[at + 2]!, array[at + 1]!];
      }
    }
    copied.elements.fill(element, 1);
    copied.colours.fill(colour, 1);
    if (copied.elements.length === mostTogether) this.flush();
  }

  taken(): BatchAddition {
    this.flush();
    const { bodies, instances } = this;
    return {
      geometries: {
        count: this.count,
        sizes: this.sizes.taken(),
        parted: this.parted.taken(),
        boxes: this.boxes.taken(),
        points: bodies.points.taken(),
        parts: bodies.parts.taken(),
        normals: this.isEdges ? null : bodies.normals.taken(),
        indices: bodies.indices.taken(),
      },
      instances: instances.elements.length,
      geometryOf: this.geometryOf.taken(),
      elementOf: instances.elements.taken(),
      colours: instances.colours.taken(),
      matrices: this.matrices.taken(),
      boxes: instances.boxes.taken(),
    };
  }

  /** Puts the copies into one geometry. */
  private flush(): void {
    const { copies, copied } = this;
    const count = copied.elements.length;
    if (count === 0) return;
    this.number(copies.parts.length, copies.indices.length, boxAround(copies.points.view()), true);
    this.geometryOf.fill(this.nextGeometry - 1, count);
    for (let i = 0; i < count; ++i) this.matrices.put(unmoved);
    this.bodies.take(copies);
    this.instances.take(copied);
  }

  /** Numbers a geometry of which all has been put. */
  private number(points: number, indices: number, box: number[], isParted: boolean): void {
    this.sizes.put([points, indices]);
    this.boxes.put(box);
    this.parted.put([Number(isParted)]);
    this.count += 1;
  }
}

/** Around a box that a matrix moves: the middle moves, and each half axis adds its share. */
function boxMoved(m: Float32Array, box: ArrayLike<number>): number[] {
  const result: number[] = [0, 0, 0, 0, 0, 0];
  for (let row = 0; row < 3; ++row) {
    let middle = m[4 * row + 3]!, half = 0;
    for (let axis = 0; axis < 3; ++axis) {
      middle += (m[4 * row + axis]! * (box[axis]! + box[axis + 3]!)) / 2;
      half += (Math.abs(m[4 * row + axis]!) * (box[axis + 3]! - box[axis]!)) / 2;
    }
    result[row] = middle - half;
    result[row + 3] = middle + half;
  }
  return result;
}
