// What the user has chosen, with every step back and forth.

import { defaults } from "./protocol";
import type { LabelStep, Settings, Tables, View } from "./protocol";

export interface State {
  scan: number;          // position in the list of open scans
  sweep: number;         // position in the scan
  panels: string[];      // layers: "field:NAME", "classes", "probability", "margin", "deciding"
  view: View | null;     // null: the whole sweep
  settings: Settings;
  tables: Tables;        // those that were changed
  labels: LabelStep[];   // in the order in which they were given
}

export const firstState = (): State => ({
  scan: 0, sweep: 0, panels: ["", "classes"], view: null, settings: { ...defaults }, tables: {}, labels: [],
});

const deepest = 500;

/** States that were left, and those that were undone. States are never changed in place. */
export class History {
  private past: State[] = [];
  private future: State[] = [];
  private lastKind = "";

  constructor(public now: State) {}

  /** Takes a new state. Steps of one kind in a row (a drag, a slider) are one step to undo. */
  step(change: Partial<State>, kind = ""): void {
    if (kind === "" || kind !== this.lastKind) {
      this.past.push(this.now);
      if (this.past.length > deepest) this.past.shift();
    }
    this.future = [];
    this.lastKind = kind;
    this.now = { ...this.now, ...change };
  }

  /** Ends a row of steps of one kind. */
  settle(): void { this.lastKind = ""; }

  undo(): boolean { return this.move(this.past, this.future); }
  redo(): boolean { return this.move(this.future, this.past); }
  get canUndo(): boolean { return this.past.length > 0; }
  get canRedo(): boolean { return this.future.length > 0; }

  private move(from: State[], to: State[]): boolean {
    const state = from.pop();
    if (!state) return false;
    to.push(this.now);
    this.now = state;
    this.lastKind = "";
    return true;
  }
}

/** The state as the address of the page holds it: without the scans themselves. */
export const stateToText = (state: State): string => encodeURIComponent(JSON.stringify(state));

/** The state of an address or a saved file; null when it is none. */
export function stateFromText(text: string): State | null {
  try {
    const found = JSON.parse(decodeURIComponent(text)) as Partial<State>;
    if (typeof found !== "object" || found === null || !Array.isArray(found.panels)) return null;
    const first = firstState();
    return { ...first, ...found, settings: { ...first.settings, ...found.settings } };
  } catch {
    return null;
  }
}
