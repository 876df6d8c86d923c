import { Box3, Vector3 } from "three";
import { Bodies } from "./bodies.js";
import { Camera, type Direction, directions } from "./camera.js";
import { Compare } from "./compare.js";
import { Controls } from "./controls.js";
import { byId, canvasToDrawOn, copy, make, say } from "./dom.js";
import { Drawing } from "./drawing.js";
import { Exchange } from "./exchange.js";
import { Files } from "./files.js";
import { ColourBy } from "./legend.js";
import { Marks } from "./marks.js";
import { Measure } from "./measure.js";
import { Hidden, type Model, type Ref } from "./model.js";
import { Options } from "./options.js";
import { Panel } from "./panel.js";
import { Picking } from "./picking.js";
import { PlanView } from "./plan.js";
import { Search } from "./search.js";
import { Section } from "./section.js";
import { Selection } from "./selection.js";
import { StoreySlider } from "./storeys.js";
import { Toolbar } from "./toolbar.js";
import { toolsOf } from "./tools.js";
import { Tree } from "./tree.js";
import { Views } from "./viewstate.js";
import { isRoom } from "./values.js";

/** How high eyes are above the ground, in metres. */
const eyeHeight = 1.6;

// Without WebGL 2 nothing below can be: the page says why instead of staying empty.
addEventListener("error", ({ message }) => say(message, 600));
const canvas = canvasToDrawOn(byId("canvas"));
canvas.addEventListener("webglcontextlost", () => {
  say("The graphics card let the picture go; loading the page anew brings it back.", 600);
});
const camera = new Camera();
const drawing = new Drawing(canvas, () => camera.current);
const selection = new Selection([], drawing);
const picking = new Picking(drawing, () => camera.current);
const files = new Files(selection, drawing);
const options = new Options();
const bodies = new Bodies();
const marks = new Marks(() => camera.current);
const measure = new Measure(bodies, marks, camera, drawing, options);
const section = new Section(bodies, drawing, options);
const storeys = new StoreySlider(selection);
const plan = new PlanView({ camera, drawing, files, selection, storeys });
const colourBy = new ColourBy(selection, options);
const compare = new Compare(selection, options, () => files.ask());
const panel = new Panel();
const tree = new Tree(selection, choose, (model) => files.close(model));
new Search(selection, (refs, fits) => {
  selection.select(refs);
  if (fits && refs.length > 0) fit();
});

let showsRooms = false;
const rooms = {
  get: () => showsRooms,
  set(shows: boolean): void {
    showsRooms = shows;
    selection.hideWhere(Hidden.byLayer, (model, element) =>
      !shows && isRoom(model.className(element)));
  },
};
const views = new Views({ camera, files, selection, storeys, section, colourBy }, rooms);
const exchange = new Exchange({ camera, drawing, files, selection, section, views, options });

function choose(refs: Ref[], adds: boolean): void {
  selection.select(refs, adds);
}

function fit(direction?: Direction): void {
  const { refs } = selection;
  const box = drawing.boxOf(direction === undefined && refs.length > 0 ? refs : undefined);
  camera.fit(box, direction);
}

function click(x: number, y: number, adds: boolean): void {
  const hit = picking.at(x, y);
  if (section.wantsFace && hit) void section.takeFace(hit);
  else if (measure.isActive) {
    measure.click(hit).catch((error: unknown) => say(String(error)));
  } else {
    choose(hit ? [hit] : [], adds);
    if (hit) tree.reveal(hit);
  }
}

let hoverAt: [number, number] | null = null;
/** One hover a frame is enough. */
function hover(x: number, y: number): void {
  const waits = hoverAt !== null;
  hoverAt = [x, y];
  if (waits) return;
  requestAnimationFrame(() => {
    if (hoverAt === null) return;
    const hit = picking.at(...hoverAt);
    hoverAt = null;
    selection.hover(hit);
    if (measure.isActive) void measure.hover(hit);
  });
}

const controls = new Controls(canvas, camera, {
  click,
  doubleClick(x, y) {
    const hit = picking.at(x, y);
    if (hit === null || measure.isActive) return;
    if (controls.isWalking) {
      hit.point.z += eyeHeight;
      camera.stand(hit.point);
    } else camera.fit(drawing.boxOf([hit]));
  },
  hover,
  leave() {
    hoverAt = null;
    selection.hover(null);
  },
  pointAt: (x, y) => picking.at(x, y)?.point ?? null,
});

const toggleOf = (label: string, is: boolean, set: (is: boolean) => void): HTMLElement => {
  const box = make("input", { type: "checkbox", checked: is, onchange: () => set(box.checked) });
  return make("label", { style: "display:flex;gap:8px;align-items:center;margin:8px 0" }, box, label);
};

let isDark = matchMedia("(prefers-color-scheme: dark)").matches;
let showsEdges = true;
function setDark(is: boolean): void {
  isDark = is;
  document.documentElement.classList.toggle("dark", is);
  drawing.setDark(is);
}

function openViews(): void {
  const names = Object.keys(directions).filter((name) => name !== "Home") as Direction[];
  options.open("views", "Views", [
    make("div", { className: "buttons" },
      ...names.map((name) => make("button", { onclick: () => fit(name) }, name))),
    toggleOf("Orthographic", camera.viewpoint.isOrthographic, (is) => camera.setOrthographic(is)),
    toggleOf("Edges", showsEdges, (is) => drawing.setEdges((showsEdges = is))),
    toggleOf("Dark", isDark, setDark),
    make("button", { onclick: () => byId<HTMLDialogElement>("notices").showModal() }, "Notices"),
  ]);
}

