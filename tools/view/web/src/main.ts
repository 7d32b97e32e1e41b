// The page of a run: puts its parts together and listens to pointer and keys.
import { Vector3 } from "three";
import { DistrictPanel } from "./charts";
import { Controls } from "./controls";
import { District } from "./district";
import { colour_of, el, is_narrow } from "./dom";
import { find_edges } from "./edges";
import { Overlay } from "./overlay";
import { PatchPanel } from "./panel";
import { head, Head } from "./payload";
import { Pointer } from "./pointer";
import { listen_to_keys } from "./keys";
import { shadow_below } from "./shadow";
import { Sights } from "./sights";
import { Stage } from "./stage";
import { TimeBar } from "./timebar";
import { Present } from "./view";

const many_patches = 60000; // beyond which only strong edges are drawn

async function open(head: Head): Promise<void> {
  const root = document.getElementById("page")!;
  const present = new Present();
  start_with(head, present);
  let stage: Stage | null = null;
  const district = await District.open(head, present, () => stage?.draw());

  const canvas = el("canvas", {
    id: "scene",
    tabindex: 0,
    role: "img",
    "aria-label": `${head.title}: ${head.patches} patches in three dimensions. Arrows turn the view, plus and minus zoom.`,
  });
  const scene = el("main", { class: "scene" }, canvas);
  root.replaceChildren(scene);
  stage = new Stage(canvas, district.shapes.box);
  stage.scene.add(district.surface.group, shadow_below(district.shapes.box));
  stage.before_frame.push(() => district.surface.set_patch_width(district.usual_width / stage!.metres_per_pixel()));

  const charts = new DistrictPanel(district, present);
  const overlay = new Overlay(stage, head.north, () => {
    patch.close();
    void charts.open();
  });
  const patch: PatchPanel = new PatchPanel(district, present, new Sights(stage, district, overlay.marks));
  const controls = new Controls(district, present, (number) => {
    const at = district.centre(number);
    if (at) stage?.approach(new Vector3(...at), 25 * district.usual_width);
  });
  const bar = new TimeBar(head, present);
  scene.append(overlay.element);
  root.append(controls.element, overlay.buttons, bar.element, patch.element, charts.element);
  const panels = new MutationObserver(() => {
    root.classList.toggle("with-panel", !(patch.element.hidden && charts.element.hidden));
    place();
  });
  for (const panel of [patch.element, charts.element]) panels.observe(panel, { attributes: true, attributeFilter: ["hidden"] });
  if (head.notes.length > 0) {
    root.classList.add("with-note");
    root.append(note_line(head, () => void charts.open(), () => root.classList.remove("with-note")));
  }

  const paint = () => {
    const ink = colour_of("--edge").split(/[\s,]+/).map(Number) as [number, number, number, number];
    const colour = (name: string) => colour_of(name).split(/[\s,]+/).map(Number) as [number, number, number];
    district.surface.set_ink(ink, colour("--no-value"), colour("--green"));
    stage!.draw();
  };
  const place = () => stage!.set_inset(covered(root, controls.element, bar.element));
  present.on(["field", "time", "fixed"], () => void district.colour().then(() => controls.legend.show()));
  present.on(["hidden", "building"], () => {
    district.filter();
    controls.legend.show();
  });
  present.on(["selected"], () => present.view.selected >= 0 && charts.close());
  present.on(["theme"], paint);
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => present.tell("theme"));
  window.addEventListener("resize", place);
  new Pointer(canvas, stage, district, present, overlay);
  listen_to_keys({ present, stage, bar, patch, charts, canvas });
  paint();
  place();
  stage.look_first();
  await district.colour();
  controls.legend.show();
  stage.frame();
  performance.mark("first picture");
  document.documentElement.dataset.ready = "true";

  await new Promise((done) => setTimeout(done, 30)); // the first picture comes before its edges
  district.surface.set_edges(find_edges(district.shapes, (p) => district.is_leafy(p), head.patches <= many_patches));
  stage.draw();
  // For the console and the tests: where a patch stands on the canvas [pixel].
  const place_of = (pid: number) => {
    const at = district.centre(district.number_of.get(pid) ?? -1);
    return at && stage!.place_of(new Vector3(...at));
  };
  Object.assign(window, { townskin: { place_of } });
  document.documentElement.dataset.ready = "complete";
}

function start_with(head: Head, { view }: Present): void {
  view.field = Math.max(0, head.fields.findIndex((field) => field.id === "surface_temperature"));
  const afternoon = head.times.map((time) => time.hour === 14).lastIndexOf(true);
  view.time = afternoon >= 0 ? afternoon : Math.max(0, head.times.length - 1);
}

function covered(root: HTMLElement, controls: HTMLElement, bar: HTMLElement): { left: number; right: number; top: number; bottom: number } {
  if (is_narrow()) {
    const top = controls.getBoundingClientRect().bottom;
    return { left: 0, right: 0, top, bottom: window.innerHeight - bar.getBoundingClientRect().top };
  }
  const left = controls.getBoundingClientRect().right;
  return { left, right: root.classList.contains("with-panel") ? 380 : 0, top: 40, bottom: 84 };
}

function note_line(head: Head, open_charts: () => void, closed: () => void): HTMLElement {
  const more = head.notes.length > 1 ? ` (and ${head.notes.length - 1} more)` : "";
  const line = el("div", { class: "note card", role: "status" }, el("span", {}, head.notes[0] + more));
  const button = (text: string, label: string, click: () => void) =>
    el("button", { type: "button", class: "link", "aria-label": label, click }, text);
  if (more) line.append(button("all", "all notes", open_charts));
  const close = button("×", "close note", () => {
    line.remove();
    closed();
  });
  line.append(close);
  return line;
}

function fail(reason: unknown): void {
  const text = reason instanceof Error ? reason.message : String(reason);
  const page = document.getElementById("page") ?? document.body;
  page.replaceChildren(el("p", { id: "opening", role: "alert" }, `This page cannot be shown: ${text}`));
}

if (head === null) fail("it holds no data");
else if (typeof DecompressionStream === "undefined") fail("the browser is too old, it must know DecompressionStream (2023 or later)");
else open(head).catch(fail);
