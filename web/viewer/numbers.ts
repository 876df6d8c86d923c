type NumberArray = Float32Array | Uint32Array | Int8Array | Uint8Array;

/** Grows as numbers are put behind each other. */
export class Numbers<Kind extends NumberArray> {
  length = 0;
  constructor(private array: Kind) {}

  put(values: ArrayLike<number>): void {
    const end = this.length + values.length;
    if (end > this.array.length) {
      const Make = this.array.constructor as new (length: number) => Kind;
      const grown = new Make(Math.max(end, 2 * this.array.length));
      grown.set(this.array.subarray(0, this.length));
      this.array = grown;
    }
    this.array.set(values, this.length);
    this.length = end;
  }
  /** A copy that is as long as what was put. */
  taken(): Kind {
    return this.array.slice(0, this.length) as Kind;
  }
}
