// Runs ahead of the page's own code, which holds its thread up until the graphics card is ready: the
// worker of the first file is on its way by then, for starting one takes this thread for a moment.
import { started, textOf } from "./workers.js";

/** The page's code runs in any case, and says what is wrong. */
const longestWait = 1000;

const src = new URLSearchParams(location.search).get("src");
const worker = started(src === null ? undefined : new URL(src, location.href).href);
let hasRun = false;
function run(): void {
  if (hasRun) return;
  hasRun = true;
  const script = document.createElement("script");
  script.textContent = textOf("zvg-page");
  document.body.append(script);
}
worker.addEventListener("message", run, { once: true });
worker.addEventListener("error", run, { once: true });
setTimeout(run, longestWait);
Object.assign(window, { zvgWorkerAhead: worker });
