// Linked pictures of one sweep: pan, zoom, cursor, rings and scales.

import { drawing, element } from "./dom";
import type { Picture, SweepInfo, View } from "./protocol";
import { texts } from "./texts";

export interface PanelEvents {
  viewChanged(view: View | null): void;
  pointed(x: number, y: number): void;
  chosen(x: number, y: number): void;
  /** Whether a brush is in hand: then a drag paints instead of moving the view. */
  brush(): boolean;
  painted(points: number[]): void;
}

const codeColours: [number, string][] = [
  [0, "#0072b2"], [5, "#d55e00"], [6, "#009e73"], [7, "#cc79a7"], [3, "#fbf6e6"],
];
const step = 0.08;  // share of the width that an arrow key moves

function roundStep(length: number): number {
  const power = 10 ** Math.floor(Math.log10(length));
  return [1, 2, 5, 10].map((factor) => factor * power).find((candidate) => candidate >= length) ?? length;
}

/** The view of a whole sweep, with the shape of a panel. */
export function wholeView(sweep: SweepInfo, width: number, height: number): View {
  const range = Math.max(sweep.rangeKm, 1e-3);
  if (sweep.rhi) return { left: 0, right: range, bottom: 0, top: Math.min(20, range) };
  const x = width > height ? range * width / height : range;
  const y = height > width ? range * height / width : range;
  return { left: -x, right: x, bottom: -y, top: y };
}

class Panel {
  readonly canvas = element("canvas", { tabindex: 0, role: "img" });
  private readonly marks = drawing("svg", { "aria-hidden": "true" });
  private readonly heading = element("figcaption");
  private readonly legend = element("div", { class: "legend" });
  readonly figure = element("figure", {},
    this.heading, element("div", { class: "plot" }, this.canvas, this.marks), this.legend);

  show(picture: Picture, width: number, height: number): void {
    this.canvas.width = width;
    this.canvas.height = height;
    const context = this.canvas.getContext("2d")!;
    context.putImageData(new ImageData(picture.pixels as Uint8ClampedArray<ArrayBuffer>, width, height), 0, 0);
    const heading = picture.units ? `${picture.heading}, ${picture.units}` : picture.heading;
    this.heading.textContent = heading;
    this.canvas.setAttribute("aria-label", `${heading}. ${texts.panelHelp}`);
    this.showLegend(picture);
  }

  private showLegend(picture: Picture): void {
    if (picture.scale.length > 0) {
      const stops: string[] = [];
      for (let i = 0; i < 256; i += 15) stops.push(`rgb(${picture.scale.slice(3 * i, 3 * i + 3).join(",")})`);
      const bar = element("span", { class: "bar" });
      bar.style.background = `linear-gradient(to right, ${stops.join(",")})`;
      this.legend.replaceChildren(String(picture.low), bar, String(picture.high));
    } else if (picture.heading === texts.classes) {
      this.legend.replaceChildren(...codeColours.slice(0).map(([code, colour]) => {
        const patch = element("span", { class: "patch" });
        patch.style.background = colour;
        return element("span", {}, patch, ` ${texts.classNames[code]}`);
      }));
    } else {
      this.legend.replaceChildren();
    }
  }

  /** Range rings and the cursor, drawn over the picture. */
  mark(view: View, sweep: SweepInfo, cursor: [number, number] | null): void {
    const width = this.canvas.clientWidth, height = this.canvas.clientHeight;
    this.marks.setAttribute("viewBox", `0 0 ${width} ${height}`);
    const px = (x: number): number => (x - view.left) / (view.right - view.left) * width;
    const py = (y: number): number => (view.top - y) / (view.top - view.bottom) * height;
    const marks: Element[] = [];
    const every = roundStep((view.right - view.left) / 6);
    for (let km = every; km <= sweep.rangeKm * 1.0001; km += every) {
      if (sweep.rhi) {
        marks.push(drawing("line", { x1: px(km), x2: px(km), y1: 0, y2: height, class: "ring" }));
      } else {
        const rx = px(km) - px(0), ry = py(0) - py(km);
        marks.push(drawing("ellipse", { cx: px(0), cy: py(0), rx, ry, class: "ring" }));
      }
      marks.push(drawing("text", { x: px(km) + 3, y: sweep.rhi ? height - 4 : py(0) - 3, class: "km" }, `${km} km`));
    }
    if (cursor) {
      const [x, y] = [px(cursor[0]), py(cursor[1])];
      marks.push(drawing("path", { d: `M${x - 9},${y}H${x + 9}M${x},${y - 9}V${y + 9}`, class: "cursor" }));
    }
    this.marks.replaceChildren(...marks);
  }
}

export class Panels {
  private panels: Panel[] = [];
  private sweep: SweepInfo | null = null;
  private view: View = { left: 0, right: 1, bottom: 0, top: 1 };
  private cursor: [number, number] | null = null;

