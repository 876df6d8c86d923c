import { type OrthographicCamera, type PerspectiveCamera, Vector3 } from "three";
import { byId } from "./dom.js";
import type { Snap } from "./bodies.js";

/** Points in the drawing's coordinates, joined by lines or around an area, and what is said there. */
export interface Mark {
  points: Vector3[];
  isArea: boolean;
  text: string;
}

/** Lines and words over the picture, as sharp and as legible at every distance. */
export class Marks {
  readonly marks: Mark[] = [];
  /** Where the pointer would set a point. */
  cursor: { point: Vector3; snap: Snap } | null = null;
  private readonly svg = byId("marks");

  constructor(private readonly camera: () => PerspectiveCamera | OrthographicCamera) {}

  draw(): void {
    const parts: SVGElement[] = [];
    for (const { points, isArea, text } of this.marks) {
      const seen = points.map((point) => this.project(point));
      if (seen.some((each) => each === null)) continue;
      const at = seen as [number, number][];
      if (isArea && at.length > 2) parts.push(shape("polygon", { points: at.join(" ") }));
      else {
        for (let i = 1; i < at.length; ++i) {
          const [x1, y1] = at[i - 1]!, [x2, y2] = at[i]!;
          parts.push(shape("line", { x1, y1, x2, y2 }));
        }
      }
      for (const [cx, cy] of at) parts.push(shape("circle", { cx, cy, r: 4 }));
      const middle = [0, 1].map((axis) =>
        at.reduce((sum, each) => sum + each[axis]!, 0) / at.length);
      const label = shape("text", { x: middle[0]!, y: middle[1]! - 8 });
      label.textContent = text;
      if (text !== "") parts.push(label);
    }
    const cursor = this.cursor && this.project(this.cursor.point);
    if (cursor) {
      const r = { corner: 8, edge: 6, face: 3 }[this.cursor!.snap];
      parts.push(shape("circle", { cx: cursor[0], cy: cursor[1], r, class: "snap" }));
    }
    this.svg.replaceChildren(...parts);
  }

  /** Where on the canvas a point is seen; null where it is behind the viewer. */
  project(point: Vector3): [number, number] | null {
    const seen = point.clone().project(this.camera());
    if (seen.z > 1 || seen.z < -1) return null;
    return [
      ((seen.x + 1) / 2) * this.svg.clientWidth,
      ((1 - seen.y) / 2) * this.svg.clientHeight,
    ];
  }
}

function shape(name: string, attributes: Record<string, string | number>): SVGElement {
  const made = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, String(value));
  return made;
}
