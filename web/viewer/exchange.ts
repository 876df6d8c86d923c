import { Vector3 } from "three";
import { type BcfView, readBcf, writeBcf } from "./bcf.js";
import type { Camera } from "./camera.js";
import { make, save, say } from "./dom.js";
import type { Drawing } from "./drawing.js";
import type { Files } from "./files.js";
import { Hidden } from "./model.js";
import type { Options } from "./options.js";
import type { Section } from "./section.js";
import type { Selection } from "./selection.js";
import type { Views } from "./viewstate.js";

type Triple = [number, number, number];

/** Views as pictures and as BCF files, out and in. */
export class Exchange {
  constructor(
    private readonly parts: {
      camera: Camera; drawing: Drawing; files: Files; selection: Selection; section: Section;
      views: Views; options: Options;
    },
  ) {}

  /** The picture as it is on the screen, without what the page writes over it. */
  picture(): Promise<Blob> {
    const { drawing } = this.parts;
    drawing.frame(); // a canvas keeps its picture only until the next one is due
    return new Promise((resolve, reject) => {
      drawing.canvas.toBlob((blob) => (blob ? resolve(blob) : reject(new Error("no picture"))));
    });
  }

  async savePicture(): Promise<void> {
    save("view.png", await this.picture());
  }

  async saveBcf(title: string): Promise<void> {
    const picture = new Uint8Array(await (await this.picture()).arrayBuffer());
    save("view.bcfzip", new Blob([writeBcf(this.view(title), picture)]));
  }

  /** Reads a BCF file, and shows its only view or lets the user choose. */
  async openBcf(file: Blob): Promise<void> {
    let views: BcfView[];
    try {
      views = readBcf(new Uint8Array(await file.arrayBuffer()));
    } catch (error) {
      say(`This is no BCF file that can be read: ${error instanceof Error ? error.message : error}`);
      return;
    }
    if (views.length === 0) say("This BCF file holds no views.");
    else this.bring(views[0]!);
    if (views.length > 1) {
      this.parts.options.open("bcf", "Views", [
        make("div", { className: "buttons" }, ...views.map((view) =>
          make("button", { onclick: () => this.bring(view) }, view.title))),
      ]);
    }
  }

  view(title: string): BcfView {
    const { camera, files, selection, section, drawing } = this.parts;
    const origin = new Vector3(...(files.drawingOrigin as Triple));
    const { isOrthographic } = camera.viewpoint;
    const hidden: string[] = [], shown: string[] = [];
    for (const model of selection.models) {
      for (let element = 0; element < model.elementCount; ++element) {
        const isHidden = (model.hidden[element]! & ~Hidden.byLayer) !== 0;
        (isHidden ? hidden : shown).push(model.guid(element));
      }
    }
    const isMostlyShown = hidden.length <= shown.length;
    const up = new Vector3(0, 1, 0).applyQuaternion(camera.current.quaternion);
    return {
      title,
      eye: camera.eye.add(origin).toArray(),
      direction: camera.forward().toArray(),
      up: up.toArray(),
      fieldOfView: isOrthographic ? null : camera.perspective.fov,
      height: isOrthographic ? camera.heightAtTarget() : null,
      selected: selection.refs.map(({ model, element }) => model.guid(element)),
      defaultVisibility: isMostlyShown,
      exceptions: isMostlyShown ? hidden : shown,
      planes: section.isCutting ? drawing.planes.map(({ normal, constant }) => ({
        location: normal.clone().multiplyScalar(-constant).add(origin).toArray(),
        direction: normal.clone().negate().toArray(),
      })) : [],
    };
  }

  private bring(view: BcfView): void {
    const { camera, files, selection, section, views } = this.parts;
    const origin = new Vector3(...(files.drawingOrigin as Triple));
    camera.lookFrom(new Vector3(...view.eye).sub(origin), new Vector3(...view.direction), view.height);
    const exceptions = new Set(view.exceptions);
    selection.hideWhere(Hidden.byIsolation, () => false);
    selection.hideWhere(Hidden.byUser, (model, element) =>
      exceptions.has(model.guid(element)) === view.defaultVisibility);
    section.clear();
    for (const { location, direction } of view.planes) {
      const normal = new Vector3(...direction).normalize().negate();
      section.addPlane(normal, -normal.dot(new Vector3(...location).sub(origin)));
    }
    selection.select(views.refsOf(view.selected));
  }
}
