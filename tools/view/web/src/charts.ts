// The panel of the whole district: weather, mean temperatures by kind, loads and released heat.
import { Curves, Line } from "./curves";
import type { District } from "./district";
import { el } from "./dom";
import type { Field } from "./fields";
import { FieldHead, missing } from "./payload";
import type { Present } from "./view";

const colours: Record<string, string> = {
  roof: "--c1",
  wall: "--c2",
  window: "--c3",
  ground: "--c4",
  leaves: "--c5",
  water: "--c6",
  "solar panel": "--c7",
};

export class DistrictPanel {
  readonly element = el("section", { class: "panel card", "aria-label": "district", tabindex: -1, hidden: true });
  private curves: Curves[] = [];
  private made_for: number | null = null; // building

  constructor(
    private readonly district: District,
    private readonly present: Present,
  ) {
    present.on(["time"], () => this.curves.forEach((one) => one.follow()));
    present.on(["theme"], () => this.curves.forEach((one) => one.repaint()));
    present.on(["building"], () => {
      if (!this.element.hidden) void this.fill();
    });
  }

  async open(): Promise<void> {
    this.element.hidden = false;
    await this.fill();
  }

  close(): void {
    this.element.hidden = true;
  }

  private async fill(): Promise<void> {
    const { building } = this.present.view;
    if (this.made_for === building) return;
    this.made_for = building;
    const { head } = this.district;
    const kinds = await this.kind_means(building);
    const loads = await this.building_sums(building);
    if (this.made_for !== building) return;
    this.curves.forEach((one) => one.destroy());
    this.curves = [];
    const of = building < 0 ? "" : `, building ${head.buildings[building]}`;
    const add = (title: string, unit: string, lines: Line[]) => {
      if (lines.length > 0) this.curves.push(new Curves(head, this.present, title, unit, lines, 160));
    };
    add(`Mean surface temperature by kind${of}`, "°C", kinds);
    for (const { title, unit, lines } of loads) add(title + of, unit, lines);
    for (const chart of head.charts) add(chart.title, chart.unit, chart.lines);
    const notes = head.notes.map((note) => el("li", {}, note));
    this.element.replaceChildren(
      el(
        "header",
        {},
        el("h2", {}, "District"),
        el("button", { type: "button", class: "round", "aria-label": "close", title: "Close (Esc)", click: () => this.close() }, "×"),
        el("p", { class: "quiet" }, `${head.patches.toLocaleString("en")} patches · ${head.buildings.length} buildings · ${head.times.length} hours`),
      ),
      notes.length > 0 ? el("ul", { class: "notes" }, ...notes) : "",
      ...this.curves.map((one) => one.element),
      el("p", { class: "quiet foot" }, `${head.program}. ${keys}`),
    );
  }

  /** Means over the areas of each kind. */
  private async kind_means(building: number): Promise<Line[]> {
    const { head, patches, fields } = this.district;
    const number = head.fields.findIndex((field) => field.id === "surface_temperature");
    if (number < 0) return [];
    const field = await fields.get(number);
    const sums = head.kinds.map(() => head.times.map(() => ({ area: 0, product: 0 })));
    for (let p = 0; p < head.patches; ++p) {
      if (building >= 0 && patches.building[p] !== building) continue;
      const of_kind = sums[patches.kind[p]];
      head.times.forEach((_, time) => {
        const code = field.codes[field.start(time) + p];
        if (code === missing) return;
        of_kind[time].area += patches.area[p];
        of_kind[time].product += patches.area[p] * (field.head.offset + field.head.scale * code);
      });
    }
    const lines: Line[] = head.kinds.flatMap((kind, k) => {
      if (kind === "far boundary" || sums[k].every((sum) => sum.area === 0)) return [];
      const values = sums[k].map((sum) => (sum.area > 0 ? sum.product / sum.area : null));
      return [{ name: kind, values, colour: colours[kind] ?? "--c8" }];
    });
    if (head.air.some((value) => value !== null)) lines.push({ name: "air", values: head.air, colour: "--quiet", dashed: true });
    return lines;
  }

  /** Means of the fields of buildings, or one building's values, a chart for each unit. */
  private async building_sums(building: number): Promise<{ title: string; unit: string; lines: Line[] }[]> {
    const { head, fields } = this.district;
    const charts = new Map<string, { title: string; unit: string; lines: Line[] }>();
    for (const [number, kind] of head.fields.entries()) {
      if (kind.on !== "building" || kind.steady) continue;
      const title = chart_of(kind);
      const chart = charts.get(title) ?? { title, unit: kind.unit, lines: [] };
      chart.lines.push({ name: kind.name, values: this.course(await fields.get(number), building) });
      charts.set(title, chart);
    }
    return [...charts.values()];
  }

  private course(field: Field, building: number): (number | null)[] {
    const weights = this.district.head.floor_areas;
    return this.district.head.times.map((_, time) => {
      let area = 0;
      let product = 0;
      for (let b = 0; b < field.count; ++b) {
        const value = building < 0 || b === building ? field.value(time, b) : NaN;
        if (!Number.isFinite(value)) continue;
        area += weights[b];
        product += weights[b] * value;
      }
      return area > 0 ? product / area : null;
    });
  }
}

function chart_of({ id, unit }: FieldHead): string {
  if (unit === "°C") return "Rooms";
  if (id.startsWith("released")) return "Released heat per m² of floor";
  return id === "room_load" || id === "plant_load" ? "Loads per m² of floor" : "Heat that rooms gain per m² of floor";
}

const keys =
  "Keys: space plays, ← → change the hour, T looks from above, R shows all, N turns north up, Esc closes. " +
  "On the scene the arrows turn it, + and − zoom.";
