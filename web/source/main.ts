// The page: open scans, the state, and what follows from a change of it.

import { zipSync } from "fflate";
import { Client, NewestOnly } from "./client";
import { commandLine } from "./command";
import { CurveEditor } from "./curves";
import { byId, download, element } from "./dom";
import { formatTable, leaned } from "./membership";
import { LabelPanel, scoreText } from "./labels";
import { Panels, wholeView } from "./panels";
import { defaults } from "./protocol";
import type { Counts, Explanation, Gate, InputInfo, LabelStep, Refresh, ScanInfo, SweepInfo, Tables } from "./protocol";
import { SettingsPanel } from "./settings";
import { firstState, History, stateFromText, stateToText } from "./state";
import type { State } from "./state";
import { texts } from "./texts";
import { explanationView, number } from "./why";

/** Bytes that the build has put into the page as text: compressed. */
function packed(id: string): Uint8Array<ArrayBuffer> {
  return Uint8Array.from(atob(byId(id).textContent!.trim()), (letter) => letter.charCodeAt(0));
}

async function embedded(id: string): Promise<Uint8Array> {
  const stream = new Blob([packed(id)]).stream().pipeThrough(new DecompressionStream("gzip"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

class Studio {
  private readonly history = new History(stateFromText(location.hash.slice(1)) ?? firstState());
  private readonly scans: ScanInfo[] = [];
  private readonly panels: Panels;
  private readonly refreshing: NewestOnly<void>;
  private readonly settings: SettingsPanel;
  private readonly curves: CurveEditor[];
  private readonly labels: LabelPanel;
  private compare = false;
  private counts: Counts | null = null;
  private asked = 0;
  private gate: Gate | null = null;

  constructor(private readonly client: Client, private readonly inputs: InputInfo[], private readonly shipped: Tables) {
    this.refreshing = new NewestOnly(() => this.refresh());
    this.panels = new Panels(byId("panels"), {
      viewChanged: (view) => this.change({ view }, "view"),
      pointed: (x, y) => void this.point(x, y),
      chosen: (x, y) => void this.explain(x, y),
      brush: () => this.labels.brush !== null,
      painted: (points) => this.label({ kind: "brush", ...this.labels.brush!, points: points.map((km) => Number(km.toFixed(3))) }),
    });
    this.settings = new SettingsPanel(inputs, {
      changed: (change, kind) => this.change({ settings: { ...this.now.settings, ...change } }, kind),
    });
    byId("lean-place").append(this.settings.lean.view);
    byId("settings-place").append(this.settings.view);
    this.curves = inputs.filter((input) => input.tag !== "").map((input) => new CurveEditor(input, shipped, {
      changed: (file, points) => this.change({ tables: { ...this.now.tables, [file]: points } }, file),
      settled: () => this.history.settle(),
    }));
    this.labels = new LabelPanel({
      labelled: (step) => this.label(step),
      cleared: () => this.change({ labels: [] }),
      train: () => void this.train(),
    });
    byId("labels-place").append(this.labels.view);
    byId("curves-place").append(...this.curves.map((curve) => curve.view));
    this.listen();
    this.show();
  }

  private get now(): State { return this.history.now; }
  private get scan(): ScanInfo | undefined { return this.scans[this.now.scan]; }
  private get sweep(): SweepInfo | undefined { return this.scan?.sweeps[this.now.sweep]; }

  async open(name: string, bytes: Uint8Array): Promise<void> {
    this.say(texts.reading(name));
    try {
      this.added(await this.client.call("open", { name, bytes }));
    } catch (error) {
      this.say(texts.failed(name, (error as Error).message), true);
    }
  }

  private added(scan: ScanInfo): void {
    this.scans.push(scan);
    this.say("");
    this.change({ scan: this.scans.length - 1, sweep: 0, view: null });
  }

  /** Values of a layer of the sweep that is shown, as the classifier gave them. */
  layer(name: string): Promise<Float32Array> {
    return this.client.call("layer", { scan: this.scan!.id, sweep: this.now.sweep, name });
  }

  private listen(): void {
    const file = byId<HTMLInputElement>("file");
    byId("open").addEventListener("click", () => file.click());
    file.addEventListener("change", () => void this.openAll(file.files));
    byId("sample").addEventListener("click", () => void this.client.call("synthetic", { seed: 7 }).then((scan) => this.added(scan)));
    document.addEventListener("dragover", (event) => event.preventDefault());
    document.addEventListener("drop", (event) => { event.preventDefault(); void this.openAll(event.dataTransfer?.files ?? null); });
    byId("undo").addEventListener("click", () => this.history.undo() && this.changed());
    byId("redo").addEventListener("click", () => this.history.redo() && this.changed());
    byId("reset").addEventListener("click", () => this.change({ settings: { ...defaults }, tables: {}, labels: [], view: null }));
    byId("curves-details").addEventListener("toggle", () => this.changed());
    document.addEventListener("keydown", (event) => this.key(event, true));
    document.addEventListener("keyup", (event) => this.key(event, false));
    byId("save-scan").addEventListener("click", () => void this.saveScan());
    byId("save-picture").addEventListener("click", () => this.savePicture());
    byId("save-tables").addEventListener("click", () => this.saveTables());
    byId("save-state").addEventListener("click", () => download("studio.json", stateToText(this.now), "application/json"));
    const state = byId<HTMLInputElement>("state-file");
    byId("load-state").addEventListener("click", () => state.click());
    state.addEventListener("change", () => void this.loadState(state));
    byId<HTMLSelectElement>("scan-choice").addEventListener("input", (event) =>
      this.change({ scan: Number((event.target as HTMLInputElement).value), sweep: 0 }));
    byId<HTMLSelectElement>("sweep-choice").addEventListener("change", (event) =>
      this.change({ sweep: Number((event.target as HTMLSelectElement).value), view: null }));
    byId<HTMLSelectElement>("panel-count").addEventListener("change", (event) =>
      this.wantPanels(Number((event.target as HTMLSelectElement).value)));
    window.addEventListener("resize", () => this.changed());
  }

  private key(event: KeyboardEvent, down: boolean): void {
    const typing = event.target instanceof HTMLInputElement && event.target.type !== "range" && event.target.type !== "checkbox";
    if (typing) return;
    if (event.key.toLowerCase() === "b" && !event.ctrlKey && !event.repeat) {
      this.compare = down;
      this.changed();
    } else if (down && event.ctrlKey && event.key.toLowerCase() === "z") {
      event.preventDefault();
      if (event.shiftKey ? this.history.redo() : this.history.undo()) this.changed();
    }
  }

  private async openAll(files: FileList | null): Promise<void> {
    for (const file of files ?? []) await this.open(file.name, new Uint8Array(await file.arrayBuffer()));
  }

  private async loadState(input: HTMLInputElement): Promise<void> {
    const file = input.files?.[0];
    const state = file ? stateFromText(await file.text()) : null;
    if (state) this.change({ ...state, scan: Math.min(state.scan, Math.max(0, this.scans.length - 1)) });
    else if (file) this.say(texts.failed(file.name, texts.saveState), true);
  }

  private wantPanels(count: number): void {
    const layers = ["", "classes", "probability", "deciding"];
    this.change({ panels: layers.slice(0, count).map((layer, i) => this.now.panels[i] ?? layer) });
  }

  /** Adds a step of labelling, and shows the labels. */
  private label(step: LabelStep): void {
    const panels = this.now.panels.includes("labels") ? this.now.panels : [...this.now.panels.slice(0, 3), "labels"];
    this.change({ labels: [...this.now.labels, step], panels });
  }

  private async train(): Promise<void> {
    if (!this.scan) return;
    try {
      const { tables, warnings, scores } = await this.client.call("train", {
        scan: this.scan.id, sweep: this.now.sweep, settings: this.now.settings,
      });
      this.change({ tables: { ...this.now.tables, ...tables } });
      this.say(texts.trained(scoreText(scores), warnings));
    } catch (error) {
      this.say(texts.failed(texts.train, (error as Error).message), true);
    }
  }

  private change(change: Partial<State>, kind = ""): void {
    this.history.step(change, kind);
    this.changed();
  }

  private changed(): void {
    this.asked = performance.now();
    this.show();
    void this.refreshing.ask().catch((error: Error) => this.say(error.message, true));
  }

  /** The controls of the page, from the state. */
  private show(): void {
    const { scan, sweep } = this;
    document.body.classList.toggle("empty", !scan);
    this.settings.show(this.now.settings, this.counts?.inputs ?? 0);
    for (const curve of this.curves) curve.show(this.now.tables);
    byId<HTMLButtonElement>("undo").disabled = !this.history.canUndo;
    byId<HTMLButtonElement>("redo").disabled = !this.history.canRedo;
    window.history.replaceState(null, "", `#${stateToText(this.now)}`);
    if (!scan || !sweep) return;
    const slider = byId<HTMLInputElement>("scan-choice");
    slider.max = String(this.scans.length - 1);
    slider.value = String(this.now.scan);
    slider.hidden = this.scans.length < 2;
    byId("scan-name").textContent = `${scan.name} · ${scan.radar || scan.site} · ${scan.time} · ${scan.format}`;
    byId("oddities").replaceChildren(...[...scan.damage.map((text) => `${texts.damage}: ${text}`), ...scan.oddities]
      .map((text) => element("li", {}, text)));
    this.fill("sweep-choice", scan.sweeps.map(({ number: name, angle }) => texts.sweepName(name, angle)), this.now.sweep);
    this.showPanelChoices(sweep);
    byId("command").textContent = commandLine(scan.name, sweep.number, scan.sweeps.length, this.now.settings, this.inputs,
      Object.keys(this.now.tables).length > 0 || this.now.settings.lean !== 0);
  }

  private fill(id: string, names: string[], chosen: number): void {
    const select = byId<HTMLSelectElement>(id);
    select.replaceChildren(...names.map((name, i) => element("option", { value: i }, name)));
    select.value = String(chosen);
  }

  /** The layer of a panel: the reflectivity where none was chosen or the sweep does not have it. */
  private layers(sweep: SweepInfo): string[] {
    const first = sweep.fields.find((field) => field.role === "zhh") ?? sweep.fields[0];
    return this.now.panels.map((layer) => {
      const known = !layer.startsWith("field:") || sweep.fields.some((field) => layer === `field:${field.name}`);
      return layer !== "" && known ? layer : first ? `field:${first.name}` : "classes";
    });
  }

  private showPanelChoices(sweep: SweepInfo): void {
    const names: [string, string][] = [
      ...sweep.fields.map((field): [string, string] => [`field:${field.name}`, field.name]),
      ["classes", texts.classes], ["probability", texts.probability], ["margin", texts.margin], ["deciding", texts.deciding],
      ["labels", texts.labelsPanel],
    ];
    byId("panel-choices").replaceChildren(...this.layers(sweep).map((layer, i) => {
      const select = element("select", { "aria-label": texts.panel(i + 1) },
        ...names.map(([value, name]) => element("option", { value }, name)));
      select.value = layer;
      select.addEventListener("change", () =>
        this.change({ panels: this.layers(sweep).map((old, k) => k === i ? select.value : old) }));
      return select;
    }));
    byId<HTMLSelectElement>("panel-count").value = String(this.now.panels.length);
  }

  private async refresh(): Promise<void> {
    const { scan, sweep } = this;
    if (!scan || !sweep) return;
    const asked = this.asked, layers = this.layers(sweep);
    const [width, height] = this.panels.size(layers.length);
    const view = this.now.view ?? wholeView(sweep, width, height);
    const wanted: Refresh = {
      scan: scan.id, sweep: this.now.sweep, settings: this.now.settings, tables: this.now.tables, layers, view, width,
      height, compare: this.compare, labels: this.now.labels,
      curves: byId<HTMLDetailsElement>("curves-details").open,
    };
    const { counts, pictures, changed, labelled, scores, histograms } = await this.client.call("refresh", wanted);
    this.counts = counts;
    this.panels.show(pictures, sweep, view, width, height);
    this.settings.show(this.now.settings, counts.inputs);
    this.showCounts(counts, changed);
    this.labels.show(labelled.weather, labelled.clutter, scores);
    this.inputs.filter((input) => input.tag !== "").forEach((input, i) =>
      this.curves[i]!.showValues(histograms[this.inputs.indexOf(input)]));
    document.body.dataset["latency"] = String(performance.now() - asked);
    document.body.dataset["shown"] = String(Number(document.body.dataset["shown"] ?? 0) + 1);
  }

  private showCounts(counts: Counts, changed: number): void {
    const echo = counts.precipitation + counts.ground + counts.sea + counts.turbine;
    const parts = ([[0, counts.precipitation], [5, counts.ground], [6, counts.sea], [7, counts.turbine]] as [number, number][])
      .filter(([code, gates]) => gates > 0 || code === 0 || code === 5)
      .map(([code, gates]) => `${texts.classNames[code]} ${gates} (${texts.ofEcho(echo ? gates / echo : 0)})`);
    byId("counts").textContent = texts.counts([...parts, `${texts.classNames[3]} ${counts.noise}`]);
    byId("changed").textContent = texts.changed(changed);
    byId("changed").dataset["gates"] = String(changed);
    byId("notes").replaceChildren(...counts.notes.map((note) => element("li", {}, note)));
  }

  private async point(x: number, y: number): Promise<void> {
    const { scan, sweep } = this;
    if (!scan || !sweep) return;
    const gate = await this.client.call("gate", { scan: scan.id, sweep: this.now.sweep, x, y });
    byId("cursor").textContent = gate.at < 0 ? "" : [
      texts.position(gate.azimuth, gate.elevation, gate.rangeKm, gate.heightKm),
      ...sweep.fields.map((field, i) => `${field.name} ${number(gate.values[i]!, field.units)}`),
      texts.classNames[gate.class] ?? texts.notMeasured,
    ].join(" · ");
  }

  private async explain(x: number, y: number): Promise<void> {
    const { scan, sweep } = this;
    if (!scan || !sweep) return;
    const gate = await this.client.call("gate", { scan: scan.id, sweep: this.now.sweep, x, y });
    if (gate.at < 0) return;
    this.gate = gate;
    const why: Explanation = await this.client.call("explain", {
      scan: scan.id, sweep: this.now.sweep, ray: gate.ray, gate: gate.gate, settings: this.now.settings, tables: this.now.tables,
    });
    if (this.gate === gate) byId("why").replaceChildren(explanationView(gate, why));
  }

  private async saveScan(): Promise<void> {
    if (!this.scan) return;
    const name = `${this.scan.name.replace(/\.\w+$/, "")}_classes.${byId<HTMLSelectElement>("scan-format").value}`;
    try {
      const { bytes, notes } = await this.client.call("write", { scan: this.scan.id, sweep: this.now.sweep, name: name.replace(/[^\w.-]/g, "_") });
      download(name, bytes as BlobPart);
      this.say(notes.join(" "));
    } catch (error) {
      this.say(texts.failed(name, (error as Error).message), true);
    }
  }

  private savePicture(): void {
    const canvas = this.panels.canvasOf(Math.max(0, this.now.panels.indexOf("classes")));
    canvas.toBlob((blob) => blob && download("classes.png", blob, "image/png"));
  }

  private saveTables(): void {
    const tables = leaned({ ...this.shipped, ...this.now.tables }, this.inputs, this.counts?.inputs ?? 0, this.now.settings.lean);
    const files = Object.entries(tables).map(([name, points]) => [`own/${name}`, new TextEncoder().encode(formatTable(points))]);
    download("membership.zip", zipSync(Object.fromEntries(files) as Record<string, Uint8Array>) as BlobPart, "application/zip");
    this.say(texts.saveTablesFirst);
  }

  private say(text: string, isError = false): void {
    byId("message").textContent = text;
    byId("message").classList.toggle("error", isError);
  }
}

async function begin(): Promise<void> {
  const script = new TextDecoder().decode(await embedded("engine"));
  const client = new Client(script);
  const { inputs, tables } = await client.call("start", { wasm: await embedded("wasm"), hdf5: packed("hdf5") });
  const studio = new Studio(client, inputs, tables);
  Object.assign(window, { studio });  // for the browser's console, and for tests
  for (const scan of document.querySelectorAll<HTMLElement>("script[data-scan]")) {
    await studio.open(scan.dataset["scan"]!, packed(scan.id));
  }
  document.body.dataset["ready"] = "true";
}

begin().catch((error: Error) => { byId("message").textContent = error.message; byId("message").classList.add("error"); });
