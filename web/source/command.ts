// The command line of the program that does what the page shows.

import { defaults } from "./protocol";
import type { InputInfo, Settings } from "./protocol";

const quoted = (text: string): string => /^[\w./-]+$/.test(text) ? text : `'${text.replaceAll("'", "'\\''")}'`;
const size = (gates: number, rays: number): string => `${gates}x${rays}`;

export function commandLine(scan: string, sweep: number, sweeps: number, settings: Settings, inputs: InputInfo[],
                            ownTables: boolean): string {
  const words = ["clutterclassifier", "classify", quoted(scan)];
  if (sweeps > 1) words.push("--sweep", String(sweep));
  if (ownTables) words.push("--membership", "own/");
  if (settings.inputs !== null) {
    words.push("--inputs", inputs.filter((input) => (settings.inputs! & input.bit) !== 0).map((input) => input.name).join(","));
  }
  if (settings.minSnr !== null) words.push("--min-snr", String(settings.minSnr));
  if (settings.radarConstant !== null) words.push("--radar-constant", String(settings.radarConstant));
  if (settings.textureGates !== defaults.textureGates || settings.textureRays !== defaults.textureRays) {
    words.push("--window", size(settings.textureGates, settings.textureRays));
  }
  if (settings.neighbourhoodGates === 0) words.push("--neighbourhood", "off");
  else if (settings.neighbourhoodGates !== defaults.neighbourhoodGates || settings.neighbourhoodRays !== defaults.neighbourhoodRays) {
    words.push("--neighbourhood", size(settings.neighbourhoodGates, settings.neighbourhoodRays));
  }
  if (settings.allClasses) words.push("--classes", "all");
  if (settings.removeIsolated) words.push("--remove-isolated");
  return [...words, "-o", "classes.uf"].join(" ");
}
