// What the program has put into the page: a head in JSON and blocks of numbers, each deflated and in
// base64 in an element of its own, which is unpacked when it is first asked for.

export interface TimeHead {
  label: string; // "14 h", "July, 14 h"
  hour: number;
  at: number; // hours since the first day began, for the axis of curves
  properties: number; // which of the sets of surface properties is in force
}

export interface FieldHead {
  id: string;
  name: string;
  unit: string;
  note: string; // sign and meaning in words
  on: "patch" | "building" | "cell";
  role: "temperature" | "balance" | "radiation" | "share" | "building" | "other";
  steady: boolean; // one value for all times
  signed: boolean;
  scale: number;
  offset: number;
  error: number;
  low: number;
  high: number;
}

export interface Layer {
  code: number; // of the surface properties that it consists of
  thickness: number; // [m]
  conductivity: number; // [W/m K]
  capacity: number; // [J/m3 K]
}

export interface Material {
  code: number;
  layers: Layer[];
}

export interface Chart {
  title: string;
  unit: string;
  lines: { name: string; values: (number | null)[] }[];
}

export interface Head {
  format: number;
  title: string;
  program: string;
  notes: string[];
  times: TimeHead[];
  patches: number;
  rings: number;
  vertices: number;
  step: number; // [m] of one unit of the vertices
  kinds: string[];
  buildings: number[]; // their codes
  floor_areas: number[]; // of all storeys [m2]
  materials: Material[];
  fields: FieldHead[];
  charts: Chart[];
  air: (number | null)[]; // temperature at each time
  north: [number, number]; // in the plan of the run
  properties: { albedo: number[]; emissivity: number[] }[]; // by month, then by row
  groups: number; // of the exchange of radiation
  partners: number; // kept for each group
  cells: number; // of leaves
  blocks: Record<string, Block>;
}

interface Block {
  type: "u8" | "u16" | "i32";
  delta: number; // each number is the difference to the one so many before it; 0: itself
}

export type Numbers = Uint8Array | Uint16Array | Int32Array;

export const missing = 65535; // the code of a value that is not there

const head_element = document.getElementById("head");
export const head: Head | null = head_element ? JSON.parse(head_element.textContent ?? "null") : null;

const unpacked = new Map<string, Promise<Numbers>>();

/** The numbers of a block; the same promise for all who ask. */
export function block(name: string): Promise<Numbers> {
  let numbers = unpacked.get(name);
  if (!numbers) {
    numbers = unpack(name);
    unpacked.set(name, numbers);
  }
  return numbers;
}

export function has_block(name: string): boolean {
  return head !== null && name in head.blocks;
}

async function unpack(name: string): Promise<Numbers> {
  const kind = head?.blocks[name];
  const element = await element_of("block-" + name);
  if (!kind || !element) throw new Error(`the page has no block ${name}`);
  const bytes = await inflate(from_base64((element.textContent ?? "").trim()));
  element.remove(); // the text is not needed again
  return undo(bytes, kind);
}

/** An element of data, when all of it is there: what the first picture needs not stands behind the script. */
async function element_of(id: string): Promise<HTMLElement | null> {
  const whole = () => document.getElementById(id)?.nextSibling || document.readyState !== "loading";
  if (!whole()) await new Promise((done) => document.addEventListener("DOMContentLoaded", done, { once: true }));
  return document.getElementById(id);
}

function from_base64(text: string): Uint8Array<ArrayBuffer> {
  const quick = Uint8Array as unknown as { fromBase64?: (text: string) => Uint8Array<ArrayBuffer> };
  if (quick.fromBase64) return quick.fromBase64(text);
  const binary = atob(text);
  const bytes = new Uint8Array(binary.length);
  for (let n = 0; n < bytes.length; ++n) bytes[n] = binary.charCodeAt(n);
  return bytes;
}

async function inflate(bytes: Uint8Array<ArrayBuffer>): Promise<Uint8Array> {
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("deflate"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

// The bytes stand in planes, all lowest bytes first, and the numbers as differences: both make the
// packed text smaller.
function undo(bytes: Uint8Array, { type, delta }: Block): Numbers {
  const width = type === "u8" ? 1 : type === "u16" ? 2 : 4;
  const count = bytes.length / width;
  const numbers =
    type === "u8" ? new Uint8Array(count) : type === "u16" ? new Uint16Array(count) : new Int32Array(count);
  if (numbers instanceof Uint8Array) numbers.set(bytes);
  else if (numbers instanceof Uint16Array) join_two(bytes, numbers);
  else join_four(bytes, numbers);
  if (delta > 0) sum_up(numbers, delta);
  return numbers;
}

// A loop for each kind of number: one for all of them would run several times as long.
function join_two(bytes: Uint8Array, numbers: Uint16Array): void {
  const count = numbers.length;
  for (let n = 0; n < count; ++n) numbers[n] = bytes[n] | (bytes[count + n] << 8);
}

function join_four(bytes: Uint8Array, numbers: Int32Array): void {
  const count = numbers.length;
  for (let n = 0; n < count; ++n) {
    numbers[n] = bytes[n] | (bytes[count + n] << 8) | (bytes[2 * count + n] << 16) | (bytes[3 * count + n] << 24);
  }
}

function sum_up(numbers: Numbers, delta: number): void {
  if (numbers instanceof Uint16Array) for (let n = delta; n < numbers.length; ++n) numbers[n] += numbers[n - delta];
  else for (let n = delta; n < numbers.length; ++n) numbers[n] += numbers[n - delta];
}
