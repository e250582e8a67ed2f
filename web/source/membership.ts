// Membership functions as text files, and the lean between the two classes.

import type { InputInfo, Point, Tables } from "./protocol";

export const precipitationFile = (tag: string): string => `cal_mf_${tag}_precipi.dat`;
export const clutterFile = (tag: string): string => `cal_mf_${tag}_clutter.dat`;

/** Of ground clutter, sea clutter and wind turbines. */
const clutterFiles = (tag: string): string[] =>
  ["clutter", "seaclut", "turclut"].map((kind) => `cal_mf_${tag}_${kind}.dat`);

export function parseTable(text: string): Point[] {
  const numbers = text.trim().split(/\s+/).map(Number);
  const points: Point[] = [];
  for (let i = 0; i + 1 < numbers.length; i += 2) points.push([numbers[i]!, numbers[i + 1]!]);
  return points;
}

export function formatTable(points: Point[]): string {
  return points.map(([x, degree]) => `${x} ${degree}\n`).join("");
}

/**
 * The tables with a lean: the logarithm of the ratio of the two strengths grows by `lean` at every
 * gate. Degrees of clutter (or of precipitation, where the lean is negative) are multiplied by one
 * factor, so that they stay below 1. A table of a texture is taken: every classification has one, and
 * the mean over a neighbourhood keeps a constant as it is. Without a texture the first input in use is.
 */
export function leaned(tables: Tables, inputs: InputInfo[], used: number, lean: number): Tables {
  if (lean === 0) return tables;
  const withFile = inputs.filter((input) => (used & input.bit) !== 0 && input.tag !== "");
  const chosen = withFile.find((input) => input.texture) ?? withFile[0];
  if (!chosen) return tables;
  const files = lean > 0 ? clutterFiles(chosen.tag) : [precipitationFile(chosen.tag)];
  const factor = Math.exp(-Math.abs(lean));
  const changed: Tables = {};
  for (const file of files) {
    if (tables[file]) changed[file] = tables[file].map(([x, degree]) => [x, degree * factor]);
  }
  return { ...tables, ...changed };
}
