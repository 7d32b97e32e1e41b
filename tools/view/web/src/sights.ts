// Lines from a patch to its partners in the exchange of radiation, with their numbers.
import * as THREE from "three";
import { Line2 } from "three/examples/jsm/lines/Line2.js";
import { LineGeometry } from "three/examples/jsm/lines/LineGeometry.js";
import { LineMaterial } from "three/examples/jsm/lines/LineMaterial.js";
import type { District } from "./district";
import { colour_of, el } from "./dom";
import type { Stage } from "./stage";

interface Badge {
  element: HTMLElement;
  at: THREE.Vector3;
}

export class Sights {
  private readonly group = new THREE.Group();
  private readonly outline = new THREE.Group();
  private badges: Badge[] = [];

  constructor(
    private readonly stage: Stage,
    private readonly district: District,
    private readonly overlay: HTMLElement,
  ) {
    stage.scene.add(this.group, this.outline);
    stage.before_frame.push(() => this.place());
  }

  clear(): void {
    for (const group of [this.group, this.outline]) {
      for (const line of group.children) {
        const { geometry, material } = line as Line2;
        geometry.dispose();
        material.dispose();
      }
      group.clear();
    }
    for (const badge of this.badges) badge.element.remove();
    this.badges = [];
    this.stage.draw();
  }

  /** Frames a patch and draws a line to each partner, the broader the more it gives. */
  show(patch: number, partners: { patch: number; weight: number }[]): void {
    this.clear();
    const colour = new THREE.Color(colour_of("--sight"));
    this.frame(patch, new THREE.Color(colour_of("--ink")));
    const from = this.district.centre(patch);
    if (!from) return;
    const greatest = Math.max(...partners.map((one) => one.weight), 1e-9);
    partners.forEach((partner, n) => {
      const to = this.district.centre(partner.patch);
      if (!to) return;
      const width = 1.2 + 2.8 * Math.max(0, partner.weight / greatest);
      this.group.add(this.line([...from, ...to], colour, width, 0.9));
      const badge = el("span", { class: "badge", "aria-hidden": "true" }, String(n + 1));
      this.overlay.append(badge);
      this.badges.push({ element: badge, at: new THREE.Vector3(...to) });
    });
    this.stage.draw();
  }

  private frame(patch: number, colour: THREE.Color): void {
    const { ring_start, ring_patch, position } = this.district.shapes;
    for (let r = 0; r < ring_patch.length; ++r) {
      if (ring_patch[r] !== patch) continue;
      const corners = [];
      for (let v = ring_start[r]; v <= ring_start[r + 1]; ++v) {
        const at = 3 * (v < ring_start[r + 1] ? v : ring_start[r]);
        corners.push(position[at], position[at + 1], position[at + 2]);
      }
      this.outline.add(this.line(corners, colour, 2.5, 1));
    }
  }

  private line(corners: number[], colour: THREE.Color, width: number, opacity: number): Line2 {
    const material = new LineMaterial({ linewidth: width, transparent: true, opacity, depthTest: false });
    material.color = colour;
    const line = new Line2(new LineGeometry().setPositions(corners), material);
    line.renderOrder = 2;
    return line;
  }

  private place(): void {
    const taken: { x: number; y: number }[] = []; // a number that would cover another is left out
    for (const { element, at } of this.badges) {
      const { x, y, ahead } = this.stage.place_of(at);
      element.style.transform = `translate(${x}px, ${y}px) translate(-50%, -50%)`;
      element.hidden = !ahead || taken.some((one) => Math.hypot(one.x - x, one.y - y) < 15);
      if (!element.hidden) taken.push({ x, y });
    }
  }
}
