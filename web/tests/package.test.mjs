import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, readdirSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";

const { ZVG_PACKAGE: folder, ZVG_ANSWERS: native, ZVG_FILES: files } = process.env;
const { BlockFileError, open } = await import(join(folder, "dist/index.js"));
const { instantiate } = await import(join(folder, "dist/module.js"));
const { requestOf } = await import(join(folder, "dist/requests.js"));

const blockFiles = readdirSync(files).filter((name) => name.endsWith(".zvg"));
const read = (name) => readFileSync(join(files, name));

/** The status of a call, and its answer. */
function toldBy(instance, session, status) {
  const size = instance.calls.zvg_answer_size(session) >>> 0;
  const answer = instance.view(instance.calls.zvg_answer(session), size);
  return Buffer.concat([Buffer.from(Uint32Array.of(status, size).buffer), Buffer.from(answer)]);
}

async function verdictOn(bytes) {
  const instance = await instantiate(undefined, "verifier");
  const { calls } = instance;
  const session = calls.zvg_begin(bytes.length, 0) >>> 0;
  instance.lend(bytes, (at, size) => calls.zvg_bring(session, 0, at, size));
  return toldBy(instance, session, calls.zvg_verify(session));
}

/** What web_answers writes, of the modules. */
async function answersOf(bytes) {
  const instance = await instantiate();
  const { calls } = instance;
  const parts = [];
  const session = calls.zvg_begin(bytes.length, 0) >>> 0;
  const tell = (status) => {
    parts.push(toldBy(instance, session, status));
    return status === 0 && parts.at(-1).length > 8;
  };
  const lend = (request, call) => instance.lend(request, call);
  const tellScene = (options) => {
    const scene = lend(requestOf(options), (at, size) => calls.zvg_scene(session, at, size)) >>> 0;
    while (tell(calls.zvg_scene_next(scene)));
    calls.zvg_scene_end(scene);
  };
  lend(bytes, (at, size) => calls.zvg_bring(session, 0, at, size));
  tell(calls.zvg_open(session));
  tell(calls.zvg_floors(session));
  for (let floor = 0; tell(calls.zvg_floor(session, floor)); ++floor);
  tell(calls.zvg_find(session, 0, 0));
  for (let floor = 0; floor < 64; ++floor) {
    for (let position = 0; position < 1000; ++position) {
      if (!tell(calls.zvg_element(session, floor, position))) break;
    }
  }
  tell(calls.zvg_preview(session));
  tellScene({});
  tellScene({ normals: "flat", doubles: true });
  tellScene({ elementsAtOnce: 5 });
  tell(calls.zvg_damage(session));
  return Buffer.concat([...parts, await verdictOn(bytes)]);
}

function nativeAnswersOf(path) {
  return execFileSync(native, [path], { maxBuffer: 2 ** 31 });
}

for (const name of blockFiles.filter((each) => each !== "large.zvg")) {
  test(`${name}: the module answers what the native functions answer`, async () => {
    const answers = await answersOf(read(name));
    assert.ok(answers.length > 500 && answers.equals(nativeAnswersOf(join(files, name))));
  });
}

test("damaged files end no module, and are told as natively", async () => {
  const whole = read("house.zvg");
  const path = join(files, "damaged");
  for (let turn = 0; turn < 60; ++turn) {
    let bytes = Buffer.from(whole);
    const at = Math.floor((whole.length * (turn + 0.5)) / 60);
    if (turn % 3 === 0) bytes = bytes.subarray(0, at);
    if (turn % 3 === 1) bytes[at] ^= 1 << turn % 8;
    if (turn % 3 === 2) bytes.fill(0xff, at, at + 4);
    writeFileSync(path, bytes);
    assert.ok((await answersOf(bytes)).equals(nativeAnswersOf(path)), `turn ${turn}`);
  }
});

/** A server of `bytes`, with or without ranges, that counts. */
async function serve(bytes, ranges, act) {
  const asked = { requests: 0, bytes: 0 };
  const server = createServer((request, response) => {
    asked.requests += 1;
    const [, first, last] = /^bytes=(\d+)-(\d+)$/.exec(ranges ? request.headers.range : "") ?? [];
    const part = first ? bytes.subarray(Number(first), Number(last) + 1) : bytes;
    asked.bytes += part.length;
    if (first) {
      const end = Number(first) + part.length - 1;
      response.setHeader("content-range", `bytes ${first}-${end}/${bytes.length}`);
    }
    response.writeHead(request.url !== "/model.zvg" ? 404 : first ? 206 : 200).end(part);
  });
  await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
  try {
    return await act(`http://127.0.0.1:${server.address().port}/model.zvg`, asked);
  } finally {
    server.close();
  }
}

async function all(chunks) {
  const list = [];
  for await (const chunk of chunks) list.push(chunk);
  return list;
}

