// What the page and its worker say to each other.

export interface FieldInfo { name: string; units: string; role: string }

export interface SweepInfo {
  number: number; rhi: boolean; angle: number; rays: number; gates: number;
  spacing: number; first: number; rangeKm: number; fields: FieldInfo[];
}

export interface ScanInfo {
  id: number; name: string; format: string; radar: string; site: string; time: string;
  latitude: number; longitude: number; damage: string[]; oddities: string[]; sweeps: SweepInfo[];
}

export interface InputInfo {
  name: string; tag: string; unit: string; bit: number; texture: boolean; low: number; high: number;
}

export type Point = [abscissa: number, degree: number];
/** Points of membership functions by file name. */
export type Tables = Record<string, Point[]>;

export interface Settings {
  inputs: number | null;          // sum of bits; null: all that the scan has
  minSnr: number | null;          // dB; null: by the scan
  radarConstant: number | null;   // dB; null: by the scan
  textureGates: number; textureRays: number;
  neighbourhoodGates: number; neighbourhoodRays: number;  // 0: gate by gate
  allClasses: boolean; removeIsolated: boolean;
  lean: number;                   // added to the margin: above 0 keeps more weather
}

/** Ends of the part of the plane that is shown, km. */
export interface View { left: number; right: number; bottom: number; top: number }

/** As scan::Label counts them. */
export enum Label { none, weather, beside, clutter }

export type LabelStep =
  | { kind: "brush"; label: Label; radius: number; points: number[] }
  | { kind: "rule"; rule: string }
  | { kind: "all"; label: Label };

/** Shares of the labelled gates, and Heidke skill scores. */
export interface Scores {
  kept: number; keptStrict: number; found: number; hss: number; hssStrict: number; hssOneToNine: number;
}

/** Counts of the values of an input in equal steps of its usual range. */
export interface Histogram { rain: Float64Array; clutter: Float64Array }

export interface Counts {
  precipitation: number; ground: number; sea: number; turbine: number; noise: number;
  inputs: number; radarConstant: number; minSnr: number; milliseconds: number; notes: string[];
}

export interface Picture {
  pixels: Uint8ClampedArray; heading: string; units: string; scale: Uint8Array; low: number; high: number;
}

export interface Gate {
  at: number; ray: number; gate: number; azimuth: number; elevation: number; rangeKm: number;
  heightKm: number; values: number[]; class: number; probability: number; margin: number;
  deciding: number;
}

export interface InputShare {
  input: number; name: string; unit: string; value: number; precipitation: number; clutter: number;
  contribution: number; turns: number;
}

export interface Explanation {
  class: number; margin: number; probability: number; neighbourhood: number; deciding: number;
  turning: number; inputs: InputShare[];
}

export interface Refresh {
  scan: number; sweep: number; settings: Settings; tables: Tables; layers: string[]; view: View;
  width: number; height: number; compare: boolean; labels: LabelStep[];
  curves: boolean;                // whether histograms are wanted
}

export interface Refreshed {
  counts: Counts; pictures: Picture[];
  changed: number;                // gates whose class the default tables and settings would not give
  labelled: { weather: number; clutter: number };
  scores: Scores | null;
  histograms: Histogram[];        // by input; empty ones where an input takes no part
}

/** The calls of the worker: arguments and result of each. */
export interface Calls {
  start: { arguments: { wasm: Uint8Array; hdf5: Uint8Array }; result: { inputs: InputInfo[]; tables: Tables } };
  open: { arguments: { name: string; bytes: Uint8Array }; result: ScanInfo };
  synthetic: { arguments: { seed: number }; result: ScanInfo };
  close: { arguments: { scan: number }; result: null };
  refresh: { arguments: Refresh; result: Refreshed };
  gate: { arguments: { scan: number; sweep: number; x: number; y: number }; result: Gate };
  explain: {
    arguments: { scan: number; sweep: number; ray: number; gate: number; settings: Settings; tables: Tables };
    result: Explanation;
  };
  train: {
    arguments: { scan: number; sweep: number; settings: Settings };
    result: { tables: Tables; warnings: string[]; scores: Scores };
  };
  layer: { arguments: { scan: number; sweep: number; name: string }; result: Float32Array };
  write: {
    arguments: { scan: number; sweep: number; name: string };
    result: { bytes: Uint8Array; notes: string[] };
  };
}

export type CallName = keyof Calls;

export interface Message<Name extends CallName = CallName> {
  number: number; call: Name; arguments: Calls[Name]["arguments"];
}

export interface Reply { number: number; result?: unknown; error?: string }

export const defaults: Settings = {
  inputs: null, minSnr: null, radarConstant: null, textureGates: 5, textureRays: 3,
  neighbourhoodGates: 5, neighbourhoodRays: 3, allClasses: false, removeIsolated: false, lean: 0,
};
