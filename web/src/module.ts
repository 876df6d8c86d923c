/** What may stand for the WebAssembly module. */
export type ModuleSource = string | URL | BufferSource | WebAssembly.Module;

/** The functions of web/native/Module.cpp. Pointers arrive as signed numbers. */
interface Exports {
  memory: WebAssembly.Memory;
  _initialize?(): void;
  malloc(size: number): number;
  free(pointer: number): void;
  zvg_begin(bytes: number, unlimited: number): number;
  zvg_end(session: number): void;
  zvg_bring(session: number, position: number, bytes: number, size: number): number;
  zvg_answer(session: number): number;
  zvg_answer_size(session: number): number;
  zvg_open(session: number): number;
  zvg_floors(session: number): number;
  zvg_floor(session: number, floor: number): number;
  zvg_find(session: number, request: number, size: number): number;
  zvg_element(session: number, floor: number, position: number): number;
  zvg_preview(session: number): number;
  zvg_damage(session: number): number;
  /** Of the verifier alone, which has no other call that reads a file. */
  zvg_verify(session: number): number;
  zvg_scene(session: number, request: number, size: number): number;
  zvg_scene_next(scene: number): number;
  zvg_scene_end(scene: number): void;
}

/** An instance of the module, which reads one file: its memory goes with it. */
export class Instance {
  constructor(readonly calls: Exports) {}

  /** The `size` bytes at `pointer`, until the next call. */
  view(pointer: number, size: number): Uint8Array<ArrayBuffer> {
    return new Uint8Array(this.calls.memory.buffer as ArrayBuffer, pointer >>> 0, size >>> 0);
  }

  /** Hands `bytes` to `use`, where the module sees them. */
  lend<Result>(bytes: Uint8Array, use: (pointer: number, size: number) => Result): Result {
    const pointer = this.calls.malloc(Math.max(bytes.byteLength, 1)) >>> 0;
    if (pointer === 0) throw new RangeError("out of memory");
    try {
      this.view(pointer, bytes.byteLength).set(bytes);
      return use(pointer, bytes.byteLength);
    } finally {
      this.calls.free(pointer);
    }
  }
}

/** The modules, as they lie beside this. */
const addresses = {
  reader: new URL("./zvg.wasm", import.meta.url),
  verifier: new URL("./zvg-verify.wasm", import.meta.url),
};
const shared: { [Part in keyof typeof addresses]?: Promise<WebAssembly.Module> } = {};

async function compile(source: ModuleSource): Promise<WebAssembly.Module> {
  if (source instanceof WebAssembly.Module) return source;
  if (typeof source !== "string" && !(source instanceof URL)) return WebAssembly.compile(source);
  const address = new URL(source, import.meta.url);
  if (address.protocol === "file:" && typeof process !== "undefined" && process.versions?.node) {
    const { readFile } = await import("node:fs/promises");
    return WebAssembly.compile(await readFile(address));
  }
  const response = await fetch(address);
  if (!response.ok) throw new Error(`${address.href}: ${response.status} ${response.statusText}`);
  // Compiling while it arrives needs the right media type, which not every server tells.
  if (response.headers.get("content-type")?.startsWith("application/wasm")) {
    return WebAssembly.compileStreaming(response);
  }
  return WebAssembly.compile(await response.arrayBuffer());
}

/** The shortest text of a number that is not negative, as std::to_chars writes it. */
function shortestText(number: number): string {
  const fixed = String(number);
  const scientific = number.toExponential().replace(/(\D)(\d)$/, "$10$2");
  return fixed.includes("e") || scientific.length < fixed.length ? scientific : fixed;
}

/** What the module asks of a system: the time, which it counts its work by, and numbers as text; else
 * there is none. */
function systemOf(module: WebAssembly.Module, memory: () => WebAssembly.Memory): WebAssembly.Imports {
  const noSystem = 52;
  const known: Record<string, (...args: never[]) => number> = {
    clock_time_get: (_clock: number, _precision: bigint, at: number) => {
      const nanoseconds = BigInt(Math.round(performance.now() * 1e6));
      new DataView(memory().buffer).setBigUint64(at >>> 0, nanoseconds, true);
      return 0;
    },
    number_of_text: (at: number, size: number) =>
      Number(new TextDecoder().decode(new Uint8Array(memory().buffer, at >>> 0, size))),
    text_of_number: (number: number, at: number) =>
      new TextEncoder().encodeInto(shortestText(number), new Uint8Array(memory().buffer, at >>> 0, 24))
        .written,
    emscripten_notify_memory_growth: () => 0,
    proc_exit: () => {
      throw new WebAssembly.RuntimeError("the module gave up");
    },
  };
  const imports: WebAssembly.Imports = {};
  for (const { module: room, name, kind } of WebAssembly.Module.imports(module)) {
    if (kind === "function") (imports[room] ??= {})[name] = known[name] ?? (() => noSystem);
  }
  return imports;
}

/** A fresh instance. The package's own modules are compiled once, unless `source` names another. */
export async function instantiate(
  source?: ModuleSource,
  part: keyof typeof addresses = "reader",
): Promise<Instance> {
  const compiled = source === undefined ? (shared[part] ??= compile(addresses[part])) : compile(source);
  const module = await compiled.catch((error: unknown) => {
    if (shared[part] === compiled) delete shared[part]; // the next call tries again
    throw error;
  });
  let calls: Exports | undefined;
  const instance = await WebAssembly.instantiate(module, systemOf(module, () => calls!.memory));
  calls = instance.exports as unknown as Exports;
  calls._initialize?.();
  return new Instance(calls);
}
