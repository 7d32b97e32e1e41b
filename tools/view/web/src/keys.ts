// The keyboard. Keys that an element of a form needs itself are left to it.
import type { DistrictPanel } from "./charts";
import type { PatchPanel } from "./panel";
import type { Stage } from "./stage";
import type { TimeBar } from "./timebar";
import type { Present } from "./view";

interface Parts {
  present: Present;
  stage: Stage;
  bar: TimeBar;
  patch: PatchPanel;
  charts: DistrictPanel;
  canvas: HTMLCanvasElement;
}

const turn = (5 / 180) * Math.PI;

export function listen_to_keys(parts: Parts): void {
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    if (event.key === "Escape") return close(parts);
    const target = event.target instanceof HTMLElement ? event.target : document.body;
    const action = (target === parts.canvas && on_scene(event.key, parts.stage)) || anywhere(event.key, parts);
    if (!action || is_taken(target, event.key)) return;
    event.preventDefault();
    action();
  });
}

function close({ present, patch, charts }: Parts): void {
  if (present.view.selected >= 0) patch.close();
  else charts.close();
}

function is_taken(target: HTMLElement, key: string): boolean {
  if (target instanceof HTMLInputElement) {
    if (target.type === "range") return key.startsWith("Arrow");
    return target.type === "text" || key === " " || key.startsWith("Arrow");
  }
  if (target instanceof HTMLSelectElement) return true;
  return key === " " && (target instanceof HTMLButtonElement || target.tagName === "SUMMARY");
}

function on_scene(key: string, stage: Stage): (() => void) | undefined {
  const actions: Record<string, () => void> = {
    ArrowLeft: () => stage.nudge(-turn, 0, 1),
    ArrowRight: () => stage.nudge(turn, 0, 1),
    ArrowUp: () => stage.nudge(0, -turn, 1),
    ArrowDown: () => stage.nudge(0, turn, 1),
    "+": () => stage.nudge(0, 0, 0.85),
    "=": () => stage.nudge(0, 0, 0.85),
    "-": () => stage.nudge(0, 0, 1 / 0.85),
  };
  return actions[key];
}

function anywhere(key: string, { bar, stage, charts, patch }: Parts): (() => void) | undefined {
  const actions: Record<string, () => void> = {
    " ": () => bar.toggle(),
    ArrowLeft: () => bar.advance(-1),
    ArrowRight: () => bar.advance(1),
    t: () => stage.from_above(),
    r: () => stage.home(),
    n: () => stage.turn_north(),
    c: () => {
      patch.close();
      void charts.open();
    },
  };
  return actions[key.length === 1 ? key.toLowerCase() : key];
}
