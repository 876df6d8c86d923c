import { Vector3 } from "three";
import { type Bodies, faceAt, snapped } from "./bodies.js";
import type { Camera } from "./camera.js";
import { lengthText, make, readable } from "./dom.js";
import type { Drawing } from "./drawing.js";
import type { Mark, Marks } from "./marks.js";
import type { Options } from "./options.js";
import type { Hit } from "./picking.js";

const modes = {
  distance: "Two points",
  height: "Two points, the vertical between them",
  area: "The corners of an area; the first once more ends it",
  face: "A face",
} as const;
export type MeasureMode = keyof typeof modes;

/** Corners and edges draw a point that comes as near as this, in pixels. */
const snapPixels = 14;

/** Measures between points that are clicked. */
export class Measure {
  private mode: MeasureMode = "distance";
  private points: Vector3[] = [];
  private open: Mark | null = null;
  private result = "";
  private last: Promise<void> = Promise.resolve();

  constructor(
    private readonly bodies: Bodies,
    private readonly marks: Marks,
    private readonly camera: Camera,
    private readonly drawing: Drawing,
    private readonly options: Options,
  ) {}

  get isActive(): boolean {
    return this.options.isOpen("measure");
  }

  start(mode: MeasureMode = this.mode): void {
    this.mode = mode;
    this.abandon();
    this.show();
  }

  /** Shows where a click would set a point. */
  async hover(hit: Hit | null): Promise<void> {
    this.marks.cursor = hit && (await this.snap(hit));
    this.drawing.invalidate();
  }

  /** Takes clicks in their order, though the bodies that they need may come in another. */
  click(hit: Hit | null): Promise<void> {
    if (hit !== null) this.last = this.last.catch(() => undefined).then(() => this.take(hit));
    return this.last;
  }

  private async take(hit: Hit): Promise<void> {
    if (this.mode === "face") return this.measureFace(hit);
    const { point } = await this.snap(hit);
    const first = this.points[0];
    const closes = this.mode === "area" && this.points.length > 2 && first!.distanceTo(point) < 1e-6;
    if (!closes) this.points.push(point);
    if (this.mode === "area") this.drawArea(closes);
    else if (this.points.length === 2) this.drawSpan();
    else this.redraw([point], false, "");
    if (closes || (this.mode !== "area" && this.points.length === 2)) {
      this.open = null;
      this.points = [];
    }
    this.show();
  }

  clear(): void {
    this.marks.marks.length = 0;
    this.marks.cursor = null;
    this.open = null;
    this.points = [];
    this.result = "";
    this.drawing.invalidate();
  }

  private async snap(hit: Hit): Promise<{ point: Vector3; snap: "corner" | "edge" | "face" }> {
    const eye = this.camera.eye;
    const away = this.camera.viewpoint.isOrthographic
      ? this.camera.viewpoint.distance : eye.distanceTo(hit.point);
    const perPixel = (this.camera.heightAtTarget() / this.camera.viewpoint.distance) * away
      / this.drawing.canvas.clientHeight;
    return snapped(await this.bodies.of(hit), hit.point, snapPixels * perPixel);
  }

  private async measureFace(hit: Hit): Promise<void> {
    const face = faceAt(await this.bodies.of(hit), hit.point);
    if (face === null) return;
    this.result = `Face: ${readable(face.area)} m²`;
    this.redraw([hit.point], false, `${readable(face.area)} m²`);
    this.open = null;
    this.show();
  }

  private drawSpan(): void {
    const [from, to] = this.points as [Vector3, Vector3];
    const height = Math.abs(to.z - from.z);
    const level = Math.hypot(to.x - from.x, to.y - from.y);
    if (this.mode === "height") {
      this.result = `Height: ${lengthText(height)}`;
      this.redraw([from, new Vector3(from.x, from.y, to.z), to], false, lengthText(height));
      return;
    }
    const length = from.distanceTo(to);
    this.result = `Distance: ${lengthText(length)}; level ${lengthText(level)}, `
      + `height ${lengthText(height)}`;
    this.redraw([from, to], false, lengthText(length));
  }

  private drawArea(isClosed: boolean): void {
    const { points } = this;
    const sum = new Vector3();
    let around = 0;
    points.forEach((point, i) => {
      const next = points[(i + 1) % points.length]!;
      sum.add(point.clone().sub(points[0]!).cross(next.clone().sub(points[0]!)));
      around += point.distanceTo(next);
    });
    const area = sum.length() / 2;
    if (points.length > 2) {
      this.result = `Area: ${readable(area)} m²; around it ${lengthText(around)}`;
    }
    const text = points.length > 2 ? `${readable(area)} m²` : "";
    this.redraw(points.slice(), points.length > 2, isClosed ? text : text && `${text} …`);
  }

  /** Puts the open mark's place what it is now. */
  private redraw(points: Vector3[], isArea: boolean, text: string): void {
    const { marks } = this.marks;
    if (this.open) marks.splice(marks.indexOf(this.open), 1);
    this.open = { points, isArea, text };
    marks.push(this.open);
    this.drawing.invalidate();
  }

  private abandon(): void {
    const { marks } = this.marks;
    if (this.open) marks.splice(marks.indexOf(this.open), 1);
    this.open = null;
    this.points = [];
    this.drawing.invalidate();
  }

  private show(): void {
    const buttons = (Object.keys(modes) as MeasureMode[]).map((mode) =>
      make("button", { "aria-pressed": mode === this.mode, onclick: () => this.start(mode) },
        mode[0]!.toUpperCase() + mode.slice(1)));
    this.options.open("measure", "Measure", [
      make("div", { className: "buttons" }, ...buttons),
      make("p", {}, `Click: ${modes[this.mode].toLowerCase()}.`),
      make("p", { id: "measured" }, make("strong", {}, this.result)),
      make("button", { onclick: () => { this.clear(); this.show(); } }, "Clear"),
    ], () => {
      this.abandon();
      this.marks.cursor = null;
      this.drawing.invalidate();
    });
  }
}
