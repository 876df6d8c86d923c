import {
  Box3, BufferAttribute, BufferGeometry, type Material, Matrix4, Object3D, Sphere,
} from "three";
import type { BatchAddition } from "./messages.js";
import { Page, type Room } from "./page.js";

const matrix = new Matrix4();
const box = new Box3();

/** Of a batch's first page; each has twice the room of the one before, up to sixteen times this. */
const leastRoom = { points: 16 << 10, indices: 32 << 10 };

/** Many bodies drawn by a few calls: each geometry once, each instance with its matrix and colour. */
export class Batch extends Object3D {
  readonly pages: Page[] = [];
  /** Filled since the last `sealed`, and still to be sent to the graphics card. */
  private unsent: Page[] = [];
  private instances = 0;
  private geometries = 0;
  /** Of each instance: its page, and its slot there. */
  private pageOf = new Uint16Array(64);
  private slotOf = new Uint32Array(64);
  /** Of each instance, as Box3.setFromArray takes it; lines lie within what they are lines of. */
  private boxes = new Float32Array(384);

  constructor(private shownBy: Material, private readonly isLines: boolean) {
    super();
    this.matrixAutoUpdate = false;
  }

  get instanceCount(): number {
    return this.instances;
  }
  get material(): Material {
    return this.shownBy;
  }
  set material(material: Material) {
    this.shownBy = material;
    for (const page of this.pages) page.material = material;
  }

  /** Takes what is added; its instances have the numbers that follow those before. */
  addAll(added: BatchAddition): void {
    this.addGeometries(added);
    this.reserve(added);
    for (let i = 0; i < added.instances; ++i) {
      const m = added.matrices.subarray(12 * i, 12 * i + 12);
      matrix.set(m[0]!, m[1]!, m[2]!, m[3]!, m[4]!, m[5]!, m[6]!, m[7]!, m[8]!, m[9]!, m[10]!,
        m[11]!, 0, 0, 0, 1);
      const geometry = added.geometryOf[i]!;
      const page = this.pageWith(geometry);
      const number = this.instances++;
      box.setFromArray(added.boxes.subarray(6 * i, 6 * i + 6));
      this.pageOf[number] = page.order;
      this.slotOf[number] = page.place(geometry, number, this.follows(added, i) ? null : matrix, box);
    }
    if (!this.isLines) this.boxes.set(added.boxes, 6 * (this.instances - added.instances));
  }

  /** Whether an added instance is a part of the geometry that the one before it is a part of. */
  private follows({ geometries, geometryOf }: BatchAddition, i: number): boolean {
    const ofThese = geometryOf[i]! - (this.geometries - geometries.count);
    return i > 0 && geometryOf[i] === geometryOf[i - 1] && ofThese >= 0
      && geometries.parted[ofThese] === 1;
  }

  /** Hands over the pages that were filled, whose copies go once they were sent. */
  takeUnsent(): Page[] {
    const pages = this.unsent;
    this.unsent = [];
    return pages;
  }
  /** Nothing more comes. */
  finish(): void {
    for (const page of this.pages) page.fit();
    const last = this.pages.at(-1);
    if (last !== undefined && !this.unsent.includes(last)) this.unsent.push(last);
  }

  /** Enlarges `around` by an instance. */
  enclose(instance: number, around: Box3): void {
    if (this.isLines) return;
    around.union(box.setFromArray(this.boxes.subarray(6 * instance, 6 * instance + 6)));
  }

  hide(instance: number): void {
    this.pages[this.pageOf[instance]!]!.hide(this.slotOf[instance]!);
  }

  /** Shows an instance. `rgb` is a byte each from the lowest on, as screens show it; `alpha` goes up to 1. */
  paint(instance: number, rgb: number, alpha: number): void {
    this.pages[this.pageOf[instance]!]!.paint(this.slotOf[instance]!, rgb, Math.round(255 * alpha));
  }

  override dispose(): void {
    for (const page of this.pages) page.dispose();
  }

  private addGeometries({ geometries }: BatchAddition): void {
    let point = 0, index = 0;
    for (let i = 0; i < geometries.count; ++i) {
      const room = { points: geometries.sizes[2 * i]!, indices: geometries.sizes[2 * i + 1]! };
      this.pageFor(room).take(geometryOf(geometries, i, room, point, index));
      this.geometries += 1;
      point += room.points;
      index += room.indices;
    }
  }

  private pageFor(room: Room): Page {
    const last = this.pages.at(-1);
    if (last?.hasRoomFor(room)) return last;
    if (last) this.unsent.push(last);
    const factor = 2 ** Math.min(this.pages.length, 4);
    const page = new Page(this.pages.length, this.geometries, {
      points: Math.max(room.points, factor * leastRoom.points),
      indices: Math.max(room.indices, factor * leastRoom.indices),
    }, this.shownBy, this.isLines);
    this.pages.push(page);
    this.add(page);
    return page;
  }

  private pageWith(geometry: number): Page {
    let low = 0, high = this.pages.length - 1;
    while (low < high) {
      const middle = (low + high + 1) >> 1;
      if (this.pages[middle]!.first <= geometry) low = middle;
      else high = middle - 1;
    }
    return this.pages[low]!;
  }

  private reserve(added: BatchAddition): void {
    const counts = new Map<Page, { slots: number; drawing: number }>();
    for (let i = 0; i < added.instances; ++i) {
      const page = this.pageWith(added.geometryOf[i]!);
      const count = counts.get(page) ?? { slots: 0, drawing: 0 };
      counts.set(page, count);
      count.slots += 1;
      if (!this.follows(added, i)) count.drawing += 1;
    }
    for (const [page, { slots, drawing }] of counts) page.reserve(slots, drawing);
    const needed = this.instances + added.instances;
    if (needed <= this.slotOf.length) return;
    const room = Math.max(needed, Math.ceil(this.slotOf.length * 1.5));
    this.pageOf = grown(this.pageOf, new Uint16Array(room));
    this.slotOf = grown(this.slotOf, new Uint32Array(room));
    if (!this.isLines) this.boxes = grown(this.boxes, new Float32Array(6 * room));
  }
}

function grown<Kind extends Uint16Array | Uint32Array | Float32Array>(old: Kind, room: Kind): Kind {
  room.set(old);
  return room;
}

function geometryOf(geometries: BatchAddition["geometries"], which: number,
  { points, indices }: Room, point: number, index: number): BufferGeometry {
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
