import { byId, say } from "./dom.js";
import type { Drawing } from "./drawing.js";
import { FileError } from "./filelink.js";
import type { FloorPart } from "./messages.js";
import { Model, type ModelFloor } from "./model.js";
import type { Selection } from "./selection.js";

/** A file to be opened. */
interface Wanted {
  name: string;
  source: string | Blob;
}

/** The server of this page packs what is dropped, and gives files by ranges. */
export const isServed = document.querySelector('meta[name="zvg-serve"]') !== null;

function bytesOf(base64: string): Blob {
  const text = atob(base64.trim());
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return new Blob([bytes]);
}

/** What the page holds, or its address names. */
function wantedAtStart(): Wanted[] {
  const held = [...document.querySelectorAll<HTMLScriptElement>("script.zvg-file")].map((each) => {
    const source = bytesOf(each.textContent ?? "");
    each.textContent = ""; // held once
    return { name: each.dataset.name ?? "model.zvg", source };
  });
  const named = new URLSearchParams(location.search).getAll("src").map((src) => {
    const address = new URL(src, location.href);
    const last = address.pathname.split("/").at(-1) ?? src;
    return { name: decodeURIComponent(last), source: address.href };
  });
  return [...held, ...named];
}

/** Opens files, and brings their floors to the page one by one. */
export class Files {
  /** Ahead of each floor's drawing. */
  readonly arrived = new Set<(model: Model, floor: ModelFloor) => void>();
  /** Behind each part of it: with the elements that were drawn, and whether the floor is whole. */
  readonly grew = new Set<(model: Model, elements: Set<number>, endsFloor: boolean) => void>();
  /** Behind all of a file. */
  readonly opened = new Set<(model: Model) => void>();
  readonly closed = new Set<(model: Model) => void>();
  private origin: number[] | null = null;
  private readonly faults = new Map<Model, string[]>();

  constructor(
    private readonly selection: Selection,
    private readonly drawing: Drawing,
  ) {
    const input = byId<HTMLInputElement>("file");
    input.addEventListener("change", () => {
      void this.take([...(input.files ?? [])]).then(() => (input.value = ""));
    });
    byId("welcome-open").addEventListener("click", () => this.ask());
    const isOver = (is: boolean) => document.body.classList.toggle("dropping", is);
    addEventListener("dragover", (event) => {
      event.preventDefault();
      isOver(true);
    });
    addEventListener("dragleave", (event) => event.relatedTarget === null && isOver(false));
    addEventListener("drop", (event) => {
      event.preventDefault();
      isOver(false);
      void this.take([...(event.dataTransfer?.files ?? [])]);
    });
  }

  /** What else than block files a drop may bring: takes it and tells, or leaves it. */
  takeOther: (file: File) => boolean = () => false;

  /** Where (0, 0, 0) of the drawing lies in the models' coordinates. */
  get drawingOrigin(): number[] {
    return this.origin ?? [0, 0, 0];
  }

  /** Lets the user choose files. */
  ask(): void {
    byId("file").click();
  }

  async start(): Promise<void> {
    const wanted = wantedAtStart();
    byId("welcome").hidden = wanted.length > 0;
    for (const each of wanted) await this.open(each);
  }

  /** Opens files that the user brought; a server packs what is no block file. */
  async take(files: File[]): Promise<void> {
    for (const file of files) {
      if (this.takeOther(file)) continue;
      if (file.name.toLowerCase().endsWith(".zvg") || !isServed) {
        await this.open({ name: file.name, source: file });
      } else await this.pack(file);
    }
  }

  close(model: Model): void {
    const { models } = this.selection;
    if (!models.includes(model)) return;
    models.splice(models.indexOf(model), 1);
    model.link.close();
    this.faults.delete(model);
    this.selection.forget(model);
    this.drawing.remove(model);
    this.tellFaults();
    if (models.length === 0) byId("welcome").hidden = false;
    for (const tell of this.closed) tell(model);
  }

  private async open({ name, source }: Wanted): Promise<void> {
    const model = new Model(name, source);
    byId("welcome").hidden = true;
    say(`Opening ${name} …`, 600);
    this.selection.models.push(model);
    this.drawing.add(model);
    try {
      await model.link.ask("open", source, this.origin);
      await this.draw(model);
      if (!this.selection.models.includes(model)) return;
      byId("message").hidden = true;
      if (model.elementCount === 0) say(`${name} holds no elements.`);
      await this.checkDamage(model);
      this.finish(model);
    } catch (error) {
      if (!this.selection.models.includes(model)) return; // closed meanwhile
      byId("message").hidden = true;
      this.blame(model, [error instanceof FileError ? whyNot(error) : String(error)]);
      if (model.elementCount > 0) {
        await this.checkDamage(model).catch(() => undefined);
        this.finish(model);
      }
    }
  }

  private finish(model: Model): void {
    this.drawing.finish(model);
    for (const tell of this.opened) tell(model);
  }

  private async draw(model: Model): Promise<void> {
    let coming: Promise<FloorPart | null> | null = null;
    for (;;) {
      const part: FloorPart | null = await (coming ?? model.link.ask("next"));
      coming = null;
      if (part === null || !this.selection.models.includes(model)) return;
      this.origin ??= await model.link.ask("origin");
      // Read while this one is drawn; but the first floor shows ahead of other floors' bytes.
      if (model.floors.length > 1) {
        coming = model.link.ask("next");
        coming.catch(() => undefined); // awaited above
      }
      if (part.list !== null) {
        const floor = model.addFloor(part.list);
        for (const tell of this.arrived) tell(model, floor);
      }
      model.missing += part.missing;
      const elements = this.drawing.addPart(model, part);
      for (const tell of this.grew) tell(model, elements, part.endsFloor);
    }
  }

  /** Has the server make a block file of another model. */
  private async pack(file: File): Promise<void> {
    say(`Packing ${file.name} …`, 600);
    try {
      const response = await fetch(`/pack?name=${encodeURIComponent(file.name)}`,
        { method: "POST", body: file });
      const told = (await response.json()) as { src?: string; error?: string };
      if (!response.ok || told.src === undefined) throw new Error(told.error ?? response.statusText);
      const address = new URL(told.src, location.href);
      await this.open({ name: file.name, source: address.href });
    } catch (error) {
      say(`${file.name} was not packed: ${error instanceof Error ? error.message : error}`, 15);
    }
  }

  private async checkDamage(model: Model): Promise<void> {
    const damage = await model.link.ask("damage");
    const lines = damage.map(({ position, reason }) => `byte ${position}: ${reason}`);
    if (model.missing > 0) lines.push(`${model.missing} bodies are not in the file`);
    if (lines.length > 0) this.blame(model, lines);
  }

  private blame(model: Model, lines: string[]): void {
    this.faults.set(model, [...(this.faults.get(model) ?? []), ...lines]);
    this.tellFaults();
  }
  private tellFaults(): void {
    const most = 4;
    const texts = [...this.faults].map(([model, lines]) => {
      const rest = lines.length > most ? `; and ${lines.length - most} more` : "";
      const shown = model.elementCount > 0 ? " What can be read is shown." : "";
      return `${model.name} is damaged or cannot be read: ${lines.slice(0, most).join("; ")}${rest}.${shown}`;
    });
    byId("damage").textContent = texts.join("\n");
    byId("damage").hidden = texts.length === 0;
  }
}

function whyNot({ message, position }: FileError): string {
  return position === null ? message : `${message} (byte ${position})`;
}
