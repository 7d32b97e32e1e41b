// The patches as the graphics card draws them: one set of buffers, and small textures that hold the
// present code and the visibility of each patch, so that time, field and filter change texels alone.
import * as THREE from "three";
import { Field } from "./fields";
import { missing } from "./payload";
import type { Edges } from "./edges";
import type { Shapes } from "./shapes";

const width = 1024; // of the textures

export type Colour = [number, number, number];

const lookup = /* glsl */ `
  precision highp usampler2D;
  uniform usampler2D shown;
  ivec2 place(uint n) { return ivec2(int(n) % ${width}, int(n) / ${width}); }
  bool is_shown(uint n) { return texelFetch(shown, place(n), 0).r > 0u; }
`;

const face_vertex = /* glsl */ `
  ${lookup}
  uniform usampler2D codes;
  uniform vec2 range;
  uniform float relief;
  uniform uint hovered;
  uniform uint selected;
  in uint patch_number;
  flat out float share;
  flat out float shade;
  flat out float lit;
  flat out uint number;
  void main() {
    number = patch_number;
    gl_Position = is_shown(patch_number) ? projectionMatrix * modelViewMatrix * vec4(position, 1.0)
                                         : vec4(2.0, 2.0, 2.0, 1.0);
    uint code = texelFetch(codes, place(patch_number), 0).r;
    share = code == ${missing}u ? -1.0 : clamp((float(code) - range.x) / (range.y - range.x), 0.0, 1.0);
    // Light from above and a little from the south-west: roofs and ground as the legend says, walls darker.
    vec3 n = normalize(normal);
    shade = 1.0 + relief * (0.10 * (n.z - 1.0) + 0.05 * dot(n.xy, vec2(-0.45, -0.9)));
    lit = patch_number == selected ? 0.30 : patch_number == hovered ? 0.22 : 0.0;
  }
`;

const face_fragment = /* glsl */ `
  uniform sampler2D map;
  uniform vec3 no_value;
  uniform float opacity;
  flat in float share;
  flat in float shade;
  flat in float lit;
  flat in uint number;
  out vec4 colour;
  void main() {
    vec3 base = share < 0.0 ? no_value : texture(map, vec2((0.5 + 255.0 * share) / 256.0, 0.5)).rgb;
    colour = vec4(mix(min(base * shade, 1.0), vec3(1.0), lit), opacity);
  }
`;

const number_fragment = /* glsl */ `
  flat in float share;
  flat in float shade;
  flat in float lit;
  flat in uint number;
  out vec4 colour;
  void main() {
    uint n = number + 1u;
    colour = vec4(float(n & 255u), float((n >> 8) & 255u), float((n >> 16) & 255u), 255.0) / 255.0;
  }
`;

const edge_vertex = /* glsl */ `
  ${lookup}
  in uvec2 sides;
  in float strength;
  out float weight;
  uniform float nearness;
  void main() {
    weight = strength < 0.5 ? strength * nearness : strength;
    gl_Position = is_shown(sides.x) || is_shown(sides.y)
      ? projectionMatrix * modelViewMatrix * vec4(position, 1.0) : vec4(2.0, 2.0, 2.0, 1.0);
  }
`;

const edge_fragment = /* glsl */ `
  uniform vec4 ink;
  in float weight;
  out vec4 colour;
  void main() { colour = vec4(ink.rgb, ink.a * weight); }
`;

function texture_for(count: number, short: boolean): THREE.DataTexture {
  const rows = Math.max(1, Math.ceil(count / width));
  const texels = short ? new Uint16Array(width * rows) : new Uint8Array(width * rows);
  const texture = new THREE.DataTexture(
    texels,
    width,
    rows,
    THREE.RedIntegerFormat,
    short ? THREE.UnsignedShortType : THREE.UnsignedByteType,
  );
  texture.internalFormat = short ? "R16UI" : "R8UI";
  texture.unpackAlignment = 1;
  texture.needsUpdate = true;
  return texture;
}

export class Surface {
  readonly group = new THREE.Group();
  readonly visible: Uint8Array;
  private readonly codes: THREE.DataTexture;
  private readonly shown: THREE.DataTexture;
  private readonly map = new THREE.DataTexture(new Uint8Array(4 * 256), 256, 1);
  private readonly uniforms: Record<string, THREE.IUniform>;
  private readonly materials: THREE.ShaderMaterial[];
  private readonly numbers: THREE.ShaderMaterial;
  private readonly mesh: THREE.Mesh;
  private lines: THREE.LineSegments | null = null;
  private readonly nearness = { value: 1 };
  private readonly ink = { value: new THREE.Vector4(0, 0, 0, 0.5) };

