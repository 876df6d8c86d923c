import {
  Box3, Color, DirectionalLight, Group, HemisphereLight,
  OrthographicCamera, type PerspectiveCamera, type Plane, Scene, WebGLRenderer,
} from "three";
import { Batch } from "./batch.js";
import { materials, solidAlpha } from "./materials.js";
import { type BatchName, type FloorPart, batchNames } from "./messages.js";
import type { Model, Shade } from "./model.js";

/** What the eye is told by colour alone is told by these. */
export const accent = 0xe86c1a; // a blue, red in the lowest byte
const edgeColour = { light: 0x3a322c, dark: 0x0e0c0a };

/** Drawn files: a solid, an edge and a glass batch each. */
interface Drawn {
  batches: Record<BatchName, Batch>;
}

const around = new Box3();
/** While parts arrive a frame is drawn when there is three times as much as in the last: all of them
 * together cost little more than the last one then, however slow the card is. */
const growth = 3;
/** Where there are more instances, edges are drawn when nothing has changed for so many milliseconds:
 * they cost about as much as the rest. */
const manyEdges = 20_000;
const restPause = 400;
/** Sees nothing: it is far from every model. */
const nowhere = new OrthographicCamera(-1, 1, 1, -1, 1, 2);
nowhere.position.setScalar(1e9);

/** Draws models, whenever something has changed. Z is up; coordinates are relative to an origin. */
export class Drawing {
  readonly renderer: WebGLRenderer;
  readonly scene = new Scene();
  /** What lies over the model: measures, section frames. */
  readonly overlay = new Group();
  shadeOf: (model: Model, element: number) => Shade =
    () => ({ tint: null, isSelected: false, isGhost: false });
  /** Runs ahead of each frame. */
  readonly beforeFrame = new Set<() => void>();

  private kept: Plane[] = [];
  private readonly drawn = new Map<Model, Drawn>();
  private readonly materials = materials();
  private readonly light = new DirectionalLight(0xffffff, 1.6);
  private readonly sky = new HemisphereLight(0xffffff, 0xcfcac2, 2.5);
  private isDark = false;
  private isAsked = false;
  /** Something has changed behind the last frame. */
  private isStale = false;
  /** Edges come with the next frame, however many they are. */
  private isLast = false;
  private instances = 0;
  /** Instances in the last frame. */
  private drawnInstances = 0;
  private rest: ReturnType<typeof setTimeout> | undefined;
  private showsEdges = true;
  private hasGhosts = false;

  constructor(
    readonly canvas: HTMLCanvasElement,
    private readonly camera: () => PerspectiveCamera | OrthographicCamera,
  ) {
    this.renderer = new WebGLRenderer({ canvas, antialias: true, stencil: true });
    this.renderer.autoClear = false;
    this.renderer.localClippingEnabled = true;
    this.renderer.setPixelRatio(Math.min(devicePixelRatio, 2));
    this.scene.add(this.sky, this.light, this.light.target, this.overlay);
    this.scene.matrixWorldAutoUpdate = true;
    new ResizeObserver(() => this.resize()).observe(canvas.parentElement!);
    this.resize();
  }

  /** Half spaces, of which what lies in all of them is drawn. */
  get planes(): Plane[] {
    return this.kept;
  }
  set planes(planes: Plane[]) {
    this.kept = planes;
    this.refreshAll();
  }

  /** Draws a frame soon. */
  invalidate(): void {
    this.isStale = true;
    if (this.isAsked) return;
    this.isAsked = true;
    requestAnimationFrame(() => {
      this.isAsked = false;
      if (!this.isStale) return;
      const waits = this.showsEdges && this.instances > manyEdges && !this.isLast;
      this.frame(this.showsEdges && !waits);
      if (waits) this.awaitRest();
    });
  }

  /** Draws a frame with its edges when nothing happens for a while. */
  private awaitRest(): void {
    this.endRest();
    this.rest = setTimeout(() => requestAnimationFrame(() => this.frame()), restPause);
  }
  private endRest(): void {
    clearTimeout(this.rest);
    this.rest = undefined;
  }

