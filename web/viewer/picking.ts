import {
  type Camera, DoubleSide, NearestFilter, NormalBlending, OrthographicCamera, PerspectiveCamera,
  RGBAIntegerFormat, ShaderMaterial, UnsignedIntType, Vector3, WebGLRenderTarget,
} from "three";
import type { Batch } from "./batch.js";
import type { Drawing } from "./drawing.js";
import type { Ref } from "./model.js";
import { findSlot } from "./page.js";

/** What stands at a point of the view. */
export interface Hit extends Ref {
  /** Relative to the drawing's origin. */
  point: Vector3;
}

// Writes where a surface is and which instance it is of, bit by bit: a number as a colour loses none
// of them in a target of whole numbers, which every WebGL 2 has.
const vertexShader = `
  #include <common>
  #include <batching_pars_vertex>
  #include <clipping_planes_pars_vertex>
  attribute float part;
  varying vec3 vPoint;
  flat varying uint vInstance;
  uniform uint page;
  void main() {
    ${findSlot}
    vec3 transformed = position;
    #include <project_vertex>
    vPoint = (modelMatrix * batchingMatrix * vec4(position, 1.0)).xyz;
    vInstance = (page << 22u) + uint(slot) + 1u; // a file places no more than 4,000,000
    if (getBatchingColor(slot).a == 0.0) gl_Position = vec4(2.0, 2.0, 2.0, 1.0);
    #include <clipping_planes_vertex>
  }`;
const fragmentShader = `
  #include <clipping_planes_pars_fragment>
  varying vec3 vPoint;
  flat varying uint vInstance;
  layout(location = 0) out highp uvec4 found;
  void main() {
    #include <clipping_planes_fragment>
    found = uvec4(floatBitsToUint(vPoint), vInstance);
  }`;

/** Finds what is seen at a point by drawing that one pixel of numbers in place of colours. */
export class Picking {
  private readonly target = new WebGLRenderTarget(1, 1, {
    format: RGBAIntegerFormat, type: UnsignedIntType, internalFormat: "RGBA32UI",
    minFilter: NearestFilter, magFilter: NearestFilter, generateMipmaps: false,
  });
  private readonly material = new ShaderMaterial({
    vertexShader, fragmentShader, uniforms: { page: { value: 0 } }, side: DoubleSide, blending: NormalBlending, clipping: true,
    glslVersion: "300 es",
  });
  private readonly numbers = new Uint32Array(4);

  constructor(
    private readonly drawing: Drawing,
    private readonly camera: () => PerspectiveCamera | OrthographicCamera,
  ) {}

  /** What is at a point of the canvas, in its CSS pixels. */
  at(x: number, y: number): Hit | null {
    const { drawing } = this;
    const { renderer, canvas } = drawing;
    const camera = this.camera();
    camera.setViewOffset(canvas.clientWidth, canvas.clientHeight, Math.floor(x), Math.floor(y), 1, 1);
    camera.updateProjectionMatrix();
    let nearest: Hit | null = null;
    let least = Infinity;
    const eye = camera.getWorldPosition(new Vector3());
    const forward = camera.getWorldDirection(new Vector3());
    try {
      this.material.clippingPlanes = drawing.planes;
      renderer.setRenderTarget(this.target);
      for (const name of ["solid", "glass"] as const) {
        for (const [model, batch] of drawing.batches(name)) {
          const instance = this.draw(batch, camera);
          if (instance === null) continue;
          const [px, py, pz] = new Float32Array(this.numbers.buffer);
          const point = new Vector3(px, py, pz);
          const depth = point.clone().sub(eye).dot(forward);
          // Glass yields to what is as near, such as its own frame.
          if (depth >= least) continue;
          least = depth;
          nearest = { model, element: model.instances[name].elementOf[instance]!, point };
        }
      }
    } finally {
      renderer.setRenderTarget(null);
      camera.clearViewOffset();
      camera.updateProjectionMatrix();
      drawing.restoreBackground();
    }
    return nearest;
  }

  /** Draws one batch into the pixel; the instance there, or null. */
  private draw(batch: Batch, camera: Camera): number | null {
    if (batch.instanceCount === 0) return null;
    const { renderer, scene } = this.drawing;
    const gl = renderer.getContext() as WebGL2RenderingContext;
    const { visible, material } = batch;
    batch.visible = true;
    batch.material = this.material;
    for (const page of batch.pages) page.cullEach(true);
    gl.clearBufferuiv(gl.COLOR, 0, [0, 0, 0, 0]);
    renderer.clearDepth();
    const others = scene.children.filter((each) => each !== batch && each.visible);
    for (const each of others) each.visible = false;
    renderer.render(scene, camera);
    gl.readPixels(0, 0, 1, 1, gl.RGBA_INTEGER, gl.UNSIGNED_INT, this.numbers);
    for (const each of others) each.visible = true;
    for (const page of batch.pages) page.cullEach(false);
    batch.material = material;
    batch.visible = visible;
    const found = this.numbers[3]!;
    if (found === 0) return null;
    return batch.pages[found >>> 22]!.numbers[(found & 0x3fffff) - 1]!;
  }
}
