// The slider of time, and play.
import { drawing, el } from "./dom";
import type { Head } from "./payload";
import type { Present } from "./view";

const pace = 450; // [ms] a time

export class TimeBar {
  readonly element: HTMLElement;
  private readonly slider: HTMLInputElement;
  private readonly button: HTMLButtonElement;
  private readonly label: HTMLOutputElement;
  private timer = 0;

  constructor(
    private readonly head: Head,
    private readonly present: Present,
  ) {
    const count = Math.max(1, head.times.length);
    this.slider = el("input", {
      type: "range",
      id: "time",
      min: 1,
      max: count,
      step: 1,
      "aria-label": "time",
      disabled: count < 2,
      input: () => {
        this.stop();
        present.set("time", Number(this.slider.value) - 1);
      },
    });
    this.button = el("button", { type: "button", class: "round", click: () => this.toggle(), disabled: count < 2 });
    this.label = el("output", { for: "time", class: "clock" });
    this.element = el(
      "div",
      { class: "timebar card", role: "group", "aria-label": "time of the run" },
      this.button,
      el("div", { class: "track" }, this.slider, this.marks(count)),
      this.label,
    );
    present.on(["time"], () => this.show());
    this.show();
    this.show_button();
  }

  private marks(count: number): HTMLElement {
    const times = this.head.times;
    const whole_days = times.length > 0 && times[times.length - 1].at > 24;
    const noons = times.flatMap((time, n) => (time.hour === 12 ? [n] : []));
    const every = Math.ceil(noons.length / 6);
    const marks = el("div", { class: "marks", "aria-hidden": "true" });
    times.forEach((time, n) => {
      const marked = whole_days ? noons.includes(n) && noons.indexOf(n) % every === 0 : time.hour % 6 === 0;
      if (!marked) return;
      const text = whole_days ? time.label.replace(/,[^,]*$/, "") : String(time.hour);
      const mark = el("span", {}, text);
      mark.style.left = `${(100 * n) / Math.max(1, count - 1)}%`;
      marks.append(mark);
    });
    return marks;
  }

  toggle(): void {
    if (this.timer) this.stop();
    else if (this.head.times.length > 1) {
      this.timer = window.setInterval(() => this.advance(1), pace);
      this.show_button();
    }
  }

  stop(): void {
    window.clearInterval(this.timer);
    this.timer = 0;
    this.show_button();
  }

  advance(by: number): void {
    const count = this.head.times.length;
    if (count > 0) this.present.set("time", (this.present.view.time + by + count) % count);
  }

  private show(): void {
    const time = this.present.view.time;
    const label = this.head.times[time]?.label ?? "no results";
    this.slider.value = String(time + 1);
    this.slider.setAttribute("aria-valuetext", label);
    this.label.textContent = label;
  }

  private show_button(): void {
    const playing = this.timer !== 0;
    const shape = playing ? "M7 5h3.4v14H7zM13.6 5H17v14h-3.4z" : "M8 5l11 7-11 7z";
    this.button.replaceChildren(drawing("20", "0 0 24 24", [["path", { d: shape, fill: "currentColor" }]]));
    this.button.setAttribute("aria-label", playing ? "pause" : "play");
    this.button.title = playing ? "Pause (space)" : "Play (space)";
  }
}
