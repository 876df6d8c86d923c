// Measures from navigation to the first and to the last frame of block files in the viewer, and of the
// same models as GLB in a plain page of three.js:
//   ZVG_PACKAGE=build/web/package node web/tests/first_frame.mjs ZVG [--rounds N] FILE.zvg...
// ZVG is the tool, which writes the GLB files. Rounds are interleaved; the table tells the best of each.
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, readdirSync, rmSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { basename, join, resolve } from "node:path";
import { brotliCompressSync } from "node:zlib";
import { starter } from "./browser.mjs";

const folder = resolve(process.env.ZVG_PACKAGE);
const [zvg, ...rest] = process.argv.slice(2);
const rounds = rest[0] === "--rounds" ? Number(rest.splice(0, 2)[1]) : 5;
const mostMilliseconds = 300_000;
const scratch = mkdtempSync(join(tmpdir(), "zvg-frames-"));
const require = createRequire(join(folder, "package.json"));
const { chromium, options } = starter(folder, ["--enable-precise-memory-info"]);

/** A page that shows one GLB file as simply as three.js can. */
const plainPage = `
  import { AmbientLight, Box3, DirectionalLight, PerspectiveCamera, Scene, Vector3, WebGLRenderer } from "three";
  import { GLTFLoader } from "three/examples/jsm/loaders/GLTFLoader.js";
  import { MeshoptDecoder } from "three/examples/jsm/libs/meshopt_decoder.module.js";
  const canvas = document.getElementById("canvas");
  const renderer = new WebGLRenderer({ canvas, antialias: false });
  renderer.setSize(innerWidth, innerHeight);
  const scene = new Scene();
  const light = new DirectionalLight(0xffffff, 2);
  light.position.set(1, 2, 3);
  scene.add(new AmbientLight(0xffffff, 1.5), light);
  const loader = new GLTFLoader().setMeshoptDecoder(MeshoptDecoder);
  loader.load(new URLSearchParams(location.search).get("src"), (gltf) => {
    scene.add(gltf.scene);
    const box = new Box3().setFromObject(gltf.scene), middle = box.getCenter(new Vector3());
    const reach = box.getSize(new Vector3()).length();
    const camera = new PerspectiveCamera(45, innerWidth / innerHeight, reach / 1000, reach * 10);
    camera.position.copy(middle).add(new Vector3(0.7, 0.6, 0.9).multiplyScalar(reach));
    camera.lookAt(middle);
    renderer.render(scene, camera);
    for (const name of ["first-frame", "first-floor", "opened"]) performance.mark("zvg:" + name);
  });`;

async function plainHtml() {
  const { build } = await import(require.resolve("esbuild"));
  const { outputFiles } = await build({
    stdin: { contents: plainPage, resolveDir: folder }, bundle: true, minify: true, write: false,
    format: "iife",
  });
  const code = outputFiles[0].text.replaceAll("</script", "<\\/script");
  return `<!doctype html><style>body{margin:0}</style><canvas id="canvas"></canvas><script>${code}</script>`;
}

/** Seconds of processor time of a process and of those that it started. */
function processorSeconds(root) {
  const parents = new Map(), seconds = new Map();
  for (const pid of readdirSync("/proc").filter((name) => /^\d+$/.test(name))) {
    try {
      const stat = readFileSync(`/proc/${pid}/stat`, "utf8");
      const fields = stat.slice(stat.lastIndexOf(")") + 2).split(" ");
      parents.set(Number(pid), Number(fields[1]));
      seconds.set(Number(pid), (Number(fields[11]) + Number(fields[12])) / 100);
    } catch {
      // It ended meanwhile.
    }
  }
  const isOurs = (pid) => pid === root || (parents.has(pid) && pid > 1 && isOurs(parents.get(pid)));
  return [...seconds].reduce((sum, [pid, own]) => sum + (isOurs(pid) ? own : 0), 0);
}

