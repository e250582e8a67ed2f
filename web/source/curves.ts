// Both membership functions of an input as curves, with points that can be moved.

import { drawing, element } from "./dom";
import { clutterFile, precipitationFile } from "./membership";
import type { Histogram, InputInfo, Point, Tables } from "./protocol";
import { texts } from "./texts";

const width = 320, height = 150, left = 26, bottom = 20, top = 6, right = 8;

export interface CurveEvents {
  changed(file: string, points: Point[]): void;
  settled(): void;
}

/** The usual range of the input, or that of the points where there is none. */
function ends(input: InputInfo, points: Point[]): [number, number] {
  if (input.high > input.low) return [input.low, input.high];
  return [points[0]![0], points[points.length - 1]![0]];
}

export class CurveEditor {
  private readonly picture = drawing("svg", { viewBox: `0 0 ${width} ${height}`, role: "group" });
  readonly view: HTMLElement;
  private range: [number, number] = [0, 1];
  private tables: Tables = {};
  private histogram: Histogram | undefined;

  constructor(private readonly input: InputInfo, private readonly shipped: Tables, private readonly events: CurveEvents) {
    this.picture.setAttribute("aria-label", input.name);
    this.range = ends(input, shipped[precipitationFile(input.tag)]!);
    this.view = element("div", { class: "curve" },
      element("h3", {}, input.unit ? `${input.name}, ${input.unit}` : input.name), this.picture,
      element("button", { type: "button", click: () => this.reset() }, texts.resetCurve));
  }

  /** The scan's own values of both classes, each with the same area. */
  showValues(histogram: Histogram | undefined): void {
    this.histogram = histogram;
    const old = this.picture.querySelector(".values");
    if (old) old.replaceWith(this.values());
  }

  private values(): Element {
    const group = drawing("g", { class: "values", "aria-hidden": "true" });
    for (const [kind, counts] of Object.entries(this.histogram ?? {})) {
      const most = Math.max(...counts);
      if (!(most > 0)) continue;
      const step = (width - left - right) / counts.length;
      const tops = Array.from(counts as Float64Array, (count, i) =>
        `H${(left + i * step).toFixed(1)}V${this.py(count / most).toFixed(1)}H${(left + (i + 1) * step).toFixed(1)}`);
      group.append(drawing("path", { class: `values-${kind}`, d: `M${left},${this.py(0)}${tops.join("")}V${this.py(0)}Z` }));
    }
    return group;
  }

  show(tables: Tables): void {
    this.tables = tables;
    // The point under the pointer stays in the document: its drag would end otherwise.
    if (this.picture.querySelector("[data-held]")) return this.redrawLines();
    const parts: Element[] = [this.values(), this.axes()];
    for (const [kind, file] of this.files()) {
      const points = this.points(file);
      parts.push(drawing("path", { class: `line ${kind}`, "data-file": file, d: this.path(points) }));
      points.forEach(([x], i) => { if (this.isShown(x)) parts.push(this.handle(kind, file, i)); });
    }
    const focused = document.activeElement?.getAttribute("data-point");
    this.picture.replaceChildren(...parts);
    if (focused) this.picture.querySelector<SVGElement>(`[data-point="${focused}"]`)?.focus();
  }

  private files(): [kind: string, file: string][] {
    return [["rain", precipitationFile(this.input.tag)], ["clutter", clutterFile(this.input.tag)]];
  }

  private points(file: string): Point[] { return this.tables[file] ?? this.shipped[file]!; }
  private isShown(x: number): boolean { return x >= this.range[0] && x <= this.range[1]; }
  private px(x: number): number { return left + (x - this.range[0]) / (this.range[1] - this.range[0]) * (width - left - right); }
  private py(degree: number): number { return height - bottom - degree * (height - bottom - top); }

  private path(points: Point[]): string {
    const [low, high] = this.range;
    const clipped = points.map(([x, degree]): [number, number] => [
      Math.min(Math.max(this.px(x), this.px(low) - 1e4), this.px(high) + 1e4), this.py(degree)]);
    return clipped.map(([x, y], i) => `${i ? "L" : "M"}${x.toFixed(1)},${y.toFixed(1)}`).join("");
  }

  private axes(): Element {
    const [low, high] = this.range;
    return drawing("g", { class: "axes", "aria-hidden": "true" },
      drawing("path", { d: `M${left},${top}V${height - bottom}H${width - right}` }),
      drawing("text", { x: 2, y: this.py(1) + 8 }, "1"), drawing("text", { x: 2, y: this.py(0) }, "0"),
      drawing("text", { x: left, y: height - 5 }, String(low)),
      drawing("text", { x: width - right, y: height - 5, "text-anchor": "end" }, String(high)));
  }

  private redrawLines(): void {
    for (const [, file] of this.files()) {
      this.picture.querySelector(`path[data-file="${file}"]`)?.setAttribute("d", this.path(this.points(file)));
    }
  }

  private handle(kind: string, file: string, index: number): Element {
    const [x, degree] = this.points(file)[index]!;
    const name = kind === "rain" ? texts.precipitationCurve : texts.clutterCurve;
    const handle = drawing("circle", {
      cx: this.px(x), cy: this.py(degree), r: 4.5, class: kind, tabindex: 0, role: "slider", "data-point": `${file} ${index}`,
      "aria-label": texts.point(name, x, degree), "aria-valuemin": 0, "aria-valuemax": 1, "aria-valuenow": degree,
    });
    const move = (value: number): void => {
      const points = this.points(file).map((point, i): Point => i === index ? [point[0], value] : point);
      handle.setAttribute("cy", String(this.py(value)));
      handle.setAttribute("aria-valuenow", String(value));
      this.events.changed(file, points);
    };
    handle.addEventListener("pointerdown", (event) => {
      handle.setPointerCapture(event.pointerId);
      handle.setAttribute("data-held", "");
      handle.focus();
      event.preventDefault();
    });
    handle.addEventListener("pointermove", (event) => {
      if (!handle.hasAttribute("data-held")) return;
      const box = this.picture.getBoundingClientRect();
      const y = (event.clientY - box.top) / box.height * height;
      move(rounded((height - bottom - y) / (height - bottom - top)));
    });
    const release = (): void => { handle.removeAttribute("data-held"); this.events.settled(); };
    handle.addEventListener("pointerup", release);
    handle.addEventListener("pointercancel", release);
    handle.addEventListener("keydown", (event) => {
      const change = { ArrowUp: 0.01, ArrowDown: -0.01, PageUp: 0.1, PageDown: -0.1 }[event.key];
      if (change === undefined) return;
      event.preventDefault();
      move(rounded(this.points(file)[index]![1] + change));
    });
    return handle;
  }

  private reset(): void {
    for (const [, file] of this.files()) this.events.changed(file, this.shipped[file]!);
    this.events.settled();
  }
}

/** A degree with four decimals: what a membership file holds. */
function rounded(degree: number): number {
  return Math.round(Math.min(1, Math.max(0, degree)) * 1e4) / 1e4;
}
