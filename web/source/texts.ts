// Texts that the scripts show; those that never change are in page.html.

export const texts = {
  reading: (name: string) => `Reading ${name}…`,
  failed: (name: string, reason: string) => `${name}: ${reason}`,
  sweepName: (number: number, angle: number) => `${number} (${angle.toFixed(1)}°)`,
  panel: (number: number) => `Panel ${number}`,
  classes: "Classes", probability: "Probability", margin: "Margin", deciding: "Deciding input",
  keepWeather: "keep all weather", removeClutter: "remove all clutter", lean: "Lean",
  inputs: "Inputs", minSnr: "Least signal-to-noise ratio (dB)", radarConstant: "Radar constant (dB)",
  byScan: "by the scan",
  texture: "Texture window (gates x rays)", neighbourhood: "Neighbourhood (gates x rays)", gateByGate: "off",
  allClasses: "Sea and turbine clutter too", removeIsolated: "Remove isolated gates",
  counts: (parts: string[]) => parts.join(", "),
  changed: (gates: number) => gates === 0 ? "as the default set" : `${gates} gates differ from the default set`,
  ofEcho: (share: number) => `${(100 * share).toFixed(1)} % of the echo`,
  classNames: {
    0: "precipitation", 3: "noise", 5: "ground clutter", 6: "sea clutter", 7: "turbine clutter",
  } as Record<number, string>,
  notMeasured: "not measured",
  contribution: "Contribution", value: "Value", turns: "Turns at",
  neighbours: "neighbourhood",
  verdict: (name: string, probability: number, margin: number) =>
    `${name}: probability of precipitation ${probability.toFixed(3)}, margin ${margin.toFixed(2)}`,
  noVerdict: (name: string) => `${name}: this gate is not classified`,
  turning: (name: string, from: string, to: string) => `The smallest change that turns it: ${name} from ${from} to ${to}`,
  position: (azimuth: number, elevation: number, range: number, height: number) =>
    `azimuth ${azimuth.toFixed(1)}°, elevation ${elevation.toFixed(1)}°, range ${range.toFixed(2)} km, height ${height.toFixed(2)} km`,
  precipitationCurve: "precipitation", clutterCurve: "clutter",
  point: (curve: string, x: number, degree: number) => `${curve} at ${x}: degree ${degree.toFixed(4)}`,
  resetCurve: "As shipped",
  saveState: "State",   saveTablesFirst: "Save the membership set and unpack it into the folder own/.",
  panelHelp: "Arrow keys move the cursor, plus and minus zoom, Enter explains the gate, 0 shows the whole scan.",
  brush: "Brush", brushOff: "none", brushClutter: "clutter", brushWeather: "weather", brushErase: "erase",
  radius: "Radius (km)", rule: "Rule for clutter", applyRule: "Apply", allClutter: "All echo is clutter",
  clearLabels: "Clear labels", train: "Train", labelsPanel: "Labels",
  labels: (weather: number, clutter: number) => `Labels: ${weather} gates of weather, ${clutter} of clutter.`,
  scores: (hss: number, found: number, kept: number, strict: number, rare: number) =>
    `HSS ${hss.toFixed(3)}, clutter found ${(100 * found).toFixed(1)} %, weather kept ${(100 * kept).toFixed(2)} %, ` +
    `strict HSS ${strict.toFixed(3)}, HSS with one gate of clutter in ten ${rare.toFixed(3)}.`,
  trained: (score: string, warnings: string[]) => `Trained. On rays that took no part: ${score} ${warnings.join(" ")}`,
  damage: "Damage", oddities: "Unusual",
};
