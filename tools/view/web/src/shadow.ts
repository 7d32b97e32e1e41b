// A soft shade on which the district stands.
import * as THREE from "three";

const fragment = /* glsl */ `
  uniform vec2 half_size;
  uniform float softness;
  in vec2 at;
  out vec4 colour;
  void main() {
    float away = length(max(abs(at) - half_size, 0.0)) / softness;
    float shade = away > 0.0 ? 0.20 * pow(max(0.0, 1.0 - away), 2.0) : 0.08; // what is hidden shows it
    colour = vec4(0.0, 0.0, 0.0, shade);
  }
`;

const vertex = /* glsl */ `
  out vec2 at;
  void main() {
    at = position.xy;
    gl_Position = projectionMatrix * modelViewMatrix * vec4(position, 1.0);
  }
`;

export function shadow_below(box: THREE.Box3): THREE.Mesh {
  const size = box.getSize(new THREE.Vector3());
  const softness = 0.07 * Math.max(size.x, size.y, 1);
  const plane = new THREE.Mesh(
    new THREE.PlaneGeometry(size.x + 2 * softness, size.y + 2 * softness),
    new THREE.ShaderMaterial({
      glslVersion: THREE.GLSL3,
      uniforms: {
        half_size: { value: new THREE.Vector2(size.x / 2 - 0.3 * softness, size.y / 2 - 0.3 * softness) },
        softness: { value: 1.3 * softness },
      },
      vertexShader: vertex,
      fragmentShader: fragment,
      transparent: true,
      depthWrite: false,
    }),
  );
  const centre = box.getCenter(new THREE.Vector3());
  plane.position.set(centre.x, centre.y, box.min.z - 0.004 * Math.max(size.x, size.y));
  plane.renderOrder = -1;
  return plane;
}
