import {
  BatchedMesh, type Box3, BufferAttribute, type BufferGeometry, type Camera, type Material, type Matrix4,
  type Object3D, type Scene, type ShaderMaterial, Sphere, type WebGLRenderer,
} from "three";

/** What a page is made to hold. */
export interface Room {
  points: number;
  indices: number;
}

const around = new Sphere();

/** A piece of a batch, drawn by one call and given its full size at once, since what grows has to go to
 * the graphics card anew. Once it is full it keeps no copy of what lies there. */
export class Page extends BatchedMesh {
  /** The numbers in the batch of its instances. */
  numbers = new Uint32Array(64);
  private readonly left: Room;
  private isFull = false;

  /** `order` is its number in the batch, `first` that of its first geometry. */
  constructor(readonly order: number, readonly first: number, room: Room, material: Material,
    isLines: boolean) {
    super(64, room.points, room.indices, material);
    this.left = { ...room };
    this.sortObjects = false;
    this.perObjectFrustumCulled = false;
    this.matrixAutoUpdate = false;
    this.boundingSphere = new Sphere().makeEmpty();
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

  /** Makes room for more instances. */
  reserve(instances: number): void {
    const needed = this.instanceCount + instances;
    if (needed <= this.maxInstanceCount) return;
    this.setInstanceCount(Math.max(needed, Math.ceil(this.maxInstanceCount * 1.5)));
    const numbers = new Uint32Array(this.maxInstanceCount);
    numbers.set(this.numbers);
    this.numbers = numbers;
  }

  /** Places a geometry, by its number in the batch, as the batch's instance `number`; answers its
   * number in the page. `box` is around it where it stands. */
  place(geometry: number, number: number, matrix: Matrix4, box: Box3): number {
    const id = this.addInstance(geometry - this.first);
    this.setMatrixAt(id, matrix);
    this.numbers[id] = number;
    if (!box.isEmpty()) this.boundingSphere!.union(box.getBoundingSphere(around));
    return id;
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
    (this as unknown as { _visibilityChanged: boolean })._visibilityChanged = true;
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
}
