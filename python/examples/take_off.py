#!/usr/bin/env python3
"""External wall area per floor, and how much of it is window.

    take_off.py house.zvg

The area of a wall is half of that of its faces that look along its normal: a side without the
openings that are cut through it. The back of a niche counts as wall; programs that measure the
outermost face alone tell less of such a wall. The area of a window is the larger upright side of
its box.
"""

import sys

import numpy as np

import zvg

WALLS = ("IfcWall", "IfcWallStandardCase")


def face_area(mesh):
    """One side of an upright, flat body, with the backs of its niches."""
    corners = mesh.points[mesh.triangles]
    normals = np.cross(corners[:, 1] - corners[:, 0], corners[:, 2] - corners[:, 0]) / 2
    areas = np.linalg.norm(normals, axis=1)
    upright = np.abs(normals[:, 2]) < 0.5 * areas
    if not upright.any():
        return 0.0
    # The direction that most of the area looks to, whichever way round.
    flat = normals[upright]
    _, axes = np.linalg.eigh(flat.T @ (flat / areas[upright, None]))
    along = np.abs(flat @ axes[:, -1])
    return along[along > 0.7 * areas[upright]].sum() / 2


def window_area(window):
    """The larger upright side of the window's box."""
    low, high = window.box
    width, depth, height = high - low
    return max(width, depth) * height


def take_off(model):
    """Yield (floor, external wall area, window area), square metres."""
    external = {"Pset_WallCommon.IsExternal": True}
    for number, floor in enumerate(model.floors):
        walls = model.find(cls=WALLS, floor=number, where=external)
        windows = [window for wall in walls for window in wall.children
                   if window.cls == "IfcWindow" and window.box is not None]
        yield (floor.name, sum(face_area(wall.mesh()) for wall in walls),
               sum(map(window_area, windows)))


def main(path):
    total = np.zeros(2)
    print(f"{'floor':20} {'wall m2':>9} {'window m2':>9} {'ratio':>7}")
    with zvg.open(path) as model:
        for floor, wall, window in take_off(model):
            if wall:
                print(f"{floor:20} {wall:9.2f} {window:9.2f} {window / (wall + window):7.1%}")
                total += wall, window
        for damage in model.damage:
            print(f"warning: {damage.reason}, at byte {damage.position}", file=sys.stderr)
    ratio = total[1] / total.sum() if total.any() else 0
    print(f"{'all':20} {total[0]:9.2f} {total[1]:9.2f} {ratio:7.1%}")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