  add(model: Model): void {
    const batches = {
      solid: new Batch(this.materials.solid, false),
      edges: new Batch(this.materials.edges, true),
      glass: new Batch(this.materials.glass, false),
    };
    this.drawn.set(model, { batches });
    this.scene.add(...Object.values(batches));
  }

  remove(model: Model): void {
    for (const batch of Object.values(this.drawn.get(model)?.batches ?? {})) {
      this.scene.remove(batch);
      this.instances -= batch.instanceCount;
      batch.dispose();
    }
    this.drawn.delete(model);
    this.invalidate();
  }

  /** Draws a part of the model's last floor, and answers its elements. */
  addPart(model: Model, part: FloorPart): Set<number> {
    const { batches } = this.drawn.get(model)!;
    const { begin } = model.floors.at(-1)!;
    const elements = new Set<number>();
    for (const name of batchNames) {
      const added = part.batches[name];
      batches[name].addAll(added);
      for (let i = 0; i < added.instances; ++i) {
        const element = begin + added.elementOf[i]!;
        model.instances[name].add(element, added.colours[i]!);
        elements.add(element);
      }
      this.instances += added.instances;
    }
    for (const element of elements) this.refresh(model, element);
    this.send(model);
    if (this.rest !== undefined) this.awaitRest();
    if (this.instances >= growth * this.drawnInstances) this.invalidate();
    return elements;
  }

  /** Nothing more comes. */
  finish(model: Model): void {
    for (const batch of Object.values(this.drawn.get(model)!.batches)) batch.finish();
    this.send(model);
    this.isLast = true;
    this.invalidate();
  }

  /** Brings what is full to the graphics card, so that the page need not keep it: a view of nothing
   * draws nothing, and sends what it would draw. */
  private send(model: Model): void {
    const { batches } = this.drawn.get(model)!;
    const pages = Object.values(batches).flatMap((batch) => batch.takeUnsent());
    if (pages.length === 0) return;
    const { solid, edges, glass } = this.materials;
    for (const page of pages) {
      page.frustumCulled = false;
      page.cullEach(true);
    }
    this.pass(nowhere, { solid, edges, glass });
    for (const page of pages) {
      page.seal();
      page.frustumCulled = true;
      page.cullEach(false);
    }
  }

  /** Shows an element as its model and `shadeOf` have it now. */
  refresh(model: Model, element: number): void {
    const { batches } = this.drawn.get(model)!;
    const shade = this.shadeOf(model, element);
    const isSeen = model.hidden[element] === 0;
    if (shade.isGhost) this.hasGhosts = true;
    const edge = shade.isSelected ? accent : this.isDark ? edgeColour.dark : edgeColour.light;
    for (const { batch: name, id } of model.instancesOf(element)) {
      const batch = batches[name];
      if (!isSeen) {
        batch.hide(id);
        continue;
      }
      const own = model.instances[name].colours[id]!;
      const rgb = shade.isSelected ? mixed(shade.tint ?? own, accent, 0.72) : shade.tint ?? own;
      if (name === "edges") {
        batch.paint(id, edge, shade.isGhost ? 0.14 : shade.isSelected ? 1 : 0.62);
      } else if (name === "solid") {
        const whole = this.isCut(batch, id) ? solidAlpha.cut : solidAlpha.whole;
        batch.paint(id, rgb, shade.isGhost ? solidAlpha.ghost : whole);
      } else {
        const alpha = Math.max((own >>> 24) / 255, 0.16);
        batch.paint(id, rgb, shade.isGhost ? 0.05 : shade.isSelected ? Math.max(alpha, 0.6) : alpha);
      }
    }
  }

  refreshAll(): void {
    this.hasGhosts = false;
    for (const model of this.drawn.keys()) {
      for (let element = 0; element < model.elementCount; ++element) this.refresh(model, element);
    }
    this.invalidate();
  }

  /** Whether a plane may open an instance; what none reaches has no inside to fill, even where its
   * author turned its faces this way and that. */
  private isCut(batch: Batch, instance: number): boolean {
    if (this.planes.length === 0) return false;
    around.makeEmpty();
    batch.enclose(instance, around);
    return this.planes.some((plane) => plane.intersectsBox(around));
  }

