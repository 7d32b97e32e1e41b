// Lines that let shapes read: strong where faces of different direction meet or a face ends, faint
// between patches of one plane.
import type { Shapes } from "./shapes";

export interface Edges {
  position: Float32Array; // two ends a line
  patches: Uint32Array; // both neighbours of a line, at each of its ends
  strength: Uint8Array;
}

const strong = 255;
const leafy = 130; // of crowns, which shall not outshine the buildings
const faint = 70;
const none = 0;

export function find_edges(shapes: Shapes, is_leafy: (patch: number) => boolean, keep_faint: boolean): Edges {
  const { position, ring_start, ring_patch, normal } = shapes;
  const number_of = vertex_numbers(position);
  const seen = new Map<number, number>(); // pair of corners -> line
  const first: number[] = []; // corner where the line begins
  const second: number[] = [];
  const other: number[] = []; // patch at the other side
  const weight: number[] = [];
  const distinct = number_of.count;
  for (let r = 0; r < ring_patch.length; ++r) {
    for (let v = ring_start[r], before = ring_start[r + 1] - 1; v < ring_start[r + 1]; before = v++) {
      const a = number_of.of[before];
      const b = number_of.of[v];
      if (a === b) continue;
      const key = a < b ? a * distinct + b : b * distinct + a;
      const line = seen.get(key);
      if (line === undefined) {
        seen.set(key, first.length);
        first.push(before);
        second.push(v);
        other.push(ring_patch[r]);
        weight.push(strong);
      } else {
        other[line] = ring_patch[r];
        const inside = shapes.patch[first[line]] === ring_patch[r]; // between pieces of one patch
        weight[line] = !same_direction(normal, first[line], v) ? strong : inside ? none : faint;
      }
    }
  }
  const kept: number[] = [];
  for (let line = 0; line < weight.length; ++line) {
    const of_crowns = weight[line] === strong && is_leafy(other[line]) && is_leafy(shapes.patch[first[line]]);
    if (of_crowns) weight[line] = leafy;
    if (weight[line] >= leafy || (weight[line] === faint && keep_faint)) kept.push(line);
  }
  const edges = {
    position: new Float32Array(6 * kept.length),
    patches: new Uint32Array(4 * kept.length),
    strength: new Uint8Array(2 * kept.length),
  };
  for (let n = 0; n < kept.length; ++n) {
    const line = kept[n];
    for (let end = 0; end < 2; ++end) {
      const v = end === 0 ? first[line] : second[line];
      for (let axis = 0; axis < 3; ++axis) edges.position[6 * n + 3 * end + axis] = position[3 * v + axis];
      edges.patches[4 * n + 2 * end] = shapes.patch[first[line]];
      edges.patches[4 * n + 2 * end + 1] = other[line];
      edges.strength[2 * n + end] = weight[line];
    }
  }
  return edges;
}

function same_direction(normal: Int8Array, a: number, b: number): boolean {
  let dot = 0;
  for (let axis = 0; axis < 3; ++axis) dot += normal[4 * a + axis] * normal[4 * b + axis];
  return dot > 0.97 * 127 * 127;
}

/** One number for all corners at the same place (to 2 cm). */
function vertex_numbers(position: Float32Array): { of: Uint32Array; count: number } {
  const { low, cells, step } = raster(position);
  const places = new Map<number, number>();
  const of = new Uint32Array(position.length / 3);
  for (let v = 0; v < of.length; ++v) {
    let place = 0;
    for (let axis = 0; axis < 3; ++axis) {
      place = place * cells[axis] + Math.round((position[3 * v + axis] - low[axis]) / step);
    }
    let number = places.get(place);
    if (number === undefined) {
      number = places.size;
      places.set(place, number);
    }
    of[v] = number;
  }
  return { of, count: places.size };
}

/** Cells of 2 cm over all corners, or of more where a number could not tell so many apart. */
function raster(position: Float32Array): { low: number[]; cells: number[]; step: number } {
  const low = [Infinity, Infinity, Infinity];
  const high = [-Infinity, -Infinity, -Infinity];
  for (let n = 0; n < position.length; ++n) {
    low[n % 3] = Math.min(low[n % 3], position[n]);
    high[n % 3] = Math.max(high[n % 3], position[n]);
  }
  for (let step = 0.02; ; step *= 2) {
    const cells = low.map((least, axis) => Math.round((high[axis] - least) / step) + 2);
    if (position.length === 0 || cells[0] * cells[1] * cells[2] < Number.MAX_SAFE_INTEGER) return { low, cells, step };
  }
}
