// The run on the page: its data and its surface, joined with what is on show.
import { map_of, Range, range_of, texels } from "./colour";
import { Field, Fields, Patches, read_patches } from "./fields";
import { block, has_block, Head } from "./payload";
import { read_shapes, Shapes } from "./shapes";
import { Surface } from "./surface";
import type { Present } from "./view";

/** A group that a patch sees, by its largest patch. */
export interface Partner {
  patch: number;
  share: number; // of the view
  members: number[]; // all patches of the group
}

export class District {
  readonly fields: Fields;
  readonly surface: Surface;
  readonly number_of: Map<number, number>; // patch by its PID
  field: Field | null = null; // on show
  range: Range = { low: 0, high: 1 };
  private asked = -1;

  readonly usual_width: number; // of a patch [m]

  private constructor(
    readonly head: Head,
    readonly patches: Patches,
    readonly shapes: Shapes,
    private readonly present: Present,
    private readonly draw: () => void,
  ) {
    this.fields = new Fields(head, patches);
    this.surface = new Surface(shapes, head.patches);
    this.number_of = new Map();
    this.usual_width = Math.sqrt(Float32Array.from(patches.area).sort()[head.patches >> 1] ?? 1);
    for (let p = 0; p < head.patches; ++p) this.number_of.set(patches.pid[p], p);
    present.on(["hovered", "selected"], () => {
      this.surface.set_marks(present.view.hovered, present.view.selected);
      draw();
    });
  }

  static async open(head: Head, present: Present, draw: () => void): Promise<District> {
    const patches = await read_patches(head);
    const leafy = new Set(head.kinds.flatMap((kind, k) => (kind === "leaves" ? [k] : [])));
    return new District(head, patches, await read_shapes(head, patches, leafy), present, draw);
  }

  kind_of(patch: number): string {
    return this.head.kinds[this.patches.kind[patch]] ?? "other";
  }

  is_leafy(patch: number): boolean {
    return this.kind_of(patch) === "leaves";
  }

  building_of(patch: number): number | null {
    const building = this.patches.building[patch];
    return building < 0 ? null : this.head.buildings[building];
  }

  centre(patch: number): [number, number, number] | null {
    const at = this.shapes.centre.subarray(3 * patch, 3 * patch + 3);
    return Number.isNaN(at[0]) ? null : [at[0], at[1], at[2]];
  }

  facing(patch: number): number[] {
    return Array.from(this.shapes.facing.subarray(3 * patch, 3 * patch + 3));
  }

  value(patch: number): number {
    return this.field ? this.fields.value(this.field, this.present.view.time, patch) : NaN;
  }

  /** Colours for the present field and time; unpacks the field if need be. */
  async colour(): Promise<void> {
    const { view } = this.present;
    if (this.head.fields.length === 0) return;
    const wanted = view.field;
    this.asked = wanted;
    const field = await this.fields.get(wanted);
    if (this.asked !== wanted) return; // another one was chosen meanwhile
    if (this.field !== field) this.surface.set_map(texels(map_of(field)));
    this.field = field;
    this.recolour();
  }

  private recolour(): void {
    const field = this.field;
    if (!field) return;
    const { view } = this.present;
    const on_patch = field.head.on === "patch";
    this.range = range_of(field, view.time, view.fixed, (n) => !on_patch || this.surface.visible[n] === 1);
    this.surface.set_codes(field, view.time, (patch) => this.fields.index(field, patch));
    const code_of = (value: number) => (value - field.head.offset) / (field.head.scale || 1);
    this.surface.set_range(code_of(this.range.low), code_of(this.range.high));
    this.draw();
  }

  /** Shows the patches that the filter leaves. */
  filter(): void {
    const { hidden, building } = this.present.view;
    const { kind, building: of } = this.patches;
    const visible = this.surface.visible;
    for (let p = 0; p < this.head.patches; ++p) {
      const others = building >= 0 && of[p] >= 0 && of[p] !== building;
      visible[p] = hidden.has(kind[p]) || others ? 0 : 1;
    }
    this.surface.visibility_changed();
    this.recolour();
    this.draw();
  }

  /** Partners of a patch in the exchange of radiation, with the share of its view that each takes. */
  async partners(patch: number): Promise<Partner[]> {
    if (!has_block("partner")) return [];
    const [group, partner, share] = await Promise.all([block("group"), block("partner"), block("partner-share")]);
    const found: Partner[] = [];
    for (let n = 0; n < this.head.partners; ++n) {
      const at = group[patch] * this.head.partners + n;
      if (partner[at] >= 0) found.push({ patch: partner[at], share: share[at] / 65535, members: [] });
    }
    const of_group = new Map(found.map((one) => [group[one.patch], one]));
    for (let p = 0; p < this.head.patches; ++p) of_group.get(group[p])?.members.push(p);
    return found;
  }

  /** Albedo and emissivity of a patch at a time. */
  async properties(patch: number, time: number): Promise<{ albedo: number; emissivity: number }> {
    const row = (await block("property-row"))[patch];
    const set = this.head.properties[this.head.times[time]?.properties ?? 0];
    return { albedo: set?.albedo[row] ?? NaN, emissivity: set?.emissivity[row] ?? NaN };
  }
}
