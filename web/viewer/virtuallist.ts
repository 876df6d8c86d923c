import { make } from "./dom.js";

/** A list of equally high rows that are made as they come into sight. */
export class VirtualList {
  private readonly filler = make("div", { className: "filler" });
  private readonly made = new Map<number, HTMLElement>();
  private count = 0;

  /** `row` makes the row of an index. */
  constructor(
    readonly element: HTMLElement,
    private readonly rowHeight: number,
    private readonly row: (index: number) => HTMLElement,
  ) {
    element.append(this.filler);
    element.addEventListener("scroll", () => this.fill(), { passive: true });
    new ResizeObserver(() => this.fill()).observe(element);
  }

  /** Makes all rows anew. */
  refresh(count: number): void {
    this.count = count;
    this.filler.style.height = `${count * this.rowHeight}px`;
    const focused = [...this.made].find(([, row]) => row.contains(document.activeElement))?.[0];
    for (const row of this.made.values()) row.remove();
    this.made.clear();
    this.fill();
    if (focused !== undefined) this.made.get(focused)?.focus({ preventScroll: true });
  }

  /** Scrolls a row into sight, and answers it. */
  reveal(index: number): HTMLElement | undefined {
    const { element, rowHeight } = this;
    const top = index * rowHeight;
    if (top < element.scrollTop) element.scrollTop = top;
    else if (top + rowHeight > element.scrollTop + element.clientHeight) {
      element.scrollTop = top + rowHeight - element.clientHeight;
    }
    this.fill();
    return this.made.get(index);
  }

  private fill(): void {
    const { element, rowHeight } = this;
    const first = Math.max(0, Math.floor(element.scrollTop / rowHeight) - 4);
    const end = Math.min(this.count,
      Math.ceil((element.scrollTop + element.clientHeight) / rowHeight) + 4);
    for (const [index, row] of this.made) {
      if (index < first || index >= end) {
        row.remove();
        this.made.delete(index);
      }
    }
    for (let index = first; index < end; ++index) {
      if (this.made.has(index)) continue;
      const row = this.row(index);
      row.style.transform = `translateY(${index * rowHeight}px)`;
      this.made.set(index, row);
      this.filler.append(row);
    }
  }
}
