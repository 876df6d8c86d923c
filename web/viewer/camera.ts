import { Box3, OrthographicCamera, PerspectiveCamera, Vector3 } from "three";

/** Where the viewer stands and looks: enough to come back to it. */
export interface Viewpoint {
  /** What is looked at. */
  target: [number, number, number];
  /** Metres to it. */
  distance: number;
  /** Radians: around Z, 0 looks north; and down from the horizon. */
  yaw: number;
  pitch: number;
  isOrthographic: boolean;
}

/** Directions from which a building is looked at: yaw and pitch in degrees. */
export const directions = {
  Home: [-35, 30], Top: [0, 90], Bottom: [0, -90], Front: [0, 0], Back: [180, 0], Left: [90, 0],
  Right: [-90, 0],
} as const;
export type Direction = keyof typeof directions;

const fieldOfView = 50;
const steepest = Math.PI / 2 - 1e-4;

/** The camera that all is seen through, and its way around a target. Z is up. */
export class Camera {
  readonly perspective = new PerspectiveCamera(fieldOfView, 1, 0.1, 1000);
  readonly orthographic = new OrthographicCamera();
  readonly changed = new Set<() => void>();
  private target = new Vector3();
  private distance = 20;
  private yaw = radians(directions.Home[0]);
  private pitch = radians(directions.Home[1]);
  private isOrthographic = false;
  /** Around all that is drawn, for the planes between which the camera sees. */
  private reach = new Box3(new Vector3(-10, -10, -10), new Vector3(10, 10, 10));
  private aspect = 1;

  constructor() {
    this.perspective.up.set(0, 0, 1);
    this.orthographic.up.set(0, 0, 1);
    this.update();
  }

  get current(): PerspectiveCamera | OrthographicCamera {
    return this.isOrthographic ? this.orthographic : this.perspective;
  }
  get viewpoint(): Viewpoint {
    const { x, y, z } = this.target;
    const { distance, yaw, pitch, isOrthographic } = this;
    return { target: [x, y, z], distance, yaw, pitch, isOrthographic };
  }
  set viewpoint(to: Viewpoint) {
    this.target.set(...to.target);
    this.distance = Math.max(to.distance, 1e-3);
    this.yaw = to.yaw;
    this.pitch = Math.min(Math.max(to.pitch, -steepest), steepest);
    this.isOrthographic = to.isOrthographic;
    this.update();
  }
  get eye(): Vector3 {
    return this.target.clone().addScaledVector(this.forward(), -this.distance);
  }

  setAspect(aspect: number): void {
    this.aspect = aspect;
    this.update();
  }
  setReach(box: Box3): void {
    if (!box.isEmpty()) this.reach = box.clone();
    this.place(); // what is seen stays the same
  }
  setOrthographic(is: boolean): void {
    this.isOrthographic = is;
    this.update();
  }

  /** Shows all of a box, from a direction or from where the camera looks now. */
  fit(box: Box3, direction?: Direction): void {
    if (direction !== undefined) {
      this.yaw = radians(directions[direction][0]);
      this.pitch = Math.min(Math.max(radians(directions[direction][1]), -steepest), steepest);
    }
    if (box.isEmpty()) return this.update();
    box.getCenter(this.target);
    const radius = Math.max(box.getSize(new Vector3()).length() / 2, 0.05);
    const half = Math.atan(Math.tan(radians(fieldOfView / 2)) * Math.min(1, this.aspect));
    this.distance = (radius / Math.sin(half)) * 1.04;
    this.update();
  }

  orbit(right: number, down: number): void {
    this.yaw -= right;
    this.pitch = Math.min(Math.max(this.pitch + down, -steepest), steepest);
    this.update();
  }
  /** Turns the head: the eye stays. */
  look(right: number, down: number): void {
    const { eye } = this;
    this.orbit(-right, down);
    this.target.copy(eye).addScaledVector(this.forward(), this.distance);
    this.update();
  }
  /** Moves across the view, by shares of its height. */
  pan(right: number, up: number): void {
    const height = this.heightAtTarget();
    const { elements: m } = this.current.matrixWorld;
    this.target.addScaledVector(new Vector3(m[0]!, m[1]!, m[2]!), right * height);
    this.target.addScaledVector(new Vector3(m[4]!, m[5]!, m[6]!), up * height);
    this.update();
  }
  /** Comes nearer by a factor, towards a point, which stays where it is seen. */
  zoom(factor: number, towards?: Vector3): void {
    if (towards) this.target.sub(towards).multiplyScalar(factor).add(towards);
    this.distance = Math.min(Math.max(this.distance * factor, 1e-2), 1e6);
    this.update();
  }
  /** Goes by metres: forwards on the level, to the right, up. */
  walk(forwards: number, right: number, up: number): void {
    this.target.x += Math.sin(this.yaw) * forwards + Math.cos(this.yaw) * right;
    this.target.y += Math.cos(this.yaw) * forwards - Math.sin(this.yaw) * right;
    this.target.z += up;
    this.update();
  }
  /** Stands at a place and looks level. */
  stand(eye: Vector3): void {
    this.pitch = 0;
    this.isOrthographic = false;
    this.distance = 2;
    this.target.copy(eye).addScaledVector(this.forward(), this.distance);
    this.update();
  }

  /** Takes over another's view; `height` in metres is that of an orthographic one. */
  lookFrom(eye: Vector3, direction: Vector3, height: number | null): void {
    const ahead = direction.clone().normalize();
    this.yaw = Math.hypot(ahead.x, ahead.y) > 1e-6 ? Math.atan2(ahead.x, ahead.y) : this.yaw;
    this.pitch = Math.min(Math.max(-Math.asin(ahead.z), -steepest), steepest);
    this.isOrthographic = height !== null;
    if (height !== null) this.distance = height / (2 * Math.tan(radians(fieldOfView / 2)));
    this.target.copy(eye).addScaledVector(ahead, this.distance);
    this.update();
  }

  /** Metres between the upper and the lower rim, where the target is. */
  heightAtTarget(): number {
    return 2 * this.distance * Math.tan(radians(fieldOfView / 2));
  }

  /** Looks level to the north at yaw 0; clockwise from above as yaw grows. */
  forward(): Vector3 {
    const level = Math.cos(this.pitch);
    return new Vector3(Math.sin(this.yaw) * level, Math.cos(this.yaw) * level, -Math.sin(this.pitch));
  }

  private update(): void {
    this.place();
    for (const tell of this.changed) tell();
  }

  private place(): void {
    const { eye, perspective, orthographic } = this;
    const middle = this.reach.getCenter(new Vector3());
    const radius = this.reach.getSize(new Vector3()).length() / 2 + 1;
    const away = middle.sub(eye).dot(this.forward());
    perspective.aspect = this.aspect;
    perspective.far = Math.max(away + radius, 10);
    perspective.near = Math.max(away - radius, perspective.far / 20000, 0.02);
    const half = this.heightAtTarget() / 2;
    orthographic.left = -half * this.aspect;
    orthographic.right = half * this.aspect;
    orthographic.top = half;
    orthographic.bottom = -half;
    orthographic.near = Math.min(away - radius, 0);
    orthographic.far = Math.max(away + radius, 10);
    for (const camera of [perspective, orthographic]) {
      camera.position.copy(eye);
      camera.lookAt(this.target);
      camera.updateProjectionMatrix();
      camera.updateMatrixWorld();
    }
  }
}

function radians(degrees: number): number {
  return (degrees * Math.PI) / 180;
}