  setDark(isDark: boolean): void {
    this.isDark = isDark;
    this.restoreBackground();
    this.sky.intensity = isDark ? 2.1 : 2.5;
    this.refreshAll();
  }
  /** The renderer clears with the colour that its last target asked for, unless it is told anew. */
  restoreBackground(): void {
    this.renderer.setClearColor(new Color(this.isDark ? 0x1b1e22 : 0xeceef0));
  }
  setEdges(shows: boolean): void {
    this.showsEdges = shows;
    this.invalidate();
  }

  /** Around what is shown of some elements, or of all; empty where nothing is. */
  boxOf(wanted?: Iterable<{ model: Model; element: number }>): Box3 {
    const box = new Box3();
    const take = (model: Model, element: number) => {
      const { batches } = this.drawn.get(model)!;
      for (const { batch, id } of model.instancesOf(element)) batches[batch].enclose(id, box);
    };
    if (wanted) {
      for (const { model, element } of wanted) take(model, element);
      return box;
    }
    for (const model of this.drawn.keys()) {
      for (let element = 0; element < model.elementCount; ++element) {
        if (model.hidden[element] === 0) take(model, element);
      }
    }
    return box;
  }

  /** Draws now; `at` another camera's view, for a picture. */
  frame(withEdges = this.showsEdges): void {
    for (const act of this.beforeFrame) act();
    const camera = this.camera();
    this.light.position.copy(camera.position);
    // Over the viewer's left shoulder.
    const { elements: m } = camera.matrixWorld;
    this.light.position.set(-0.5 * m[0]! + 0.6 * m[4]! + m[8]!, -0.5 * m[1]! + 0.6 * m[5]! + m[9]!,
      -0.5 * m[2]! + 0.6 * m[6]! + m[10]!);
    this.render(camera, withEdges);
  }

  /** Batches and the models that they show, for what draws them in its own way. */
  *batches(name: BatchName): Generator<[Model, Batch]> {
    for (const [model, { batches }] of this.drawn) yield [model, batches[name]];
  }

  private render(camera: PerspectiveCamera | OrthographicCamera, withEdges: boolean): void {
    const { renderer } = this;
    this.drawnInstances = this.instances;
    this.isStale = false;
    if (withEdges) {
      this.isLast = false;
      this.endRest();
    }
    const isCut = this.planes.length > 0;
    const { solid, solidCut, cap, edges, ghost, glass } = this.materials;
    for (const each of [solid, solidCut, cap, edges, ghost, glass]) each.clippingPlanes = this.planes;
    edges.stencilWrite = isCut;
    renderer.clear();
    // What a plane opens shows the insides of its faces: they are filled, and edges behind them kept
    // away by the stencil.
    if (isCut) this.pass(camera, { solid: cap });
    this.pass(camera, { solid: isCut ? solidCut : solid });
    if (withEdges) this.pass(camera, { edges });
    if (this.hasGhosts) this.pass(camera, { solid: ghost });
    this.pass(camera, { glass }, true);
  }

  /** Draws batches with the materials named, and nothing else but, last of all, the overlay. */
  private pass(camera: PerspectiveCamera | OrthographicCamera,
    shown: Partial<Record<BatchName, Batch["material"]>>, withOverlay = false): void {
    for (const { batches } of this.drawn.values()) {
      for (const name of batchNames) {
        const batch = batches[name];
        const material = shown[name];
        batch.visible = material !== undefined && batch.instanceCount > 0;
        if (material !== undefined) batch.material = material;
      }
    }
    this.overlay.visible = withOverlay;
    this.renderer.render(this.scene, camera);
  }

  private resize(): void {
    const { clientWidth, clientHeight } = this.canvas.parentElement!;
    this.renderer.setSize(clientWidth, clientHeight, false);
    this.invalidate();
  }
}

function mixed(from: number, to: number, share: number): number {
  let result = 0;
  for (const shift of [0, 8, 16]) {
    const a = (from >>> shift) & 255, b = (to >>> shift) & 255;
    result |= Math.round(a + (b - a) * share) << shift;
  }
  return result;
}
