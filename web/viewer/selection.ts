import { accent, type Drawing } from "./drawing.js";
import { Hidden, type HiddenReason, type Model, type Ref, type Shade } from "./model.js";

const sameRef = (a: Ref | null, b: Ref | null): boolean =>
  a?.model === b?.model && a?.element === b?.element;

/** What is selected, hovered, hidden and tinted, over all files on the page. */
export class Selection {
  readonly changed = new Set<() => void>();
  /** Behind a change of what is hidden. */
  readonly shownChanged = new Set<() => void>();
  private readonly chosen = new Map<Model, Set<number>>();
  private hovered: Ref | null = null;
  private isXray = false;
  /** Colours by which something is told apart; null for elements that have none. */
  private tintOf: ((model: Model, element: number) => number | null) | null = null;

  constructor(
    readonly models: Model[],
    private readonly drawing: Drawing,
  ) {
    drawing.shadeOf = (model, element) => this.shadeOf(model, element);
  }

  get refs(): Ref[] {
    return [...this.chosen].flatMap(([model, elements]) =>
      [...elements].map((element) => ({ model, element })));
  }
  get xray(): boolean {
    return this.isXray;
  }
  has({ model, element }: Ref): boolean {
    return this.chosen.get(model)?.has(element) ?? false;
  }

  /** Selects these and nothing else; or these too, and those no more that were. */
  select(refs: Ref[], toggles = false): void {
    const before = this.refs;
    if (!toggles) this.chosen.clear();
    for (const ref of refs) {
      const own = this.chosen.get(ref.model) ?? new Set();
      if (toggles && own.has(ref.element)) own.delete(ref.element);
      else own.add(ref.element);
      this.chosen.set(ref.model, own);
    }
    for (const { model, element } of [...before, ...refs]) this.refresh(model, element);
    for (const tell of this.changed) tell();
  }

  hover(ref: Ref | null): void {
    if (sameRef(ref, this.hovered)) return;
    const before = this.hovered;
    this.hovered = ref;
    for (const each of [before, ref]) if (each) this.refresh(each.model, each.element);
  }

  /** Hides or shows elements for a reason. */
  hide(refs: Iterable<Ref>, reason: HiddenReason, hides: boolean): void {
    for (const { model, element } of refs) {
      if (model.hide(element, reason, hides)) this.refresh(model, element);
    }
    this.tellShown();
  }
  /** Hides for a reason all that `hides` tells. */
  hideWhere(reason: HiddenReason, hides: (model: Model, element: number) => boolean): void {
    for (const model of this.models) {
      for (let element = 0; element < model.elementCount; ++element) {
        if (model.hide(element, reason, hides(model, element))) this.refresh(model, element);
      }
    }
    this.tellShown();
  }
  showAll(): void {
    for (const reason of [Hidden.byUser, Hidden.byIsolation]) this.hideWhere(reason, () => false);
    this.setXray(false);
  }
  isolate(): void {
    const any = this.refs.length > 0;
    this.hideWhere(Hidden.byIsolation, (model, element) => any && !this.has({ model, element }));
  }
  setXray(is: boolean): void {
    this.isXray = is;
    this.drawing.refreshAll();
    this.tellShown();
  }
  setTints(tintOf: ((model: Model, element: number) => number | null) | null): void {
    this.tintOf = tintOf;
    this.drawing.refreshAll();
  }
  forget(model: Model): void {
    this.chosen.delete(model);
    if (this.hovered?.model === model) this.hovered = null;
    for (const tell of this.changed) tell();
  }

  private shadeOf(model: Model, element: number): Shade {
    const isSelected = this.has({ model, element });
    let tint = this.tintOf?.(model, element) ?? null;
    if (!isSelected && this.hovered?.model === model && this.hovered.element === element) {
      tint = hoverTint;
    }
    return { tint, isSelected, isGhost: this.isXray && !isSelected };
  }
  private refresh(model: Model, element: number): void {
    if (!this.models.includes(model)) return;
    this.drawing.refresh(model, element);
    this.drawing.invalidate();
  }
  private tellShown(): void {
    this.drawing.invalidate();
    for (const tell of this.shownChanged) tell();
  }
}

/** Lighter than the accent. */
const hoverTint = ((accent & 0xfefefe) >>> 1) + 0x7f7f7f;
