// How the tests of the viewer start Debian's Chromium: without a graphics card.
import { existsSync } from "node:fs";
import { createRequire } from "node:module";
import { join } from "node:path";

const executablePath = ["/usr/bin/chromium", "/usr/bin/chromium-browser"].find(existsSync);

/** Why nothing can be started; false where Chromium is there. */
export const skip = executablePath ? false : "no chromium here";

/** What starts browsers, out of the package's folder, and with which options. */
export function starter(folder, moreArguments = []) {
  const { chromium } = createRequire(join(folder, "package.json"))("playwright-core");
  const args = ["--no-sandbox", "--use-angle=swiftshader", "--enable-unsafe-swiftshader"];
  return { chromium, options: { executablePath, args: [...args, ...moreArguments] } };
}

/** A browser; the caller closes it. */
export function launch(folder) {
  const { chromium, options } = starter(folder);
  return chromium.launch(options);
}
