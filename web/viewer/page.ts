import {
  BatchedMesh, type Box3, BufferAttribute, type BufferGeometry, type Camera, DataTexture, type Material,
  type Matrix4, type Object3D, RGBAFormat, SRGBColorSpace, type Scene, type ShaderMaterial, Sphere,
  UnsignedByteType, type WebGLRenderer,
} from "three";

/** What a page is made to hold. */
export interface Room {
  points: number;
  indices: number;
}

/** What a page finds its own by in its base. */
interface Base {
  _colorsTexture: DataTexture | null;
  _matricesTexture: DataTexture;
  _visibilityChanged: boolean;
}

/** GLSL of what a point is drawn by: `batchingMatrix`, and the `slot` of its instance, which stands where
 * a matrix has nothing to say; each point knows how far behind the first of what is drawn with it. */
export const findSlot = `
  mat4 batchingMatrix = getBatchingMatrix(getIndirectIndex(gl_DrawID));
  float slot = batchingMatrix[0].w + part;
  batchingMatrix[0].w = 0.0;`;

const around = new Sphere();
const textureWidth = 256;

function coloursFor(slots: number): DataTexture {
  const height = Math.ceil(slots / textureWidth);
  const texture = new DataTexture(new Uint8Array(4 * textureWidth * height), textureWidth, height,
    RGBAFormat, UnsignedByteType);
  texture.colorSpace = SRGBColorSpace;
  return texture;
}

/** A piece of a batch, drawn by one call and given its full size at once, since what grows has to go to
 * the graphics card anew. Once it is full it keeps no copy of what lies there. An instance has a slot,
 * which has its colour; those that are drawn in one go share one instance of the base. */
export class Page extends BatchedMesh {
  /** Of each slot: the number in the batch of its instance. */
  numbers = new Uint32Array(64);
  /** Of each slot: the number in the base of what draws it. */
  private drawnBy = new Uint32Array(64);
  private colours = coloursFor(64);
  private slots = 0;
  private readonly left: Room;
  private isFull = false;

  /** `order` is its number in the batch, `first` that of its first geometry. */
  constructor(readonly order: number, readonly first: number, room: Room, material: Material,
    isLines: boolean) {
    super(16, room.points, room.indices, material);
    this.left = { ...room };
    this.sortObjects = false;
    this.perObjectFrustumCulled = false;
    this.matrixAutoUpdate = false;
    this.boundingSphere = new Sphere().makeEmpty();
    this.base._colorsTexture = this.colours;
    if (isLines) Object.assign(this, { isMesh: false, isLine: true, isLineSegments: true });
  }

  hasRoomFor({ points, indices }: Room): boolean {
    return !this.isFull && points <= this.left.points && indices <= this.left.indices;
  }

  /** Takes a geometry; those of a page have the numbers that follow `first`. */
  take(geometry: BufferGeometry): void {
    this.left.points -= geometry.getAttribute("position").count;
    this.left.indices -= geometry.index!.count;
    this.addGeometry(geometry);
  }

  /** Makes room for more slots, and for more that draw them. */
  reserve(slots: number, drawing: number): void {
    const roomFor = (needed: number, room: number): number =>
      needed <= room ? room : Math.max(needed, Math.ceil(room * 1.5));
    this.resize(roomFor(this.slots + slots, this.numbers.length),
      roomFor(this.instanceCount + drawing, this.maxInstanceCount));
  }
  /** Nothing more comes: gives up the room that is left. */
  fit(): void {
    this.resize(this.slots, this.instanceCount);
  }

  /** Places a geometry, by its number in the batch, as the batch's instance `number`; answers its slot.
   * `box` is around it where it stands; without a matrix it is drawn with what was placed last. */
  place(geometry: number, number: number, matrix: Matrix4 | null, box: Box3): number {
    const slot = this.slots++;
    this.numbers[slot] = number;
    if (matrix === null) this.drawnBy[slot] = this.drawnBy[slot - 1]!;
    else {
      const id = this.withoutColours(() => this.addInstance(geometry - this.first));
      matrix.elements[3] = slot;
      this.setMatrixAt(id, matrix);
      this.drawnBy[slot] = id;
    }
    if (!box.isEmpty()) this.boundingSphere!.union(box.getBoundingSphere(around));
    return slot;
  }

