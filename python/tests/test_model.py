"""What a model says, and the arrays that outlive it."""

import gc
import pickle

import numpy as np
import pytest

import zvg
from conftest import BOX_POINTS, write


def test_elements_are_found(model):
    assert (len(model), model.title, model.classes["IfcDoor"]) == (3, "A house", 1)
    assert [(f.name, f.elevation, f.height, f.elements) for f in model.floors] == [
        ("Ground", 0, 3, 2), ("Upper", 3, 0, 1)]
    assert [e.guid for e in model] == ["wall", "door", "slab"]
    wall = model.find(guid="wall")
    assert wall == model["wall"] == model[0, 0] and "wall" in model and "x" not in model
    assert (wall.name, wall.cls, wall.floor, wall.building) == ("Wall", "IfcWall", "Ground", "House")
    assert [e.guid for e in wall.children] == ["door"] and model["door"].parent == wall
    assert wall.parent is None
    assert pickle.loads(pickle.dumps([model["door"]]))[0].parent.guid == "wall"


@pytest.mark.parametrize("wanted, guids", [
    ({"cls": "IfcWall"}, ["wall"]), ({"cls": ("IfcWall", "IfcSlab")}, ["wall", "slab"]),
    ({"floor": "Upper"}, ["slab"]), ({"floor": 0, "cls": "IfcDoor"}, ["door"]),
    ({"name": "Wall"}, ["wall"]), ({"where": {"Pset_WallCommon.IsExternal": "true"}}, ["wall"]),
    ({"where": {"Pset_SlabCommon.IsExternal": False, "Size.Depth": 0.25}}, ["slab"]),
    ({"where": {"Pset_WallCommon.Storeys": 2.0, "Size.Length": 4}}, ["wall"]),
    ({"where": {"Size.Length": 5}}, []), ({"cls": "IfcBeam"}, [])])
def test_conditions_choose(model, wanted, guids):
    assert [e.guid for e in model.find(**wanted)] == guids


def test_properties(model):
    length = model["wall"].properties["Size.Length"]
    assert (length.kind, length.number, str(length)) == ("length", 4.0, "4 m")
    assert model["wall"].properties["Pset_WallCommon.Storeys"].kind == "integer"
    with pytest.raises(KeyError):
        model["slab"].properties["Size.Width"]


@pytest.mark.parametrize("ask, error", [
    (lambda m: m["nobody"], KeyError), (lambda m: m.find(guid=""), KeyError),
    (lambda m: m.find(floor="Attic"), KeyError), (lambda m: m.plan("Attic"), KeyError),
    (lambda m: m.export("/nowhere/x.obj", where={"a": "b"}), KeyError),
    (lambda m: m[0, 2], IndexError), (lambda m: m[2**32 - 1, 0], IndexError),
    (lambda m: m.export("/nowhere/x.obj"), zvg.Error), (lambda m: m.export("x.ply"), zvg.Error)])
def test_what_is_not_there(model, ask, error):
    with pytest.raises(error) as raised:
        ask(model)
    assert isinstance(raised.value, zvg.Error) and raised.value.path
    assert pickle.loads(pickle.dumps(raised.value)).status == raised.value.status


def test_wrong_arguments(model):
    for ask in (lambda: model.find(cls="IfcWall", guid="wall"), lambda: model.find(cls=7),
                lambda: model.find(where={"a": []}), lambda: model[0, 0, 0], lambda: model[1.5]):
        with pytest.raises(TypeError):
            ask()
    for ask in (lambda: model[-1, 0], lambda: model[2**40, 0]):
        with pytest.raises(IndexError):
            ask()


def test_arrays_outlive_the_file(path):
    model = zvg.open(path)
    wall, slab = model["wall"], model["slab"]
    mesh = wall.mesh(normals="flat")
    shapes = model.shapes(cls=["IfcWall", "IfcSlab"])
    assert np.array_equal(slab.box, [[-4, 0, 3], [0, 2, 6]]) and slab.closed
    assert slab.volume == pytest.approx(24) and slab.area == pytest.approx(52)
    picture = model.preview()
    kept = [mesh.points, mesh.triangles, mesh.look_of, mesh.normals, shapes.placements,
            shapes.shapes[0].surfaces[0].points, picture]
    before = [array.copy() for array in kept]
    assert all(not array.flags.owndata for array in kept)
    looks = [mesh.looks[i] for i in mesh.look_of]
    element_of, shape_of = shapes.element_of.copy(), shapes.shape_of
    model.close()
    del mesh, shapes, model
    gc.collect()
    assert all(map(np.array_equal, kept, before))
    points, triangles, look_of, normals, placements, box, picture = kept
    assert points.shape == normals.shape and points.dtype == np.float64
    assert triangles.shape == (24, 3) and triangles.dtype == look_of.dtype == np.uint32
    assert {look.name for look in looks} == {"Brick", "Glass"} and triangles.max() < len(points)
    assert placements.shape == (3, 3, 4) and np.array_equal(element_of, [[0, 0], [0, 0], [1, 0]])
    assert shape_of[0] == shape_of[2] != shape_of[1] and placements[2, 0, 0] == -1
    assert sorted(map(tuple, box)) == sorted(map(tuple, BOX_POINTS))
    assert picture.shape == (3, 5, 4) and picture[2, 4, 3] == 7
    assert wall.name == "Wall"
    with pytest.raises(ValueError):
        wall.mesh()


def test_text_passes_both_ways(tmp_path):
    odd = tmp_path / "\udcff \U0001f3e0.zvg"  # a name that is no UTF-8
    with zvg.open(write(odd, "\U0001f3e0 \ud83c\udfe0 \udfff", "W\xe4nde\0")) as model:
        assert model.title == "\U0001f3e0 \U0001f3e0 \ufffd" and model.path == str(odd)
        assert model.find(name="W\xe4nde\0")[0].guid == "wall"
        with pytest.raises(KeyError) as raised:
            model["\ud800"]
    assert raised.value.path == str(odd)


def test_pages_show_models(model, tmp_path):
    html = zvg.open(write(tmp_path / "a.zvg", "<b>"))._repr_html_()
    assert "data:image/png;base64,iVBOR" in html and "&lt;b&gt;" in html and "3 elements" in html
    plan = model.plan("Upper")
    assert (plan.floors, plan.elements) == (1, 2) and plan._repr_svg_() == str(plan)
    (upper,) = plan.per_floor
    assert (upper.name, upper.cut, upper.below, upper.overhead) == ("Upper", 1, 1, 0)
    assert (upper.plane, upper.strays) == (3 + 1.2, [])
    (upper,) = model.plan("Upper", cut_height=3.5, all=True).per_floor
    assert (upper.cut, upper.below, upper.plane) == (0, 2, 6.5)
    assert model.plan("Upper", format="dxf").document.startswith(b"0\nSECTION")
    roof = model.plan(roof=True, paper="A4", scale=200)
    assert (roof.scale, len(roof.per_floor)) == (200, 1 + len(model.floors))
    for raised, wrong in ((zvg.Error, {"paper": "A9"}), (zvg.Error, {"paper": "A4", "scale": 1}),
                          (ValueError, {"format": "png"})):
        with pytest.raises(raised):
            model.plan(**wrong)
