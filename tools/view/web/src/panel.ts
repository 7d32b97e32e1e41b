// The panel of one patch: what it is, its values, its day, its layers, and who sends it radiation.
import { Curves, Line } from "./curves";
import type { District, Partner } from "./district";
import { el } from "./dom";
import { Field, shown, with_unit } from "./fields";
import type { FieldHead } from "./payload";
import type { Sights } from "./sights";
import type { Present } from "./view";

interface Given extends Partner {
  longwave: number; // absorbed [W/m2]
  shortwave: number;
}

const sections: [FieldHead["role"], string, string][] = [
  ["temperature", "Temperatures", "°C"],
  ["balance", "Heat balance", "W/m²"],
  ["radiation", "Radiation", "W/m²"],
  ["share", "Sun and sky", ""],
  ["building", "Building", "W/m² of floor"],
  ["other", "Other", ""],
];

export class PatchPanel {
  readonly element = el("section", { class: "panel card", "aria-label": "patch", tabindex: -1, hidden: true });
  private curves: Curves[] = [];
  private values: { field: Field; cell: HTMLElement; unit: string }[] = [];
  private partner_rows: HTMLElement | null = null;
  private came_from: Element | null = null;
  private serial = 0; // of the patch last asked for

  constructor(
    private readonly district: District,
    private readonly present: Present,
    private readonly sights: Sights,
  ) {
    present.on(["selected"], () => void this.open());
    present.on(["time"], () => void this.follow());
    present.on(["field"], () => void this.open());
    present.on(["theme"], () => this.curves.forEach((one) => one.repaint()));
  }

  close(): void {
    this.present.set("selected", -1);
  }

  private async open(): Promise<void> {
    const patch = this.present.view.selected;
    const serial = ++this.serial;
    this.curves.forEach((one) => one.destroy());
    this.curves = [];
    this.values = [];
    if (patch < 0) {
      const had_focus = this.element.contains(document.activeElement);
      this.element.hidden = true;
      this.sights.clear();
      if (had_focus && this.came_from instanceof HTMLElement) this.came_from.focus();
      return;
    }
    if (this.element.hidden) this.came_from = document.activeElement;
    this.element.hidden = false;
    this.element.replaceChildren(this.header(patch), el("p", { class: "quiet" }, "Reading…"));
    this.element.scrollTop = 0;
    this.element.focus({ preventScroll: true });
    const { head, fields } = this.district;
    const numbers = head.fields.flatMap((field, n) => (field.on === "cell" ? [] : [n]));
    const all = await Promise.all(numbers.map((n) => fields.get(n)));
    if (serial !== this.serial) return;
    const here = all.filter((field) => fields.index(field, patch) >= 0);
    this.element.replaceChildren(this.header(patch), ...this.body(patch, here));
    await this.follow();
  }

  private header(patch: number): HTMLElement {
    const { patches, head } = this.district;
    const building = this.district.building_of(patch);
    const facts = [
      this.district.kind_of(patch),
      building !== null && `building ${building}`,
      `${patches.area[patch].toPrecision(4).replace(/\.?0+$/, "")} m²`,
      facing(this.district.facing(patch), head.north),
    ].filter(Boolean);
    return el(
      "header",
      {},
      el("h2", {}, `Patch ${patches.pid[patch]}`),
      el("button", { type: "button", class: "round", "aria-label": "close", title: "Close (Esc)", click: () => this.close() }, "×"),
      el("p", { class: "quiet" }, facts.join(" · ")),
    );
  }

  private body(patch: number, fields: Field[]): (HTMLElement | string)[] {
    const { head } = this.district;
    const of_role = (...roles: FieldHead["role"][]) => fields.filter((one) => roles.includes(one.head.role));
    const lines = (some: Field[]): Line[] =>
      some
        .filter((field) => !field.head.steady)
        .map((field) => ({ name: field.head.name, values: this.course(field, patch) }))
        .filter((line) => line.values.some((value) => value !== null));
    const temperatures = lines(of_role("temperature"));
    if (head.air.some((value) => value !== null)) temperatures.push({ name: "air", values: head.air, colour: "--quiet", dashed: true });
    // Without a temperature of its own a patch has no balance, and what the files say of it is 0.
    const own = fields.find((field) => field.head.id === "surface_temperature");
    const balanced = own !== undefined && this.course(own, patch).some((value) => value !== null);
    const balance = balanced ? lines(of_role("balance")) : [];
    if (temperatures.length > 0) this.curves.push(new Curves(head, this.present, "Temperature", "°C", temperatures));
    if (balance.length > 0) this.curves.push(new Curves(head, this.present, "Heat balance", "W/m²", balance, 190));
    this.partner_rows = el("ol", { class: "partners" });
    return [
      this.headline(patch, fields),
      ...this.curves.map((one) => one.element),
      el("h3", {}, "Radiation partners"),
      this.partner_rows,
      ...this.layers(patch),
      ...this.tables(patch, fields.filter((field) => balanced || field.head.role !== "balance")),
    ];
  }

  private course(field: Field, patch: number): (number | null)[] {
    return this.district.head.times.map((_, time) => {
      const value = this.district.fields.value(field, time, patch);
      return Number.isFinite(value) ? value : null;
    });
  }

  /** The temperature of the patch, and the value that the colours show. */
  private headline(patch: number, fields: Field[]): HTMLElement {
    const shown = fields.filter((field) => ["surface_temperature", "leaf_temperature"].includes(field.head.id));
    const coloured = this.district.field;
    if (coloured && fields.includes(coloured) && !shown.includes(coloured)) shown.push(coloured);
    return this.rows(patch, shown, true, "headline");
  }

