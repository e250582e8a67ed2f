// The worker: holds the classifier, and answers one call after the other.

import { formatTable, leaned, parseTable } from "./membership";
import { defaults } from "./protocol";
import type {
  Calls, CallName, Counts, Explanation, Gate, Histogram, InputInfo, LabelStep, Message, Picture, Refreshed, Reply,
  ScanInfo, Scores, Settings, Tables, View,
} from "./protocol";
import { isHdf5, withHdf5 } from "./hdf5";
import createModule from "studio-module";

type Answer<T> = T | { error: string };

interface Library {
  FS: {
    mkdir(path: string): void;
    readdir(path: string): string[];
    readFile(path: string): Uint8Array;
    writeFile(path: string, data: Uint8Array | string): void;
    unlink(path: string): void;
  };
  openFile(path: string): Answer<ScanInfo>;
  openSynthetic(seed: number): Answer<ScanInfo>;
  closeScan(id: number): void;
  classify(id: number, sweep: number, settings: object): Answer<Counts>;
  layer(id: number, sweep: number, name: string): Answer<Float32Array>;
  gateAt(id: number, sweep: number, x: number, y: number): Answer<Gate>;
  explain(id: number, sweep: number, ray: number, gate: number, settings: object): Answer<Explanation>;
  inputs(): InputInfo[];
  render(id: number, sweep: number, layers: string[], view: View, width: number, height: number): Answer<Picture[]>;
  setLabels(id: number, sweep: number, steps: LabelStep[]): Answer<{ weather: number; clutter: number }>;
  score(id: number, sweep: number, settings: object): Answer<Scores>;
  train(id: number, sweep: number, settings: object): Answer<{ tables: Tables; warnings: string[]; scores: Scores }>;
  histograms(id: number, sweep: number, settings: object, bins: number): Answer<Histogram[]>;
  writeClassified(id: number, sweep: number, path: string): Answer<{ paths: string[]; notes: string[] }>;
}

const shipped = "/membership/", own = "/own/", files = "/files/";
let library: Library;
let hdf5: Uint8Array;  // the library of HDF5, compressed
let inputs: InputInfo[] = [];
let tables: Tables = {};
let written: Tables = {};
let standard: { key: string; classes: Float32Array } | null = null;

function checked<T>(answer: Answer<T>): T {
  if (answer !== null && typeof answer === "object" && "error" in answer) throw new Error(answer.error);
  return answer as T;
}

const textOf = (bytes: Uint8Array): string => new TextDecoder().decode(bytes);

async function start({ wasm, hdf5: library5 }: Calls["start"]["arguments"]): Promise<Calls["start"]["result"]> {
  hdf5 = library5;
  library = await createModule<Library>({ wasmBinary: wasm });
  library.FS.mkdir(files.slice(0, -1));
  library.FS.mkdir(own.slice(0, -1));
  for (const name of library.FS.readdir(shipped)) {
    if (!name.endsWith(".dat")) continue;
    tables[name] = parseTable(textOf(library.FS.readFile(shipped + name)));
    library.FS.writeFile(own + name, library.FS.readFile(shipped + name));
  }
  written = { ...tables };
  inputs = library.inputs();
  return { inputs, tables };
}