function openShare(): void {
  const title = make("input", { type: "text", value: "View", "aria-label": "Title of the BCF view" });
  options.open("share", "Share", [
    make("div", { className: "buttons" },
      make("button", {
        onclick: () => {
          history.replaceState(null, "", views.link());
          void copy(location.href).then(() => say("The link to this view is copied."));
        },
      }, "Copy link"),
      make("button", { onclick: () => void exchange.savePicture() }, "Save picture")),
    make("p", {}, title),
    make("div", { className: "buttons" },
      make("button", { onclick: () => void exchange.saveBcf(title.value) }, "Save BCF"),
      make("button", { onclick: () => files.ask() }, "Open BCF")),
  ]);
}

function setContents(shows: boolean): void {
  byId("side").classList.toggle("closed", !shows);
  document.body.classList.toggle("wide", !shows);
}
const hasContents = () => !byId("side").classList.contains("closed");

const toolbar = new Toolbar(toolsOf({
  contents: () => setContents(!hasContents()),
  hasContents,
  open: () => files.ask(),
  home: () => fit("Home"),
  fit: () => fit(),
  views: openViews,
  plan: () => plan.toggle(),
  showsPlan: () => plan.isShown,
  walk() {
    controls.isWalking = !controls.isWalking;
    if (controls.isWalking) camera.stand(camera.eye);
    say(controls.isWalking ? "Walk with W, A, S, D; a double click goes there." : "Walking ended.");
    canvas.focus();
  },
  isWalking: () => controls.isWalking,
  section: () => section.start(),
  isCutting: () => section.isCutting,
  measure: () => (measure.isActive ? options.close() : measure.start()),
  isMeasuring: () => measure.isActive,
  xray: () => selection.setXray(!selection.xray),
  isXray: () => selection.xray,
  hide() {
    selection.hide(selection.refs, Hidden.byUser, true);
    selection.select([]);
  },
  isolate: () => selection.isolate(),
  showAll: () => selection.showAll(),
  rooms: () => rooms.set(!showsRooms),
  showsRooms: rooms.get,
  colour: () => void colourBy.start(),
  isColoured: () => colourBy.property !== null,
  compare: () => compare.start(),
  share: openShare,
}));

options.closed.add(() => toolbar.refresh());
for (const event of ["click", "input"]) {
  byId("options").addEventListener(event, () => toolbar.refresh());
}
byId("panel-close").addEventListener("click", () => selection.select([]));
canvas.addEventListener("keydown", (event) => {
  if (event.key !== "Escape") return;
  if (measure.isActive) options.close();
  else selection.select([]);
});
camera.changed.add(() => drawing.invalidate());
drawing.beforeFrame.add(() => marks.draw());
new ResizeObserver(() => {
  camera.setAspect(canvas.clientWidth / Math.max(canvas.clientHeight, 1));
}).observe(canvas);
selection.changed.add(() => void panel.show(selection.refs));

files.takeOther = (file) => {
  if (!/\.bcf(zip)?$/i.test(file.name)) return false;
  void exchange.openBcf(file);
  return true;
};
files.arrived.add((model, floor) => {
  for (const element of model.elementsOf(floor)) {
    model.hide(element, Hidden.byLayer, !showsRooms && isRoom(model.className(element)));
  }
  tree.refresh();
});
let isFitted = false;
/** The view of all that came first; the viewer may have left it before the rest came. */
let firstView = "";
const fitFirst = (): void => {
  camera.fit(reach, "Home");
  firstView = JSON.stringify(camera.viewpoint);
};
const reach = new Box3();
const fitUnlessMoved = (): void => {
  if (!isFitted && (firstView === "" || JSON.stringify(camera.viewpoint) === firstView)) fitFirst();
};
files.grew.add((model, elements, endsFloor) => {
  const shown = [...elements].filter((element) => model.hidden[element] === 0);
  reach.union(drawing.boxOf(shown.map((element) => ({ model, element }))));
  camera.setReach(reach);
  if (firstView === "" || (endsFloor && model.floors.length === 1)) fitUnlessMoved();
  if (performance.getEntriesByName("zvg:first-frame").length === 0) mark("zvg:first-frame");
  if (endsFloor && performance.getEntriesByName("zvg:first-floor").length === 0) mark("zvg:first-floor");
});
/** Tells how long it took to here, with what is there in the picture. */
function mark(name: string): void {
  drawing.frame();
  performance.mark(name);
}
files.opened.add(() => {
  tree.refresh();
  storeys.refresh();
  document.title = selection.models.map(({ name }) => name).join(", ") || "Building model";
  fitUnlessMoved();
  if (!isFitted) views.follow();
  isFitted = true;
  performance.mark("zvg:opened");
});
files.closed.add(() => {
  compare.end();
  reach.copy(drawing.boxOf());
  tree.refresh();
  storeys.refresh();
  isFitted = selection.models.length > 0;
  if (!isFitted) firstView = "";
});
addEventListener("hashchange", () => views.follow());
if (matchMedia("(max-width: 760px)").matches) {
  setContents(false);
  toolbar.refresh();
}
setDark(isDark);
void files.start();

/** What a page around this one may ask: where a point of the model is on the canvas, a frame at
 * once, and the view. */
Object.assign(window, {
  zvgViewer: {
    models: (): Model[] => selection.models,
    project: (x: number, y: number, z: number): [number, number] | null => {
      const [ox, oy, oz] = files.drawingOrigin as [number, number, number];
      return marks.project(new Vector3(x - ox, y - oy, z - oz));
    },
    draw: () => drawing.frame(),
    view: () => views.take(),
    show: (view: ReturnType<Views["take"]>) => views.bring(view),
  },
});