  private tables(patch: number, fields: Field[]): HTMLElement[] {
    return sections.flatMap(([role, title, unit]) => {
      const rows = this.rows(patch, fields.filter((field) => field.head.role === role), unit === "", "values");
      const heading = el("h3", {}, title, unit && el("span", { class: "quiet" }, ` ${unit}`));
      return rows.childElementCount > 0 ? [heading, rows] : [];
    });
  }

  private rows(patch: number, fields: Field[], units: boolean, style: string): HTMLElement {
    const list = el("dl", { class: style });
    for (const field of fields) {
      const ever = field.head.steady ? [this.district.fields.value(field, 0, patch)] : this.course(field, patch);
      if (!ever.some((value) => value !== null && Number.isFinite(value))) continue;
      const cell = el("dd", {});
      this.values.push({ field, cell, unit: units ? field.head.unit : "" });
      list.append(el("div", { title: field.head.note }, el("dt", {}, field.head.name), cell));
    }
    return list;
  }

  private layers(patch: number): HTMLElement[] {
    const { head } = this.district;
    const material = head.materials[this.district.patches.material[patch]];
    if (!material || material.layers.length === 0) return [];
    const whole = material.layers.reduce((sum, layer) => sum + layer.thickness, 0);
    const rows = material.layers.map((layer, n) => {
      const bar = el("span", { class: "thick" });
      bar.style.width = `${Math.max(2, (100 * layer.thickness) / whole)}%`;
      return el(
        "tr",
        {},
        el("td", {}, el("div", {}, String(n + 1), bar)),
        el("td", {}, `${+(100 * layer.thickness).toPrecision(4)}`),
        el("td", {}, layer.conductivity.toPrecision(3)),
        el("td", {}, (layer.capacity / 1e6).toPrecision(3)),
      );
    });
    const names = ["layer", "cm", "W/m K", "MJ/m³ K"].map((text) => el("th", { scope: "col" }, text));
    return [
      el("h3", {}, `Layers of material ${material.code}`, el("span", { class: "quiet" }, " from outside to inside")),
      el("table", { class: "layers" }, el("thead", {}, el("tr", {}, ...names)), el("tbody", {}, ...rows)),
    ];
  }

  /** Brings values, curves and partners to the time on show. */
  private async follow(): Promise<void> {
    const patch = this.present.view.selected;
    if (patch < 0) return;
    const { time } = this.present.view;
    for (const { field, cell, unit } of this.values) {
      cell.textContent = with_unit(this.district.fields.value(field, time, patch), field.head.error, unit);
    }
    this.curves.forEach((one) => one.follow());
    const given = await this.given(patch, time);
    if (patch !== this.present.view.selected || time !== this.present.view.time) return;
    this.show_partners(given);
    this.sights.show(patch, given.map((one) => ({ patch: one.patch, weight: one.longwave + one.shortwave || one.share })));
  }

  private async given(patch: number, time: number): Promise<Given[]> {
    const { head, fields } = this.district;
    const radiosity = async (id: string): Promise<Field | null> => {
      const number = head.fields.findIndex((field) => field.id === id);
      return number < 0 ? null : fields.get(number);
    };
    const [long, short, own, partners] = await Promise.all([
      radiosity("longwave_radiosity"),
      radiosity("shortwave_radiosity"),
      this.district.properties(patch, time),
      this.district.partners(patch),
    ]);
    return partners
      .map((one) => ({
        ...one,
        longwave: long ? own.emissivity * one.share * this.mean(long, time, one.members) : NaN,
        shortwave: short ? (1 - own.albedo) * one.share * this.mean(short, time, one.members) : NaN,
      }))
      .sort((a, b) => b.longwave + b.shortwave - (a.longwave + a.shortwave) || b.share - a.share);
  }

  /** Of a group, by the areas of its patches. */
  private mean(field: Field, time: number, members: number[]): number {
    const { area } = this.district.patches;
    let sum = 0;
    let whole = 0;
    for (const p of members) {
      sum += area[p] * field.value(time, p);
      whole += area[p];
    }
    return sum / whole;
  }

  private show_partners(given: Given[]): void {
    const rows = given.map((one) => {
      const pid = this.district.patches.pid[one.patch];
      const go = el("button", { type: "button", class: "link", click: () => this.present.set("selected", one.patch) }, `patch ${pid}`);
      const known = Number.isFinite(one.longwave + one.shortwave);
      const gives = known ? `${shown(one.longwave, 0.05)} + ${shown(one.shortwave, 0.05)} W/m²` : "";
      return el(
        "li",
        {},
        el("span", { class: "badge" }),
        el("span", {}, go, ` ${this.district.kind_of(one.patch)}`),
        el("span", { class: "quiet", title: "share of the view" }, `${(100 * one.share).toFixed(1)} %`),
        el("span", { class: "number" }, gives),
      );
    });
    rows.forEach((row, n) => (row.firstElementChild!.textContent = String(n + 1)));
    const text = rows.length > 0
      ? "Share of what the patch sees, and what of that group's long-wave + short-wave radiation it absorbs."
      : "It sees the sky alone, or the run keeps no view factors.";
    this.partner_rows?.replaceChildren(...rows, el("li", { class: "quiet" }, text));
  }
}

const winds = ["north", "north-east", "east", "south-east", "south", "south-west", "west", "north-west"];

function facing([x, y, z]: number[], [north_x, north_y]: number[]): string {
  if (!Number.isFinite(x)) return "";
  if (Math.hypot(x, y) < 0.26) return z > 0 ? "facing up" : "facing down";
  const angle = Math.atan2(x * north_y - y * north_x, x * north_x + y * north_y);
  const name = winds[(Math.round((4 * angle) / Math.PI) + 8) % 8];
  return z > 0.26 ? `sloped, facing ${name}` : `facing ${name}`;
}
