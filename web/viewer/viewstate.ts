import type { Camera, Viewpoint } from "./camera.js";
import type { Files } from "./files.js";
import type { ColourBy } from "./legend.js";
import { Hidden, type HiddenReason, type Ref } from "./model.js";
import type { Cut, Section } from "./section.js";
import type { Selection } from "./selection.js";
import type { StoreySlider, Storeys } from "./storeys.js";

/** All that makes a view, in the models' coordinates and by GUIDs. */
export interface ViewState {
  camera: Viewpoint;
  selected: string[];
  hidden: string[];
  /** Only these are shown; null where nothing is isolated. */
  isolated: string[] | null;
  storeys: Storeys;
  cut: Cut;
  isXray: boolean;
  showsRooms: boolean;
  colourBy: string | null;
}

/** A link must not grow beyond what mail programs and browsers take. */
const mostGuids = 300;

/** Takes the view as it is, and brings one back. */
export class Views {
  constructor(
    private readonly parts: {
      camera: Camera; files: Files; selection: Selection; storeys: StoreySlider; section: Section;
      colourBy: ColourBy;
    },
    private readonly rooms: { get(): boolean; set(shows: boolean): void },
  ) {}

  take(): ViewState {
    const { camera, files, selection, storeys, section, colourBy } = this.parts;
    const origin = files.drawingOrigin;
    const viewpoint = camera.viewpoint;
    const target = viewpoint.target.map((at, axis) => at + origin[axis]!) as Viewpoint["target"];
    const outside = this.guidsHidden(Hidden.byIsolation, true);
    return {
      camera: { ...viewpoint, target },
      selected: selection.refs.map(({ model, element }) => model.guid(element)),
      hidden: this.guidsHidden(Hidden.byUser, true),
      isolated: outside.length > 0 ? this.guidsHidden(Hidden.byIsolation, false) : null,
      storeys: storeys.state,
      cut: moved(section.cut, origin),
      isXray: selection.xray,
      showsRooms: this.rooms.get(),
      colourBy: colourBy.property,
    };
  }

  bring(state: ViewState): void {
    const { camera, files, selection, storeys, section, colourBy } = this.parts;
    const origin = files.drawingOrigin;
    const back = origin.map((each) => -each);
    const target = state.camera.target.map((at, axis) => at - origin[axis]!);
    this.rooms.set(state.showsRooms);
    camera.viewpoint = { ...state.camera, target: target as Viewpoint["target"] };
    storeys.set(state.storeys);
    section.set(moved(state.cut, back));
    const hidden = new Set(state.hidden);
    selection.hideWhere(Hidden.byUser, (model, element) => hidden.has(model.guid(element)));
    const only = state.isolated && new Set(state.isolated);
    selection.hideWhere(Hidden.byIsolation, (model, element) =>
      only !== null && !only.has(model.guid(element)));
    selection.select(this.refsOf(state.selected));
    selection.setXray(state.isXray);
    if (state.colourBy !== colourBy.property) void colourBy.set(state.colourBy);
  }

  /** The part of an address behind "#" that brings the view back. */
  link(): string {
    const state = this.take();
    for (const list of [state.selected, state.hidden, state.isolated]) list?.splice(mostGuids);
    const brief = JSON.stringify(state, (_, value: unknown) =>
      typeof value === "number" ? Math.round(value * 1e5) / 1e5 : value);
    return `#view=${encodeURIComponent(brief)}`;
  }

  /** Brings back the view of the page's address; false where it tells none. */
  follow(): boolean {
    const [, text] = /^#view=(.+)$/.exec(location.hash) ?? [];
    if (text === undefined) return false;
    try {
      this.bring(JSON.parse(decodeURIComponent(text)) as ViewState);
      return true;
    } catch {
      return false; // an address that was cut short or written by hand
    }
  }

  refsOf(guids: string[]): Ref[] {
    return this.parts.selection.models.flatMap((model) => guids.flatMap((guid) => {
      const element = model.find(guid);
      return element < 0 ? [] : [{ model, element }];
    }));
  }

  private guidsHidden(reason: HiddenReason, are: boolean): string[] {
    const guids: string[] = [];
    for (const model of this.parts.selection.models) {
      for (let element = 0; element < model.elementCount; ++element) {
        if (((model.hidden[element]! & reason) !== 0) === are) guids.push(model.guid(element));
      }
    }
    return guids;
  }
}

/** A cut in coordinates that lie off by `by`. */
function moved({ limits, plane, more }: Cut, by: number[]): Cut {
  const shifted = ({ normal, constant }: NonNullable<Cut["plane"]>) => ({
    normal, constant: constant - normal.reduce((sum, each, axis) => sum + each * by[axis]!, 0),
  });
  return {
    limits: limits.map((limit, side) => (limit === null ? null : limit + by[side >> 1]!)),
    plane: plane && shifted(plane),
    more: more.map(shifted),
  };
}
