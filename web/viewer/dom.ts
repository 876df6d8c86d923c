type Child = Node | string | null | undefined | false;

/** Makes an element: properties as given, "on..." as listeners, "aria-..." and such as attributes. */
export function make<Tag extends keyof HTMLElementTagNameMap>(
  tag: Tag,
  properties: Record<string, unknown> = {},
  ...children: Child[]
): HTMLElementTagNameMap[Tag] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (value === undefined) continue;
    if (name.startsWith("on")) element.addEventListener(name.slice(2), value as EventListener);
    else if (name.includes("-") || name === "role" || name === "for") {
      element.setAttribute(name, String(value));
    } else Object.assign(element, { [name]: value });
  }
  element.append(...children.filter((child): child is Node | string => Boolean(child) || child === ""));
  return element;
}

export function byId<Kind extends HTMLElement = HTMLElement>(id: string): Kind {
  const found = document.getElementById(id);
  if (found === null) throw new Error(`the page has no ${id}`);
  return found as Kind;
}

/** Puts other children into an element. */
export function fill(parent: Element, ...children: Child[]): void {
  parent.replaceChildren(...children.filter((child): child is Node | string => Boolean(child)));
}

/** Offers bytes to be saved under a name. */
export function save(name: string, content: Blob): void {
  const address = URL.createObjectURL(content);
  make("a", { href: address, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(address), 10_000);
}

export async function copy(text: string): Promise<void> {
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    // A page from a disk may not reach the clipboard; an old way still may.
    const area = make("textarea", { value: text });
    document.body.append(area);
    area.select();
    document.execCommand("copy");
    area.remove();
  }
}

let ending: ReturnType<typeof setTimeout> | undefined;

/** Says something in passing, to the eye and to screen readers. */
export function say(text: string, seconds = 5): void {
  const place = byId("message");
  place.textContent = text;
  place.hidden = false;
  clearTimeout(ending);
  ending = setTimeout(() => (place.hidden = true), seconds * 1000);
}

/** A number as people read it, with at most `digits` behind the point. */
export function readable(value: number, digits = 3): string {
  return value.toLocaleString("en", { maximumFractionDigits: digits });
}
/** Metres as text, in millimetres where they are few. */
export function lengthText(metres: number): string {
  return `${metres.toFixed(3)} m`;
}

/** The canvas with a context of one sample a pixel where the processor does the graphics card's work,
 * for which more are too many; else one like it in its place, which has none yet. A context tells who
 * draws only once it is there, and where the processor does, a second one costs a second. */
export function canvasToDrawOn(canvas: HTMLCanvasElement): HTMLCanvasElement {
  const gl = canvas.getContext("webgl2", { antialias: false, stencil: true });
  if (gl === null) return canvas; // the renderer says why
  const names = gl.getExtension("WEBGL_debug_renderer_info");
  const name = names ? String(gl.getParameter(names.UNMASKED_RENDERER_WEBGL)) : "";
  if (/swiftshader|llvmpipe|softpipe|basic render/i.test(name)) return canvas;
  const fresh = canvas.cloneNode() as HTMLCanvasElement;
  canvas.replaceWith(fresh);
  gl.getExtension("WEBGL_lose_context")?.loseContext();
  return fresh;
}
