import assert from "node:assert/strict";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import { launch, skip } from "./browser.mjs";

const { ZVG_PACKAGE: folder, ZVG_FILES: files } = process.env;
const html = readFileSync(join(folder, "../viewer.html"), "utf8");
const read = (name) => readFileSync(join(files, name));

let browser;
const scratch = mkdtempSync(join(tmpdir(), "zvg-viewer-"));
before(async () => {
  if (!skip) browser = await launch(folder);
});
after(async () => {
  await browser?.close();
  rmSync(scratch, { recursive: true });
});

const opened = (page) =>
  page.waitForFunction(() => performance.getEntriesByName("zvg:opened").length > 0, null,
    { polling: 100 });

/** Lets `act` use a page at an address, and holds it to no error and no request elsewhere. */
async function visit(address, act, options = { viewport: { width: 1000, height: 640 } }) {
  const page = await browser.newPage(options);
  page.setDefaultTimeout(120_000); // software draws slowly where others work as well
  const faults = [];
  const { origin } = new URL(address);
  page.on("pageerror", (error) => faults.push(String(error)));
  page.on("console", (message) => message.type() === "error" && faults.push(message.text()));
  page.on("request", (request) => {
    const url = request.url();
    if (!/^(blob|data):/.test(url) && new URL(url).origin !== origin) faults.push(url);
  });
  try {
    await page.goto(address);
    await act(page);
    assert.deepEqual(faults, []);
  } finally {
    await page.close();
  }
}

/** The same on a page from disk that holds block files: [name, bytes] each. */
async function visitHolding(held, act, options) {
  const scripts = held.map(([name, bytes]) =>
    `<script type="application/octet-stream" class="zvg-file" data-name="${name}">`
    + `${bytes.toString("base64")}</script>`);
  const path = join(scratch, "page.html");
  writeFileSync(path, html.replace("<!-- zvg:files -->", () => scripts.join("\n")));
  await visit(pathToFileURL(path).href, async (page) => {
    if (held.length > 0) await opened(page);
    await act(page);
  }, options);
}

/** Serves the page and what is in `served` by its path, with ranges. */
async function serve(served, act, packed) {
  const asked = [];
  const server = createServer((request, response) => {
    const { pathname } = new URL(request.url, "http://none");
    if (request.method === "POST") {
      request.resume().on("end", () => packed(request, response));
      return;
    }
    if (pathname === "/") {
      const isServed = packed ? '<meta name="zvg-serve" content="1">' : "";
      response.setHeader("content-type", "text/html");
      response.end(html.replace("<!-- zvg:files -->", isServed));
      return;
    }
    const bytes = served[pathname];
    const [, first, last] = /^bytes=(\d+)-(\d+)$/.exec(request.headers.range ?? "") ?? [];
    if (bytes === undefined) return void response.writeHead(404).end();
    const part = first ? bytes.subarray(Number(first), Number(last) + 1) : bytes;
    asked.push(part.length);
    if (first) {
      const end = Number(first) + part.length - 1;
      response.setHeader("content-range", `bytes ${first}-${end}/${bytes.length}`);
    }
    response.writeHead(first ? 206 : 200).end(part);
  });
  await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
  try {
    await act(`http://127.0.0.1:${server.address().port}`, asked);
  } finally {
    server.close();
    server.closeAllConnections();
  }
}

const view = (page) => page.evaluate(() => zvgViewer.view());
/** A point of the model where it is in the window. */
async function pointAt(page, ...at) {
  const box = await page.locator("#canvas").boundingBox();
  const [x, y] = await page.evaluate((given) => zvgViewer.project(...given), at);
  return [box.x + x, box.y + y];
}
/** How many pixels of the picture are not background. */
const drawnPixels = (page) => page.evaluate(async () => {
  const canvas = document.getElementById("canvas");
  await new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve)));
  zvgViewer.draw();
  const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d");
  copy.drawImage(canvas, 0, 0);
  const { data } = copy.getImageData(0, 0, canvas.width, canvas.height);
  let count = 0;
  for (let i = 0; i < data.length; i += 4) {
    if ([0, 1, 2].some((c) => Math.abs(data[i + c] - data[c]) > 12)) count += 1;
  }
  return count;
});

test("a file that is chosen is drawn, and an element that is clicked says all of itself", { skip }, () =>
  visitHolding([], async (page) => {
    await page.setInputFiles("#file", join(files, "house.zvg"));
    await opened(page);
    assert.ok(await drawnPixels(page) > 50_000);
    const box = await page.locator("#canvas").boundingBox();
    await page.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
    await page.locator("#panel-body dl").first().waitFor();
    const { selected: [guid] } = await view(page);
    const panel = await page.locator("#panel-body").innerText();
    const { open } = await import(join(folder, "dist/index.js"));
    const file = await open(read("house.zvg"));
    const element = await file.element(guid);
    for (const text of [guid, element.className, element.properties.at(-1).name]) {
      assert.ok(panel.includes(text), text);
    }
    assert.ok(await page.locator(".row.selected").innerText() !== "");
    await file.close();
  }));

