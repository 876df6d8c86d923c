import { type BlockFile, BlockFileError, type Info, type SceneChunk, open } from "../src/index.js";
import { fingerprintsOf } from "./fingerprints.js";
import type { FileCalls, FloorList, FloorPart, Question, Reply, Triangles } from "./messages.js";
import { planOf } from "./planlines.js";
import { Preparer } from "./prepare.js";
import { isRoom, propertyNamesOf, valueOf } from "./values.js";

type Asynchronous<Calls> = {
  [Name in keyof Calls]: Calls[Name] extends (...args: infer Args) => infer Result
    ? (...args: Args) => Promise<Result>
    : never;
};

/** Enough that calls cost little, and few enough to be seen soon. */
const elementsAtOnce = 1000;

/** Holds one file for the page: what it answers is ready to be drawn or listed. */
class FileWorker implements Asynchronous<FileCalls> {
  private file: BlockFile | undefined;
  private walk: AsyncIterator<SceneChunk> | undefined;
  private preparer = new Preparer(null);
  /** Of the floor that is walked: the positions of its rooms. */
  private rooms: Set<number> | null = null;

  /** A file that was begun before the page asked for it. */
  private begun: { src: string; info: Promise<Info> } | undefined;
  private coming: Promise<FloorPart | null> | undefined;

  constructor(private readonly wasm: () => Promise<WebAssembly.Module>) {}

  /** Opens what the page will ask for first, and reads the first part of it. */
  begin(src: string): void {
    const info = this.openNow(src, null);
    this.begun = { src, info };
    const coming = info.then(() => this.readNext());
    coming.catch(() => undefined); // whoever asks is told
    this.coming = coming;
  }

  open(source: string | Blob, origin: number[] | null): Promise<Info> {
    if (this.begun?.src === source && origin === null) return this.begun.info;
    this.coming = undefined;
    return this.openNow(source, origin);
  }
  next(): Promise<FloorPart | null> {
    const part = this.coming ?? this.readNext();
    this.coming = undefined;
    return part;
  }

  private async openNow(source: string | Blob, origin: number[] | null): Promise<Info> {
    this.file = await open(source, { wasm: await this.wasm() });
    this.preparer = new Preparer(origin);
    this.walk = this.file.scene({}, { normals: "smooth", elementsAtOnce });
    return this.file.info;
  }

  private async readNext(): Promise<FloorPart | null> {
    const { done, value: chunk } = await this.walk!.next();
    if (done) {
      this.preparer.end();
      return null;
    }
    const { floor, missing, endsFloor } = chunk;
    let list: FloorList | null = null;
    if (this.rooms === null) {
      this.rooms = new Set();
      list = await this.list(floor, this.rooms);
    }
    await this.restoreSpent(chunk);
    const batches = this.preparer.floor(chunk, this.rooms);
    if (endsFloor) this.rooms = null;
    return { floor, list, endsFloor, batches, missing };
  }

  private async list(floor: number, rooms: Set<number>): Promise<FloorList> {
    const rows = await this.opened.rows(floor);
    const numbers = new Map<string, number>();
    const classOf = new Uint16Array(rows.length);
    rows.forEach(({ className, position }) => {
      let number = numbers.get(className);
      if (number === undefined) numbers.set(className, (number = numbers.size));
      classOf[position] = number;
      if (isRoom(className)) rooms.add(position);
    });
    return {
      floor,
      level: await this.opened.floor(floor),
      guids: rows.map(({ guid }) => guid),
      names: rows.map(({ name }) => name),
      classNames: [...numbers.keys()],
      classOf,
    };
  }

  /** Asks again for shapes that a floor places and that were let go with a part before. */
  private async restoreSpent(chunk: SceneChunk): Promise<void> {
    const spent = this.preparer.spentOf(chunk);
    if (spent.size === 0) return;
    const elements = Array.from(spent.values(), ({ at: [floor, position] }) => ({ floor, position }));
    await this.preparer.restore(spent, this.opened.scene({ elements }, { normals: "smooth" }));
  }

