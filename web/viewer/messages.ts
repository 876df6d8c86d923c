import type { Damage, Element, Floor, Info } from "../src/index.js";
import type { PlanLines } from "./planlines.js";

/** Geometries that stand once in a batch, one behind the other. */
export interface Geometries {
  count: number;
  /** Points and indices of each, in pairs. */
  sizes: Uint32Array;
  /** 1 for those that consist of parts, each with an instance of its own. */
  parted: Uint8Array;
  /** Least and greatest coordinates of each, in sixes. */
  boxes: Float32Array;
  /** Three a point, metres. */
  points: Float32Array;
  /** Of each point, how far behind its geometry's first instance the instance is that it is of. */
  parts: Uint8Array;
  /** Four bytes a point, of which the last pads; null for edges. */
  normals: Int8Array | null;
  /** From the first point of their geometry on: three a triangle, two an edge. */
  indices: Uint32Array;
}

/** What a floor adds to a batch: geometries that were not there, and where geometries stand. */
export interface BatchAddition {
  geometries: Geometries;
  instances: number;
  /** The number of the geometry in the batch. Instances of a geometry that consists of parts follow
   * each other, in the order of the parts. */
  geometryOf: Uint32Array;
  /** The position of the element on its floor. */
  elementOf: Uint32Array;
  /** Red, green, blue and alpha, a byte each from the lowest on. */
  colours: Uint32Array;
  /** Twelve an instance: rows, relative to the drawing's origin. */
  matrices: Float32Array;
  /** Least and greatest coordinates of each where it stands, in sixes. */
  boxes: Float32Array;
}

/** The batches of a model, in the order in which they are drawn. */
export const batchNames = ["solid", "edges", "glass"] as const;
export type BatchName = (typeof batchNames)[number];

/** A floor as the page lists it. */
export interface FloorList {
  floor: number;
  level: Floor;
  guids: string[];
  names: string[];
  classNames: string[];
  /** The number of each element's class among `classNames`. */
  classOf: Uint16Array;
}

/** What is drawn of a floor, or of a part of it. */
export interface FloorPart {
  floor: number;
  /** With a floor's first part. */
  list: FloorList | null;
  endsFloor: boolean;
  batches: Record<BatchName, BatchAddition>;
  /** Geometries that the file names and does not hold. */
  missing: number;
}

/** Triangles of one element, three points each, relative to the drawing's origin. */
export type Triangles = Float32Array;

/** Where an element stands: floor and position. */
export type At = readonly [number, number];

/** What stands for an element in a comparison: by its GUID, what is said of it and its body. */
export interface Fingerprints {
  guids: string[];
  places: At[];
  said: Float64Array;
  bodies: Float64Array;
}

/** What a page may ask the worker that holds one file. */
export interface FileCalls {
  open(source: string | Blob, origin: number[] | null): Info;
  /** The next part of a floor; null behind the last. */
  next(): FloorPart | null;
  origin(): number[] | null;
  element(floor: number, position: number): Element;
  /** Where elements stand that bear a text anywhere. */
  find(text: string): At[];
  triangles(floor: number, position: number): Triangles;
  /** Where a level plane at a height in the model's coordinates meets the bodies of a floor. */
  plan(floor: number, height: number): PlanLines;
  /** One property of all elements on a floor, by "SET.NAME" or a field's name; "" where none. */
  values(floor: number, property: string): string[];
  /** Names of properties that elements of a floor bear, "SET.NAME", the most frequent first. */
  propertyNames(floor: number): string[];
  fingerprints(): Fingerprints;
  damage(): Damage[];
}

export type CallName = keyof FileCalls;

export interface Question {
  id: number;
  call: CallName;
  args: unknown[];
}

export interface Reply {
  id: number;
  value?: unknown;
  /** Why there is no value. */
  error?: { status: string; message: string; position: number | null };
}