  constructor(private readonly place: HTMLElement, private readonly events: PanelEvents) {
    new ResizeObserver(() => this.mark()).observe(place);
  }

  /** Size of a panel's picture in pixels of the screen, for a number of panels. */
  size(count: number): [width: number, height: number] {
    this.want(count);
    const canvas = this.panels[0]!.canvas;
    const scale = Math.min(window.devicePixelRatio || 1, 2);
    return [Math.max(50, Math.round(canvas.clientWidth * scale)), Math.max(50, Math.round(canvas.clientHeight * scale))];
  }

  show(pictures: Picture[], sweep: SweepInfo, view: View, width: number, height: number): void {
    this.want(pictures.length);
    this.sweep = sweep;
    this.view = view;
    pictures.forEach((picture, i) => this.panels[i]!.show(picture, width, height));
    this.mark();
  }

  canvasOf(panel: number): HTMLCanvasElement { return this.panels[panel]!.canvas; }

  private mark(): void {
    if (!this.sweep) return;
    for (const panel of this.panels) panel.mark(this.view, this.sweep, this.cursor);
  }

  private want(count: number): void {
    while (this.panels.length > count) this.panels.pop()!.figure.remove();
    while (this.panels.length < count) {
      const panel = new Panel();
      this.panels.push(panel);
      this.place.append(panel.figure);
      this.listen(panel.canvas);
    }
    this.place.dataset["count"] = String(count);
  }

  private listen(canvas: HTMLCanvasElement): void {
    let stroke: number[] | null = null;
    let from: { x: number; y: number; view: View; moved: boolean } | null = null;
    canvas.addEventListener("pointerdown", (event) => {
      canvas.setPointerCapture(event.pointerId);
      if (this.events.brush()) {
        stroke = this.placeOf(canvas, event.offsetX, event.offsetY);
        return;
      }
      from = { x: event.offsetX, y: event.offsetY, view: this.view, moved: false };
    });
    canvas.addEventListener("pointermove", (event) => {
      if (stroke) stroke.push(...this.placeOf(canvas, event.offsetX, event.offsetY));
      if (!from) return this.point(...this.placeOf(canvas, event.offsetX, event.offsetY));
      const dx = event.offsetX - from.x, dy = event.offsetY - from.y;
      if (!from.moved && Math.hypot(dx, dy) < 4) return;
      from.moved = true;
      const kmX = (from.view.right - from.view.left) / canvas.clientWidth;
      const kmY = (from.view.top - from.view.bottom) / canvas.clientHeight;
      this.events.viewChanged({
        left: from.view.left - dx * kmX, right: from.view.right - dx * kmX,
        bottom: from.view.bottom + dy * kmY, top: from.view.top + dy * kmY,
      });
    });
    canvas.addEventListener("pointerup", (event) => {
      if (stroke) this.events.painted(stroke);
      stroke = null;
      if (from && !from.moved) {
        const at = this.placeOf(canvas, event.offsetX, event.offsetY);
        this.point(...at);
        this.events.chosen(...at);
      }
      from = null;
    });
    canvas.addEventListener("wheel", (event) => {
      event.preventDefault();
      this.zoom(this.placeOf(canvas, event.offsetX, event.offsetY), event.deltaY > 0 ? 1.25 : 0.8);
    }, { passive: false });
    canvas.addEventListener("keydown", (event) => { if (this.key(event.key)) event.preventDefault(); });
  }

  private key(key: string): boolean {
    const width = this.view.right - this.view.left, height = this.view.top - this.view.bottom;
    const [x, y] = this.cursor ?? [(this.view.left + this.view.right) / 2, (this.view.bottom + this.view.top) / 2];
    const moves: Record<string, [number, number]> = {
      ArrowLeft: [-step * width / 4, 0], ArrowRight: [step * width / 4, 0],
      ArrowUp: [0, step * height / 4], ArrowDown: [0, -step * height / 4],
    };
    const move = moves[key];
    if (move) this.point(x + move[0], y + move[1]);
    else if (key === "+" || key === "=") this.zoom([x, y], 0.8);
    else if (key === "-") this.zoom([x, y], 1.25);
    else if (key === "0") this.events.viewChanged(null);
    else if (key === "Enter") this.events.chosen(x, y);
    else return false;
    return true;
  }

  private placeOf(canvas: HTMLCanvasElement, x: number, y: number): [number, number] {
    return [
      this.view.left + x / canvas.clientWidth * (this.view.right - this.view.left),
      this.view.top - y / canvas.clientHeight * (this.view.top - this.view.bottom),
    ];
  }

  private zoom([x, y]: [number, number], factor: number): void {
    this.events.viewChanged({
      left: x + (this.view.left - x) * factor, right: x + (this.view.right - x) * factor,
      bottom: y + (this.view.bottom - y) * factor, top: y + (this.view.top - y) * factor,
    });
  }

  private point(x: number, y: number): void {
    this.cursor = [x, y];
    this.mark();
    this.events.pointed(x, y);
  }
}