async function unpacked(bytes: Uint8Array): Promise<Uint8Array> {
  if (bytes[0] !== 0x1f || bytes[1] !== 0x8b) return bytes;
  const stream = new Blob([bytes as BlobPart]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

async function open({ name, bytes }: Calls["open"]["arguments"]): Promise<ScanInfo> {
  const plain = await unpacked(bytes);
  // The content decides the format; of the name only what a file system takes is kept.
  const path = files + name.replace(/\.gz$/i, "").replace(/[^\w.-]/g, "_");
  library.FS.writeFile(path, plain);
  try {
    const read = (): ScanInfo => ({ ...checked(library.openFile(path)), name });
    return isHdf5(plain) ? await withHdf5(plain, hdf5, read) : read();
  } finally {
    library.FS.unlink(path);
  }
}

/** Writes the tables that differ from those in the folder of the page's own set. */
function store(wanted: Tables): void {
  for (const [name, points] of Object.entries(wanted)) {
    if (written[name] === points) continue;
    library.FS.writeFile(own + name, points === tables[name] ? library.FS.readFile(shipped + name) : formatTable(points));
    written[name] = points;
  }
}

function withMembership(settings: Settings, changed: Tables, used: number): object {
  store(leaned({ ...tables, ...changed }, inputs, used, settings.lean));
  return { ...settings, membership: own };
}

let usedBy = { key: "", inputs: 0 };

/** The inputs that a sweep is classified with: those of its own fields, or those that were chosen. */
function usedInputs(scan: number, sweep: number, settings: Settings): number {
  const key = `${scan} ${sweep} ${settings.inputs}`;
  if (usedBy.key !== key) {
    const counts = checked(library.classify(scan, sweep, { ...settings, membership: shipped }));
    usedBy = { key, inputs: counts.inputs };
  }
  return usedBy.inputs;
}

function classify(scan: number, sweep: number, settings: Settings, changed: Tables): Counts {
  const used = settings.lean === 0 ? 0 : usedInputs(scan, sweep, settings);
  return checked(library.classify(scan, sweep, withMembership(settings, changed, used)));
}

/** Classes with the default settings and the shipped tables. */
function standardClasses(scan: number, sweep: number): Float32Array {
  const key = `${scan} ${sweep}`;
  if (standard?.key !== key) {
    checked(library.classify(scan, sweep, { ...defaults, membership: shipped }));
    standard = { key, classes: checked(library.layer(scan, sweep, "classes")) };
  }
  return standard.classes;
}

function countChanged(before: Float32Array, after: Float32Array): number {
  let changed = 0;
  for (let i = 0; i < before.length; ++i) {
    if (before[i] !== after[i] && !(Number.isNaN(before[i]) && Number.isNaN(after[i]))) ++changed;
  }
  return changed;
}

let labelled = { key: "", weather: 0, clutter: 0 };

function label(scan: number, sweep: number, steps: LabelStep[]): void {
  const key = JSON.stringify([scan, sweep, steps]);
  if (labelled.key === key) return;
  labelled = { key: "", weather: 0, clutter: 0 };
  labelled = { key, ...checked(library.setLabels(scan, sweep, steps)) };
}

const bins = 40;
let counted = { key: "", histograms: [] as Histogram[] };

/** Behind the curves: by labels, or by the classes of the shipped tables, which do not move with a curve. */
function histograms(scan: number, sweep: number, settings: Settings): Histogram[] {
  const key = JSON.stringify([labelled.key, settings]);
  if (counted.key !== key) {
    counted = { key, histograms: checked(library.histograms(scan, sweep, { ...settings, membership: shipped }, bins)) };
  }
  return counted.histograms;
}

function refresh(wanted: Calls["refresh"]["arguments"]): Refreshed {
  const { scan, sweep, settings, layers, view, width, height } = wanted;
  const before = standardClasses(scan, sweep);
  const counts = wanted.compare
    ? checked(library.classify(scan, sweep, { ...defaults, membership: shipped }))
    : classify(scan, sweep, settings, wanted.tables);
  const changed = countChanged(before, checked(library.layer(scan, sweep, "classes")));
  label(scan, sweep, wanted.labels);
  const scored = labelled.weather > 0 && labelled.clutter > 0;
  const scores = scored ? checked(library.score(scan, sweep, { ...settings, membership: shipped })) : null;
  return { counts, changed, scores, labelled, histograms: wanted.curves ? histograms(scan, sweep, settings) : [], pictures: checked(library.render(scan, sweep, layers, view, width, height)) };
}

const handlers: { [Name in CallName]: (given: Calls[Name]["arguments"]) => Calls[Name]["result"] | Promise<Calls[Name]["result"]> } = {
  start, open, refresh,
  synthetic: ({ seed }) => ({ ...checked(library.openSynthetic(seed)), name: "synthetic scan" }),
  close: ({ scan }) => { library.closeScan(scan); standard = null; return null; },
  gate: ({ scan, sweep, x, y }) => checked(library.gateAt(scan, sweep, x, y)),
  explain: ({ scan, sweep, ray, gate, settings, tables: changed }) => {
    const used = settings.lean === 0 ? 0 : usedInputs(scan, sweep, settings);
    return checked(library.explain(scan, sweep, ray, gate, withMembership(settings, changed, used)));
  },
  train: ({ scan, sweep, settings }) => checked(library.train(scan, sweep, { ...settings, membership: shipped })),
  layer: ({ scan, sweep, name }) => checked(library.layer(scan, sweep, name)),
  write: ({ scan, sweep, name }) => {
    const { paths, notes } = checked(library.writeClassified(scan, sweep, files + name));
    const bytes = library.FS.readFile(paths[0]!);
    for (const path of paths) library.FS.unlink(path);
    return { bytes, notes };
  },
};

self.onmessage = async ({ data }: MessageEvent<Message>) => {
  const reply: Reply = { number: data.number };
  try {
    reply.result = await (handlers[data.call] as (given: unknown) => unknown)(data.arguments);
  } catch (error) {
    reply.error = error instanceof Error ? error.message : String(error);
  }
  self.postMessage(reply);
};
