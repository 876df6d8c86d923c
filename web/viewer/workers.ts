/** The page's text of an element that carries code or data. */
export function textOf(id: string): string {
  return document.getElementById(id)?.textContent?.trim() ?? "";
}

let address: string | undefined;

/** A worker for a file, which begins to get ready; where `src` is named, with that file. */
export function started(src?: string): Worker {
  // A worker out of a text, since a page from a disk has no address to load one from.
  address ??= URL.createObjectURL(new Blob([textOf("zvg-worker")]));
  const worker = new Worker(address);
  worker.postMessage({ wasm: textOf("zvg-wasm"), src });
  return worker;
}