  async origin() {
    return this.preparer.origin as number[] | null;
  }
  element(floor: number, position: number) {
    return this.opened.element(floor, position);
  }
  damage() {
    return this.opened.damage();
  }

  async find(text: string) {
    const found = await this.opened.find({ text });
    return found.map(({ floor, position }) => [floor, position] as const);
  }

  async triangles(floor: number, position: number): Promise<Triangles> {
    const corners: number[] = [];
    const origin = this.preparer.origin ?? [0, 0, 0];
    for await (const chunk of this.opened.scene({ elements: [{ floor, position }] })) {
      const shapes = new Map(chunk.shapes.map((shape) => [shape.number, shape]));
      const { count, matrices, shapes: numbers } = chunk.placements;
      for (let i = 0; i < count; ++i) {
        const m = matrices.subarray(12 * i, 12 * i + 12);
        for (const { points, indices } of shapes.get(numbers[i]!)?.surfaces ?? []) {
          for (const index of indices) {
            for (let row = 0; row < 3; ++row) {
              corners.push(m[4 * row]! * points[3 * index]! + m[4 * row + 1]! * points[3 * index + 1]!
                + m[4 * row + 2]! * points[3 * index + 2]! + m[4 * row + 3]! - origin[row]!);
            }
          }
        }
      }
    }
    return new Float32Array(corners);
  }

  async plan(floor: number, height: number) {
    const rows = await this.opened.rows(floor);
    return planOf(this.opened.scene({ floor }), height, this.preparer.origin ?? [0, 0, 0],
      (position) => isRoom(rows[position]?.className ?? ""));
  }

  async values(floor: number, property: string) {
    const rows = await this.opened.rows(floor);
    const values: string[] = [];
    for (const { position } of rows) {
      values[position] = valueOf(await this.opened.element(floor, position), property);
    }
    return values;
  }

  async propertyNames(floor: number) {
    const rows = await this.opened.rows(floor);
    const step = Math.max(1, Math.floor(rows.length / 200));
    const elements = [];
    for (let position = 0; position < rows.length; position += step) {
      elements.push(await this.opened.element(floor, position));
    }
    return propertyNamesOf(elements);
  }

  fingerprints() {
    return fingerprintsOf(this.opened);
  }

  private get opened(): BlockFile {
    if (this.file === undefined) throw new BlockFileError("usage", "no file is open");
    return this.file;
  }
}

/** What holds the memory of a floor's drawing, so that it moves to the page and is not copied. */
function buffersOf(value: unknown): ArrayBuffer[] {
  const found = new Set<ArrayBuffer>();
  const look = (each: unknown): void => {
    if (ArrayBuffer.isView(each)) found.add(each.buffer as ArrayBuffer);
    else if (each !== null && typeof each === "object" && !Array.isArray(each)) {
      Object.values(each).forEach(look);
    }
  };
  look(value);
  return [...found];
}

/** The module comes as the text that the page holds: gzip in base64. */
async function unpacked(base64: string): Promise<WebAssembly.Module> {
  const bytes = Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0));
  const whole = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
  return WebAssembly.compile(await new Response(whole).arrayBuffer());
}

let compiled: Promise<WebAssembly.Module> | undefined;
const held = new FileWorker(() => compiled!);

self.onmessage = async ({ data }: MessageEvent<Question | { wasm: string; src?: string }>) => {
  if ("wasm" in data) {
    compiled = unpacked(data.wasm);
    compiled.catch(() => undefined); // whoever opens is told
    if (data.src !== undefined) held.begin(data.src);
    return;
  }
  const reply: Reply = { id: data.id };
  try {
    const call = held[data.call] as (...args: unknown[]) => Promise<unknown>;
    reply.value = await call.apply(held, data.args);
  } catch (error) {
    const known = error instanceof BlockFileError;
    reply.error = {
      status: known ? error.status : "internal",
      message: error instanceof Error ? error.message : String(error),
      position: known ? error.position : null,
    };
  }
  self.postMessage(reply, { transfer: buffersOf(reply.value) });
};
self.postMessage({ id: -1 } satisfies Reply); // the page may go on
