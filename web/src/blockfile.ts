import { type ModuleSource, instantiate } from "./module.js";
import { type FetchOptions, type Source, readerOf } from "./ranges.js";
import { type Place, type Query, type SceneOptions, type Selection, requestOf } from "./requests.js";
import { ChunkReader, type SceneChunk } from "./scene.js";
import { BlockFileError, Session } from "./session.js";

/** What a file says of itself. */
export interface Info {
  /** Of its head: where it comes from. */
  firstText: string;
  /** Of its head: what the host says besides. */
  secondText: string;
  /** Of the format, 0 to 4. */
  version: number;
  /** Of the file. */
  bytes: number;
  floors: number;
  geometryBlocks: number;
  /** Names under which geometry is stored. */
  identifications: number;
}

export interface Floor {
  /** May be empty. */
  name: string;
  /** As the host numbered it; lower is further down in packed files. */
  order: number;
  /** Metres. */
  elevation: number;
  /** Metres up to the next floor; 0 for the topmost. */
  height: number;
  /** How many elements stand on it. */
  elements: number;
}

/** An element in short. */
export interface Row extends Place {
  guid: string;
  name: string;
  className: string;
}

/** What is said of an element or a material; docs/GUIDE.md lists the kinds and the units. */
export interface Property {
  set: string;
  name: string;
  /** As the model's author wrote it. */
  value: string;
  /** Such as "boolean" or "length". */
  kind: string;
  /** Such as "mm"; may be empty. */
  unit: string;
}

export interface Material {
  name: string;
  category: string;
  /** Metres; null for what is no layer. */
  thickness: number | null;
  properties: Property[];
}

/** All of an element but its body. Texts may be empty. */
export interface Element extends Row {
  floorName: string;
  predefinedType: string;
  typeName: string;
  materialName: string;
  buildingName: string;
  siteName: string;
  /** Its own, or its class's: red, green, blue, alpha, 0 to 255. */
  colour: [number, number, number, number] | null;
  /** GUIDs of its host and of what it is a part of. */
  parents: string[];
  /** GUID of the first group or zone that it is in. */
  group: string;
  properties: Property[];
  /** Its layers, or what else it consists of. */
  materials: Material[];
}

/** Four bytes a pixel, red, green, blue and alpha, top row first. */
export interface Picture {
  width: number;
  height: number;
  pixels: Uint8ClampedArray<ArrayBuffer>;
}

/** Something of a file that cannot be read. */
export interface Damage {
  /** The byte in the file. */
  position: number;
  reason: string;
}

export interface OpenOptions extends FetchOptions {
  /** Take what work and memory the file asks for; else each call ends beyond what files of its size
   * need, with much room. */
  unlimited?: boolean;
  /** The WebAssembly module, where it does not lie beside this package's code. */
  wasm?: ModuleSource;
  /** The same for the module that `verify` takes, and no other call. */
  verifier?: ModuleSource;
}

/**
 * A block file, opened to be read: its head and index at first, floors and geometries when they are
 * asked for. Calls may overlap; they are answered one after the other, and reject with
 * BlockFileError. What a call leaves out because it is damaged, `damage` tells.
 */
export interface BlockFile {
  readonly info: Info;
  /** All floors, in the file's order. Reads each floor. */
  readonly floors: Promise<Floor[]>;
  /** One of them, by its number; "not-found" where there is none. */
  floor(number: number): Promise<Floor>;
  /** The elements of a floor. */
  rows(floor: number): Promise<Row[]>;
  /** The element at a place. */
  element(floor: number, position: number): Promise<Element>;
  /** The first element of a GUID; null where there is none. Reads each floor. */
  element(guid: string): Promise<Element | null>;
  /** The elements that a query finds, in the file's order. */
  find(query: Query): Promise<Row[]>;
  /** The picture that the file shows; null where it holds none. */
  preview(): Promise<Picture | null>;
  /** What is to be drawn, floor by floor. */
  scene(selection?: Selection, options?: SceneOptions): AsyncIterableIterator<SceneChunk>;
  /** All that is wrong in the file, at most a thousand; reads all of it. */
  verify(): Promise<Damage[]>;
  /** What was met so far that cannot be read, at most a thousand. */
  damage(): Promise<Damage[]>;
  /** Gives the memory back, behind the calls under way; later ones reject. */
  close(): Promise<void>;
}

