import { strFromU8, strToU8, unzipSync, zipSync } from "fflate";

type Triple = [number, number, number];

/** A view as BCF 2.1 tells it: metres, Z up, the models' coordinates. */
export interface BcfView {
  title: string;
  eye: Triple;
  direction: Triple;
  up: Triple;
  /** Degrees from the lower to the upper rim; null for an orthographic view. */
  fieldOfView: number | null;
  /** Metres from the lower to the upper rim, of an orthographic view. */
  height: number | null;
  selected: string[];
  /** What is shown unless it is among the exceptions. */
  defaultVisibility: boolean;
  exceptions: string[];
  /** Where planes lie and the side that they cut away. */
  planes: { location: Triple; direction: Triple }[];
}

function escaped(text: string): string {
  return text.replace(/[&<>"']/g, (letter) => `&#${letter.charCodeAt(0)};`);
}
function vector(name: string, [x, y, z]: Triple): string {
  return `<${name}><X>${x}</X><Y>${y}</Y><Z>${z}</Z></${name}>`;
}
function components(guids: string[]): string {
  return guids.map((guid) => `<Component IfcGuid="${escaped(guid)}"/>`).join("");
}
const head = '<?xml version="1.0" encoding="UTF-8"?>\n';

function cameraText({ eye, direction, up, fieldOfView, height }: BcfView): string {
  const place = vector("CameraViewPoint", eye) + vector("CameraDirection", direction)
    + vector("CameraUpVector", up);
  if (fieldOfView === null) {
    return `<OrthogonalCamera>${place}<ViewToWorldScale>${height}</ViewToWorldScale></OrthogonalCamera>`;
  }
  // The schema of 2.1 takes 45 to 60 degrees.
  const degrees = Math.min(Math.max(fieldOfView, 45), 60);
  return `<PerspectiveCamera>${place}<FieldOfView>${degrees}</FieldOfView></PerspectiveCamera>`;
}

function viewText(view: BcfView, guid: string): string {
  const exceptions = view.exceptions.length > 0
    ? `<Exceptions>${components(view.exceptions)}</Exceptions>` : "";
  const selection = view.selected.length > 0
    ? `<Selection>${components(view.selected)}</Selection>` : "";
  const planes = view.planes.map(({ location, direction }) =>
    `<ClippingPlane>${vector("Location", location)}${vector("Direction", direction)}</ClippingPlane>`);
  return `${head}<VisualizationInfo Guid="${guid}"><Components>${selection}`
    + `<Visibility DefaultVisibility="${view.defaultVisibility}">${exceptions}</Visibility></Components>`
    + cameraText(view)
    + (planes.length > 0 ? `<ClippingPlanes>${planes.join("")}</ClippingPlanes>` : "")
    + "</VisualizationInfo>";
}

function markupText(title: string, topic: string, viewpoint: string, hasPicture: boolean): string {
  return `${head}<Markup><Topic Guid="${topic}" TopicStatus="Open"><Title>${escaped(title)}</Title>`
    + `<CreationDate>${new Date().toISOString()}</CreationDate>`
    + "<CreationAuthor>viewer</CreationAuthor></Topic>"
    + `<Viewpoints Guid="${viewpoint}"><Viewpoint>viewpoint.bcfv</Viewpoint>`
    + `${hasPicture ? "<Snapshot>snapshot.png</Snapshot>" : ""}</Viewpoints></Markup>`;
}

/** A .bcfzip of one topic with one viewpoint, and a picture where there is one. */
export function writeBcf(view: BcfView, picture: Uint8Array | null): Uint8Array<ArrayBuffer> {
  const topic = newGuid(), viewpoint = newGuid();
  const files: Record<string, Uint8Array> = {
    "bcf.version": strToU8(`${head}<Version VersionId="2.1"><DetailedVersion>2.1</DetailedVersion></Version>`),
    [`${topic}/markup.bcf`]: strToU8(markupText(view.title, topic, viewpoint, picture !== null)),
    [`${topic}/viewpoint.bcfv`]: strToU8(viewText(view, viewpoint)),
  };
  if (picture) files[`${topic}/snapshot.png`] = picture;
  return zipSync(files);
}

/** Pages from a disk are no secure contexts everywhere, and may lack randomUUID. */
function newGuid(): string {
  const bytes = crypto.getRandomValues(new Uint8Array(16));
  bytes[6] = (bytes[6]! & 15) | 64;
  bytes[8] = (bytes[8]! & 63) | 128;
  const digits = [...bytes].map((byte) => byte.toString(16).padStart(2, "0")).join("");
  return digits.replace(/^(.{8})(.{4})(.{4})(.{4})(.{12})$/, "$1-$2-$3-$4-$5");
}

/** What a text of a few kilobytes unpacks to is bounded, whatever the archive says. */
const mostBytes = 32 << 20;

/** The views in a .bcfzip; throws where it is none. */
export function readBcf(bytes: Uint8Array): BcfView[] {
  let left = mostBytes;
  const files = unzipSync(bytes, {
    filter: ({ name, originalSize }) => {
      if (!/\.(bcf|bcfv)$/i.test(name)) return false;
      left -= originalSize;
      if (left < 0) throw new Error("the archive holds more than views need");
      return true;
    },
  });
  const views: BcfView[] = [];
  for (const [path, content] of Object.entries(files)) {
    if (!path.toLowerCase().endsWith(".bcfv")) continue;
    const markup = files[path.replace(/[^/]*$/, "markup.bcf")];
    const title = markup ? parsed(markup).querySelector("Topic > Title")?.textContent : null;
    const view = viewOf(parsed(content), title ?? path);
    if (view) views.push(view);
  }
  return views;
}

function parsed(content: Uint8Array): Document {
  const read = new DOMParser().parseFromString(strFromU8(content), "application/xml");
  if (read.querySelector("parsererror")) throw new Error("the archive holds XML that is none");
  return read;
}

function viewOf(document: Document, title: string): BcfView | null {
  const camera = document.querySelector("PerspectiveCamera, OrthogonalCamera");
  if (camera === null) return null;
  const numberOf = (parent: Element | null, name: string): number =>
    Number(parent?.querySelector(name)?.textContent ?? NaN);
  const triple = (parent: Element, name: string): Triple => {
    const place = parent.querySelector(name);
    return ["X", "Y", "Z"].map((axis) => numberOf(place, axis)) as Triple;
  };
  const guids = (selector: string): string[] =>
    [...document.querySelectorAll(`${selector} > Component`)].flatMap((each) =>
      each.getAttribute("IfcGuid") ?? []);
  const isPerspective = camera.tagName === "PerspectiveCamera";
  const view: BcfView = {
    title,
    eye: triple(camera, "CameraViewPoint"),
    direction: triple(camera, "CameraDirection"),
    up: triple(camera, "CameraUpVector"),
    fieldOfView: isPerspective ? numberOf(camera, "FieldOfView") : null,
    height: isPerspective ? null : numberOf(camera, "ViewToWorldScale"),
    selected: guids("Selection"),
    defaultVisibility:
      document.querySelector("Visibility")?.getAttribute("DefaultVisibility") !== "false",
    exceptions: guids("Exceptions"),
    planes: [...document.querySelectorAll("ClippingPlane")].map((plane) =>
      ({ location: triple(plane, "Location"), direction: triple(plane, "Direction") })),
  };
  return [...view.eye, ...view.direction].every(Number.isFinite) ? view : null;
}
