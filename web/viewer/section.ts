import { Box3, Plane, Vector3 } from "three";
import { type Bodies, faceAt } from "./bodies.js";
import { lengthText, make } from "./dom.js";
import type { Drawing } from "./drawing.js";
import type { Options } from "./options.js";
import type { Hit } from "./picking.js";

const axes = ["x", "y", "z"] as const;

/** What is kept of the model: a box, and what lies behind a plane. */
export interface Cut {
  /** Lower and upper limits along X, Y and Z in the drawing's coordinates; null keeps all. */
  limits: (number | null)[];
  plane: HalfSpace | null;
  /** Further planes, that came with a view. */
  more: HalfSpace[];
}

/** What lies where `normal` times a point and `constant` are not below 0 together. */
interface HalfSpace {
  normal: [number, number, number];
  constant: number;
}

const whole = (): Cut => ({ limits: [null, null, null, null, null, null], plane: null, more: [] });

/** Cuts the model open along planes and a box. */
export class Section {
  cut: Cut = whole();
  private takesFace = false;
  private reach = new Box3();

  constructor(
    private readonly bodies: Bodies,
    private readonly drawing: Drawing,
    private readonly options: Options,
  ) {}

  get isCutting(): boolean {
    const { plane, more, limits } = this.cut;
    return plane !== null || more.length > 0 || limits.some((each) => each !== null);
  }
  /** Whether the next click names a face to cut along. */
  get wantsFace(): boolean {
    return this.takesFace && this.options.isOpen("section");
  }

  start(): void {
    this.reach = this.drawing.boxOf().expandByScalar(0.01);
    this.show();
  }

  /** Cuts along the face that was clicked. */
  async takeFace(hit: Hit): Promise<void> {
    const face = faceAt(await this.bodies.of(hit), hit.point);
    this.takesFace = false;
    if (face) {
      const normal = face.normal.clone().negate();
      // A little in front of the face, so that it is opened and not grazed.
      const constant = -normal.dot(hit.point) - 0.01;
      this.cut.plane = { normal: normal.toArray(), constant };
    }
    this.apply();
    this.show();
  }

  set(cut: Cut): void {
    this.cut = cut;
    this.apply();
  }
  clear(): void {
    this.set(whole());
  }
  /** Keeps what lies on the side of `normal`, besides what is kept already. */
  addPlane(normal: Vector3, constant: number): void {
    const added = { normal: normal.toArray(), constant };
    if (this.cut.plane) this.cut.more.push(added);
    else this.cut.plane = added;
    this.apply();
  }

  private apply(): void {
    const planes: Plane[] = [];
    this.cut.limits.forEach((limit, side) => {
      if (limit === null) return;
      const isUpper = side % 2 === 1;
      const normal = new Vector3();
      normal[axes[side >> 1]!] = isUpper ? -1 : 1;
      planes.push(new Plane(normal, isUpper ? limit : -limit));
    });
    const { plane, more } = this.cut;
    for (const { normal, constant } of plane ? [plane, ...more] : more) {
      planes.push(new Plane(new Vector3(...normal), constant));
    }
    this.drawing.planes = planes;
  }

  private slider(side: number): HTMLElement {
    const axis = axes[side >> 1]!;
    const isUpper = side % 2 === 1;
    const low = this.reach.min[axis], high = this.reach.max[axis];
    const rim = isUpper ? high : low;
    const name = `${axis.toUpperCase()} ${isUpper ? "to" : "from"}`;
    const value = make("output", {}, lengthText((this.cut.limits[side] ?? rim) - low));
    const input = make("input", {
      type: "range", min: String(low), max: String(high), step: String((high - low) / 500 || 1),
      value: String(this.cut.limits[side] ?? rim), "aria-label": name,
      oninput: () => {
        const at = Number(input.value);
        this.cut.limits[side] = Math.abs(at - rim) < (high - low) / 1000 ? null : at;
        value.textContent = lengthText(at - low);
        this.apply();
      },
    });
    return make("label", { className: "slider" }, name, input, value);
  }

  private planeControls(): HTMLElement[] {
    const { plane } = this.cut;
    const pick = make("button", {
      "aria-pressed": this.takesFace,
      onclick: () => { this.takesFace = !this.takesFace; this.show(); },
    }, this.takesFace ? "Click a face …" : "By a face");
    if (plane === null) return [pick];
    const base = plane.constant;
    const span = this.reach.getSize(new Vector3()).length();
    const input = make("input", {
      type: "range", min: String(-span), max: String(span), step: String(span / 500), value: "0",
      "aria-label": "Move the plane",
      oninput: () => { plane.constant = base + Number(input.value); this.apply(); },
    });
    const flip = make("button", {
      onclick: () => {
        plane.normal = plane.normal.map((each) => -each) as [number, number, number];
        plane.constant = -plane.constant;
        this.apply();
        this.show();
      },
    }, "Turn round");
    return [make("div", { className: "buttons" }, pick, flip), input];
  }

  private show(): void {
    this.options.open("section", "Section", [
      ...[0, 1, 2, 3, 4, 5].map((side) => this.slider(side)),
      ...this.planeControls(),
      make("p", {}, make("button", { onclick: () => { this.clear(); this.show(); } }, "No section")),
    ]);
  }
}
