/** Faces that bend by less than this are one to the eye. */
const leastBend = Math.cos((25 * Math.PI) / 180);
/** Points nearer than this, in metres, are one. */
const weld = 1e-4;

interface Triangles {
  points: Float32Array;
  indices: Uint32Array;
}

/** Numbers points so that those at one place have one number. */
class Welder {
  private readonly known = new Map<string, number>();
  readonly points: number[] = [];

  number(points: Float32Array, at: number): number {
    const x = points[at]!, y = points[at + 1]!, z = points[at + 2]!;
    const key = `${Math.round(x / weld)},${Math.round(y / weld)},${Math.round(z / weld)}`;
    let number = this.known.get(key);
    if (number === undefined) {
      number = this.points.length / 3;
      this.known.set(key, number);
      this.points.push(x, y, z);
    }
    return number;
  }
}

/** The normal of a triangle of welded points; null where it has no area. */
function normalOf(points: number[], a: number, b: number, c: number): number[] | null {
  const u = [0, 1, 2].map((axis) => points[3 * b + axis]! - points[3 * a + axis]!);
  const v = [0, 1, 2].map((axis) => points[3 * c + axis]! - points[3 * a + axis]!);
  const n = [
    u[1]! * v[2]! - u[2]! * v[1]!,
    u[2]! * v[0]! - u[0]! * v[2]!,
    u[0]! * v[1]! - u[1]! * v[0]!,
  ];
  const length = Math.hypot(...n);
  return length > 1e-12 ? n.map((value) => value / length) : null;
}

/** The edges of a body: where its faces bend, and where they end. Pairs of indices. */
export function creasesOf(parts: Triangles[]): Triangles {
  const welder = new Welder();
  /** By both ends: the normal of the face on one side; false once the edge is settled. */
  const sides = new Map<number, number[] | false>();
  const kept: number[] = [];
  const span = 2 ** 26;
  for (const { points, indices } of parts) {
    const numbers = new Uint32Array(points.length / 3);
    for (let i = 0; i < numbers.length; ++i) numbers[i] = welder.number(points, 3 * i);
    for (let i = 0; i < indices.length; i += 3) {
      const corners = [0, 1, 2].map((corner) => numbers[indices[i + corner]!]!);
      const normal = normalOf(welder.points, corners[0]!, corners[1]!, corners[2]!);
      if (normal === null) continue;
      for (let side = 0; side < 3; ++side) {
        const from = corners[side]!, to = corners[(side + 1) % 3]!;
        const key = Math.min(from, to) * span + Math.max(from, to);
        const other = sides.get(key);
        if (other === undefined) {
          sides.set(key, normal);
        } else if (other !== false) {
          const bend = other[0]! * normal[0]! + other[1]! * normal[1]! + other[2]! * normal[2]!;
          if (bend < leastBend) kept.push(from, to);
          sides.set(key, false);
        }
      }
    }
  }
  for (const [key, side] of sides) {
    if (side !== false) kept.push(Math.floor(key / span), key % span);
  }
  return compacted(welder.points, kept);
}

/** Only the points that edges have. */
function compacted(points: number[], edges: number[]): Triangles {
  const numbers = new Map<number, number>();
  const kept: number[] = [];
  const indices = new Uint32Array(edges.length);
  edges.forEach((point, i) => {
    let number = numbers.get(point);
    if (number === undefined) {
      number = kept.length / 3;
      numbers.set(point, number);
      kept.push(points[3 * point]!, points[3 * point + 1]!, points[3 * point + 2]!);
    }
    indices[i] = number;
  });
  return { points: new Float32Array(kept), indices };
}
