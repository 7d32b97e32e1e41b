// Hover and click on the scene. A drag is not a click, and while one goes on nothing is looked up.
import type { District } from "./district";
import type { Overlay } from "./overlay";
import type { Stage } from "./stage";
import type { Present } from "./view";

export class Pointer {
  private down: { x: number; y: number } | null = null;
  private over: { x: number; y: number } | null = null;
  private asked = false;

  constructor(
    private readonly canvas: HTMLCanvasElement,
    private readonly stage: Stage,
    private readonly district: District,
    private readonly present: Present,
    private readonly overlay: Overlay,
  ) {
    canvas.addEventListener("pointerdown", (event) => {
      this.down = { x: event.offsetX, y: event.offsetY };
      this.leave();
    });
    canvas.addEventListener("pointerup", (event) => this.up(event));
    canvas.addEventListener("pointercancel", () => (this.down = null));
    canvas.addEventListener("pointermove", (event) => this.move(event));
    canvas.addEventListener("pointerleave", () => this.leave());
    present.on(["time", "field", "hidden", "building"], () => this.leave());
  }

  private up(event: PointerEvent): void {
    const { down } = this;
    this.down = null;
    if (!down || event.button !== 0 || Math.hypot(event.offsetX - down.x, event.offsetY - down.y) > 5) return;
    const patch = this.stage.pick(this.district.surface, event.offsetX, event.offsetY);
    this.leave();
    this.present.set("selected", patch);
  }

  private move(event: PointerEvent): void {
    if (this.down || event.pointerType === "touch" || event.buttons !== 0) return;
    this.over = { x: event.offsetX, y: event.offsetY };
    if (this.asked) return;
    this.asked = true;
    requestAnimationFrame(() => this.look());
  }

  private look(): void {
    this.asked = false;
    if (!this.over) return;
    const { x, y } = this.over;
    const patch = this.stage.pick(this.district.surface, x, y);
    this.present.set("hovered", patch);
    this.overlay.point(this.district, patch, x, y);
    this.canvas.style.cursor = patch < 0 ? "" : "pointer";
  }

  private leave(): void {
    this.over = null;
    this.present.set("hovered", -1);
    this.overlay.point(this.district, -1, 0, 0);
  }
}
