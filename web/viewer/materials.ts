import {
  AlwaysStencilFunc, BackSide, Color, DoubleSide, FrontSide, LineBasicMaterial, type Material,
  MeshBasicMaterial, MeshLambertMaterial, NotEqualStencilFunc, ReplaceStencilOp,
} from "three";

/** What a batch's colour has as alpha in solids: those of 0 are drawn as ghosts instead. */
function drawOnly(material: Material, condition: string): void {
  material.onBeforeCompile = (shader) => {
    shader.vertexShader = shader.vertexShader.replace("#include <project_vertex>",
      `#include <project_vertex>
       if (!(${condition})) gl_Position = vec4(2.0, 2.0, 2.0, 1.0);`);
  };
  material.customProgramCacheKey = () => condition;
}

/** Diagonal lines over what a section fills, in the colour of what is cut. */
function hatch(material: Material): void {
  const before = material.onBeforeCompile;
  material.onBeforeCompile = (shader, renderer) => {
    before.call(material, shader, renderer);
    shader.fragmentShader = shader.fragmentShader.replace("#include <opaque_fragment>",
      `float stripe = step(7.0, mod(gl_FragCoord.x + gl_FragCoord.y, 9.0));
       outgoingLight = mix(outgoingLight * 0.55 + 0.05, outgoingLight * 0.25, stripe);
       #include <opaque_fragment>`);
  };
  material.customProgramCacheKey = () => "hatch";
}

/** How batches are drawn. */
export function materials() {
  const solid = new MeshLambertMaterial({
    side: DoubleSide, polygonOffset: true, polygonOffsetFactor: 1, polygonOffsetUnits: 1,
  });
  const solidCut = solid.clone();
  solidCut.side = FrontSide;
  solidCut.stencilWrite = true;
  solidCut.stencilFunc = AlwaysStencilFunc;
  solidCut.stencilRef = 0;
  solidCut.stencilZPass = ReplaceStencilOp;
  const cap = new MeshBasicMaterial({ side: BackSide });
  cap.stencilWrite = true;
  cap.stencilFunc = AlwaysStencilFunc;
  cap.stencilRef = 1;
  cap.stencilZPass = ReplaceStencilOp;
  for (const each of [solid, solidCut, cap]) drawOnly(each, "vColor.a > 0.5");
  hatch(cap);
  const ghost = new MeshBasicMaterial({
    color: new Color(0x9aa7b5), transparent: true, opacity: 1, depthWrite: false,
  });
  ghost.onBeforeCompile = (shader) => {
    shader.vertexShader = shader.vertexShader.replace("#include <project_vertex>",
      `#include <project_vertex>
       if (vColor.a > 0.5) gl_Position = vec4(2.0, 2.0, 2.0, 1.0);`);
    shader.fragmentShader = shader.fragmentShader.replace("#include <color_fragment>",
      "diffuseColor.a = 0.1;");
  };
  const edges = new LineBasicMaterial({ transparent: true, depthWrite: false });
  edges.stencilFunc = NotEqualStencilFunc;
  edges.stencilRef = 1;
  const glass = new MeshLambertMaterial({
    side: DoubleSide, transparent: true, depthWrite: false,
  });
  return { solid, solidCut, cap, ghost, edges, glass };
}