  constructor(
    shapes: Shapes,
    private readonly count: number,
  ) {
    this.codes = texture_for(count, true);
    this.shown = texture_for(count, false);
    this.visible = (this.shown.image.data as Uint8Array).fill(1);
    this.map.magFilter = this.map.minFilter = THREE.LinearFilter;
    this.uniforms = {
      codes: { value: this.codes },
      shown: { value: this.shown },
      map: { value: this.map },
      range: { value: new THREE.Vector2(0, 1) },
      hovered: { value: 0xffffffff },
      selected: { value: 0xffffffff },
    };
    const geometry = new THREE.BufferGeometry();
    geometry.setAttribute("position", new THREE.BufferAttribute(shapes.position, 3));
    geometry.setAttribute("normal", new THREE.BufferAttribute(shapes.normal, 4, true));
    const patch = new THREE.BufferAttribute(shapes.patch, 1);
    patch.gpuType = THREE.IntType;
    geometry.setAttribute("patch_number", patch);
    const index = new Uint32Array(shapes.solid.length + shapes.leafy.length);
    index.set(shapes.solid);
    index.set(shapes.leafy, shapes.solid.length);
    geometry.setIndex(new THREE.BufferAttribute(index, 1));
    geometry.addGroup(0, shapes.solid.length, 0);
    geometry.addGroup(shapes.solid.length, shapes.leafy.length, 1);
    geometry.boundingBox = shapes.box;
    geometry.boundingSphere = shapes.box.getBoundingSphere(new THREE.Sphere());
    const face = (opacity: number, relief: number) =>
      new THREE.ShaderMaterial({
        glslVersion: THREE.GLSL3,
        uniforms: { ...this.uniforms, opacity: { value: opacity }, relief: { value: relief }, no_value: { value: new THREE.Color() } },
        vertexShader: face_vertex,
        fragmentShader: face_fragment,
        side: THREE.DoubleSide,
        transparent: opacity < 1,
        polygonOffset: true,
        polygonOffsetFactor: 1,
        polygonOffsetUnits: 1,
      });
    this.materials = [face(1, 1), face(0.86, 1.9)];
    this.numbers = new THREE.ShaderMaterial({
      glslVersion: THREE.GLSL3,
      uniforms: { ...this.uniforms, relief: { value: 0 } },
      vertexShader: face_vertex,
      fragmentShader: number_fragment,
      side: THREE.DoubleSide,
    });
    this.mesh = new THREE.Mesh(geometry, this.materials);
    this.group.add(this.mesh);
  }

  set_map(texels: Uint8Array): void {
    (this.map.image.data as Uint8Array).set(texels);
    this.map.needsUpdate = true;
  }

  /** Colours of a field at a time; `index` tells where the value of a patch stands in it. */
  set_codes(field: Field, time: number, index: (patch: number) => number): void {
    const texels = this.codes.image.data as Uint16Array;
    const start = field.start(time);
    if (field.head.on === "patch") {
      texels.set(field.codes.subarray(start, start + this.count));
    } else {
      for (let p = 0; p < this.count; ++p) {
        const at = index(p);
        texels[p] = at < 0 ? missing : field.codes[start + at];
      }
    }
    this.codes.needsUpdate = true;
  }

  /** The codes at both ends of the map. */
  set_range(low: number, high: number): void {
    this.uniforms.range.value.set(low, high);
  }

  visibility_changed(): void {
    this.shown.needsUpdate = true;
  }

  set_marks(hovered: number, selected: number): void {
    this.uniforms.hovered.value = hovered >>> 0;
    this.uniforms.selected.value = selected >>> 0;
  }

  /** Colours of lines, and of patches and leaves that have no value. */
  set_ink(lines: [number, number, number, number], no_value: Colour, leaves: Colour): void {
    this.ink.value.set(...lines);
    [no_value, leaves].forEach((colour, n) => this.materials[n].uniforms.no_value.value.setRGB(...colour));
  }

  set_edges(edges: Edges): void {
    const geometry = new THREE.BufferGeometry();
    geometry.setAttribute("position", new THREE.BufferAttribute(edges.position, 3));
    const sides = new THREE.BufferAttribute(edges.patches, 2);
    sides.gpuType = THREE.IntType;
    geometry.setAttribute("sides", sides);
    geometry.setAttribute("strength", new THREE.BufferAttribute(edges.strength, 1, true));
    geometry.boundingSphere = this.mesh.geometry.boundingSphere;
    const material = new THREE.ShaderMaterial({
      glslVersion: THREE.GLSL3,
      uniforms: { shown: this.uniforms.shown, ink: this.ink, nearness: this.nearness },
      vertexShader: edge_vertex,
      fragmentShader: edge_fragment,
      transparent: true,
      depthWrite: false,
    });
    this.lines = new THREE.LineSegments(geometry, material);
    this.lines.renderOrder = 1;
    this.group.add(this.lines);
  }

  /** Lines between patches of one plane fade where a patch takes but a few pixels. */
  set_patch_width(pixels: number): void {
    this.nearness.value = Math.min(1, Math.max(0, (pixels - 5) / 20));
  }

  /** Draws numbers of patches in place of colours while `draw` runs. */
  with_numbers(draw: () => void): void {
    this.mesh.material = this.numbers;
    if (this.lines) this.lines.visible = false;
    draw();
    this.mesh.material = this.materials;
    if (this.lines) this.lines.visible = true;
  }
}