test("what the file places is drawn, a shape of the ground floor on the next as well", { skip }, () =>
  visitHolding([["house.zvg", read("house.zvg")]], async (page) => {
    const drawn = await page.evaluate(() => {
      const [model] = zvgViewer.models();
      const isDrawn = (element) => Object.values(model.instances)
        .some((batch) => !batch.of(element).next().done);
      return Array.from({ length: model.elementCount }, (_, element) => element).filter(isDrawn);
    });
    const { open } = await import(join(folder, "dist/index.js"));
    const file = await open(read("house.zvg"));
    const placed = new Set();
    let begin = 0;
    for (const [floor, { elements }] of (await file.floors).entries()) {
      for await (const { placements } of file.scene({ floor })) {
        for (const position of placements.elements) placed.add(begin + position);
      }
      begin += elements;
    }
    await file.close();
    assert.deepEqual(drawn, [...placed].sort((a, b) => a - b));
  }));

test("by address a file comes in ranges, the first floor before the rest", { skip }, () =>
  serve({ "/files/large.zvg": read("large.zvg") }, async (address, asked) => {
    await visit(`${address}/?src=/files/large.zvg`, async (page) => {
      await page.setViewportSize({ width: 500, height: 300 }); // all of it lies on one heap
      await page.waitForFunction(() =>
        performance.getEntriesByName("zvg:first-floor").length > 0, null, { polling: 5 });
      const sum = asked.reduce((all, each) => all + each, 0);
      assert.ok(sum < read("large.zvg").length * 0.8, `${sum} bytes to the first floor`);
      await opened(page);
      assert.ok(asked.length > 2 && asked.length < 20, `${asked.length} requests`);
      assert.equal(await page.evaluate(() => zvgViewer.models()[0].elementCount >= 660), true);
    });
  }));

test("sections, storeys, boxes of the tree, isolation and x-ray leave out what they say", { skip }, () =>
  visitHolding([["house.zvg", read("house.zvg")]], async (page) => {
    const whole = await drawnPixels(page);
    const less = async (what) => {
      const now = await drawnPixels(page);
      assert.ok(now < whole * 0.9, `${what}: ${now} of ${whole}`);
    };
    await page.click("#tool-section");
    await page.getByLabel("Z to").fill("1.5");
    await less("section");
    await page.click("text=No section");
    await page.locator("#storey-slider").fill("0");
    await less("storeys");
    await page.locator("#storey-slider").fill("9");
    assert.equal(await drawnPixels(page), whole);
    await page.getByLabel("Show Ground floor").uncheck();
    await less("tree");
    await page.getByLabel("Show Ground floor").check();
    await page.fill("#query", "House door");
    await page.locator("#results .row").first().click();
    const near = await drawnPixels(page);
    await page.click("#tool-isolate");
    assert.ok(await drawnPixels(page) < near * 0.9);
    await page.click("#tool-all");
    const solid = await page.locator("#canvas").screenshot();
    await page.click("#tool-xray");
    await page.waitForTimeout(300);
    assert.ok(!solid.equals(await page.locator("#canvas").screenshot()));
  }));

test("search finds by name, GUID and property", { skip }, () =>
  visitHolding([["house.zvg", read("house.zvg")]], async (page) => {
    const guid = await page.evaluate(() => zvgViewer.models()[0].guid(3));
    for (const [text, least, most] of [[guid, 1, 99], ["terrace door", 1, 3], ["oak", 10, 40],
      ["no such thing", 0, 0]]) {
      await page.fill("#query", text);
      await page.waitForTimeout(300);
      const found = Number.parseInt(await page.locator("#found").innerText());
      assert.ok(found >= least && found <= most, `${text}: ${found}`);
    }
  }));

test("a wall's known length is measured from corner to corner, and a face", { skip }, () =>
  visitHolding([["house.zvg", read("house.zvg")]], async (page) => {
    await page.setViewportSize({ width: 1500, height: 1000 }); // the corners lie clear of the card
    await page.click("#tool-views");
    await page.locator("#options").getByText("Front").click();
    await page.click("#tool-measure");
    // The front wall goes from the origin 9 m along X and 2.6 m up; clicks beside its corners snap.
    for (const at of [[0.06, 0, 2.54], [8.94, 0, 2.54]]) {
      await page.mouse.click(...await pointAt(page, ...at));
    }
    await page.locator("#measured", { hasText: "Distance" }).waitFor();
    assert.match(await page.locator("#measured").innerText(), /9\.000 m; level 9\.000 m, height 0\.000 m/);
    await page.locator("#options").getByText("Face", { exact: true }).click();
    // The chimney's side: 0.6 m by 8.9 m, of which the roof leaves the top to be seen.
    await page.mouse.click(...await pointAt(page, 6.31, 4.01, 8.6));
    await page.locator("#measured", { hasText: "Face" }).waitFor();
    assert.match(await page.locator("#measured").innerText(), /5\.34 m²/);
  }));

