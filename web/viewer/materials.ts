import {
  AlwaysStencilFunc, Color, DoubleSide, LineBasicMaterial, type Material, MeshBasicMaterial,
  MeshLambertMaterial, NotEqualStencilFunc, ReplaceStencilOp, ShaderChunk,
} from "three";
import { findSlot } from "./page.js";

/** What the alpha of a solid's colour says beside its colour. */
export const solidAlpha = { ghost: 0.25, cut: 0.75, whole: 1 } as const;

/** What of a batch a material draws, and how. An alpha of 0 hides. */
interface Drawn {
  /** A condition in GLSL on an instance's `vColor`. */
  instances: string;
  /** Which side of triangles of what is cut; both unless said. */
  side?: "front" | "back";
  /** GLSL ahead of the last steps, which may alter `outgoingLight` and `diffuseColor`. */
  finish?: string;
}

const isSolid = "vColor.a > 0.5";
const isCut = "vColor.a < 0.9";
/** A mirrored instance shows its triangles the wrong way round, which the card cannot know. */
const facing = "(gl_FrontFacing == (vTurn > 0.0))";

function drawn(material: Material, { instances, side, finish = "" }: Drawn): void {
  const discard = side
    ? `if (${isCut} && ${facing} != ${side === "front"}) discard;` : "";
  const normals = ShaderChunk.normal_fragment_begin.replace("gl_FrontFacing", facing);
  material.onBeforeCompile = (shader) => {
    shader.vertexShader = shader.vertexShader
      .replace("#include <common>", `#include <common>
        flat varying float vTurn;
        attribute float part;`)
      .replace("#include <color_vertex>", `${findSlot}\nvColor = getBatchingColor(slot);`)
      .replace("#include <batching_vertex>", "")
      .replace("#include <project_vertex>", `#include <project_vertex>
        vTurn = sign(determinant(mat3(batchingMatrix)));
        if (vColor.a == 0.0 || !(${instances})) gl_Position = vec4(2.0, 2.0, 2.0, 1.0);`);
    shader.fragmentShader = shader.fragmentShader
      .replace("#include <common>", "#include <common>\nflat varying float vTurn;")
      .replace("#include <clipping_planes_fragment>", `${discard}\n#include <clipping_planes_fragment>`)
      .replace("#include <normal_fragment_begin>", normals)
      .replace("#include <opaque_fragment>", `${finish}\n#include <opaque_fragment>`);
  };
  material.customProgramCacheKey = () => instances + discard + finish;
}

/** Diagonal lines over what a section fills, in the colour of what is cut. */
const hatch = `
  float stripe = step(7.0, mod(gl_FragCoord.x + gl_FragCoord.y, 9.0));
  outgoingLight = mix(outgoingLight * 0.55 + 0.05, outgoingLight * 0.25, stripe);`;

/** Writes a mark wherever it is seen. */
const marking = (mark: number) => ({
  stencilWrite: true, stencilFunc: AlwaysStencilFunc, stencilRef: mark,
  stencilZPass: ReplaceStencilOp,
});

/** How batches are drawn. */
export function materials() {
  // Surfaces step back a little, so that edges lie before their own; caps as far as surfaces.
  const back = { polygonOffset: true, polygonOffsetFactor: 1, polygonOffsetUnits: 1 };
  const solid = new MeshLambertMaterial({ side: DoubleSide, ...back });
  const solidCut = new MeshLambertMaterial({ side: DoubleSide, ...back, ...marking(0) });
  const cap = new MeshBasicMaterial({ side: DoubleSide, ...back, ...marking(1) });
  const faint = { side: DoubleSide, transparent: true, depthWrite: false } as const;
  const ghost = new MeshBasicMaterial({ color: new Color(0x9aa7b5), ...faint });
  const glass = new MeshLambertMaterial(faint);
  drawn(solid, { instances: isSolid });
  drawn(solidCut, { instances: isSolid, side: "front" });
  drawn(cap, { instances: `${isSolid} && ${isCut}`, side: "back", finish: hatch });
  drawn(ghost, { instances: `!(${isSolid})`, finish: "diffuseColor.a = 0.1;" });
  drawn(glass, { instances: "true" });
  const edges = new LineBasicMaterial({
    transparent: true, depthWrite: false, stencilFunc: NotEqualStencilFunc, stencilRef: 1,
  });
  drawn(edges, { instances: "true" });
  return { solid, solidCut, cap, ghost, edges, glass };
}