/** Loads an address in a fresh browser. */
async function measure(address, sent) {
  const server = await chromium.launchServer(options);
  const browser = await chromium.connect(server.wsEndpoint());
  try {
    const page = await browser.newPage({ viewport: { width: 1000, height: 640 } });
    page.setDefaultTimeout(mostMilliseconds);
    const workers = [];
    page.on("worker", (worker) => workers.push(worker));
    const [before, begun] = [processorSeconds(server.process().pid), sent.bytes];
    await page.goto(address, { waitUntil: "commit" });
    const reach = async (name) => {
      await page.waitForFunction((mark) => performance.getEntriesByName(mark).length > 0,
        `zvg:${name}`, { polling: 20 });
      return sent.bytes - begun;
    };
    const firstBytes = await reach("first-floor");
    await reach("opened");
    // A pixel comes when all that was asked for before is drawn.
    const times = await page.evaluate(async () => {
      await new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));
      const gl = document.getElementById("canvas").getContext("webgl2");
      gl.readPixels(0, 0, 1, 1, gl.RGBA, gl.UNSIGNED_BYTE, new Uint8Array(4));
      const at = (name) => performance.getEntriesByName(`zvg:${name}`)[0].startTime / 1000;
      return {
        frame: at("first-frame"), floor: at("first-floor"), opened: at("opened"),
        drawn: performance.now() / 1000, heap: performance.memory.usedJSHeapSize / 1e6,
      };
    });
    const heaps = await Promise.all(workers.map((worker) =>
      worker.evaluate(() => performance.memory?.usedJSHeapSize ?? 0).catch(() => 0)));
    return {
      ...times,
      processor: processorSeconds(server.process().pid) - before,
      firstBytes,
      bytes: sent.bytes - begun,
      heap: times.heap + heaps.reduce((sum, each) => sum + each / 1e6, 0),
    };
  } finally {
    await browser.close();
    await server.close();
  }
}

/** Serves pages and files, and counts the bytes of both. */
async function serve(pages, sent) {
  const server = createServer((request, response) => {
    const { pathname } = new URL(request.url, "http://localhost");
    const bytes = pages[pathname];
    if (bytes === undefined) return void response.writeHead(404).end();
    const [, first, last] = /^bytes=(\d+)-(\d+)$/.exec(request.headers.range ?? "") ?? [];
    const part = first ? bytes.subarray(Number(first), Number(last) + 1) : bytes;
    sent.bytes += part.length;
    const isPage = request.headers["sec-fetch-dest"] === "document";
    const headers = isPage ? { "content-type": "text/html", "content-encoding": "br" } : {};
    if (first) {
      headers["content-range"] = `bytes ${first}-${Number(first) + part.length - 1}/${bytes.length}`;
    }
    response.writeHead(first ? 206 : 200, headers).end(part);
  });
  await new Promise((listening) => server.listen(0, "127.0.0.1", listening));
  return server;
}

const forms = { zvg: null, glb: [], "glb, compressed": ["--quantize", "--compress"] };

try {
  const files = {};
  const cases = [];
  for (const path of rest) {
    for (const [form, options] of Object.entries(forms)) {
      const name = `/${cases.length}`;
      let file = path;
      if (options !== null) {
        file = join(scratch, `${cases.length}.glb`);
        execFileSync(zvg, ["export", path, "-o", file, "--no-properties", "--normals", "smooth",
          ...options]);
      }
      files[name] = readFileSync(file);
      cases.push({ model: basename(path, ".zvg"), form, runs: [],
        address: `/${form === "zvg" ? "viewer" : "plain"}?src=${name}` });
    }
  }
  const sent = { bytes: 0 };
  const pages = { "/viewer": brotliCompressSync(readFileSync(join(folder, "../viewer.html"))),
    "/plain": brotliCompressSync(await plainHtml()) };
  const server = await serve({ ...pages, ...files }, sent);
  for (let round = 0; round < rounds; ++round) {
    for (const each of cases) {
      const address = `http://127.0.0.1:${server.address().port}${each.address}`;
      each.runs.push(await measure(address, sent).catch((error) => {
        console.error(`${each.model} as ${each.form}: ${String(error).split("\n")[0]}`);
        return null;
      }));
    }
  }
  server.close();
  console.log("| model | form | bytes to first floor | bytes | first frame s | first floor s "
    + "| whole s | processor s | heap MB |\n|---|---|---|---|---|---|---|---|---|");
  for (const { model, form, runs } of cases) {
    const best = (key, digits = 1) => {
      const known = runs.filter((run) => run !== null).map((run) => run[key]);
      return known.length === 0 ? "-" : Math.min(...known).toFixed(digits);
    };
    console.log(`| ${model} | ${form} | ${best("firstBytes", 0)} | ${best("bytes", 0)} | ${best("frame")} `
      + `| ${best("floor")} | ${best("drawn")} | ${best("processor")} | ${best("heap", 0)} |`);
  }
} finally {
  rmSync(scratch, { recursive: true });
}
