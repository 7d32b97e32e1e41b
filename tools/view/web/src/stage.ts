// The scene on the canvas: camera, orbit, top view, picking. A frame is drawn when something changed.
import * as THREE from "three";
import { OrbitControls } from "three/examples/jsm/controls/OrbitControls.js";
import type { Surface } from "./surface";

THREE.ColorManagement.enabled = false; // the shaders write the colours of the maps as they are

const view_angle = 30; // [degree]; small, so that far walls keep their size
const first_azimuth = (-152 / 180) * Math.PI; // the camera stands in the south-south-west
const first_height = (36 / 180) * Math.PI;
const upright_azimuth = (-160 / 180) * Math.PI;
const upright_height = (52 / 180) * Math.PI;

export class Stage {
  readonly scene = new THREE.Scene();
  readonly camera = new THREE.PerspectiveCamera(view_angle, 1, 1, 1000);
  readonly controls: OrbitControls;
  readonly before_frame: (() => void)[] = [];
  private readonly renderer: THREE.WebGLRenderer;
  private readonly picture = new THREE.WebGLRenderTarget(1, 1);
  private readonly radius: number;
  private readonly centre: THREE.Vector3;
  private asked = false;
  private flight = 0;
  private size = { width: 1, height: 1 };
  private inset = { left: 0, right: 0, top: 0, bottom: 0 };

  constructor(
    readonly canvas: HTMLCanvasElement,
    private readonly box: THREE.Box3,
  ) {
    this.renderer = new THREE.WebGLRenderer({ canvas, antialias: true, alpha: true, preserveDrawingBuffer: true });
    this.renderer.outputColorSpace = THREE.LinearSRGBColorSpace;
    this.renderer.setClearColor(0, 0);
    const sphere = box.getBoundingSphere(new THREE.Sphere());
    this.radius = Math.max(sphere.radius, 1);
    this.centre = sphere.center;
    this.camera.up.set(0, 0, 1);
    this.controls = new OrbitControls(this.camera, canvas);
    this.controls.maxPolarAngle = (88 / 180) * Math.PI;
    this.controls.minDistance = 0.02 * this.radius;
    this.controls.maxDistance = 12 * this.radius;
    this.controls.zoomToCursor = true;
    this.controls.screenSpacePanning = false;
    this.controls.zoomSpeed = 1.2;
    this.controls.addEventListener("change", () => this.draw());
    new ResizeObserver(() => this.resize()).observe(canvas);
    canvas.addEventListener("webglcontextrestored", () => this.draw());
    this.resize();
    this.look_first();
  }

  /** Asks for a frame. */
  draw(): void {
    if (this.asked) return;
    this.asked = true;
    requestAnimationFrame(() => this.frame());
  }

  frame(): void {
    this.asked = false;
    const distance = this.camera.position.distanceTo(this.centre);
    this.camera.near = Math.max(0.05 * distance, distance - 3 * this.radius, 0.002 * this.radius);
    if (distance < 3 * this.radius) this.camera.near = Math.max(0.003 * this.radius, 0.02 * distance);
    this.camera.far = distance + 4 * this.radius;
    this.camera.updateProjectionMatrix();
    for (const task of this.before_frame) task();
    this.renderer.render(this.scene, this.camera);
  }

  /** What panels cover of the canvas [pixel], so that the district stands in what is left. */
  set_inset(inset: { left: number; right: number; top: number; bottom: number }): void {
    const before = this.fitting_now();
    this.inset = inset;
    this.apply_view();
    // What was in view stays in view.
    const offset = this.camera.position.clone().sub(this.controls.target);
    offset.multiplyScalar(this.fitting_now() / before);
    this.camera.position.copy(this.controls.target).add(offset);
    this.controls.update();
    this.draw();
  }

  private fitting_now(): number {
    return this.fitting(this.camera.position.clone().sub(this.controls.target).normalize());
  }

  private resize(): void {
    const width = Math.max(1, this.canvas.clientWidth);
    const height = Math.max(1, this.canvas.clientHeight);
    this.size = { width, height };
    this.renderer.setPixelRatio(Math.min(window.devicePixelRatio, 2));
    this.renderer.setSize(width, height, false);
    this.apply_view();
    this.frame();
  }

  private free(): { width: number; height: number } {
    return {
      width: Math.max(80, this.size.width - this.inset.left - this.inset.right),
      height: Math.max(80, this.size.height - this.inset.top - this.inset.bottom),
    };
  }

  private apply_view(): void {
    const { width, height } = this.size;
    this.camera.aspect = width / height;
    const x = (this.inset.right - this.inset.left) / 2;
    const y = (this.inset.bottom - this.inset.top) / 2;
    this.camera.setViewOffset(width, height, x, y, width, height);
  }

  /** Distance from which the whole district is seen from a direction. */
  private fitting(direction: THREE.Vector3): number {
    const slope = Math.tan((view_angle * Math.PI) / 360);
    const { width, height } = this.free();
    const slope_up = (slope * height) / this.size.height;
    const slope_across = (slope * width) / this.size.height;
    const side = new THREE.Vector3().crossVectors(this.camera.up, direction).normalize();
    const up = new THREE.Vector3().crossVectors(direction, side);
    let distance = this.radius;
    for (let corner = 0; corner < 8; ++corner) {
      const point = new THREE.Vector3(
        corner & 1 ? this.box.max.x : this.box.min.x,
        corner & 2 ? this.box.max.y : this.box.min.y,
        corner & 4 ? this.box.max.z : this.box.min.z,
      ).sub(this.centre);
      const depth = point.dot(direction);
      distance = Math.max(
        distance,
        depth + Math.abs(point.dot(side)) / slope_across,
        depth + Math.abs(point.dot(up)) / slope_up,
      );
    }
    return 1.06 * distance;
  }

