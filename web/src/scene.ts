/** How a surface looks. */
export interface Look {
  /** By which placements and surfaces know it, from 0 on. */
  number: number;
  /** Of its style or material; may be empty. */
  name: string;
  /** Red, green, blue and alpha, 0 to 255. */
  colour: [number, number, number, number];
}

/** Triangles that look the same, counter-clockwise as seen from outside. */
export interface Surface {
  /** The number of its look; null takes that of the placement. */
  look: number | null;
  /** Three a point, metres, in the shape's coordinates. */
  points: Float32Array | Float64Array;
  /** Three a point, of length 1; null unless they were asked for. */
  normals: Float32Array | null;
  /** Three a triangle. */
  indices: Uint32Array;
}

/** A line beside a body. */
export interface Curve {
  /** Such as "FootPrint" or "Axis"; may be empty. */
  role: string;
  closed: boolean;
  /** Three a point, as those of surfaces. */
  points: Float32Array | Float64Array;
}

/** A body that stands once, however often it is placed. */
export interface Shape {
  /** By which placements know it, from 0 on. */
  number: number;
  /** The name under which the file stores it. */
  key: string;
  surfaces: Surface[];
  /** Empty unless they were asked for. */
  curves: Curve[];
}

/** Where shapes stand: one entry of each array a placement. */
export interface Placements {
  count: number;
  /** Twelve a placement: rows of (X axis, Y axis, Z axis, origin), from the shape's coordinates to
   * the model's, metres, Z up. */
  matrices: Float64Array;
  /** The position, on the chunk's floor, of the element that it is a part of. */
  elements: Uint32Array;
  /** The number of its shape. */
  shapes: Uint32Array;
  /** The number of the look of those surfaces that have none of their own. */
  looks: Uint32Array;
}

/** What stands on one floor, or on a part of it. Looks and shapes that came with a chunk before do not
 * come again. All arrays of a chunk lie in one buffer of its own, which may be transferred. */
export interface SceneChunk {
  floor: number;
  /** Whether the next chunk is another floor's. */
  endsFloor: boolean;
  looks: Look[];
  shapes: Shape[];
  placements: Placements;
  /** Names that lead to no geometry in the file. */
  missing: number;
}

interface SurfaceText {
  look: number | null;
  points: number;
  normals: number;
  triangles: number;
}

interface ChunkText {
  floor: number;
  endsFloor: boolean;
  missing: number;
  placements: number;
  looks: Omit<Look, "number">[];
  shapes: {
    key: string;
    surfaces: SurfaceText[];
    curves: { role: string; closed: boolean; points: number }[];
  }[];
}

/** Reads arrays one behind the other, as web/native/SceneWalk.h describes them. */
class Arrays {
  constructor(
    private readonly buffer: ArrayBuffer,
    private at: number,
    private readonly doubles: boolean,
  ) {}

  private skip(bytes: number): number {
    const begin = this.at;
    this.at += Math.ceil(bytes / 8) * 8;
    return begin;
  }
  f64(count: number): Float64Array {
    return new Float64Array(this.buffer, this.skip(count * 8), count);
  }
  f32(count: number): Float32Array {
    return new Float32Array(this.buffer, this.skip(count * 4), count);
  }
  u32(count: number): Uint32Array {
    return new Uint32Array(this.buffer, this.skip(count * 4), count);
  }
  points(count: number): Float32Array | Float64Array {
    return this.doubles ? this.f64(3 * count) : this.f32(3 * count);
  }
}

/** Reads the chunks of one walk, in their order. */
export class ChunkReader {
  private looks = 0;
  private shapes = 0;

  constructor(private readonly doubles: boolean) {}

  /** `answer` is copied. */
  read(answer: Uint8Array): SceneChunk {
    const buffer = answer.slice().buffer;
    const length = new DataView(buffer).getUint32(0, true);
    const text = new TextDecoder().decode(new Uint8Array(buffer, 4, length));
    const told = JSON.parse(text) as ChunkText;
    const arrays = new Arrays(buffer, 4 + length, this.doubles);
    const count = told.placements;
    const placements = {
      count,
      matrices: arrays.f64(12 * count),
      elements: arrays.u32(count),
      shapes: arrays.u32(count),
      looks: arrays.u32(count),
    };
    const looks = told.looks.map((look) => ({ number: this.looks++, ...look }));
    const shapes = told.shapes.map(({ key, surfaces, curves }) => ({
      number: this.shapes++,
      key,
      surfaces: surfaces.map((surface) => ({
        look: surface.look,
        points: arrays.points(surface.points),
        normals: surface.normals === 0 ? null : arrays.f32(3 * surface.normals),
        indices: arrays.u32(3 * surface.triangles),
      })),
      curves: curves.map((curve) => ({ ...curve, points: arrays.points(curve.points) })),
    }));
    const { floor, endsFloor, missing } = told;
    return { floor, endsFloor, looks, shapes, placements, missing };
  }
}
