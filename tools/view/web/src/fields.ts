// The fields of a run: codes and what they stand for.
import { block, FieldHead, Head, missing, Numbers } from "./payload";

export class Field {
  constructor(
    readonly head: FieldHead,
    readonly codes: Numbers,
    readonly count: number, // values of one time
  ) {}

  /** Where the values of a time begin. */
  start(time: number): number {
    return this.head.steady ? 0 : time * this.count;
  }

  value(time: number, index: number): number {
    if (index < 0) return NaN;
    const code = this.codes[this.start(time) + index];
    return code === missing ? NaN : this.head.offset + this.head.scale * code;
  }
}

/** All that the page knows of the patches beside their fields. */
export interface Patches {
  pid: Numbers;
  kind: Numbers;
  building: Numbers; // index into the buildings, -1: none
  material: Numbers; // index into the materials, -1: none
  area: Float32Array; // [m2]
}

export async function read_patches(head: Head): Promise<Patches> {
  const [pid, kind, building, material, area] = await Promise.all([
    block("pid"),
    block("kind"),
    block("building"),
    block("material"),
    block("area"),
  ]);
  // An area stands as the bits of its 32-bit number.
  return { pid, kind, building, material, area: new Float32Array(area.buffer as ArrayBuffer, 0, head.patches) };
}

export class Fields {
  private readonly loaded = new Map<number, Promise<Field>>();

  constructor(
    private readonly head: Head,
    private readonly patches: Patches,
  ) {}

  get(number: number): Promise<Field> {
    let field = this.loaded.get(number);
    if (!field) {
      const kind = this.head.fields[number];
      const count = { patch: this.head.patches, building: this.head.buildings.length, cell: this.head.cells }[kind.on];
      field = block("field-" + kind.id).then((codes) => new Field(kind, codes, count));
      this.loaded.set(number, field);
    }
    return field;
  }

  /** Where the value of a patch stands in a field: of its building for a building's field. */
  index(field: Field, patch: number): number {
    if (field.head.on === "cell") return -1;
    return field.head.on === "building" ? this.patches.building[patch] : patch;
  }

  value(field: Field, time: number, patch: number): number {
    return field.value(time, this.index(field, patch));
  }

  of_role(role: FieldHead["role"]): number[] {
    return this.head.fields.flatMap((field, number) => (field.role === role ? [number] : []));
  }
}

// Three digits behind the point at most, two for what varies by more than a hundred.
function digits_of(error: number): number {
  const most = error > 0.0008 ? 2 : 3;
  return error > 0 ? Math.min(most, Math.max(0, Math.ceil(-Math.log10(2.5 * error)))) : 2;
}

/** A value with the digits that its error leaves. */
export function shown(value: number, error: number): string {
  return Number.isFinite(value) ? value.toFixed(digits_of(error)) : "–";
}

export function with_unit(value: number, error: number, unit: string): string {
  const text = shown(value, error);
  return unit && text !== "–" ? `${text} ${unit}` : text;
}

/** How far a shown value may be off: its code and its last digit, rounded up to one digit. */
export function stated_error(error: number): string {
  const total = error + 0.5 * 10 ** -digits_of(error);
  const power = Math.floor(Math.log10(total));
  const rounded = Math.ceil(total / 10 ** power - 1e-9) * 10 ** power;
  return "±" + rounded.toFixed(Math.max(0, -Math.floor(Math.log10(rounded) + 1e-9)));
}
