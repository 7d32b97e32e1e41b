// What floats over the scene: north arrow, scale, the words at the pointer, buttons of the view.
import { drawing, el } from "./dom";
import type { District } from "./district";
import { with_unit } from "./fields";
import type { Stage } from "./stage";

const lengths = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000];

export class Overlay {
  readonly element = el("div", { class: "overlay" });
  readonly marks = el("div", { class: "marks-layer", "aria-hidden": "true" });
  readonly buttons: HTMLElement;
  private readonly needle: SVGSVGElement;
  private readonly bar = el("span", { class: "scale-bar" });
  private readonly length = el("span", {});
  private readonly tip = el("div", { class: "tip card", role: "tooltip", hidden: true });

  constructor(
    private readonly stage: Stage,
    private readonly north: [number, number],
    open_charts: () => void,
  ) {
    this.needle = drawing("34", "-20 -20 40 40", [
      ["circle", { r: "18.5", fill: "none", stroke: "currentColor", "stroke-opacity": "0.25" }],
      ["path", { d: "M0-13L5 4 0 1-5 4z", fill: "var(--warm)" }],
      ["text", { y: "14", "text-anchor": "middle", "font-size": "9", "font-weight": "600", fill: "currentColor" }],
    ]);
    this.needle.querySelector("text")!.textContent = "N";
    const button = (text: string, label: string, title: string, click: () => void) =>
      el("button", { type: "button", class: "pill", "aria-label": label, title, click }, text);
    const compass = el("button", {
      type: "button", class: "compass", "aria-label": "turn north up", title: "Turn north up (N)", click: () => stage.turn_north(),
    }, this.needle);
    this.buttons = el(
      "div",
      { class: "viewing", role: "group", "aria-label": "view" },
      compass,
      button("Top", "top view", "From above (T)", () => stage.from_above()),
      button("All", "show all", "The whole district (R)", () => stage.home()),
      button("Charts", "charts of the district", "Weather, means and loads (C)", open_charts),
    );
    this.element.append(
      this.marks,
      el("div", { class: "scale", role: "img", "aria-label": "scale" }, this.bar, this.length),
      this.tip,
    );
    stage.before_frame.push(() => this.measure());
  }

  private measure(): void {
    const site = (-Math.atan2(this.north[0], this.north[1]) * 180) / Math.PI;
    this.needle.style.transform = `rotate(${this.stage.north() - site}deg)`;
    const metres = this.stage.metres_per_pixel();
    const length = [...lengths].reverse().find((one) => one / metres <= 120) ?? lengths[0];
    this.bar.style.width = `${length / metres}px`;
    this.length.textContent = length < 1000 ? `${length} m` : `${length / 1000} km`;
  }

  /** Tells of the patch at the pointer; none: hides the words. */
  point(district: District, patch: number, x: number, y: number): void {
    this.tip.hidden = patch < 0;
    if (patch < 0) return;
    const building = district.building_of(patch);
    const what = [district.kind_of(patch), building !== null && `building ${building}`].filter(Boolean).join(" · ");
    const field = district.field?.head;
    this.tip.replaceChildren(
      el("strong", {}, field ? with_unit(district.value(patch), field.error, field.unit) : ""),
      el("span", { class: "quiet" }, field?.name ?? ""),
      el("span", {}, `Patch ${district.patches.pid[patch]}`),
      el("span", {}, what),
    );
    const { clientWidth, clientHeight } = this.element;
    this.tip.style.transform = `translate(${Math.min(x + 14, clientWidth - 190)}px, ${Math.min(y + 16, clientHeight - 110)}px)`;
  }
}
