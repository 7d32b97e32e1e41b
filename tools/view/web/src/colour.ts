// Colour maps: even to the eye, one for temperatures, one for amounts, and one with a middle for
// what has a sign.
import { interpolateInferno, interpolateRdBu, interpolateViridis } from "d3-scale-chromatic";
import { Field } from "./fields";
import { missing } from "./payload";

export type Map = (share: number) => string;

export interface Range {
  low: number;
  high: number;
}

const no_black = (share: number) => interpolateInferno(0.06 + 0.92 * share);
const cold_to_warm = (share: number) => interpolateRdBu(1 - (0.04 + 0.92 * share));

export function map_of(field: Field): Map {
  if (field.head.signed) return cold_to_warm;
  return field.head.role === "temperature" ? no_black : interpolateViridis;
}

/** The map as 256 texels, four bytes each. */
export function texels(map: Map): Uint8Array {
  const bytes = new Uint8Array(4 * 256);
  for (let n = 0; n < 256; ++n) {
    const text = map(n / 255);
    const rgb = text.startsWith("#")
      ? [1, 3, 5].map((at) => parseInt(text.slice(at, at + 2), 16))
      : (text.match(/\d+/g) ?? []).map(Number);
    bytes.set([rgb[0], rgb[1], rgb[2], 255], 4 * n);
  }
  return bytes;
}

/** The range of colours: of all times, or of what one time shows. */
export function range_of(field: Field, time: number, fixed: boolean, visible: (index: number) => boolean): Range {
  let { low, high } = field.head;
  if (!fixed) {
    let least = missing;
    let greatest = -1;
    const start = field.start(time);
    for (let n = 0; n < field.count; ++n) {
      const code = field.codes[start + n];
      if (code === missing || !visible(n)) continue;
      if (code < least) least = code;
      if (code > greatest) greatest = code;
    }
    if (greatest >= 0) {
      low = field.head.offset + field.head.scale * least;
      high = field.head.offset + field.head.scale * greatest;
    }
  }
  if (field.head.signed) {
    const bound = Math.max(Math.abs(low), Math.abs(high)) || 1;
    return { low: -bound, high: bound };
  }
  return high > low ? { low, high } : { low: low - 0.5, high: low + 0.5 };
}

/** Round numbers within a range, some four of them. */
export function ticks(range: Range, wanted = 4): { at: number; text: string }[] {
  const rough = (range.high - range.low) / wanted;
  const power = 10 ** Math.floor(Math.log10(rough));
  const step = [1, 2, 5, 10].map((factor) => factor * power).find((one) => one >= rough) ?? 10 * power;
  const digits = Math.max(0, -Math.floor(Math.log10(step) + 1e-9));
  const found = [];
  for (let n = Math.ceil(range.low / step - 1e-9); n * step <= range.high + 1e-9 * step; ++n) {
    found.push({ at: n * step, text: (n * step).toFixed(digits).replace(/^-(0(\.0*)?)$/, "$1") });
  }
  return found;
}
