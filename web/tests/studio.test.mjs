// The page in a real browser, compared with the program.
//   STUDIO=page.html PROGRAM=clutterclassifier PICTURES=folder node --test tests/
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { existsSync, mkdirSync, mkdtempSync, readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";
import { pathToFileURL } from "node:url";
import h5wasm from "h5wasm/node";
import { chromium } from "playwright-core";

const page = process.env.STUDIO, program = process.env.PROGRAM, pictures = process.env.PICTURES;
const data = process.env.CLUTTERCLASSIFIER_DATA ?? "";
const folder = mkdtempSync(join(tmpdir(), "studio-"));
const synthetic = join(folder, "synthetic.uf");
const measured = [
  "boxpol_20140810_1820.uf", "rma1_20181111_000457_el1.uf", "npol_20110524_2356_rhi.uf", "dx_10908_20080602_1655.bin",
  "dx_10908_20080602_1735.bin.gz", "odim_angelholm_20151018.h5", "cfradial_xsapr_ppi.nc", "cfradial_mxpol_20120929_rhi.nc",
].map((name) => join(data, name)).filter((path) => existsSync(path));

let browser;
const run = (...words) => execFileSync(program, words, { stdio: ["ignore", "pipe", "pipe"] });

before(async () => {
  run("demo", "--scan", synthetic, "-o", join(folder, "demo.png"));
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
  if (pictures) mkdirSync(pictures, { recursive: true });
});
after(() => browser?.close());

/** A fresh page that fails the test on any error, and on any request that leaves it. */
async function opened(t, ...files) {
  const tab = await browser.newPage({ viewport: { width: 1500, height: 1000 } });
  const faults = [];
  tab.on("console", (message) => { if (message.type() === "error") faults.push(message.text()); });
  tab.on("pageerror", (error) => faults.push(error.message));
  tab.on("request", (request) => { if (!/^(blob:|data:|file:)/.test(request.url())) faults.push(request.url()); });
  t.after(async () => { await tab.close(); assert.deepEqual(faults, []); });
  await tab.goto(pathToFileURL(page).href);
  await tab.waitForSelector("body[data-ready]", { timeout: 60_000 });
  for (const file of files) await shown(tab, () => tab.setInputFiles("#file", file));
  return tab;
}

/** Waits until the picture that follows from an action is there. */
async function shown(tab, action) {
  const count = () => tab.evaluate(() => Number(document.body.dataset.shown ?? 0));
  const before = await count();
  await action();
  await tab.waitForFunction((old) => Number(document.body.dataset.shown ?? 0) > old, before, { timeout: 120_000 });
}

const layer = async (tab, name) => Float32Array.from(await tab.evaluate(async (wanted) => Array.from(await window.studio.layer(wanted)), name));

/** Classes as the program writes them: rows of gates, columns of rays. */
function programClasses(scan, ...options) {
  const output = join(folder, `classes${Math.random()}.csv`);
  run("classify", scan, "-q", ...options, "-o", output);
  const path = existsSync(output) ? output : output.replace(/\.csv$/, "_sweep1.csv");
  const [head, ...rows] = readFileSync(path, "utf8").trim().split("\n").map((line) => line.replace(/,$/, "").split(",").slice(1));
  const gates = rows.length, rays = head.length;
  const classes = new Float32Array(rays * gates);
  rows.forEach((row, gate) => row.forEach((text, ray) => { classes[ray * gates + gate] = text === "" ? NaN : Number(text); }));
  return classes;
}

test("classes are those of the program, on every gate", async (t) => {
  for (const scan of [synthetic, ...measured]) {
    await t.test(scan, async (t) => {
      const tab = await opened(t, scan);
      const own = await layer(tab, "classes"), expected = programClasses(scan);
      assert.equal(own.length, expected.length);
      assert.ok(own.some((code) => code === 0), "some gate is precipitation");
      assert.deepEqual(Buffer.from(own.map(Math.fround).buffer), Buffer.from(expected.buffer));
    });
  }
});

test("margins agree to a relative 1e-6", async (t) => {
  const tab = await opened(t, synthetic);
  const output = join(folder, "certain.nc");
  run("classify", synthetic, "-q", "--certainty", "-o", output);
  await h5wasm.ready;
  const file = new h5wasm.File(output, "r");
  const name = ["MARGIN", "margin", "MA"].find((candidate) => file.keys().includes(candidate));
  assert.ok(name, file.keys().join(" "));
  const expected = file.get(name).value;
  const own = await layer(tab, "margin");
  assert.equal(own.length, expected.length);
  let compared = 0;
  own.forEach((value, i) => {
    if (!Number.isFinite(value) || Math.abs(value) >= 300 || Math.abs(expected[i]) > 1e30) return;
    ++compared;
    assert.ok(Math.abs(value - expected[i]) <= 1e-6 * Math.max(1, Math.abs(value)), `gate ${i}: ${value}, ${expected[i]}`);
  });
  file.close();
  assert.ok(compared > 100_000);
});

test("a moved point of a table changes the gates that the program changes with the saved set", async (t) => {
  const tab = await opened(t, synthetic);
  await shown(tab, () => tab.click("summary:has-text('Membership functions')"));
  const point = tab.locator("circle.clutter").nth(2);
  await point.focus();
  for (let i = 0; i < 3; ++i) await shown(tab, () => tab.keyboard.press("PageUp"));
  const changed = Number(await tab.locator("#changed").getAttribute("data-gates"));
  assert.ok(changed > 0);
  const [download] = await Promise.all([tab.waitForEvent("download"), tab.click("#save-tables")]);
  const zip = join(folder, "membership.zip");
  await download.saveAs(zip);
  execFileSync("/usr/bin/python3", ["-m", "zipfile", "-e", zip, folder]);
  const own = programClasses(synthetic, "--membership", join(folder, "own")), standard = programClasses(synthetic);
  assert.equal(own.reduce((sum, code, i) => sum + (code !== standard[i] ? 1 : 0), 0), changed);
  assert.deepEqual(await layer(tab, "classes"), own);
  await shown(tab, () => tab.click("#undo"));
  assert.equal(await tab.locator("#changed").getAttribute("data-gates"), "0");
});

test("the lean goes from all weather to all clutter, and the saved set does the same", async (t) => {
  const tab = await opened(t, synthetic);
  const clutter = async () => (await layer(tab, "classes")).reduce((sum, code) => sum + (code === 5 ? 1 : 0), 0);
  const counts = [];
  for (const value of ["-6", "-2", "0", "2", "6"]) {
    await shown(tab, () => tab.locator("#lean").evaluate((slider, wanted) => {
      slider.value = wanted;
      slider.dispatchEvent(new Event("input", { bubbles: true }));
    }, value));
    counts.push(await clutter());
  }
  assert.deepEqual(counts, [...counts].sort((a, b) => a - b));
  assert.ok(counts[0] < counts[2] && counts[2] < counts[4]);
});

test("a gate explains itself as the program does", async (t) => {
  const tab = await opened(t, synthetic);
  const box = await tab.locator("canvas").nth(1).boundingBox();
  await tab.mouse.click(box.x + 0.6 * box.width, box.y + 0.45 * box.height);
  await tab.waitForSelector("#why table");
  const where = await tab.locator("#why p").first().textContent();
  const [azimuth, , range] = [...where.matchAll(/-?[\d.]+/g)].map(Number);
  const expected = JSON.parse(run("explain", synthetic, "--json", "--at", `${azimuth},${range}`));
  const verdict = await tab.locator("#why .verdict").textContent();
  assert.ok(verdict.includes(expected.class_name), `${verdict}, ${expected.class_name}`);
  assert.ok(verdict.includes(expected.margin.toFixed(2)), `${verdict}, ${expected.margin}`);
  if (pictures) await tab.screenshot({ path: join(pictures, "studio.png") });
});

test("the state is saved and opens again", async (t) => {
  const tab = await opened(t, synthetic);
  await shown(tab, () => tab.fill("#minSnr", "15").then(() => tab.press("#minSnr", "Enter")));
  const classes = await layer(tab, "classes");
  assert.match(await tab.locator("#command").textContent(), /--min-snr 15/);
  const [download] = await Promise.all([tab.waitForEvent("download"), tab.click("#save-state")]);
  const state = join(folder, "studio.json");
  await download.saveAs(state);
  const other = await opened(t, synthetic);
  await shown(other, () => other.setInputFiles("#state-file", state));
  assert.deepEqual(await layer(other, "classes"), classes);
  assert.deepEqual(classes, programClasses(synthetic, "--min-snr", "15"));
});

test("the written scan holds the classes", async (t) => {
  const tab = await opened(t, synthetic);
  const [download] = await Promise.all([tab.waitForEvent("download"), tab.click("#save-scan")]);
  const path = join(folder, "classified.uf");
  await download.saveAs(path);
  run("classify", synthetic, "-q", "--certainty", "-o", join(folder, "expected.uf"));
  assert.deepEqual(readFileSync(path), readFileSync(join(folder, "expected.uf")));
});

test("view puts scans into the page; what cannot be read is said", async (t) => {
  const path = join(folder, "view.html");
  execFileSync(program, ["view", synthetic, "-o", path], { env: { ...process.env, CLUTTERCLASSIFIER_STUDIO: page } });
  const tab = await browser.newPage();
  t.after(() => tab.close());
  await tab.goto(pathToFileURL(path).href);
  await tab.waitForFunction(() => Number(document.body.dataset.shown) > 0, null, { timeout: 60_000 });
  assert.match(await tab.locator("#scan-name").textContent(), /synthetic\.uf/);
  await tab.setInputFiles("#file", { name: "note.txt", mimeType: "text/plain", buffer: Buffer.from("no radar") });
  await tab.waitForSelector("#message.error");
  assert.match(await tab.locator("#message").textContent(), /note\.txt/);
});

test("the time from a change of a setting to its picture is printed (median of 20)", async (t) => {
  const tab = await opened(t, synthetic);
  const times = [];
  for (let i = 0; i < 20; ++i) {
    await shown(tab, () => tab.locator("#lean").evaluate((slider, wanted) => {
      slider.value = wanted;
      slider.dispatchEvent(new Event("input", { bubbles: true }));
    }, String(0.2 * (i + 1))));
    times.push(await tab.evaluate(() => Number(document.body.dataset.latency)));
  }
  times.sort((a, b) => a - b);
  t.diagnostic(`from input to picture: median ${times[10].toFixed(0)} ms, ${times[0].toFixed(0)} to ${times[19].toFixed(0)} ms`);
});

test("accessible by the rules of axe", async (t) => {
  const tab = await opened(t, synthetic);
  await tab.evaluate(readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8"));
  for (const colours of ["light", "dark"]) {
    await tab.emulateMedia({ colorScheme: colours, reducedMotion: "reduce" });
    const { violations } = await tab.evaluate(() => window.axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(" ")}`), []);
  }
});
