export { open } from "./blockfile.js";
export type {
  BlockFile, Damage, Element, Floor, Info, Material, OpenOptions, Picture, Property, Row,
} from "./blockfile.js";
export type { ModuleSource } from "./module.js";
export type { FetchOptions, RangeReader, Source } from "./ranges.js";
export type { Place, Query, SceneOptions, Selection } from "./requests.js";
export type { Curve, Look, Placements, SceneChunk, Shape, Surface } from "./scene.js";
export { BlockFileError } from "./session.js";
export type { Status } from "./session.js";
