import type { Instance } from "./module.js";
import type { RangeReader } from "./ranges.js";

/** Why a call failed. */
export type Status = "internal" | "usage" | "input-output" | "damaged" | "not-found" | "cancelled";

const statuses: readonly Status[] = ["internal", "usage", "input-output", "damaged", "not-found",
  "cancelled"]; // as ZVSmartModel::Status numbers them, from 1 on

/** What every call here rejects with. */
export class BlockFileError extends Error {
  override readonly name = "BlockFileError";

  constructor(
    readonly status: Status,
    message: string,
    /** The byte in the file at which the first damage was met; null where nobody knows. */
    readonly position: number | null = null,
    options?: ErrorOptions,
  ) {
    super(message, options);
  }
}

const missing = 7;
const blockBytes = 64 << 10;
const leastRequest = 2 * blockBytes;
const mostRequest = 2 << 20;
/** The file's last bytes come with what stands ahead of them: the index lies there, most times all of it. */
const tailBytes = 192 << 10;

/**
 * Asks the module about one file, call by call. A call that misses bytes tells which; they are
 * fetched, and the call is made again. Requests that go on where another ended double: a walk reads
 * elements here and their geometries there.
 */
export class Session {
  private readonly pointer: number;
  private last: Promise<unknown> = Promise.resolve();
  private isClosed = false;
  /** Blocks that came before; the module may have let some go. */
  private readonly seen = new Set<number>();
  /** How long requests were, by their ends. */
  private readonly lengths = new Map<number, number>();

  constructor(
    readonly instance: Instance,
    private readonly reader: RangeReader,
    private readonly unlimited: boolean,
  ) {
    this.pointer = instance.calls.zvg_begin(reader.size, unlimited ? 1 : 0) >>> 0;
    if (this.pointer === 0) throw new BlockFileError("internal", "out of memory");
  }

  /** Makes a call, behind those that are under way, and reads its answer before the next. */
  ask<Result>(
    call: (calls: Instance["calls"], session: number) => number,
    read: (answer: Uint8Array<ArrayBuffer>) => Result,
  ): Promise<Result> {
    return this.inTurn(async () => {
      for (;;) {
        const status = this.guarded(() => call(this.instance.calls, this.pointer));
        const answer = this.answer();
        if (status === 0) return read(answer);
        if (status !== missing) throw this.errorOf(status, answer);
        const [position, size] = new Float64Array(answer.slice().buffer);
        await this.bring(position!, size!);
      }
    });
  }

  /** The same for a call that answers one JSON text. */
  askForJson<Result>(
    call: (calls: Instance["calls"], session: number) => number,
  ): Promise<Result> {
    return this.ask(call, (answer) => JSON.parse(new TextDecoder().decode(answer)) as Result);
  }

  /** Hands the whole file to the verifier, and reads what it answers. Its memory goes with it. */
  verify<Result>(verifier: Instance): Promise<Result> {
    return this.inTurn(async () => {
      const session = new Session(verifier, this.reader, this.unlimited);
      for (let at = 0; at < this.reader.size; at += mostRequest) {
        await session.fetch(at, Math.min(this.reader.size, at + mostRequest));
      }
      return session.askForJson<Result>((calls, it) => calls.zvg_verify(it));
    });
  }

  /** Does `act` behind what is under way. */
  inTurn<Result>(act: () => Promise<Result>): Promise<Result> {
    const turn = this.last.then(() => {
      if (this.isClosed) throw new BlockFileError("usage", "the file is closed");
      return act();
    });
    this.last = turn.catch(() => undefined);
    return turn;
  }

  /** Ends all, behind what is under way. */
  async close(): Promise<void> {
    await this.last;
    if (this.isClosed) return;
    this.isClosed = true;
    this.instance.calls.zvg_end(this.pointer);
    await this.reader.close?.();
  }

  /** Begins a walk; its pointer is the calls' own. */
  begin(call: (calls: Instance["calls"], session: number) => number): Promise<number> {
    return this.inTurn(async () => {
      const pointer = this.guarded(() => call(this.instance.calls, this.pointer)) >>> 0;
      if (pointer === 0) throw this.errorOf(2, this.answer());
      return pointer;
    });
  }

  /** Ends a walk, unless all has ended. */
  async end(call: (calls: Instance["calls"]) => void): Promise<void> {
    await this.inTurn(async () => call(this.instance.calls)).catch(() => undefined);
  }

  private answer(): Uint8Array<ArrayBuffer> {
    const { calls } = this.instance;
    return this.instance.view(calls.zvg_answer(this.pointer), calls.zvg_answer_size(this.pointer));
  }

  private errorOf(status: number, answer: Uint8Array): BlockFileError {
    const text = new TextDecoder().decode(answer) || '{"message":"out of memory"}';
    const told = JSON.parse(text) as { message: string; position?: number | null };
    return new BlockFileError(statuses[status - 1] ?? "internal", told.message, told.position);
  }

  /** A module that trapped is of no more use. */
  private guarded<Result>(act: () => Result): Result {
    try {
      return act();
    } catch (error) {
      this.isClosed = true;
      throw new BlockFileError("internal", `the module failed: ${String(error)}`, null, {
        cause: error,
      });
    }
  }

  /** Fetches what was missed with what is likely to be asked for next: what follows, and in the
   * first request to a place what stands before it, where offsets and heads lead to. */
  private async bring(position: number, size: number): Promise<void> {
    const blocks = Math.floor(position / blockBytes);
    let first = blocks * blockBytes;
    const before = this.lengths.get(first) ?? 0;
    const length = Math.max(size + position - first, leastRequest,
      Math.min(2 * before, mostRequest));
    let end = Math.min(this.reader.size, Math.ceil((first + length) / blockBytes) * blockBytes);
    if (this.reader.size - end < tailBytes) end = this.reader.size;
    while (end - blockBytes > position + size && this.seen.has(Math.floor((end - 1) / blockBytes))) {
      end = Math.floor((end - 1) / blockBytes) * blockBytes;
    }
    if (before === 0 && first > 0 && !this.seen.has(blocks - 1)) first -= blockBytes;
    await this.fetch(first, end);
    this.lengths.delete(first);
    this.lengths.set(end, end - first);
  }

  private async fetch(first: number, end: number): Promise<void> {
    let bytes: Uint8Array;
    try {
      bytes = await this.reader.read(first, end - first);
    } catch (error) {
      const message = error instanceof Error ? error.message : String(error);
      throw new BlockFileError("input-output", message, null, { cause: error });
    }
    if (bytes.byteLength !== end - first) {
      throw new BlockFileError("input-output", `${end - first} bytes at ${first} did not all come`);
    }
    for (let at = first; at < end; at += blockBytes) {
      const block = bytes.subarray(at - first, at - first + blockBytes);
      const status = this.guarded(() => this.instance.lend(block, (pointer, size) =>
        this.instance.calls.zvg_bring(this.pointer, at, pointer, size)));
      if (status !== 0) throw this.errorOf(status, this.answer());
      this.seen.add(at / blockBytes);
    }
  }
}
