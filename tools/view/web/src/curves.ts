// Curves over the times of the run, with a line at the time on show; a click goes to a time.
import uPlot from "uplot";
import { colour_of, el } from "./dom";
import type { Head } from "./payload";
import type { Present } from "./view";

export interface Line {
  name: string;
  values: (number | null)[];
  colour?: string; // name of a colour of the page's style
  dashed?: boolean;
}

const palette = ["--c1", "--c2", "--c3", "--c4", "--c5", "--c6", "--c7", "--c8", "--c9"];

export class Curves {
  readonly element: HTMLElement;
  private plot: uPlot | null = null;
  private readonly room = el("div", { class: "plot" });
  private readonly watch: ResizeObserver;

  constructor(
    private readonly head: Head,
    private readonly present: Present,
    title: string,
    unit: string,
    private readonly lines: Line[],
    private readonly height = 150,
  ) {
    const names = lines.map((line) => line.name).join(", ");
    this.element = el(
      "figure",
      { class: "curves", role: "group", "aria-label": `${title}: curves of ${names}` },
      el("figcaption", {}, title, unit && el("span", { class: "quiet" }, ` ${unit}`)),
      this.room,
    );
    this.watch = new ResizeObserver(() => this.fit());
    this.watch.observe(this.room);
  }

  destroy(): void {
    this.watch.disconnect();
    this.plot?.destroy();
    this.plot = null;
  }

  private fit(): void {
    const width = this.room.clientWidth;
    if (width === 0) return;
    if (!this.plot) this.make(width);
    else if (this.plot.width !== width) this.plot.setSize({ width, height: this.height });
  }

  /** Makes the plot anew, in the colours of the present theme. */
  repaint(): void {
    this.plot?.destroy();
    this.plot = null;
    this.room.replaceChildren();
    this.fit();
  }

  /** Moves the line and the legend to the time on show. */
  follow(): void {
    if (!this.plot) return;
    this.plot.redraw(false);
    this.plot.setLegend({ idx: this.present.view.time }, false);
  }

  private make(width: number): void {
    const times = this.head.times;
    const ink = colour_of("--quiet");
    const grid = { stroke: colour_of("--line"), width: 1 };
    const days = times.length > 0 && times[times.length - 1].at > 24;
    const series = this.lines.map((line, n) => ({
      label: line.name,
      stroke: colour_of(line.colour ?? palette[n % palette.length]),
      width: 1.6,
      dash: line.dashed ? [4, 3] : undefined,
      points: { show: times.length < 2, size: 5 },
      value: (_: uPlot, value: number | null) => (value === null ? "–" : digits(value)),
    }));
    const options: uPlot.Options = {
      width,
      height: this.height,
      padding: [8, 10, 0, 0],
      scales: { x: { time: false }, y: { range: padded } },
      legend: { live: true, markers: { width: 0, fill: (_, n) => series[n - 1]?.stroke ?? ink } },
      cursor: { y: false, points: { size: 5 }, drag: { x: false, y: false } },
      axes: [
        {
          stroke: ink, grid, ticks: { show: false }, font: "11px system-ui", size: 24, gap: 4,
          ...(days ? this.day_axis() : { splits: six_hours }),
        },
        { stroke: ink, grid, ticks: { show: false }, font: "11px system-ui", size: 40, gap: 4 },
      ],
      series: [{ label: "time", value: (_, at) => (at === null ? "–" : this.label_at(at)) }, ...series],
      hooks: { draw: [(plot) => this.mark(plot)], setCursor: [(plot) => this.rest(plot)] },
    };
    const data = [times.map((time) => time.at), ...this.lines.map((line) => line.values)];
    this.plot = new uPlot(options, data as uPlot.AlignedData, this.room);
    this.plot.over.addEventListener("click", () => {
      const at = this.plot?.cursor.idx;
      if (typeof at === "number") this.present.set("time", at);
    });
    this.follow();
  }

  // The middle of each day, or of some of many, under the name of the day.
  private day_axis(): Pick<uPlot.Axis, "splits" | "values"> {
    const noons = this.head.times.filter((time) => time.hour === 12);
    const every = Math.ceil(noons.length / 6);
    const shown = noons.filter((_, n) => n % every === 0);
    return {
      splits: () => shown.map((time) => time.at),
      values: () => shown.map((time) => time.label.replace(/,[^,]*$/, "")),
    };
  }

  private label_at(at: number): string {
    return this.head.times.find((time) => time.at === at)?.label ?? "";
  }

  private mark(plot: uPlot): void {
    const time = this.head.times[this.present.view.time];
    if (!time) return;
    const x = Math.round(plot.valToPos(time.at, "x", true));
    const { ctx, bbox } = plot;
    ctx.save();
    ctx.strokeStyle = colour_of("--ink");
    ctx.globalAlpha = 0.55;
    ctx.lineWidth = devicePixelRatio;
    ctx.beginPath();
    ctx.moveTo(x, bbox.top);
    ctx.lineTo(x, bbox.top + bbox.height);
    ctx.stroke();
    ctx.restore();
  }

  // Without a pointer the legend tells the values of the time on show.
  private rest(plot: uPlot): void {
    if (plot.cursor.idx === null) plot.setLegend({ idx: this.present.view.time }, false);
  }
}

function six_hours(_: uPlot, __: number, low: number, high: number): number[] {
  const step = high - low > 30 ? 12 : 6;
  const splits = [];
  for (let at = Math.ceil(low / step) * step; at <= high; at += step) splits.push(at);
  return splits;
}

function padded(_: uPlot, low: number | null, high: number | null): [number, number] {
  if (low === null || high === null) return [0, 1];
  const room = high > low ? 0.06 * (high - low) : Math.max(0.1 * Math.abs(high), 1);
  return [low >= 0 && low - room < 0 ? 0 : low - room, high + room];
}

function digits(value: number): string {
  const size = Math.abs(value);
  return value.toFixed(size >= 100 ? 0 : size >= 10 ? 1 : size >= 1 ? 2 : 3);
}