  /** Whether others are drawn with an instance: it can be hidden by its colour alone. */
  private isTogether(slot: number): boolean {
    return this.drawnBy[slot] === this.drawnBy[slot + 1] && slot + 1 < this.slots
      || slot > 0 && this.drawnBy[slot] === this.drawnBy[slot - 1];
  }

  hide(slot: number): void {
    if (this.isTogether(slot)) this.paint(slot, 0, 0);
    else this.setVisibleAt(this.drawnBy[slot]!, false);
  }
  /** Shows an instance. `rgb` is a byte each from the lowest on, as screens show it; `alpha` goes up to
   * 255, and 0 hides. */
  paint(slot: number, rgb: number, alpha: number): void {
    const bytes = this.colours.image.data as Uint8Array;
    bytes[4 * slot] = rgb & 255;
    bytes[4 * slot + 1] = (rgb >>> 8) & 255;
    bytes[4 * slot + 2] = (rgb >>> 16) & 255;
    bytes[4 * slot + 3] = alpha;
    this.colours.needsUpdate = true;
    if (alpha > 0) this.setVisibleAt(this.drawnBy[slot]!, true);
  }

  /** Nothing more is taken, and all lies on the graphics card: lets go of the copy here. */
  seal(): void {
    this.isFull = true;
    const { attributes, index } = this.geometry;
    for (const attribute of [...Object.values(attributes), index]) {
      if (attribute instanceof BufferAttribute) {
        const Kind = attribute.array.constructor as new (length: number) => BufferAttribute["array"];
        attribute.array = new Kind(0);
      }
    }
  }

  /** Whether instances that the camera does not see are left out, which costs time for each. */
  cullEach(culls: boolean): void {
    if (this.perObjectFrustumCulled === culls) return;
    this.perObjectFrustumCulled = culls;
    this.base._visibilityChanged = true;
  }

  override getMatrixAt(id: number, matrix: Matrix4): Matrix4 {
    super.getMatrixAt(id, matrix);
    matrix.elements[3] = 0; // the slot
    return matrix;
  }

  /** Tells a shader that asks which page it draws. */
  override onBeforeRender(renderer: WebGLRenderer, scene: Scene, camera: Camera,
    geometry: BufferGeometry, material: Material, group: never): void {
    const below = BatchedMesh.prototype.onBeforeRender as Object3D["onBeforeRender"];
    below.call(this, renderer, scene, camera, geometry, material, group);
    const { page } = (material as ShaderMaterial).uniforms ?? {};
    if (page === undefined) return;
    page.value = this.order;
    (material as ShaderMaterial).uniformsNeedUpdate = true;
  }

  private get base(): Base {
    return this as unknown as Base;
  }

  /** Lets the base do what would write colours by its own numbers. */
  private withoutColours<Result>(act: () => Result): Result {
    this.base._colorsTexture = null;
    const result = act();
    this.base._colorsTexture = this.colours;
    return result;
  }

  private resize(slots: number, drawing: number): void {
    if (slots !== this.numbers.length) {
      const least = Math.min(slots, this.slots);
      const resized = (array: Uint32Array<ArrayBuffer>): Uint32Array<ArrayBuffer> => {
        const room = new Uint32Array(slots);
        room.set(array.subarray(0, least));
        return room;
      };
      this.numbers = resized(this.numbers);
      this.drawnBy = resized(this.drawnBy);
      const colours = coloursFor(slots);
      colours.image.data!.set(this.colours.image.data!.subarray(0, 4 * least));
      colours.needsUpdate = true;
      this.colours.dispose();
      this.base._colorsTexture = this.colours = colours;
    }
    if (drawing === this.maxInstanceCount) return;
    this.withoutColours(() => this.setInstanceCount(drawing));
    this.base._matricesTexture.needsUpdate = true;
    this.base._visibilityChanged = true;
  }
}
