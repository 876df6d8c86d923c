type NumberArray = Float32Array | Uint32Array | Int8Array | Uint8Array;

/** Grows as numbers are put behind each other. */
export class Numbers<Kind extends NumberArray> {
  length = 0;
  constructor(public array: Kind) {}

  /** Puts values, each greater by `more`. */
  put(values: ArrayLike<number>, more = 0): void {
    const begin = this.grow(values.length);
    if (more === 0) this.array.set(values, begin);
    else for (let i = 0; i < values.length; ++i) this.array[begin + i] = values[i]! + more;
  }
  /** Puts one value `count` times. */
  fill(value: number, count: number): void {
    const begin = this.grow(count);
    this.array.fill(value, begin, begin + count);
  }
  /** Puts what stands in others, which are empty then. */
  take(others: Numbers<Kind>): void {
    this.put(others.view());
    others.length = 0;
  }
  /** Makes room behind what is there, to be written to in `array`, and answers where it begins. */
  grow(count: number): number {
    const begin = this.length;
    this.length += count;
    if (this.length > this.array.length) {
      const Make = this.array.constructor as new (length: number) => Kind;
      const grown = new Make(Math.max(this.length, 2 * this.array.length));
      grown.set(this.array.subarray(0, begin));
      this.array = grown;
    }
    return begin;
  }
  /** What was put, where it stands. */
  view(): Kind {
    return this.array.subarray(0, this.length) as Kind;
  }
  /** A copy that is as long as what was put. */
  taken(): Kind {
    return this.array.slice(0, this.length) as Kind;
  }
}
