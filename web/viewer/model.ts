import type { Floor } from "../src/index.js";
import { FileLink } from "./filelink.js";
import type { BatchName, FloorList } from "./messages.js";

/** Why an element is not shown; more than one may hold. */
export const Hidden = { byUser: 1, byFloor: 2, byIsolation: 4, byLayer: 8, byComparison: 16 } as const;
export type HiddenReason = (typeof Hidden)[keyof typeof Hidden];

/** How an element is shown. */
export interface Shade {
  /** A byte each of red, green and blue from the lowest on; null for the file's own. */
  tint: number | null;
  isSelected: boolean;
  isGhost: boolean;
}

export interface ModelFloor {
  number: number;
  name: string;
  /** The number in the model of its first element; the others follow. */
  begin: number;
  guids: string[];
  names: string[];
  classNames: string[];
  classOf: Uint16Array;
}

/** Where an instance is drawn. */
export interface Instance {
  batch: BatchName;
  id: number;
}

/** An element of a file that is on the page. */
export interface Ref {
  model: Model;
  element: number;
}

/** Instances of one batch, by their element: chains through arrays, since there may be many. */
class Instances {
  elementOf = new Uint32Array(64);
  colours = new Uint32Array(64);
  private nextOf = new Int32Array(64);
  private lastOf = new Int32Array(64).fill(-1);
  count = 0;

  add(element: number, colour: number): void {
    if (this.count === this.elementOf.length) {
      this.elementOf = grown(this.elementOf, new Uint32Array(2 * this.count));
      this.colours = grown(this.colours, new Uint32Array(2 * this.count));
      this.nextOf = grown(this.nextOf, new Int32Array(2 * this.count));
    }
    while (element >= this.lastOf.length) {
      this.lastOf = grown(this.lastOf, new Int32Array(2 * this.lastOf.length).fill(-1));
    }
    this.elementOf[this.count] = element;
    this.colours[this.count] = colour;
    this.nextOf[this.count] = this.lastOf[element]!;
    this.lastOf[element] = this.count++;
  }
  *of(element: number): Generator<number> {
    for (let id = this.lastOf[element] ?? -1; id >= 0; id = this.nextOf[id]!) yield id;
  }
}

function grown<Kind extends Uint32Array | Int32Array>(old: Kind, room: Kind): Kind {
  room.set(old);
  return room;
}

let made = 0;

/** A file on the page: what its floors hold, and what of it is shown how. */
export class Model {
  readonly link = new FileLink();
  /** Tells models apart, whatever their names. */
  readonly number = made++;
  readonly floors: ModelFloor[] = [];
  /** What the floors that came say of themselves. */
  levels: Floor[] = [];
  elementCount = 0;
  missing = 0;
  /** Why each element is hidden; 0 shows it. */
  hidden = new Uint8Array(0);
  readonly instances: Record<BatchName, Instances> = {
    solid: new Instances(), edges: new Instances(), glass: new Instances(),
  };

  constructor(
    readonly name: string,
    /** Told in links; by which the file could be opened again. */
    readonly source: string | Blob,
  ) {}

  /** Takes a floor's elements, and answers their floor. Their instances are added by the drawing. */
  addFloor({ floor, level, guids, names, classNames, classOf }: FloorList): ModelFloor {
    this.levels[floor] = level;
    const added = {
      number: floor, name: level.name, begin: this.elementCount, guids, names, classNames, classOf,
    };
    this.floors.push(added);
    this.elementCount += guids.length;
    const hidden = new Uint8Array(this.elementCount);
    hidden.set(this.hidden);
    this.hidden = hidden;
    return added;
  }

  floorOf(element: number): ModelFloor {
    let low = 0, high = this.floors.length - 1;
    while (low < high) {
      const middle = (low + high + 1) >> 1;
      if (this.floors[middle]!.begin <= element) low = middle;
      else high = middle - 1;
    }
    return this.floors[low]!;
  }
  guid(element: number): string {
    const floor = this.floorOf(element);
    return floor.guids[element - floor.begin]!;
  }
  title(element: number): string {
    const floor = this.floorOf(element);
    return floor.names[element - floor.begin] || this.className(element);
  }
  className(element: number): string {
    const floor = this.floorOf(element);
    return floor.classNames[floor.classOf[element - floor.begin]!]!;
  }
  /** Floor and position, by which the file knows an element. */
  place(element: number): [number, number] {
    const floor = this.floorOf(element);
    return [floor.number, element - floor.begin];
  }
  /** The element at a place; -1 where its floor is not on the page. */
  at(floor: number, position: number): number {
    const found = this.floors.find(({ number }) => number === floor);
    return found && position < found.guids.length ? found.begin + position : -1;
  }
  /** The elements of a class on a floor, or of all its classes. */
  elementsOf(floor: ModelFloor, classNumber?: number): number[] {
    const found: number[] = [];
    for (let i = 0; i < floor.guids.length; ++i) {
      if (classNumber === undefined || floor.classOf[i] === classNumber) found.push(floor.begin + i);
    }
    return found;
  }
  find(guid: string): number {
    for (const floor of this.floors) {
      const position = floor.guids.indexOf(guid);
      if (position >= 0) return floor.begin + position;
    }
    return -1;
  }

  /** Sets or clears one reason to hide an element; tells whether that changed what is seen. */
  hide(element: number, reason: HiddenReason, hides: boolean): boolean {
    const before = this.hidden[element]!;
    const after = hides ? before | reason : before & ~reason;
    this.hidden[element] = after;
    return (before === 0) !== (after === 0);
  }

  *instancesOf(element: number): Generator<Instance> {
    for (const batch of ["solid", "edges", "glass"] as const) {
      for (const id of this.instances[batch].of(element)) yield { batch, id };
    }
  }
}
