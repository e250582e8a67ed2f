// Why a gate has its class: contributions as bars, and what would turn the verdict.

import { element } from "./dom";
import type { Explanation, Gate } from "./protocol";
import { texts } from "./texts";

const widest = 6;  // a contribution of this size fills half the width

export function number(value: number, unit = ""): string {
  if (!Number.isFinite(value)) return Number.isNaN(value) ? "–" : value > 0 ? "∞" : "−∞";
  const text = Math.abs(value) >= 1000 || (value !== 0 && Math.abs(value) < 0.001) ? value.toExponential(2)
    : String(Number(value.toPrecision(4)));
  return unit ? `${text} ${unit}` : text;
}

function bar(contribution: number): HTMLElement {
  const share = Math.min(1, Math.abs(contribution) / widest) * 50;
  const fill = element("span", { class: contribution >= 0 ? "towards-rain" : "towards-clutter" });
  fill.style.width = `${Number.isNaN(share) ? 0 : share}%`;
  return element("span", { class: "contribution" }, fill);
}

function row(name: string, value: string, contribution: number, turns: string): HTMLTableRowElement {
  return element("tr", {}, element("th", { scope: "row" }, name), element("td", {}, value),
    element("td", {}, bar(contribution), ` ${number(contribution)}`), element("td", {}, turns));
}

export function explanationView(gate: Gate, why: Explanation): HTMLElement {
  const name = texts.classNames[why.class] ?? texts.notMeasured;
  const where = element("p", {}, texts.position(gate.azimuth, gate.elevation, gate.rangeKm, gate.heightKm));
  if (Number.isNaN(why.margin)) return element("div", {}, where, element("p", {}, texts.noVerdict(name)));
  const rows = why.inputs.map((share) =>
    row(share.name, number(share.value, share.unit), share.contribution, number(share.turns, share.unit)));
  if (why.neighbourhood !== 0) rows.push(row(texts.neighbours, "", why.neighbourhood, ""));
  const turning = why.inputs.find((share) => share.input === why.turning);
  return element("div", {}, where,
    element("p", { class: "verdict" }, texts.verdict(name, why.probability, why.margin)),
    element("table", {},
      element("thead", {}, element("tr", {}, ...["", texts.value, texts.contribution, texts.turns].map(
        (heading) => element("th", { scope: "col" }, heading)))),
      element("tbody", {}, ...rows)),
    turning ? element("p", {}, texts.turning(turning.name, number(turning.value, turning.unit),
      number(turning.turns, turning.unit))) : null);
}
