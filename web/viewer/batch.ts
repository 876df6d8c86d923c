import {
  BatchedMesh, Box3, BufferAttribute, BufferGeometry, Color, type Material, Matrix4, SRGBColorSpace, Sphere,
  Vector4,
} from "three";
import type { BatchAddition } from "./messages.js";

const matrix = new Matrix4();
const colour = new Color();
const box = new Box3();
const shown = new Vector4();

/** Room for `needed` at least, growing by halves. */
const grown = (needed: number, had: number): number =>
  needed <= had ? had : Math.max(needed, Math.ceil(had * 1.5));

/** Many bodies drawn by one call: each geometry once, each instance with its matrix and colour. */
export class Batch extends BatchedMesh {
  private usedPoints = 0;
  private usedIndices = 0;
  private geometryTotal = 0;
  /** Of each instance, as Box3.setFromArray takes it. */
  private boxes = new Float32Array(384);
  /** Of each instance: whether it is drawn with others in one go, and hidden by its colour. */
  private isPart = new Uint8Array(64);

  constructor(material: Material, isLines: boolean) {
    super(64, 4096, 8192, material);
    this.sortObjects = false;
    this.perObjectFrustumCulled = false;
    this.frustumCulled = false;
    this.matrixAutoUpdate = false;
    if (isLines) Object.assign(this, { isMesh: false, isLine: true, isLineSegments: true });
  }

  /** Takes what a floor adds; its instances have the numbers that follow those before. */
  addAll(added: BatchAddition): void {
    const { geometries } = added;
    this.reserve(added);
    let point = 0, index = 0;
    for (let i = 0; i < geometries.count; ++i) {
      const points = geometries.sizes[2 * i]!, indices = geometries.sizes[2 * i + 1]!;
      this.addGeometry(geometryOf(geometries, i, point, index)); // ids count from 0 on
      point += points;
      index += indices;
    }
    const first = this.instanceCount;
    let last = -1;
    for (let i = 0; i < added.instances; ++i) {
      const isFollower = this.isParted(added, i) && added.geometryOf[i] === last;
      last = added.geometryOf[i]!;
      const id = this.addInstance(added.geometryOf[i]!);
      const m = added.matrices.subarray(12 * i, 12 * i + 12);
      matrix.set(m[0]!, m[1]!, m[2]!, m[3]!, m[4]!, m[5]!, m[6]!, m[7]!, m[8]!, m[9]!, m[10]!,
        m[11]!, 0, 0, 0, 1);
      this.setMatrixAt(id, matrix);
      this.isPart[id] = Number(this.isParted(added, i));
      if (isFollower) this.setVisibleAt(id, false); // its leader draws all of the geometry
    }
    this.boxes.set(added.boxes, 6 * first);
  }

  /** Enlarges `around` by an instance. */
  enclose(instance: number, around: Box3): void {
    around.union(box.setFromArray(this.boxes.subarray(6 * instance, 6 * instance + 6)));
  }

  hide(instance: number): void {
    if (this.isPart[instance]) this.setColorAt(instance, shown.set(0, 0, 0, -1));
    else this.setVisibleAt(instance, false);
  }

  /** Shows an instance. `rgb` is a byte each from the lowest on, as screens show it; `alpha` goes up to 1. */
  paint(instance: number, rgb: number, alpha: number): void {
    colour.setRGB((rgb & 255) / 255, ((rgb >>> 8) & 255) / 255, ((rgb >>> 16) & 255) / 255,
      SRGBColorSpace);
    this.setColorAt(instance, shown.set(colour.r, colour.g, colour.b, alpha));
    if (!this.isPart[instance]) this.setVisibleAt(instance, true);
  }

  /** Whether instances that the camera does not see are left out, which costs time for each. */
  cullEach(culls: boolean): void {
    if (this.perObjectFrustumCulled === culls) return;
    this.perObjectFrustumCulled = culls;
    (this as unknown as { _visibilityChanged: boolean })._visibilityChanged = true;
  }

  /** Lets go of the page's copy of what the graphics card holds, when nothing more is added. */
  releaseCopies(): void {
    const { attributes, index } = this.geometry;
    for (const attribute of [...Object.values(attributes), index]) {
      if (attribute instanceof BufferAttribute) {
        const Kind = attribute.array.constructor as new (length: number) => BufferAttribute["array"];
        attribute.array = new Kind(0);
      }
    }
  }

  private reserve({ geometries, instances }: BatchAddition): void {
    const points = this.usedPoints + geometries.points.length / 3;
    const indices = this.usedIndices + geometries.indices.length;
    const info = this as unknown as { _maxVertexCount: number; _maxIndexCount: number };
    if (points > info._maxVertexCount || indices > info._maxIndexCount) {
      this.setGeometrySize(grown(points, info._maxVertexCount), grown(indices, info._maxIndexCount));
    }
    const needed = this.instanceCount + instances;
    if (needed > this.maxInstanceCount) this.setInstanceCount(grown(needed, this.maxInstanceCount));
    this.usedPoints = points;
    this.usedIndices = indices;
    this.geometryTotal += geometries.count;
    if (6 * needed > this.boxes.length) {
      const boxes = new Float32Array(grown(6 * needed, this.boxes.length));
      boxes.set(this.boxes);
      this.boxes = boxes;
      const isPart = new Uint8Array(boxes.length / 6);
      isPart.set(this.isPart);
      this.isPart = isPart;
    }
  }

  /** Whether the geometry of an instance consists of parts. */
  private isParted({ geometryOf, geometries }: BatchAddition, i: number): boolean {
    const own = geometryOf[i]! - (this.geometryTotal - geometries.count);
    return own >= 0 && geometries.parted[own] === 1;
  }
}

function geometryOf(geometries: BatchAddition["geometries"], which: number, point: number,
  index: number): BufferGeometry {
  const points = geometries.sizes[2 * which]!, indices = geometries.sizes[2 * which + 1]!;
  const geometry = new BufferGeometry();
  geometry.setAttribute("position",
    new BufferAttribute(geometries.points.subarray(3 * point, 3 * (point + points)), 3));
  if (geometries.normals !== null) {
    geometry.setAttribute("normal",
      new BufferAttribute(geometries.normals.subarray(4 * point, 4 * (point + points)), 4, true));
  }
  geometry.setAttribute("part",
    new BufferAttribute(geometries.parts.subarray(point, point + points), 1));
  geometry.setIndex(new BufferAttribute(geometries.indices.subarray(index, index + indices), 1));
  box.setFromArray(geometries.boxes.subarray(6 * which, 6 * which + 6));
  geometry.boundingSphere = box.getBoundingSphere(new Sphere());
  return geometry;
}
