/** Faces that bend by less than this are one to the eye. */
const leastBend = Math.cos((25 * Math.PI) / 180);
/** Points nearer than this, in metres, are one. */
const weld = 1e-4;
const none = -1;

interface Triangles {
  points: Float32Array;
  indices: Uint32Array;
}

/** Numbers keys from 0 on in the order in which they come: open addressing in arrays that are used
 * again, since there are as many tables as shapes. */
class Table {
  private slots = new Int32Array(0);
  private mask = 0;
  /** Three numbers a key. */
  keys = new Float64Array(0);
  count = 0;

  /** Empties it, with room for `most` keys. */
  clear(most: number): void {
    let size = 64;
    while (size < 2 * most) size *= 2;
    if (size > this.slots.length) {
      this.slots = new Int32Array(size);
      this.keys = new Float64Array(3 * size);
    }
    this.slots.fill(none, 0, size);
    this.mask = size - 1;
    this.count = 0;
  }

  /** The number of a key, which is `count` before where it is new. */
  number(a: number, b: number, c: number): number {
    const { slots, keys, mask } = this;
    let at = (Math.imul(a, 73856093) ^ Math.imul(b, 19349663) ^ Math.imul(c, 83492791)) & mask;
    for (;; at = (at + 1) & mask) {
      const known = slots[at]!;
      if (known === none) break;
      if (keys[3 * known] === a && keys[3 * known + 1] === b && keys[3 * known + 2] === c) return known;
    }
    keys[3 * this.count] = a;
    keys[3 * this.count + 1] = b;
    keys[3 * this.count + 2] = c;
    return (slots[at] = this.count++);
  }
}

const corners = new Table();
const edges = new Table();
/** What is known of an edge: nothing, the normal of the face on its one side, or that it is settled. */
const State = { new: 0, open: 1, settled: 2 } as const;

/** The edges of a body: where its faces bend, and where they end. Pairs of indices. */
export function creasesOf(parts: Triangles[]): Triangles {
  const pointCount = parts.reduce((sum, { points }) => sum + points.length / 3, 0);
  const indexCount = parts.reduce((sum, { indices }) => sum + indices.length, 0);
  corners.clear(pointCount);
  edges.clear(indexCount);
  const places = new Float32Array(3 * pointCount);
  const states = new Uint8Array(indexCount);
  const normals = new Float64Array(3 * indexCount);
  const kept: number[] = [];
  for (const { points, indices } of parts) {
    const numbers = weldedInto(places, points);
    for (let i = 0; i < indices.length; i += 3) {
      const a = numbers[indices[i]!]!, b = numbers[indices[i + 1]!]!, c = numbers[indices[i + 2]!]!;
      const ax = places[3 * a]!, ay = places[3 * a + 1]!, az = places[3 * a + 2]!;
      const ux = places[3 * b]! - ax, uy = places[3 * b + 1]! - ay, uz = places[3 * b + 2]! - az;
      const vx = places[3 * c]! - ax, vy = places[3 * c + 1]! - ay, vz = places[3 * c + 2]! - az;
      let nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
      const length = Math.sqrt(nx * nx + ny * ny + nz * nz);
      if (!(length > 1e-12)) continue;
      nx /= length, ny /= length, nz /= length;
      for (let side = 0; side < 3; ++side) {
        const from = side === 0 ? a : side === 1 ? b : c, to = side === 0 ? b : side === 1 ? c : a;
        const edge = from < to ? edges.number(from, to, 0) : edges.number(to, from, 0);
        if (states[edge] === State.new) {
          states[edge] = State.open;
          normals[3 * edge] = nx, normals[3 * edge + 1] = ny, normals[3 * edge + 2] = nz;
        } else if (states[edge] === State.open) {
          const bend = normals[3 * edge]! * nx + normals[3 * edge + 1]! * ny + normals[3 * edge + 2]! * nz;
          if (bend < leastBend) kept.push(from, to);
          states[edge] = State.settled;
        }
      }
    }
  }
  for (let edge = 0; edge < edges.count; ++edge) {
    if (states[edge] === State.open) kept.push(edges.keys[3 * edge]!, edges.keys[3 * edge + 1]!);
  }
  return compacted(places, kept);
}

/** The number of each point, where those at one place have one; new places go behind those before. */
function weldedInto(places: Float32Array, points: Float32Array): Int32Array {
  const numbers = new Int32Array(points.length / 3);
  for (let i = 0; i < numbers.length; ++i) {
    const x = points[3 * i]!, y = points[3 * i + 1]!, z = points[3 * i + 2]!;
    const before = corners.count;
    const number = corners.number(Math.round(x / weld), Math.round(y / weld), Math.round(z / weld));
    if (number === before) {
      places[3 * number] = x, places[3 * number + 1] = y, places[3 * number + 2] = z;
    }
    numbers[i] = number;
  }
  return numbers;
}

/** Only the points that edges have. */
function compacted(places: Float32Array, ends: number[]): Triangles {
  const numbers = new Int32Array(corners.count).fill(none);
  const points = new Float32Array(3 * Math.min(corners.count, ends.length));
  const indices = new Uint32Array(ends.length);
  let count = 0;
  for (let i = 0; i < ends.length; ++i) {
    const end = ends[i]!;
    if (numbers[end] === none) {
      points.set(places.subarray(3 * end, 3 * end + 3), 3 * count);
      numbers[end] = count++;
    }
    indices[i] = numbers[end]!;
  }
  return { points: points.slice(0, 3 * count), indices };
}