test("over ranges few requests bring what is needed, and the same answers", async () => {
  const bytes = read("large.zvg");
  assert.ok(bytes.length > 2 << 20);
  await serve(bytes, true, async (address, asked) => {
    const file = await open(address);
    assert.ok(asked.requests <= 3, `open: ${asked.requests}`);
    assert.ok(asked.bytes < 1 << 20, `open: ${asked.bytes}`);
    const atOpen = asked.requests;
    const far = await file.element(1, 75);
    assert.ok(asked.requests <= atOpen + 2, `element: ${asked.requests - atOpen}`);
    const local = await open(bytes);
    assert.deepEqual(far, await local.element(1, 75));
    // Calls that overlap, a walk among them.
    const [scene, rows] = await Promise.all([all(file.scene({}, { curves: true })), file.rows(0)]);
    assert.deepEqual(scene, await all(local.scene({}, { curves: true })));
    assert.deepEqual(rows, await local.rows(0));
    assert.deepEqual(await file.verify(), []);
    assert.deepEqual(await file.damage(), []);
    assert.ok(asked.requests < 25, `scene: ${asked.requests}`);
    await Promise.all([file.close(), local.close()]);
  });
});

test("a server without ranges gives the file whole, once", async () => {
  await serve(read("house.zvg"), false, async (address, asked) => {
    const file = await open(new URL(address));
    assert.deepEqual(await file.verify(), []);
    assert.equal(asked.requests, 1);
    await assert.rejects(open(address.replace("model", "none")), { status: "input-output" });
  });
});

test("a file is asked as the guide says", async () => {
  const file = await open(new Blob([read("house.zvg")]));
  const floors = await file.floors;
  assert.equal(floors.length, file.info.floors);
  assert.deepEqual(await Promise.all(floors.map((_, number) => file.floor(number))), floors);
  await assert.rejects(file.floor(floors.length), { status: "not-found" });
  assert.equal((await file.find({})).length, floors.reduce((sum, floor) => sum + floor.elements, 0));
  const [wall, ...others] = await file.find({ classNames: ["IfcWall"] });
  assert.ok(others.every(({ className }) => className === "IfcWall"));
  const whole = await file.element(wall.guid);
  assert.deepEqual(whole, await file.element(wall.floor, wall.position));
  assert.deepEqual(await file.find({ guid: wall.guid }), [wall]);
  assert.ok((await file.find({ name: wall.name })).some(({ guid }) => guid === wall.guid));
  const { set, name, value } = whole.properties.find((each) => each.value.length > 3);
  const has = (rows) => rows.some(({ guid }) => guid === wall.guid);
  const full = set === "" ? name : `${set}.${name}`;
  assert.ok(has(await file.find({ properties: [{ name: full, value }] })));
  assert.ok(has(await file.find({ text: value.toUpperCase() })));
  assert.equal(await file.element("no such element"), null);
  assert.equal(await file.preview(), null);

  const [chunk, end] = await all(file.scene({ elements: [wall] }, { normals: "flat" }));
  assert.equal(end, undefined);
  assert.ok(chunk.placements.count > 0 && chunk.placements.elements.every((i) => i === wall.position));
  for (const { surfaces } of chunk.shapes) {
    for (const { points, normals, indices } of surfaces) {
      assert.equal(points.length, normals.length);
      assert.ok(indices.every((index) => 3 * index < points.length));
    }
  }

  // Parts of floors hold what whole floors do, under the same numbers.
  const floorsOf = async (options) => {
    const found = [];
    for (const { floor, endsFloor, placements, shapes } of await all(file.scene({}, options))) {
      found[floor] ??= { elements: [], places: [], keys: [], parts: 0, ended: false };
      assert.ok(!found[floor].ended);
      found[floor].elements.push(...placements.elements);
      found[floor].places.push(...placements.shapes);
      found[floor].keys.push(...shapes.map(({ key }) => key));
      found[floor].ended = endsFloor;
      found[floor].parts += 1;
    }
    return found;
  };
  const parted = await floorsOf({ elementsAtOnce: 4 });
  parted.forEach((each, floor) => {
    assert.equal(each.parts, Math.max(1, Math.ceil(floors[floor].elements / 4)));
    each.parts = 1;
  });
  assert.deepEqual(parted, await floorsOf({}));

  const rejects = (promise, status) =>
    assert.rejects(promise, (error) => error instanceof BlockFileError && error.status === status);
  await rejects(file.element(0, 1e6), "not-found");
  await rejects(all(file.scene({}, { normals: "odd" })), "usage");
  await rejects(open(new Uint8Array(100)), "damaged");
  await rejects(open(join(files, "none.zvg")), "input-output");
  await file.close();
  await rejects(file.rows(0), "usage");
});

test("the tarball installs into an empty folder and reads a file there", async () => {
  const [tarball] = readdirSync(join(folder, "..")).filter((name) => name.endsWith(".tgz"));
  const empty = mkdtempSync(join(tmpdir(), "zvg-install-"));
  try {
    writeFileSync(join(empty, "package.json"), '{"type":"module"}');
    const npm = ["install", "--offline", "--no-audit", "--no-fund", join(folder, "..", tarball)];
    execFileSync("npm", npm, { cwd: empty, stdio: "pipe" });
    writeFileSync(join(empty, "use.js"), `import { open } from "zvg";
      const file = await open(process.argv[2]);
      console.log((await file.find({})).length, file.info.version);
      await file.close();`);
    const said = execFileSync("node", ["use.js", join(files, "house.zvg")], { cwd: empty });
    assert.match(String(said), /^\d+ 4\n$/);
    assert.ok(readFileSync(join(empty, "node_modules/zvg/THIRD-PARTY.md")).length > 500);
  } finally {
    rmSync(empty, { recursive: true });
  }
});