test("of a damaged file what can be read is shown, and the damage named", { skip }, async () => {
  const bytes = Buffer.from(read("house.zvg"));
  const at = Math.floor(bytes.length * 0.65); // the lower of two floors
  bytes.fill(0xff, at, at + 40);
  await visitHolding([["broken.zvg", bytes]], async (page) => {
    assert.match(await page.locator("#damage").innerText(), /broken\.zvg.*byte \d+: floor 0/s);
    assert.ok(await drawnPixels(page) > 10_000);
    assert.equal(await page.locator(".row", { hasText: "Upper floor" }).count(), 1);
  });
  await visitHolding([], async (page) => {
    await page.setInputFiles("#file", { name: "none.zvg", mimeType: "", buffer: Buffer.from("no") });
    await page.locator("#damage", { hasText: "none.zvg" }).waitFor();
  });
});

test("two files are compared by what was added, removed and changed", { skip }, () =>
  visitHolding(["house.zvg", "altered.zvg"].map((name) => [name, read(name)]), async (page) => {
    await page.waitForFunction(() => performance.getEntriesByName("zvg:opened").length > 1);
    await page.click("#tool-compare");
    await page.locator("#options .main").click();
    await page.locator("#legend", { hasText: "Unchanged" }).waitFor();
    const [added, removed, moved, altered] = await page.locator("#legend .count").allInnerTexts();
    assert.deepEqual([added, removed, moved, altered], ["1", "1", "1", "1"]);
    await page.locator("#legend button", { hasText: "form" }).click();
    await page.locator("#panel-title", { hasText: "Kitchen partition" }).waitFor();
  }));

test("a link and a BCF file bring the view back, whole", { skip }, () =>
  visitHolding([["house.zvg", read("house.zvg")]], async (page) => {
    await page.fill("#query", "terrace door");
    await page.locator("#results .row").first().click();
    await page.click("#tool-section");
    await page.getByLabel("Z to").fill("1.5");
    await page.click("#tool-share");
    await page.getByText("Copy link").click();
    const [before, link] = [await view(page), page.url()];
    const saving = page.waitForEvent("download");
    await page.getByText("Save BCF").click();
    const bcf = join(scratch, "view.bcfzip");
    await (await saving).saveAs(bcf);
    const near = (a, b) => a.forEach((each, i) => assert.ok(Math.abs(each - b[i]) < 1e-3, `${a} ${b}`));
    const eyeOf = ({ target: [x, y, z], distance, yaw, pitch }) => [
      x - distance * Math.sin(yaw) * Math.cos(pitch), y - distance * Math.cos(yaw) * Math.cos(pitch),
      z + distance * Math.sin(pitch)];
    const holds = async () => {
      const now = await view(page);
      assert.deepEqual(now.selected, before.selected);
      near(eyeOf(now.camera), eyeOf(before.camera));
      near([now.camera.yaw, now.camera.pitch], [before.camera.yaw, before.camera.pitch]);
      return now;
    };
    await page.goto("about:blank");
    await page.goto(link);
    await opened(page);
    near([(await holds()).cut.limits[5]], [before.cut.limits[5]]);
    await page.goto(link.split("#")[0]);
    await page.reload();
    await opened(page);
    await page.setInputFiles("#file", bcf);
    await page.waitForFunction(() => zvgViewer.view().selected.length > 0);
    const { cut } = await holds();
    assert.ok(cut.plane.normal[2] < -0.99);
    near([cut.plane.constant], [before.cut.limits[5]]);
  }));

test("what is dropped on a served page is packed there, and refusals are told", { skip }, () =>
  serve({ "/files/house.zvg": read("house.zvg") }, (address) => visit(address, async (page) => {
    const drop = (name) => page.setInputFiles("#file", { name, mimeType: "", buffer: Buffer.from("x") });
    await drop("bad.ifc");
    await page.locator("#message", { hasText: "no model" }).waitFor();
    await drop("house.ifc");
    await opened(page);
    assert.ok(await page.evaluate(() => zvgViewer.models()[0].elementCount) > 20);
  }).catch((error) => { // a refusal stands in the browser's log as well
    if (!/422/.test(error.message)) throw error;
  }), (request, response) => {
    const isGood = request.url === "/pack?name=house.ifc";
    response.writeHead(isGood ? 200 : 422, { "content-type": "application/json" })
      .end(isGood ? '{"src": "/files/house.zvg"}' : '{"error": "no model"}');
  }));

test("on a narrow touch screen every tool is within reach", { skip }, () =>
  visitHolding([["house.zvg", read("house.zvg")]], async (page) => {
    assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), 360);
    await page.locator("#canvas").tap({ position: { x: 180, y: 320 } });
    await page.locator("#panel-title").waitFor();
    for (const button of await page.locator("#tools button").all()) {
      await button.scrollIntoViewIfNeeded();
      const { x, width, height } = await button.boundingBox();
      assert.ok(x >= 0 && x + width <= 361 && height >= 44);
    }
  }, { viewport: { width: 360, height: 640 }, hasTouch: true }));
