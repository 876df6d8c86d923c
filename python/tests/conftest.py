"""A small building that every test may read."""

import numpy as np
import pytest

import zvg

BOX_POINTS = [[x, y, z] for x in (0, 4) for y in (0, 2) for z in (0, 3)]
BOX = [[0, 1, 3], [0, 3, 2], [4, 6, 7], [4, 7, 5], [0, 4, 5], [0, 5, 1],
       [2, 3, 7], [2, 7, 6], [0, 2, 6], [0, 6, 4], [1, 5, 7], [1, 7, 3]]


def mirrored(z):
    return [[-1, 0, 0, 0], [0, 1, 0, 0], [0, 0, 1, z]]


def write(path, title="A house", name="Wall", lifted=0):
    with zvg.Writer(path, title=title, building="House") as w:
        ground = w.floor("Ground", elevation=0, height=3)
        upper = w.floor("Upper", elevation=3)
        brick = w.shape(BOX_POINTS, np.array(BOX, np.uint16), zvg.Look("Brick", (200, 80, 60)))
        glass = w.shape(np.array(BOX_POINTS) / 4, BOX, zvg.Look("Glass", (90, 90, 255, 99)))
        w.element("wall", "IfcWall", name, floor=ground, shapes=[brick, glass], properties={
            "Pset_WallCommon.IsExternal": True, "Pset_WallCommon.Storeys": 2,
            "Size.Length": zvg.Property("Size", "Length", "4", "length", "m")})
        w.element("door", "IfcDoor", floor=ground, parents=["wall"])
        w.element("slab", "IfcSlab", floor=upper, shapes=[(brick, mirrored(3 + lifted))],
                  properties={"Pset_SlabCommon.IsExternal": False, "Size.Depth": 0.25})
        w.preview(np.full((3, 5, 4), 7, np.uint8))
    return path


@pytest.fixture(scope="session")
def path(tmp_path_factory):
    return write(tmp_path_factory.mktemp("model") / "house.zvg")


@pytest.fixture
def model(path):
    with zvg.open(path) as opened:
        yield opened
