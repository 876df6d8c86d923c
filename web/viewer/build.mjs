// Makes one page of the viewer that needs nothing beside it:
//   node build.mjs ZVG.WASM THIRD-PARTY.MD VIEWER.HTML
import { build } from "esbuild";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { gzipSync } from "node:zlib";

const folder = import.meta.dirname ?? new URL(".", import.meta.url).pathname;
const [wasm, thirdParty, page] = process.argv.slice(2);

async function bundle(entry) {
  const { outputFiles } = await build({
    entryPoints: [join(folder, entry)],
    bundle: true,
    minify: true,
    write: false,
    format: "iife",
    target: "es2022",
    legalComments: "none",
    // The module comes with the page; nothing is loaded from beside the code.
    define: { "import.meta.url": '"file:///"' },
    external: ["node:fs/promises"],
  });
  // What ends a script in a page must not stand in one.
  return outputFiles[0].text.trim().replaceAll("</script", "<\\/script");
}

/** The licences of what stands in the page, which go where it goes. */
function notices() {
  const texts = [readFileSync(thirdParty, "utf8")];
  for (const name of ["three", "fflate"]) {
    const licence = join(folder, "../node_modules", name, "LICENSE");
    texts.push(`## ${name}\n\n${readFileSync(licence, "utf8")}`);
  }
  return texts.join("\n").replaceAll("<", "&lt;");
}

const parts = {
  css: readFileSync(join(folder, "page.css"), "utf8").replace(/\n\s*/g, "\n"),
  wasm: gzipSync(readFileSync(wasm), { level: 9 }).toString("base64"),
  worker: await bundle("worker.ts"),
  page: await bundle("app.ts"),
  start: await bundle("start.ts"),
  notices: notices(),
};
const template = readFileSync(join(folder, "page.html"), "utf8");
const text = template.replace(/\/\*(css|wasm|worker|page|start|notices)\*\//g, (_, name) => parts[name]);
if (text.split("<!-- zvg:files -->").length !== 2) throw new Error("the page has no one place for files");
writeFileSync(page, text);