interface Found {
  classes: string[];
  elements: [number, number, string, string, number][];
}

class OpenedFile implements BlockFile {
  private floorsRead: Promise<Floor[]> | undefined;

  constructor(
    private readonly session: Session,
    readonly info: Info,
    private readonly verifier: ModuleSource | undefined,
  ) {}

  get floors(): Promise<Floor[]> {
    if (this.floorsRead === undefined) {
      const asked = this.session.askForJson<Floor[]>((calls, session) => calls.zvg_floors(session));
      asked.catch(() => (this.floorsRead = undefined));
      this.floorsRead = asked;
    }
    return this.floorsRead;
  }

  floor(number: number): Promise<Floor> {
    return this.session.askForJson<Floor>((calls, session) => calls.zvg_floor(session, number));
  }

  rows(floor: number): Promise<Row[]> {
    return this.find({ floor });
  }

  async element(which: number, position: number): Promise<Element>;
  async element(which: string): Promise<Element | null>;
  async element(which: number | string, position = 0): Promise<Element | null> {
    let place: Place = { floor: Number(which), position };
    if (typeof which === "string") {
      const [found] = await this.find({ guid: which });
      if (found === undefined) return null;
      place = found;
    }
    return this.session.askForJson<Element>((calls, session) =>
      calls.zvg_element(session, place.floor, place.position));
  }

  async find(query: Query): Promise<Row[]> {
    const found = await this.session.askForJson<Found>((calls, session) =>
      this.session.instance.lend(requestOf(query), (pointer, size) =>
        calls.zvg_find(session, pointer, size)));
    return found.elements.map(([floor, position, guid, name, number]) => ({
      floor, position, guid, name, className: found.classes[number]!,
    }));
  }

  preview(): Promise<Picture | null> {
    return this.session.ask((calls, session) => calls.zvg_preview(session), (answer) => {
      const bytes = answer.slice().buffer;
      const [width, height] = new Uint32Array(bytes, 0, 2) as unknown as [number, number];
      if (width * height === 0) return null;
      return { width, height, pixels: new Uint8ClampedArray(bytes, 8, width * height * 4) };
    });
  }

  async *scene(
    selection: Selection = {},
    options: SceneOptions = {},
  ): AsyncIterableIterator<SceneChunk> {
    const { session } = this;
    const request = requestOf({ ...selection, ...options });
    const walk = await session.begin((calls, pointer) =>
      session.instance.lend(request, (bytes, size) => calls.zvg_scene(pointer, bytes, size)));
    const chunks = new ChunkReader(options.doubles ?? false);
    try {
      for (;;) {
        const chunk = await session.ask((calls) => calls.zvg_scene_next(walk), (answer) =>
          answer.byteLength === 0 ? null : chunks.read(answer));
        if (chunk === null) return;
        yield chunk;
      }
    } finally {
      await session.end((calls) => calls.zvg_scene_end(walk));
    }
  }

  async verify(): Promise<Damage[]> {
    const instance = await instantiate(this.verifier, "verifier");
    return this.session.verify(instance);
  }

  damage(): Promise<Damage[]> {
    return this.session.askForJson<Damage[]>((calls, session) => calls.zvg_damage(session));
  }

  close(): Promise<void> {
    return this.session.close();
  }
}

/** Opens a block file. A text is an address, or in Node.js a path. Rejects with BlockFileError. */
export async function open(source: Source, options: OpenOptions = {}): Promise<BlockFile> {
  const starting = instantiate(options.wasm);
  starting.catch(() => undefined); // awaited below, if the file is there
  const reader = await readerOf(source, options).catch((error: unknown) => {
    const message = error instanceof Error ? error.message : String(error);
    throw new BlockFileError("input-output", message, null, { cause: error });
  });
  let session: Session | undefined;
  try {
    session = new Session(await starting, reader, options.unlimited ?? false);
    const info = await session.askForJson<Info>((calls, it) => calls.zvg_open(it));
    return new OpenedFile(session, info, options.verifier);
  } catch (error) {
    await (session ? session.close() : reader.close?.());
    throw error;
  }
}
