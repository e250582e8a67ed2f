// Labels of gates: a brush, a rule or all echo at once; training from them.

import { element } from "./dom";
import type { LabelStep, Scores } from "./protocol";
import { Label } from "./protocol";
import { texts } from "./texts";

export interface LabelEvents {
  labelled(step: LabelStep): void;
  cleared(): void;
  train(): void;
}

export class LabelPanel {
  private readonly tool = element("select", { id: "label-tool" },
    element("option", { value: "" }, texts.brushOff),
    element("option", { value: Label.clutter }, texts.brushClutter),
    element("option", { value: Label.weather }, texts.brushWeather),
    element("option", { value: Label.none }, texts.brushErase));
  private readonly radius = element("input", { id: "label-radius", type: "number", min: 0.1, step: 0.5, value: 3 });
  private readonly rule = element("input", { id: "label-rule", placeholder: "ZT-DZ>10" });
  private readonly counts = element("p", { id: "label-counts", role: "status" });
  readonly view: HTMLElement;

  constructor(events: LabelEvents) {
    const button = (id: string, text: string, action: () => void): HTMLElement =>
      element("button", { type: "button", id, click: action }, text);
    this.view = element("div", {},
      element("div", { class: "bar-row" },
        element("label", {}, texts.brush, this.tool), element("label", {}, texts.radius, this.radius)),
      element("div", { class: "bar-row" },
        element("label", {}, texts.rule, this.rule),
        button("label-apply", texts.applyRule, () => events.labelled({ kind: "rule", rule: this.rule.value })),
        button("label-all", texts.allClutter, () => events.labelled({ kind: "all", label: Label.clutter }))),
      element("div", { class: "bar-row" },
        button("label-clear", texts.clearLabels, () => events.cleared()),
        button("train", texts.train, () => events.train())),
      this.counts);
  }

  /** The label that the brush gives, and its radius in km; null where there is no brush. */
  get brush(): { label: Label; radius: number } | null {
    return this.tool.value === "" ? null : { label: Number(this.tool.value), radius: Number(this.radius.value) || 1 };
  }

  show(weather: number, clutter: number, scores: Scores | null): void {
    this.counts.textContent = texts.labels(weather, clutter) + (scores ? ` ${scoreText(scores)}` : "");
  }
}

export function scoreText(scores: Scores): string {
  return texts.scores(scores.hss, scores.found, scores.kept, scores.hssStrict, scores.hssOneToNine);
}
