
import { Camera } from "./camera.js";
import { Controls } from "./controls.js";
import { byId } from "./dom.js";
import { Drawing } from "./drawing.js";
import { Files } from "./files.js";
import { Panel } from "./panel.js";
import { Picking } from "./picking.js";
import { Selection } from "./selection.js";
import { Tree } from "./tree.js";

const canvas = byId<HTMLCanvasElement>("canvas");
const camera = new Camera();
const drawing = new Drawing(canvas, () => camera.current);
const selection = new Selection([], drawing);
const picking = new Picking(drawing, () => camera.current);
const files = new Files(selection, drawing);
const panel = new Panel();
const tree = new Tree(selection, (refs, adds) => selection.select(refs, adds), (model) => files.close(model));
camera.changed.add(() => drawing.invalidate());
new ResizeObserver(() => camera.setAspect(canvas.clientWidth / Math.max(canvas.clientHeight, 1))).observe(canvas);
new Controls(canvas, camera, {
  click(x, y, adds) {
    const hit = picking.at(x, y);
    selection.select(hit ? [hit] : [], adds);
    if (hit) tree.reveal(hit);
  },
  doubleClick() {}, hover(x, y) { selection.hover(picking.at(x, y)); }, leave() { selection.hover(null); },
  pointAt: (x, y) => picking.at(x, y)?.point ?? null,
});
selection.changed.add(() => void panel.show(selection.refs));
files.grew.add(() => { tree.refresh(); camera.setReach(drawing.boxOf()); camera.fit(drawing.boxOf(), "Home"); });
files.opened.add(() => tree.refresh());
drawing.setDark(false);
void files.start();
