import { Vector3 } from "three";
import type { Camera } from "./camera.js";

/** What the viewer does with a pointer besides moving the camera. */
export interface PointerTasks {
  click(x: number, y: number, adds: boolean): void;
  doubleClick(x: number, y: number): void;
  hover(x: number, y: number): void;
  leave(): void;
  /** What stands at a point, for zooming to it and turning around it. */
  pointAt(x: number, y: number): Vector3 | null;
}

/** Less than this many pixels is no drag. */
const clickReach = 5;
const turnPerPixel = 0.006;

/** Mouse, touch and keys that move the camera. */
export class Controls {
  isWalking = false;
  private readonly pointers = new Map<number, { x: number; y: number }>();
  private start: { x: number; y: number } | null = null;
  private readonly held = new Set<string>();
  private last = 0;

  constructor(
    private readonly canvas: HTMLCanvasElement,
    private readonly camera: Camera,
    private readonly tasks: PointerTasks,
  ) {
    canvas.addEventListener("pointerdown", (event) => this.down(event));
    canvas.addEventListener("pointermove", (event) => this.move(event));
    canvas.addEventListener("pointerup", (event) => this.up(event));
    canvas.addEventListener("pointercancel", (event) => this.pointers.delete(event.pointerId));
    canvas.addEventListener("pointerleave", () => tasks.leave());
    canvas.addEventListener("dblclick", (event) => tasks.doubleClick(event.offsetX, event.offsetY));
    canvas.addEventListener("contextmenu", (event) => event.preventDefault());
    canvas.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
    canvas.addEventListener("keydown", (event) => this.key(event));
    canvas.addEventListener("keyup", (event) => this.held.delete(event.key.toLowerCase()));
    canvas.addEventListener("blur", () => this.held.clear());
  }

  private down(event: PointerEvent): void {
    this.canvas.setPointerCapture(event.pointerId);
    this.pointers.set(event.pointerId, { x: event.offsetX, y: event.offsetY });
    this.start = this.pointers.size === 1 ? { x: event.offsetX, y: event.offsetY } : null;
    this.canvas.focus({ preventScroll: true });
  }

  private move(event: PointerEvent): void {
    const { offsetX: x, offsetY: y } = event;
    const before = this.pointers.get(event.pointerId);
    if (before === undefined) {
      if (event.pointerType === "mouse") this.tasks.hover(x, y);
      return;
    }
    if (this.start && Math.hypot(x - this.start.x, y - this.start.y) < clickReach) return;
    this.start = null;
    const height = this.canvas.clientHeight;
    const right = x - before.x, down = y - before.y;
    if (this.pointers.size === 2) {
      this.pinch(event.pointerId, before, { x, y });
    } else if (event.buttons & 6 || event.shiftKey) {
      this.camera.pan(-right / height, down / height);
    } else if (this.isWalking) {
      this.camera.look(-right * turnPerPixel / 2, -down * turnPerPixel / 2);
    } else {
      this.camera.orbit(-right * turnPerPixel, down * turnPerPixel);
    }
    this.pointers.set(event.pointerId, { x, y });
  }

  /** Two fingers: what is between them stays there. */
  private pinch(id: number, before: { x: number; y: number }, now: { x: number; y: number }): void {
    const other = [...this.pointers].find(([each]) => each !== id)![1];
    const apart = (at: { x: number; y: number }) => Math.hypot(at.x - other.x, at.y - other.y);
    const height = this.canvas.clientHeight;
    this.camera.pan(-(now.x - before.x) / 2 / height, (now.y - before.y) / 2 / height);
    if (apart(now) > 10) this.camera.zoom(apart(before) / apart(now));
  }

  private up(event: PointerEvent): void {
    this.pointers.delete(event.pointerId);
    if (this.start === null || event.button > 0) return;
    this.tasks.click(event.offsetX, event.offsetY, event.ctrlKey || event.metaKey);
    this.start = null;
  }

  private wheel(event: WheelEvent): void {
    event.preventDefault();
    const steps = Math.max(-3, Math.min(3, event.deltaY / (event.deltaMode === 0 ? 100 : 3)));
    if (this.isWalking) this.camera.walk(-steps * 0.5, 0, 0);
    else {
      const point = this.tasks.pointAt(event.offsetX, event.offsetY);
      this.camera.zoom(1.2 ** steps, point ?? undefined);
    }
  }

  private key(event: KeyboardEvent): void {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const key = event.key.toLowerCase();
    const step = 0.08;
    if (this.isWalking && /^([wasdqe]|arrow.*)$/.test(key)) {
      this.held.add(key);
      if (this.held.size === 1) {
        this.last = performance.now();
        requestAnimationFrame(() => this.stride());
      }
    } else if (key.startsWith("arrow")) {
      const right = Number(key === "arrowright") - Number(key === "arrowleft");
      const up = Number(key === "arrowup") - Number(key === "arrowdown");
      if (event.shiftKey) this.camera.pan(right * step, up * step);
      else this.camera.orbit(right * step, up * step);
    } else if (key === "+" || key === "=") this.camera.zoom(1 / 1.2);
    else if (key === "-") this.camera.zoom(1.2);
    else return;
    event.preventDefault();
    event.stopPropagation();
  }

  /** Goes on as long as keys are held. */
  private stride(): void {
    const now = performance.now();
    const seconds = Math.min((now - this.last) / 1000, 0.1);
    this.last = now;
    const has = (...keys: string[]) => Number(keys.some((each) => this.held.has(each)));
    const metres = 3 * seconds;
    this.camera.walk((has("w", "arrowup") - has("s", "arrowdown")) * metres,
      (has("d") - has("a")) * metres, (has("e") - has("q")) * metres);
    this.camera.look((has("arrowright") - has("arrowleft")) * seconds, 0);
    if (this.held.size > 0) requestAnimationFrame(() => this.stride());
  }
}
