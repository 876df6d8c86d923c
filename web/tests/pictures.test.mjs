// Holds what the viewer draws against pictures in pictures/, with a tolerance for another release of the
// browser. ZVG_PICTURES=write writes them anew; look at them then.
import assert from "node:assert/strict";
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { launch, skip } from "./browser.mjs";

const { ZVG_PACKAGE: folder, ZVG_FILES: files, ZVG_PICTURES: mode } = process.env;
const kept = new URL("pictures/", import.meta.url).pathname;
const scratch = mkdtempSync(join(tmpdir(), "zvg-pictures-"));

let browser;
before(async () => {
  if (!skip) browser = await launch(folder);
});
after(async () => {
  await browser?.close();
  rmSync(scratch, { recursive: true });
});

/** The canvas as base64 of a PNG. */
const taken = (page) => page.evaluate(async () => {
  const canvas = document.getElementById("canvas");
  const copy = new OffscreenCanvas(canvas.width, canvas.height);
  zvgViewer.draw();
  copy.getContext("2d").drawImage(canvas, 0, 0);
  const bytes = new Uint8Array(await (await copy.convertToBlob()).arrayBuffer());
  return btoa(String.fromCharCode(...bytes));
});

/** How far two pictures differ where either shows something: on average, of 255; and the share of pixels
 * that look different. */
const difference = (page, pictures) => page.evaluate(async (given) => {
  const [a, b] = await Promise.all(given.map(async (base64) => {
    const bytes = Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0));
    const bitmap = await createImageBitmap(new Blob([bytes], { type: "image/png" }));
    const context = new OffscreenCanvas(bitmap.width, bitmap.height).getContext("2d");
    context.drawImage(bitmap, 0, 0);
    return context.getImageData(0, 0, bitmap.width, bitmap.height);
  }));
  if (a.width !== b.width || a.height !== b.height) return { mean: 255, share: 1 };
  let sum = 0, different = 0, pixels = 0;
  const isGround = ({ data }, i) => [0, 1, 2].every((channel) => data[i + channel] === b.data[channel]);
  for (let i = 0; i < a.data.length; i += 4) {
    if (isGround(a, i) && isGround(b, i)) continue;
    pixels += 1;
    const off = [0, 1, 2].map((channel) => Math.abs(a.data[i + channel] - b.data[i + channel]));
    sum += off[0] + off[1] + off[2];
    different += Math.max(...off) > 24;
  }
  return { mean: sum / (3 * pixels), share: different / pixels };
}, pictures);

const find = async (page, text) => page.evaluate(async (name) => {
  const [model] = zvgViewer.models();
  const element = [...Array(model.elementCount).keys()].find((each) => model.title(each) === name);
  zvgViewer.show({ ...zvgViewer.view(), selected: [model.guid(element)] });
}, text);

const views = {
  house: { file: "house" },
  section: {
    file: "house",
    async arrange(page) {
      await page.evaluate(() => {
        const view = zvgViewer.view();
        zvgViewer.show({ ...view, cut: { ...view.cut, limits: [null, null, null, null, null, 1.5] } });
      });
    },
  },
  xray: {
    file: "house",
    async arrange(page) {
      await find(page, "Back wall");
      await page.evaluate(() => document.getElementById("tool-xray").click());
    },
  },
  bodies: { file: "bodies" },
  instances: { file: "instances" },
};

for (const [name, { file, arrange }] of Object.entries(views)) {
  test(`the picture of ${name} is the expected one`, { skip }, async () => {
    const html = readFileSync(join(folder, "../viewer.html"), "utf8");
    const bytes = readFileSync(join(files, `${file}.zvg`)).toString("base64");
    const path = join(scratch, `${name}.html`);
    writeFileSync(path, html.replace("<!-- zvg:files -->", () =>
      `<script type="application/octet-stream" class="zvg-file" data-name="m.zvg">${bytes}</script>`));
    const page = await browser.newPage({ viewport: { width: 320, height: 200 }, colorScheme: "light" });
    page.setDefaultTimeout(120_000);
    try {
      await page.goto(pathToFileURL(path).href);
      await page.waitForFunction(() => performance.getEntriesByName("zvg:opened").length > 0, null,
        { polling: 100 });
      await arrange?.(page);
      const picture = await taken(page);
      const expected = join(kept, `${name}.png`);
      if (mode === "write") {
        mkdirSync(kept, { recursive: true });
        writeFileSync(expected, Buffer.from(picture, "base64"));
      }
      const { mean, share } = await difference(page,
        [picture, readFileSync(expected).toString("base64")]);
      const told = `${mean.toFixed(2)} of 255 on average, ${(share * 100).toFixed(1)} % of what is drawn`;
      assert.ok(mean < 5 && share < 0.05, told);
    } finally {
      await page.close();
    }
  });
}
