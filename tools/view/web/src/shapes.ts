// From the rings of the patches to triangles, one set of buffers for all of them.
import * as THREE from "three";
import { block, Head } from "./payload";
import type { Patches } from "./fields";

export interface Shapes {
  position: Float32Array; // x y z of each corner [m]
  normal: Int8Array; // four bytes a corner
  patch: Uint32Array; // of each corner
  solid: Uint32Array; // corners of triangles
  leafy: Uint32Array; // those of trees, which are drawn through
  ring_start: Uint32Array; // rings + 1
  ring_patch: Uint32Array;
  centre: Float32Array; // x y z of each patch; NaN where it has no shape
  facing: Float32Array; // its normal, likewise
  box: THREE.Box3;
}

export async function read_shapes(head: Head, patches: Patches, leafy_kinds: Set<number>): Promise<Shapes> {
  const [size, owner, hole, corner] = await Promise.all([
    block("ring-size"),
    block("ring-patch"),
    block("ring-hole"),
    block("vertex"),
  ]);
  const position = new Float32Array(corner.length);
  for (let n = 0; n < corner.length; ++n) position[n] = head.step * corner[n];
  const ring_start = new Uint32Array(head.rings + 1);
  for (let r = 0; r < head.rings; ++r) ring_start[r + 1] = ring_start[r] + size[r];

  const shapes: Shapes = {
    position,
    normal: new Int8Array(4 * head.vertices),
    patch: new Uint32Array(head.vertices),
    solid: new Uint32Array(0),
    leafy: new Uint32Array(0),
    ring_start,
    ring_patch: new Uint32Array(owner),
    centre: new Float32Array(3 * head.patches).fill(NaN),
    facing: new Float32Array(3 * head.patches).fill(NaN),
    box: new THREE.Box3(),
  };
  const solid: number[] = [];
  const leafy: number[] = [];
  for (let r = 0; r < head.rings; ) {
    let next = r + 1; // behind the holes of this ring
    while (next < head.rings && hole[next] === 1) ++next;
    const patch = owner[r];
    const normal = normal_of(position, ring_start[r], ring_start[r + 1]);
    for (let v = ring_start[r]; v < ring_start[next]; ++v) {
      shapes.patch[v] = patch;
      for (let axis = 0; axis < 3; ++axis) shapes.normal[4 * v + axis] = Math.round(127 * normal[axis]);
    }
    triangulate(position, ring_start, r, next, normal, leafy_kinds.has(patches.kind[patch]) ? leafy : solid);
    shapes.facing.set(normal, 3 * patch);
    set_centre(shapes, patch, ring_start[r], ring_start[r + 1]);
    r = next;
  }
  shapes.solid = new Uint32Array(solid);
  shapes.leafy = new Uint32Array(leafy);
  shapes.box.setFromArray(position as unknown as number[]);
  if (shapes.box.isEmpty()) shapes.box.set(new THREE.Vector3(-1, -1, 0), new THREE.Vector3(1, 1, 1));
  return shapes;
}

/** The normal of a plane ring, by the formula of Newell (1972). */
function normal_of(position: Float32Array, start: number, end: number): [number, number, number] {
  let x = 0;
  let y = 0;
  let z = 0;
  for (let v = start, before = end - 1; v < end; before = v++) {
    const a = 3 * before;
    const b = 3 * v;
    x += (position[a + 1] - position[b + 1]) * (position[a + 2] + position[b + 2]);
    y += (position[a + 2] - position[b + 2]) * (position[a] + position[b]);
    z += (position[a] - position[b]) * (position[a + 1] + position[b + 1]);
  }
  const length = Math.hypot(x, y, z) || 1;
  return [x / length, y / length, z / length];
}

function set_centre(shapes: Shapes, patch: number, start: number, end: number): void {
  if (!Number.isNaN(shapes.centre[3 * patch])) return; // of its first piece
  const sum = [0, 0, 0];
  for (let v = start; v < end; ++v) for (let axis = 0; axis < 3; ++axis) sum[axis] += shapes.position[3 * v + axis];
  for (let axis = 0; axis < 3; ++axis) shapes.centre[3 * patch + axis] = sum[axis] / (end - start);
}

function triangulate(
  position: Float32Array,
  ring_start: Uint32Array,
  first: number,
  next: number,
  normal: [number, number, number],
  into: number[],
): void {
  const start = ring_start[first];
  const end = ring_start[first + 1];
  if (next === first + 1 && is_convex(position, start, end, normal)) {
    for (let v = start + 1; v + 1 < end; ++v) into.push(start, v, v + 1);
    return;
  }
  const [u, w] = plane_axes(normal);
  const flat = (v: number) => new THREE.Vector2(position[3 * v + u], position[3 * v + w]);
  const rings: number[][] = [];
  for (let r = first; r < next; ++r) {
    rings.push(Array.from({ length: ring_start[r + 1] - ring_start[r] }, (_, n) => ring_start[r] + n));
  }
  const corners = rings.flat();
  const faces = THREE.ShapeUtils.triangulateShape(
    rings[0].map(flat),
    rings.slice(1).map((ring) => ring.map(flat)),
  );
  for (const face of faces) into.push(corners[face[0]], corners[face[1]], corners[face[2]]);
}

function plane_axes(normal: [number, number, number]): [number, number] {
  const [x, y, z] = normal.map(Math.abs);
  return z >= x && z >= y ? [0, 1] : y >= x ? [0, 2] : [1, 2];
}

function is_convex(p: Float32Array, start: number, end: number, n: [number, number, number]): boolean {
  if (end - start <= 3) return true;
  for (let v = start; v < end; ++v) {
    const a = 3 * v;
    const b = 3 * (v + 1 < end ? v + 1 : start);
    const c = 3 * (v + 2 < end ? v + 2 : start + (v + 2 - end));
    const [ux, uy, uz] = [p[b] - p[a], p[b + 1] - p[a + 1], p[b + 2] - p[a + 2]];
    const [wx, wy, wz] = [p[c] - p[b], p[c + 1] - p[b + 1], p[c + 2] - p[b + 2]];
    const turn = (uy * wz - uz * wy) * n[0] + (uz * wx - ux * wz) * n[1] + (ux * wy - uy * wx) * n[2];
    if (turn < 0) return false;
  }
  return true;
}
