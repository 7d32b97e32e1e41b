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
  weight.forEach((one, line) => {
    if (one === strong && is_leafy(other[line]) && is_leafy(shapes.patch[first[line]])) weight[line] = leafy;
  });
  const kept = weight.flatMap((one, line) => (one >= leafy || (one === faint && keep_faint) ? [line] : []));
  const edges = {
    position: new Float32Array(6 * kept.length),
    patches: new Uint32Array(4 * kept.length),
    strength: new Uint8Array(2 * kept.length),
  };
  kept.forEach((line, n) => {
    [first[line], second[line]].forEach((v, end) => {
      edges.position.set(position.subarray(3 * v, 3 * v + 3), 6 * n + 3 * end);
      edges.patches.set([shapes.patch[first[line]], other[line]], 4 * n + 2 * end);
      edges.strength[2 * n + end] = weight[line];
    });
  });
  return edges;
}

function same_direction(normal: Int8Array, a: number, b: number): boolean {
  let dot = 0;
  for (let axis = 0; axis < 3; ++axis) dot += normal[4 * a + axis] * normal[4 * b + axis];
  return dot > 0.97 * 127 * 127;
}

/** One number for all corners at the same place (to 2 cm). */
function vertex_numbers(position: Float32Array): { of: Uint32Array; count: number } {
  const places = new Map<string, number>();
  const of = new Uint32Array(position.length / 3);
  for (let v = 0; v < of.length; ++v) {
    const key = `${Math.round(50 * position[3 * v])},${Math.round(50 * position[3 * v + 1])},${Math.round(50 * position[3 * v + 2])}`;
    let number = places.get(key);
    if (number === undefined) {
      number = places.size;
      places.set(key, number);
    }
    of[v] = number;
  }
  return { of, count: places.size };
}
