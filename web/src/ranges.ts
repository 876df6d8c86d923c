/** Delivers parts of a file. */
export interface RangeReader {
  /** Bytes of the file. */
  readonly size: number;
  /** The `length` bytes at `position`, which are within the file; rejects where they do not come. */
  read(position: number, length: number): Promise<Uint8Array>;
  /** Gives up what is held open. */
  close?(): void | Promise<void>;
}

/** Where a file may be: an address or a path, bytes, or whatever delivers ranges of them. */
export type Source = string | URL | Blob | ArrayBuffer | Uint8Array | RangeReader;

/** How addresses are asked. */
export interface FetchOptions {
  /** Sent with each request, such as an authorization. */
  headers?: Record<string, string>;
  /** Instead of the global `fetch`. */
  fetch?: typeof fetch;
}

/** The first request to a server: it finds out the size, and is all that a small file needs. */
const firstBytes = 256 << 10;

function ofBytes(bytes: Uint8Array): RangeReader {
  return {
    size: bytes.byteLength,
    read: async (position, length) => bytes.subarray(position, position + length),
  };
}

function ofBlob(blob: Blob): RangeReader {
  return {
    size: blob.size,
    read: async (position, length) =>
      new Uint8Array(await blob.slice(position, position + length).arrayBuffer()),
  };
}

async function ofPath(path: string | URL): Promise<RangeReader> {
  const { open } = await import("node:fs/promises");
  const file = await open(path, "r");
  const { size } = await file.stat();
  return {
    size,
    async read(position, length) {
      const bytes = new Uint8Array(length);
      let count = 0;
      while (count < length) {
        const { bytesRead } = await file.read(bytes, count, length - count, position + count);
        if (bytesRead === 0) throw new Error(`${String(path)} became shorter while it was read`);
        count += bytesRead;
      }
      return bytes;
    },
    close: () => file.close(),
  };
}

/** The size that a server tells with a part, as in "bytes 0-99/1234"; NaN where it does not. */
function totalOf(response: Response): number {
  return Number(/\/(\d+)$/.exec(response.headers.get("content-range") ?? "")?.[1] ?? NaN);
}

function joined(first: Uint8Array, second: Uint8Array): Uint8Array {
  if (first.byteLength === 0) return second;
  const whole = new Uint8Array(first.byteLength + second.byteLength);
  whole.set(first);
  whole.set(second, first.byteLength);
  return whole;
}

/** A file on a server: by ranges where it knows them, else whole. */
async function ofAddress(address: string, options: FetchOptions): Promise<RangeReader> {
  const ask = async (first: number, last: number): Promise<Response> => {
    const headers = { ...options.headers, Range: `bytes=${first}-${last}` };
    const response = await (options.fetch ?? fetch)(address, { headers });
    // An empty file has no range that could be asked for.
    if (response.ok || (response.status === 416 && totalOf(response) === 0)) return response;
    await response.body?.cancel();
    throw new Error(`${address}: ${response.status} ${response.statusText}`);
  };
  const response = await ask(0, firstBytes - 1);
  const size = totalOf(response);
  if (size === 0 && response.status === 416) return ofBytes(new Uint8Array());
  const begin = new Uint8Array(await response.arrayBuffer());
  if (response.status !== 206) return ofBytes(begin);
  if (Number.isNaN(size)) throw new Error(`${address}: a range without the file's size`);
  const version = response.headers.get("etag") ?? response.headers.get("last-modified");
  return {
    size,
    async read(position, length) {
      const known = begin.subarray(position, position + length);
      if (known.byteLength === length) return known;
      const part = await ask(position + known.byteLength, position + length - 1);
      const bytes = joined(known, new Uint8Array(await part.arrayBuffer()));
      const seen = part.headers.get("etag") ?? part.headers.get("last-modified");
      if (part.status !== 206) throw new Error(`${address}: the server stopped giving ranges`);
      if (seen !== version || totalOf(part) !== size) {
        throw new Error(`${address}: the file changed while it was read`);
      }
      return bytes;
    },
  };
}

/** Whatever delivers the bytes of `source`. */
export async function readerOf(source: Source, options: FetchOptions): Promise<RangeReader> {
  if (source instanceof ArrayBuffer) return ofBytes(new Uint8Array(source));
  if (source instanceof Uint8Array) return ofBytes(source);
  if (source instanceof Blob) return ofBlob(source);
  if (typeof source !== "string" && !(source instanceof URL)) return source;
  const text = String(source);
  const isAddress = /^(https?|blob|data):/i.test(text);
  if (isAddress || typeof process === "undefined" || !process.versions?.node) {
    return ofAddress(text, options);
  }
  return ofPath(text.startsWith("file:") ? new URL(text) : text);
}
