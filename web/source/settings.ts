// The controls of the settings.

import { element } from "./dom";
import type { Child } from "./dom";
import { defaults } from "./protocol";
import type { InputInfo, Settings } from "./protocol";
import { texts } from "./texts";

export interface SettingsEvents { changed(change: Partial<Settings>, kind: string): void }

const leanEnd = 6;  // a margin that hardly any gate's textures exceed
const windows = [1, 3, 5, 7, 9, 11];

/** A control, and how it shows other settings. */
interface Control { view: HTMLElement; show(settings: Settings, used: number): void }

function labelled(text: string, ...controls: Child[]): HTMLElement {
  return element("label", {}, element("span", {}, text), ...controls);
}

export class SettingsPanel {
  readonly lean: Control;
  private readonly controls: Control[];
  readonly view: HTMLElement;

  constructor(private readonly inputs: InputInfo[], private readonly events: SettingsEvents) {
    this.lean = this.leanSlider();
    this.controls = [
      this.inputBoxes(),
      this.numberBox(texts.minSnr, "minSnr"), this.numberBox(texts.radarConstant, "radarConstant"),
      this.windowBoxes(texts.texture, "textureGates", "textureRays", false),
      this.windowBoxes(texts.neighbourhood, "neighbourhoodGates", "neighbourhoodRays", true),
      this.checkBox(texts.allClasses, "allClasses"), this.checkBox(texts.removeIsolated, "removeIsolated"),
    ];
    this.view = element("div", { class: "settings" }, ...this.controls.map((control) => control.view));
  }

  show(settings: Settings, used: number): void {
    for (const control of [this.lean, ...this.controls]) control.show(settings, used);
  }

  private leanSlider(): Control {
    const slider = element("input", {
      type: "range", id: "lean", min: -leanEnd, max: leanEnd, step: 0.1, "aria-label": texts.lean,
      input: () => this.events.changed({ lean: -Number(slider.value) }, "lean"),
    });
    const view = element("div", { class: "lean" },
      element("span", {}, texts.keepWeather), slider, element("span", {}, texts.removeClutter));
    return { view, show: ({ lean }) => { slider.value = String(-lean); } };
  }

  private inputBoxes(): Control {
    const boxes = this.inputs.map((input) => {
      const box = element("input", { type: "checkbox", "data-bit": input.bit });
      box.addEventListener("change", () => {
        const sum = boxes.filter((each) => each.checked).reduce((bits, each) => bits | Number(each.dataset["bit"]), 0);
        this.events.changed({ inputs: sum || null }, "");
      });
      return box;
    });
    const view = element("fieldset", {}, element("legend", {}, texts.inputs),
      ...this.inputs.map((input, i) => labelled(input.name, boxes[i]!)));
    return { view, show: (settings, used) => {
      boxes.forEach((box, i) => { box.checked = ((settings.inputs ?? used) & this.inputs[i]!.bit) !== 0; });
    } };
  }

  private numberBox(text: string, name: "minSnr" | "radarConstant"): Control {
    const box = element("input", { type: "number", step: 0.5, placeholder: texts.byScan, id: name });
    box.addEventListener("change", () => this.events.changed({ [name]: box.value === "" ? null : Number(box.value) }, ""));
    return { view: labelled(text, box), show: (settings) => { box.value = String(settings[name] ?? ""); } };
  }

  private windowBoxes(text: string, gates: "textureGates" | "neighbourhoodGates", rays: "textureRays" | "neighbourhoodRays",
                      off: boolean): Control {
    const choice = (name: typeof gates | typeof rays): HTMLSelectElement => {
      const options = windows.map((size) => element("option", { value: size }, String(size)));
      if (off) options.unshift(element("option", { value: 0 }, texts.gateByGate));
      const select = element("select", { id: name, "aria-label": `${text}: ${name}` }, ...options);
      select.addEventListener("change", () => this.events.changed(this.windowChange(name, Number(select.value), gates, rays, off), ""));
      return select;
    };
    const [first, second] = [choice(gates), choice(rays)];
    return {
      view: element("fieldset", {}, element("legend", {}, text), first, second),
      show: (settings) => { first.value = String(settings[gates]); second.value = String(settings[rays]); },
    };
  }

  /** A neighbourhood has both sizes, or neither. */
  private windowChange(name: keyof Settings, size: number, gates: "textureGates" | "neighbourhoodGates",
                       rays: "textureRays" | "neighbourhoodRays", off: boolean): Partial<Settings> {
    if (!off) return { [name]: size };
    if (size === 0) return { [gates]: 0, [rays]: 0 };
    const other = name === gates ? rays : gates;
    return { [other]: defaults[other], [name]: size };
  }

  private checkBox(text: string, name: "allClasses" | "removeIsolated"): Control {
    const box = element("input", { type: "checkbox", id: name });
    box.addEventListener("change", () => this.events.changed({ [name]: box.checked }, ""));
    return { view: labelled(text, box), show: (settings) => { box.checked = settings[name]; } };
  }
}
