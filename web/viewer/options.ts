import { byId, fill, make } from "./dom.js";

/** The one card that holds what the tool in use asks and tells. */
export class Options {
  private owner: string | null = null;
  private ended: (() => void) | null = null;

  /** Shows a tool's own; whatever was there ends. */
  open(owner: string, title: string, content: Node[], ended: () => void = () => undefined): void {
    if (this.owner !== null && this.owner !== owner) this.close();
    this.owner = owner;
    this.ended = ended;
    const card = byId("options");
    fill(card,
      make("button", {
        className: "plain", style: "float:right", "aria-label": "Close", onclick: () => this.close(),
      }, "×"),
      make("h2", {}, title), ...content);
    card.hidden = false;
  }

  close(): void {
    if (this.owner === null) return;
    this.owner = null;
    byId("options").hidden = true;
    this.ended?.();
    for (const tell of this.closed) tell();
  }
  readonly closed = new Set<() => void>();

  isOpen(owner: string): boolean {
    return this.owner === owner;
  }
}