  /** Turns the camera to a direction, with the whole district in view. */
  look(azimuth: number, height: number, smoothly = true): void {
    const direction = new THREE.Vector3(
      Math.sin(azimuth) * Math.cos(height),
      Math.cos(azimuth) * Math.cos(height),
      Math.sin(height),
    );
    this.fly(this.centre, direction, this.fitting(direction), smoothly);
  }

  look_first(): void {
    this.home(false);
  }

  /** The whole district from the south-south-west; steeper where the page is higher than wide. */
  home(smoothly = true): void {
    const { width, height } = this.free();
    const upright = height > 1.1 * width;
    this.look(upright ? upright_azimuth : first_azimuth, upright ? upright_height : first_height, smoothly);
  }

  /** Draws near to a point, from the side on which the camera stands. */
  approach(point: THREE.Vector3, distance: number): void {
    const direction = this.camera.position.clone().sub(this.controls.target).normalize();
    const now = this.camera.position.distanceTo(this.controls.target);
    this.fly(point, direction, Math.min(now, Math.max(distance, this.controls.minDistance)), true);
  }

  from_above(): void {
    this.look(Math.PI, Math.PI / 2 - 1e-4);
  }

  turn_north(): void {
    const offset = this.camera.position.clone().sub(this.controls.target);
    const height = Math.asin(offset.z / offset.length());
    const direction = new THREE.Vector3(0, -Math.cos(height), Math.sin(height));
    this.fly(this.controls.target.clone(), direction, offset.length(), true);
  }

  /** Turns and tilts by angles, and draws nearer by a factor; for the keyboard. */
  nudge(turn: number, tilt: number, factor: number): void {
    const offset = this.camera.position.clone().sub(this.controls.target);
    const place = new THREE.Spherical().setFromVector3(new THREE.Vector3(offset.y, offset.z, offset.x));
    place.theta += turn;
    place.phi = Math.min(this.controls.maxPolarAngle, Math.max(1e-4, place.phi + tilt));
    place.radius = Math.min(this.controls.maxDistance, Math.max(this.controls.minDistance, place.radius * factor));
    const turned = new THREE.Vector3().setFromSpherical(place);
    this.camera.position.copy(this.controls.target).add(new THREE.Vector3(turned.z, turned.x, turned.y));
    this.controls.update();
    this.draw();
  }

  private fly(target: THREE.Vector3, direction: THREE.Vector3, distance: number, smoothly: boolean): void {
    cancelAnimationFrame(this.flight);
    const from = { target: this.controls.target.clone(), offset: this.camera.position.clone().sub(this.controls.target) };
    const end = direction.clone().multiplyScalar(distance);
    const still = !smoothly || matchMedia("(prefers-reduced-motion: reduce)").matches;
    const start = performance.now();
    const step = (): void => {
      const share = still ? 1 : Math.min(1, (performance.now() - start) / 450);
      const eased = share * share * (3 - 2 * share);
      const length = from.offset.length() * (1 - eased) + distance * eased;
      this.controls.target.lerpVectors(from.target, target, eased);
      const offset = from.offset.clone().lerp(end, eased).setLength(length);
      this.camera.position.copy(this.controls.target).add(offset);
      this.controls.update();
      this.draw();
      if (share < 1) this.flight = requestAnimationFrame(step);
    };
    step();
  }

  /** Where a point stands on the canvas [pixel], and whether it is in front of the camera. */
  place_of(point: THREE.Vector3): { x: number; y: number; ahead: boolean } {
    const seen = point.clone().project(this.camera);
    return {
      x: (0.5 + 0.5 * seen.x) * this.size.width,
      y: (0.5 - 0.5 * seen.y) * this.size.height,
      ahead: seen.z < 1,
    };
  }

  /** The patch at a place of the canvas [pixel], -1 for none. */
  pick(surface: Surface, x: number, y: number): number {
    const { width, height } = this.size;
    const shift = { x: (this.inset.right - this.inset.left) / 2, y: (this.inset.bottom - this.inset.top) / 2 };
    this.camera.setViewOffset(width, height, x + shift.x - 0.5, y + shift.y - 0.5, 1, 1);
    this.renderer.setRenderTarget(this.picture);
    this.renderer.clear();
    const others = this.scene.children.filter((child) => child !== surface.group && child.visible);
    for (const child of others) child.visible = false;
    surface.with_numbers(() => this.renderer.render(this.scene, this.camera));
    for (const child of others) child.visible = true;
    const texel = new Uint8Array(4);
    this.renderer.readRenderTargetPixels(this.picture, 0, 0, 1, 1, texel);
    this.renderer.setRenderTarget(null);
    this.apply_view();
    return texel[0] + 256 * texel[1] + 65536 * texel[2] - 1;
  }

  /** Degrees clockwise by which north stands off the top of the canvas. */
  north(): number {
    const offset = this.camera.position.clone().sub(this.controls.target);
    // From straight above the direction comes from the top of the camera.
    const up = new THREE.Vector3(0, 1, 0).applyQuaternion(this.camera.quaternion);
    const ahead = Math.hypot(offset.x, offset.y) > 1e-3 * offset.length() ? offset.negate() : up;
    return (-Math.atan2(ahead.x, ahead.y) * 180) / Math.PI;
  }

  /** Metres that a pixel takes at the middle of the view. */
  metres_per_pixel(): number {
    const distance = this.camera.position.distanceTo(this.controls.target);
    return (2 * distance * Math.tan((view_angle * Math.PI) / 360)) / this.size.height;
  }
}
