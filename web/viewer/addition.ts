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

function moved(m: Float32Array, points: Float32Array): Float32Array {
  const result = new Float32Array(points.length);
  for (let i = 0; i < points.length; i += 3) {
    for (let row = 0; row < 3; ++row) {
      result[i + row] = m[4 * row]! * points[i]! + m[4 * row + 1]! * points[i + 1]!
        + m[4 * row + 2]! * points[i + 2]! + m[4 * row + 3]!;
    }
  }
  return result;
}

function turned(m: Float32Array, normals: Int8Array): Int8Array {
  const result = new Int8Array(normals.length);
  for (let i = 0; i < normals.length; i += 4) {
    const nx = normals[i]!, ny = normals[i + 1]!, nz = normals[i + 2]!;
    const x = m[0]! * nx + m[1]! * ny + m[2]! * nz;
    const y = m[4]! * nx + m[5]! * ny + m[6]! * nz;
    const z = m[8]! * nx + m[9]! * ny + m[10]! * nz;
    const scale = 127 / (Math.sqrt(x * x + y * y + z * z) || 1);
    result[i] = Math.round(x * scale);
    result[i + 1] = Math.round(y * scale);
    result[i + 2] = Math.round(z * scale);
  }
  return result;
}

function isMirror(m: Float32Array): boolean {
  return m[0]! * (m[5]! * m[10]! - m[6]! * m[9]!) - m[1]! * (m[4]! * m[10]! - m[6]! * m[8]!)
    + m[2]! * (m[4]! * m[9]! - m[5]! * m[8]!) < 0;
}

/** What one floor adds to one batch. */
export class Addition {
  private count = 0;
  private instances = 0;
  private readonly sizes = new Numbers(new Uint32Array(64));
  private readonly parted = new Numbers(new Uint8Array(64));
  private readonly boxes = new Numbers(new Float32Array(192));
  private readonly points = new Numbers(new Float32Array(1024));
  private readonly parts = new Numbers(new Uint8Array(1024));
  private readonly normals = new Numbers(new Int8Array(1024));
  private readonly indices = new Numbers(new Uint32Array(1024));
  private readonly geometryOf = new Numbers(new Uint32Array(64));
  private readonly elementOf = new Numbers(new Uint32Array(64));
  private readonly colours = new Numbers(new Uint32Array(64));
  private readonly matrices = new Numbers(new Float32Array(768));
  private readonly instanceBoxes = new Numbers(new Float32Array(384));
  private together: { part: Part; element: number; colour: number }[] = [];
  private pointsTogether = 0;

  /** `first` is the number of the batch's next geometry. */
  constructor(private first: number, private readonly isEdges: boolean) {}

  get nextGeometry(): number {
    return this.first + this.count;
  }

  /** Adds a geometry that may be placed often, and answers its number. */
  addGeometry(part: Part): number {
    this.put([part], false);
    return this.nextGeometry - 1;
  }

  addInstance(geometry: number, element: number, colour: number, matrix: Float32Array,
    box: ArrayLike<number>): void {
    this.geometryOf.put([geometry]);
    this.elementOf.put([element]);
    this.colours.put([colour]);
    this.matrices.put(matrix);
    this.instanceBoxes.put(boxMoved(matrix, box));
    this.instances += 1;
  }

  /** Adds what is placed once: moved there, and drawn with others in one go. */
  addOnce({ look, points, normals, indices }: Part, element: number, colour: number,
    matrix: Float32Array): void {
    if (isMirror(matrix) && !this.isEdges) {
      for (let i = 0; i < indices.length; i += 3) {
        [indices[i + 1], indices[i + 2]] = [indices[i + 2]!, indices[i + 1]!];
      }
    }
    const part = {
      look, points: moved(matrix, points), normals: normals && turned(matrix, normals), indices,
    };
    if (this.pointsTogether + points.length / 3 > mostPointsTogether) this.flush();
    this.together.push({ part, element, colour });
    this.pointsTogether += points.length / 3;
    if (this.together.length === mostTogether) this.flush();
  }

  taken(): BatchAddition {
    this.flush();
    return {
      geometries: {
        count: this.count,
        sizes: this.sizes.taken(),
        parted: this.parted.taken(),
        boxes: this.boxes.taken(),
        points: this.points.taken(),
        parts: this.parts.taken(),
        normals: this.isEdges ? null : this.normals.taken(),
        indices: this.indices.taken(),
      },
      instances: this.instances,
      geometryOf: this.geometryOf.taken(),
      elementOf: this.elementOf.taken(),
      colours: this.colours.taken(),
      matrices: this.matrices.taken(),
      boxes: this.instanceBoxes.taken(),
    };
  }

  private flush(): void {
    if (this.together.length === 0) return;
    this.put(this.together.map(({ part }) => part), true);
    for (const { part, element, colour } of this.together) {
      this.addInstance(this.nextGeometry - 1, element, colour, unmoved, boxAround(part.points));
    }
    this.together = [];
    this.pointsTogether = 0;
  }

  /** Puts parts into one geometry. */
  private put(parts: Part[], isParted: boolean): void {
    this.parted.put([Number(isParted)]);
    let points = 0, indices = 0;
    const box = [Infinity, Infinity, Infinity, -Infinity, -Infinity, -Infinity];
    parts.forEach((part, number) => {
      const count = part.points.length / 3;
      this.points.put(part.points);
      this.parts.fill(number, count);
      if (part.normals !== null) this.normals.put(part.normals);
      this.indices.put(part.indices, points);
      points += count;
      indices += part.indices.length;
      boxAround(part.points).forEach((at, i) => {
        box[i] = i < 3 ? Math.min(box[i]!, at) : Math.max(box[i]!, at);
      });
    });
    this.sizes.put([points, indices]);
    this.boxes.put(box);
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
