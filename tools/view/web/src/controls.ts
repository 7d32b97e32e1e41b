// The card at the left: the run's title, the field, its legend, and what is shown.
import type { District } from "./district";
import { el } from "./dom";
import { Legend } from "./legend";
import type { FieldHead } from "./payload";
import type { Present } from "./view";

const sections: [FieldHead["role"], string][] = [
  ["temperature", "Temperature"],
  ["balance", "Heat balance"],
  ["radiation", "Radiation"],
  ["share", "Sun and sky"],
  ["building", "Buildings"],
  ["other", "Other"],
];

export class Controls {
  readonly element: HTMLElement;
  readonly legend: Legend;
  private readonly when = el("p", { class: "when", "aria-live": "polite" });

  constructor(
    private readonly district: District,
    private readonly present: Present,
    private readonly approach: (patch: number) => void,
  ) {
    const { head } = district;
    this.legend = new Legend(district);
    this.element = el(
      "section",
      { class: "controls card", "aria-label": "what is shown" },
      el("header", {}, el("h1", { title: head.title }, head.title), this.when),
      head.fields.length > 0 && this.field_choice(),
      head.fields.length > 0 && this.legend.element,
      head.fields.length > 0 && this.range_choice(),
      this.filters(),
    );
    present.on(["time"], () => this.show_time());
    this.show_time();
  }

  private show_time(): void {
    const { head } = this.district;
    this.when.textContent = head.times[this.present.view.time]?.label ?? "no results yet";
  }

  private field_choice(): HTMLElement {
    const { fields } = this.district.head;
    const choice = el("select", {
      id: "field",
      "aria-label": "field",
      change: () => this.present.set("field", Number(choice.value)),
    });
    for (const [role, label] of sections) {
      const group = el("optgroup", { label });
      fields.forEach((field, number) => {
        if (field.role !== role || field.on === "cell") return;
        group.append(el("option", { value: number }, field.unit ? `${field.name} [${field.unit}]` : field.name));
      });
      if (group.childElementCount > 0) choice.append(group);
    }
    choice.value = String(this.present.view.field);
    this.present.on(["field"], () => (choice.value = String(this.present.view.field)));
    return el("label", { class: "field" }, el("span", { class: "quiet" }, "Colour by"), choice);
  }

  private range_choice(): HTMLElement {
    const one = (fixed: boolean, text: string) =>
      el(
        "label",
        {},
        el("input", {
          type: "radio",
          name: "range",
          checked: fixed === this.present.view.fixed,
          change: () => this.present.set("fixed", fixed),
        }),
        el("span", {}, text),
      );
    return el(
      "fieldset",
      { class: "segments" },
      el("legend", { class: "quiet" }, "Range of colours"),
      one(true, "fixed"),
      one(false, "by hour"),
    );
  }

  private filters(): HTMLElement {
    const { head, patches } = this.district;
    const counts = head.kinds.map(() => 0);
    for (let p = 0; p < head.patches; ++p) ++counts[patches.kind[p]];
    const boxes = el("div", { class: "kinds" });
    head.kinds.forEach((kind, number) => {
      if (counts[number] === 0 || kind === "far boundary") return; // which has no shape
      const box = el("input", {
        type: "checkbox",
        checked: true,
        change: () => {
          const hidden = new Set(this.present.view.hidden);
          if (box.checked) hidden.delete(number);
          else hidden.add(number);
          this.present.set("hidden", hidden);
        },
      });
      boxes.append(el("label", { class: "chip", title: `${counts[number]} patches` }, box, el("span", {}, kind)));
    });
    return el(
      "details",
      { class: "filters", open: window.innerHeight > 640 && window.innerWidth >= 720 },
      el("summary", {}, "Show"),
      boxes,
      el("div", { class: "row" }, this.building_choice(), this.patch_search()),
    );
  }

  private building_choice(): HTMLElement | null {
    const { buildings } = this.district.head;
    if (buildings.length === 0) return null;
    const choice = el("select", {
      id: "building",
      "aria-label": "building",
      change: () => this.present.set("building", Number(choice.value)),
    });
    choice.append(el("option", { value: -1 }, "all"));
    buildings.forEach((code, number) => choice.append(el("option", { value: number }, String(code))));
    this.present.on(["building"], () => (choice.value = String(this.present.view.building)));
    return el("label", { class: "field" }, el("span", { class: "quiet" }, "Building"), choice);
  }

  private patch_search(): HTMLElement {
    const input = el("input", { type: "text", inputmode: "numeric", id: "find", placeholder: "PID", autocomplete: "off" });
    const form = el(
      "form",
      {
        class: "field",
        submit: (event) => {
          event.preventDefault();
          const patch = this.district.number_of.get(Number(input.value)) ?? -1;
          const known = patch >= 0 && input.value.trim() !== "";
          input.setCustomValidity(known ? "" : "no patch of that PID");
          input.reportValidity();
          if (!known) return;
          this.present.set("selected", patch);
          this.approach(patch);
        },
        input: () => input.setCustomValidity(""),
      },
      el("label", { class: "quiet", for: "find" }, "Find patch"),
      input,
    );
    return form;
  }
}
