// Builds the page: one HTML file with everything inside.
//   node build.mjs MODULE.js MODULE.wasm OUTPUT.html
import { build } from "esbuild";
import { readFileSync, writeFileSync } from "node:fs";
import { dirname, resolve } from "node:path";
import { fileURLToPath } from "node:url";
import { gzipSync } from "node:zlib";

const here = dirname(fileURLToPath(import.meta.url));
const [module, wasm, output] = process.argv.slice(2);
const options = { bundle: true, minify: true, write: false, target: "es2022", legalComments: "inline", logLevel: "warning" };

async function bundled(entry, format) {
  const made = await build({
    ...options, entryPoints: [resolve(here, "source", entry)], format,
    alias: { "studio-module": resolve(module) }, external: ["node:*", "fs", "path", "crypto", "worker_threads"],
  });
  return made.outputFiles[0].text;
}

const packed = (bytes) => gzipSync(bytes, { level: 9 }).toString("base64");
const text = (name) => readFileSync(resolve(here, "source", name), "utf8");
const parts = {
  "/*STYLE*/": text("style.css"),
  "/*WASM*/": packed(readFileSync(wasm)),
  "/*HDF5*/": packed(readFileSync(resolve(here, "node_modules/h5wasm/dist/iife/h5wasm.js"))),
  "/*ENGINE*/": packed(await bundled("engine.ts", "iife")),
  "/*MAIN*/": (await bundled("main.ts", "esm")).replaceAll("</script", "<\\/script"),
};
let page = text("page.html");
for (const [place, content] of Object.entries(parts)) page = page.replace(place, () => content);
writeFileSync(output, page);
console.log(`${output}: ${(Buffer.byteLength(page) / 1e6).toFixed(2)} MB`);
