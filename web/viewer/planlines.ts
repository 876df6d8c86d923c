import type { SceneChunk, Shape } from "../src/index.js";

/** Where a level plane meets a floor's bodies. */
export interface PlanLines {
  /** Four numbers a line: X and Y of both ends, relative to the drawing's origin. */
  lines: Float32Array;
  /** The position on the floor of the element that each line is of. */
  elementOf: Uint32Array;
}

/** Collects the lines in which triangles meet a level plane. */
class Cutter {
  private readonly lines: number[] = [];
  private readonly elements: number[] = [];
  private readonly corner = new Float64Array(9);

  constructor(
    private readonly height: number,
    private readonly origin: readonly number[],
  ) {}

  add(shape: Shape, m: Float64Array, element: number): void {
    const { corner } = this;
    for (const { points, indices } of shape.surfaces) {
      for (let i = 0; i < indices.length; ++i) {
        const at = 3 * indices[i]!, to = 3 * (i % 3);
        for (let row = 0; row < 3; ++row) {
          corner[to + row] = m[4 * row]! * points[at]! + m[4 * row + 1]! * points[at + 1]!
            + m[4 * row + 2]! * points[at + 2]! + m[4 * row + 3]!;
        }
        if (i % 3 === 2) this.cut(element);
      }
    }
  }

  taken(): PlanLines {
    return { lines: new Float32Array(this.lines), elementOf: new Uint32Array(this.elements) };
  }

  /** Corners on the plane count as above it, so that each crossing is met once. */
  private cut(element: number): void {
    const { corner, height, origin } = this;
    const met: number[] = [];
    for (let side = 0; side < 3; ++side) {
      const a = 3 * side, b = 3 * ((side + 1) % 3);
      const above = corner[a + 2]! - height, next = corner[b + 2]! - height;
      if (above < 0 === next < 0) continue;
      const share = above / (above - next);
      for (let axis = 0; axis < 2; ++axis) {
        met.push(corner[a + axis]! + share * (corner[b + axis]! - corner[a + axis]!) - origin[axis]!);
      }
    }
    if (met.length !== 4) return;
    this.lines.push(...met);
    this.elements.push(element);
  }
}

/** The plan of a floor, cut at `height` in the model's coordinates. */
export async function planOf(scene: AsyncIterable<SceneChunk>, height: number,
  origin: readonly number[], isLeftOut: (position: number) => boolean): Promise<PlanLines> {
  const cutter = new Cutter(height, origin);
  const shapes = new Map<number, Shape>();
  for await (const chunk of scene) {
    for (const shape of chunk.shapes) shapes.set(shape.number, shape);
    const { count, matrices, elements, shapes: numbers } = chunk.placements;
    for (let i = 0; i < count; ++i) {
      if (isLeftOut(elements[i]!)) continue;
      cutter.add(shapes.get(numbers[i]!)!, matrices.subarray(12 * i, 12 * i + 12), elements[i]!);
    }
  }
  return cutter.taken();
}
