import { Vector3 } from "three";
import type { Camera } from "./camera.js";
import { byId, make } from "./dom.js";
import type { Drawing } from "./drawing.js";
import type { Files } from "./files.js";
import type { Model, Ref } from "./model.js";
import type { Selection } from "./selection.js";
import type { StoreySlider } from "./storeys.js";

/** Above the floor, in metres: through windows and doors. */
const cutHeight = 1.2;
const eyeHeight = 1.6;
const clickReach = 8;

interface Drawn {
  model: Model;
  floor: number;
  lines: Float32Array;
  elementOf: Uint32Array;
}

/** The plan of the storey in use, beside the model: it shows where the viewer stands, selects what is
 * clicked, and takes the viewer where it is clicked twice. */
export class PlanView {
  private readonly card = byId("plan");
  private readonly canvas = make("canvas", { tabIndex: -1, "aria-label": "Plan of the floor" });
  private readonly title = make("h2", {});
  private drawn: Drawn[] = [];
  private turn = 0;
  /** From metres to pixels: pixels a metre, and where the origin is. */
  private scale = 1;
  private shift: [number, number] = [0, 0];

  constructor(
    private readonly parts: {
      camera: Camera; drawing: Drawing; files: Files; selection: Selection; storeys: StoreySlider;
    },
  ) {
    this.card.append(this.title, this.canvas);
    parts.storeys.changed.add(() => void this.read());
    parts.camera.changed.add(() => this.draw());
    parts.selection.changed.add(() => this.draw());
    this.canvas.addEventListener("click", (event) => {
      const found = this.nearest(event.offsetX, event.offsetY);
      parts.selection.select(found ? [found] : [], event.ctrlKey);
    });
    this.canvas.addEventListener("dblclick", (event) => this.go(event.offsetX, event.offsetY));
  }

  get isShown(): boolean {
    return !this.card.hidden;
  }
  toggle(): void {
    this.card.hidden = !this.card.hidden;
    void this.read();
  }

  /** The storey that the slider is at, else the lowest that has more than a few elements. */
  private elevation(): number | null {
    const { storeys, selection } = this.parts;
    if (storeys.level) return storeys.level.elevation;
    const levels = selection.models.flatMap((model) => model.levels);
    const least = Math.max(...levels.map(({ elements }) => elements), 0) / 3;
    const full = levels.filter(({ elements }) => elements >= least);
    return full.length > 0 ? Math.min(...full.map(({ elevation }) => elevation)) : null;
  }

  private async read(): Promise<void> {
    const turn = ++this.turn;
    const at = this.elevation();
    if (!this.isShown) return;
    const drawn: Drawn[] = [];
    let name = "";
    for (const model of this.parts.selection.models) {
      for (const [floor, level] of model.levels.entries()) {
        if (at === null || Math.abs(level.elevation - at) > 1e-3) continue;
        name ||= level.name;
        const { lines, elementOf } = await model.link.ask("plan", floor, at + cutHeight);
        if (turn !== this.turn) return;
        drawn.push({ model, floor, lines, elementOf });
      }
    }
    this.drawn = drawn;
    this.title.textContent = name || "Plan";
    this.frame();
    this.draw();
  }

  /** Chooses the scale by which all lines are within the card. */
  private frame(): void {
    const low = [Infinity, Infinity], high = [-Infinity, -Infinity];
    for (const { lines } of this.drawn) {
      for (let i = 0; i < lines.length; ++i) {
        low[i % 2] = Math.min(low[i % 2]!, lines[i]!);
        high[i % 2] = Math.max(high[i % 2]!, lines[i]!);
      }
    }
    const ratio = Math.min(devicePixelRatio, 2);
    const { clientWidth: width, clientHeight: height } = this.canvas;
    this.canvas.width = width * ratio;
    this.canvas.height = height * ratio;
    const size = [high[0]! - low[0]!, high[1]! - low[1]!] as const;
    this.scale = Math.min((width - 20) / Math.max(size[0], 1), (height - 20) / Math.max(size[1], 1));
    this.shift = [
      width / 2 - ((low[0]! + high[0]!) / 2) * this.scale,
      height / 2 + ((low[1]! + high[1]!) / 2) * this.scale,
    ];
  }

  private draw(): void {
    if (!this.isShown) return;
    const pen = this.canvas.getContext("2d")!;
    const style = getComputedStyle(document.documentElement);
    const ratio = Math.min(devicePixelRatio, 2);
    pen.setTransform(ratio, 0, 0, ratio, 0, 0);
    pen.clearRect(0, 0, this.canvas.width, this.canvas.height);
    for (const isSelected of [false, true]) {
      pen.strokeStyle = style.getPropertyValue(isSelected ? "--accent" : "--ink");
      pen.lineWidth = isSelected ? 2.5 : 1;
      pen.beginPath();
      for (const each of this.drawn) this.trace(pen, each, isSelected);
      pen.stroke();
    }
    this.drawViewer(pen, style.getPropertyValue("--accent"));
  }

  private trace(pen: CanvasRenderingContext2D, { model, floor, lines, elementOf }: Drawn,
    wantsSelected: boolean): void {
    for (let i = 0; i < elementOf.length; ++i) {
      const element = model.at(floor, elementOf[i]!);
      if (this.parts.selection.has({ model, element }) !== wantsSelected) continue;
      pen.moveTo(...this.seen(lines[4 * i]!, lines[4 * i + 1]!));
      pen.lineTo(...this.seen(lines[4 * i + 2]!, lines[4 * i + 3]!));
    }
  }

  /** Where the viewer stands and looks. */
  private drawViewer(pen: CanvasRenderingContext2D, colour: string): void {
    const { eye } = this.parts.camera;
    const [x, y] = this.seen(eye.x, eye.y);
    const { yaw } = this.parts.camera.viewpoint;
    pen.fillStyle = colour;
    pen.beginPath();
    pen.arc(x, y, 4, 0, 2 * Math.PI);
    pen.fill();
    pen.globalAlpha = 0.35;
    pen.beginPath();
    pen.moveTo(x, y);
    pen.arc(x, y, 26, yaw - Math.PI / 2 - 0.5, yaw - Math.PI / 2 + 0.5);
    pen.fill();
    pen.globalAlpha = 1;
  }

  private seen(x: number, y: number): [number, number] {
    return [this.shift[0] + x * this.scale, this.shift[1] - y * this.scale];
  }

  private nearest(x: number, y: number): Ref | null {
    let least = clickReach, found: Ref | null = null;
    for (const { model, floor, lines, elementOf } of this.drawn) {
      for (let i = 0; i < elementOf.length; ++i) {
        const [ax, ay] = this.seen(lines[4 * i]!, lines[4 * i + 1]!);
        const [bx, by] = this.seen(lines[4 * i + 2]!, lines[4 * i + 3]!);
        const length = (bx - ax) ** 2 + (by - ay) ** 2;
        const along = ((x - ax) * (bx - ax) + (y - ay) * (by - ay)) / Math.max(length, 1e-9);
        const share = Math.min(Math.max(along, 0), 1);
        const away = Math.hypot(ax + share * (bx - ax) - x, ay + share * (by - ay) - y);
        if (away < least) {
          least = away;
          found = { model, element: model.at(floor, elementOf[i]!) };
        }
      }
    }
    return found;
  }

  private go(x: number, y: number): void {
    const { camera, files } = this.parts;
    const ground = (this.elevation() ?? 0) - files.drawingOrigin[2]!;
    camera.stand(new Vector3((x - this.shift[0]) / this.scale, (this.shift[1] - y) / this.scale,
      ground + eyeHeight));
  }
}
