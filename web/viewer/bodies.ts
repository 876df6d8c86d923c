import { Vector3 } from "three";
import { creasesOf } from "./creases.js";
import type { Ref } from "./model.js";

/** The body of one element as it stands, for what needs more of it than a picture. */
export interface Body {
  /** Nine numbers a triangle. */
  triangles: Float32Array;
  /** Six numbers an edge, where faces bend or end. */
  edges: Float32Array;
}

/** What a point was drawn to. */
export type Snap = "corner" | "edge" | "face";

const kept = 40;

/** Bodies by element, the last ones kept. */
export class Bodies {
  private readonly known = new Map<string, Promise<Body>>();

  of({ model, element }: Ref): Promise<Body> {
    const key = `${model.number}:${element}`;
    let body = this.known.get(key);
    if (body === undefined) {
      body = model.link.ask("triangles", ...model.place(element)).then(bodyOf);
      body.catch(() => this.known.delete(key));
    }
    this.known.delete(key);
    this.known.set(key, body); // the last of the order
    if (this.known.size > kept) this.known.delete(this.known.keys().next().value!);
    return body;
  }
}

export function bodyOf(triangles: Float32Array): Body {
  const indices = Uint32Array.from({ length: triangles.length / 3 }, (_, i) => i);
  const { points, indices: ends } = creasesOf([{ points: triangles, indices }]);
  const edges = new Float32Array(3 * ends.length);
  ends.forEach((end, i) => edges.set(points.subarray(3 * end, 3 * end + 3), 3 * i));
  return { triangles, edges };
}

/** The corner or the point of an edge within `reach` of a point, else the point itself. */
export function snapped(body: Body, point: Vector3, reach: number): { point: Vector3; snap: Snap } {
  const a = new Vector3(), b = new Vector3(), on = new Vector3();
  let corner: Vector3 | null = null, edge: Vector3 | null = null;
  let toCorner = reach, toEdge = reach;
  for (let i = 0; i < body.edges.length; i += 6) {
    a.fromArray(body.edges, i);
    b.fromArray(body.edges, i + 3);
    for (const end of [a, b]) {
      if (end.distanceTo(point) < toCorner) {
        toCorner = end.distanceTo(point);
        corner = end.clone();
      }
    }
    const along = b.clone().sub(a);
    const share = on.copy(point).sub(a).dot(along) / Math.max(along.lengthSq(), 1e-12);
    on.copy(a).addScaledVector(along, Math.min(Math.max(share, 0), 1));
    if (on.distanceTo(point) < toEdge) {
      toEdge = on.distanceTo(point);
      edge = on.clone();
    }
  }
  if (corner) return { point: corner, snap: "corner" };
  return edge ? { point: edge, snap: "edge" } : { point, snap: "face" };
}

/** How far off a plane its face may lie, in metres, and bend. */
const flat = 2e-3;

/** The flat face at a point: its normal and the area of all of it that lies in that plane. */
export function faceAt(body: Body, point: Vector3): { normal: Vector3; area: number } | null {
  const { triangles } = body;
  let least = Infinity, normal: Vector3 | null = null;
  for (let i = 0; i < triangles.length; i += 9) {
    const [own, distance] = normalAndDistance(triangles, i, point);
    if (own && distance < least) {
      least = distance;
      normal = own;
    }
  }
  if (normal === null) return null;
  let area = 0;
  const height = normal.dot(point);
  for (let i = 0; i < triangles.length; i += 9) {
    const [a, b, c] = cornersOf(triangles, i);
    const cross = b.clone().sub(a).cross(c.clone().sub(a));
    const isInPlane = [a, b, c].every((each) => Math.abs(normal.dot(each) - height) < flat);
    if (isInPlane && cross.dot(normal) > 0) area += cross.length() / 2;
  }
  return { normal, area };
}

function cornersOf(triangles: Float32Array, at: number): [Vector3, Vector3, Vector3] {
  return [0, 3, 6].map((offset) => new Vector3().fromArray(triangles, at + offset)) as
    [Vector3, Vector3, Vector3];
}

/** The normal of a triangle, and how far a point is from it. */
function normalAndDistance(triangles: Float32Array, at: number,
  point: Vector3): [Vector3 | null, number] {
  const [a, b, c] = cornersOf(triangles, at);
  const normal = b.clone().sub(a).cross(c.clone().sub(a));
  if (normal.lengthSq() < 1e-20) return [null, Infinity];
  normal.normalize();
  const above = point.clone().sub(a).dot(normal);
  const foot = point.clone().addScaledVector(normal, -above);
  let outside = 0;
  for (const [from, to] of [[a, b], [b, c], [c, a]] as const) {
    const outwards = to.clone().sub(from).cross(normal).normalize();
    outside = Math.max(outside, foot.clone().sub(from).dot(outwards));
  }
  return [normal, Math.hypot(above, outside)];
}
