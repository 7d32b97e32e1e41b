// The legend of the colours: a bar, round numbers, the unit, and how exact the values are.
import { map_of, ticks } from "./colour";
import type { District } from "./district";
import { el } from "./dom";
import { stated_error } from "./fields";

export class Legend {
  readonly element: HTMLElement;
  private readonly bar = el("div", { class: "bar" });
  private readonly numbers = el("div", { class: "ticks" });
  private readonly note = el("p", { class: "quiet" });

  constructor(private readonly district: District) {
    this.element = el("div", { class: "legend", role: "img" }, this.bar, this.numbers, this.note);
  }

  show(): void {
    const { field, range } = this.district;
    if (!field) return;
    const { name, unit, note, error } = field.head;
    const map = map_of(field);
    const stops = Array.from({ length: 17 }, (_, n) => `${map(n / 16)} ${(100 * n) / 16}%`);
    this.bar.style.background = `linear-gradient(90deg, ${stops.join(",")})`;
    const found = ticks(range);
    this.numbers.replaceChildren(
      ...found.map(({ at, text }) => {
        const share = (at - range.low) / (range.high - range.low);
        const mark = el("span", {}, text);
        mark.style.left = `${100 * share}%`;
        if (share < 0.06) mark.classList.add("first");
        if (share > 0.94) mark.classList.add("last");
        return mark;
      }),
    );
    const exact = `Values are exact to ${stated_error(error)}${unit ? " " + unit : ""}.`;
    this.note.textContent = note ? `${note[0].toUpperCase()}${note.slice(1)}. ${exact}` : exact;
    const [low, high] = [range.low, range.high].map((one) => one.toPrecision(3));
    this.element.setAttribute("aria-label", `colours of ${name} from ${low} to ${high} ${unit}`);
  }
}
