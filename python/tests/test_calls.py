"""Calls that make files, and callbacks that end them."""

import pathlib

import numpy as np
import pytest

import zvg
from conftest import BOX, BOX_POINTS, write

HOUSE = pathlib.Path(__file__).parents[2] / "examples" / "house.ifc"


class Enough(Exception):
    pass


def enough(work, fraction):
    assert work and (fraction is None or 0 <= fraction <= 1)
    raise Enough(work)


def long_calls(model, folder):
    yield lambda progress: model.verify(progress)
    yield lambda progress: model.plan(progress=progress)
    yield lambda progress: model.shapes(progress=progress)
    yield lambda progress: model.export(folder / "x.obj", progress=progress)
    yield lambda progress: zvg.diff(model, model, progress)
    if zvg.import_formats():
        yield lambda progress: zvg.pack(HOUSE, folder / "x.zvg", progress=progress)


def test_progress_ends_calls(model, tmp_path):
    for call in long_calls(model, tmp_path):
        with pytest.raises(Enough):
            call(enough)
        with pytest.raises(zvg.Error) as raised:
            call(lambda work, fraction: False)
        assert raised.value.status == zvg.Status.CANCELLED
    assert list(tmp_path.iterdir()) == []


def test_exports(model, tmp_path):
    assert model.export(tmp_path / "a.obj").elements == 3
    glass = model.export(tmp_path / "b.obj", where={"Pset_WallCommon.IsExternal": True})
    assert glass.elements == 1 and (tmp_path / "b.mtl").exists()
    assert "Depth" not in (tmp_path / "b.obj").read_text()
    model.export(tmp_path / "c.glb", properties=False, normals="flat", instances=True, quantize=True)
    text = (tmp_path / "c.glb").read_bytes()
    assert b"KHR_mesh_quantization" in text and b'"NORMAL"' in text and b"Pset_" not in text
    model.export(tmp_path / "d.glb", merge=True)
    assert b'"wall"' in text and b'"wall"' not in (tmp_path / "d.glb").read_bytes()
    with pytest.raises(zvg.Error):
        model.export(tmp_path / "e.glb", edges=True, instances=True)


def test_differences(model, path, tmp_path):
    other = write(tmp_path / "other.zvg", name="Mauer")
    assert zvg.diff(model, path) == []
    (wall,) = zvg.diff(path, other)
    assert (wall.kind, wall.subject, wall.guid, wall.in_a) == ("changed", "element", "wall", (0, 0))
    assert wall.properties == {"Element.Name": ("Wall", "Mauer")} and not wall.geometry
    assert (wall.name, wall.cls, wall.distance, wall.field_values) == ("Wall", "IfcWall", None, {})
    slab, = zvg.diff(path, write(tmp_path / "moved.zvg", lifted=2))
    assert slab.guid == "slab" and slab.geometry and slab.distance == pytest.approx(2)
    assert not model.closed


@pytest.mark.skipif("IFC" not in zvg.import_formats(), reason="no importer reads IFC here")
def test_packing_tells_what_came(tmp_path):
    report = zvg.PackReport()
    assert zvg.pack(HOUSE, tmp_path / "h.zvg", report=report, draw_preview=False) is report
    assert report.types["IfcWall"] == (10, 10, 10) and report.schema.startswith("IFC")
    with zvg.open(tmp_path / "h.zvg") as model:
        assert len(model) == report.elements and model.preview() is None
    model = tmp_path / "bad.ifc"
    model.write_text(HOUSE.read_text().replace("IFCWINDOW(", "IFCWINDOWS("))
    with pytest.raises(zvg.DamagedError):
        zvg.pack(model, tmp_path / "bad.zvg", report=report, strict=True)
    assert any(w.lost and w.count and w.text for w in report.warnings) and report.lost
    assert not (tmp_path / "bad.zvg").exists()
    with pytest.raises(zvg.Error) as raised:
        zvg.pack(tmp_path / "none.ifc", tmp_path / "none.zvg")
    assert raised.value.status == zvg.Status.INPUT_OUTPUT


def test_a_writer_takes_what_fits(model, tmp_path):
    with zvg.Writer(tmp_path / "copy.zvg") as w:
        w.element("copy", "IfcWall", shapes=[w.shape(model["wall"].mesh())])
        for points, triangles, error in [
                (BOX_POINTS, [[0, 1, 8]], zvg.Error), (BOX_POINTS, [[0, 1, -1]], IndexError),
                (BOX_POINTS, [[0, 1, 2**32]], IndexError), (BOX_POINTS, [[0, 1, 1.5]], TypeError),
                ([[0, 1]], BOX, ValueError), (BOX_POINTS, BOX_POINTS[0], ValueError),
                ([[0, 1, np.nan]], [[0, 0, 0]], zvg.Error), ("points", BOX, ValueError)]:
            with pytest.raises(error):
                w.shape(points, triangles)
        for wrong in ({"shapes": [9]}, {"floor": 9}, {"properties": {"A.": 1}}):
            with pytest.raises(zvg.Error):
                w.element("x", "IfcWall", **wrong)
        for wrong in ({"properties": {"A.b": None}}, {"shapes": 1}, {"floor": "Ground"}):
            with pytest.raises(TypeError):
                w.element("x", "IfcWall", **wrong)
        with pytest.raises(ValueError):
            w.element("x", "IfcWall", shapes=[(0, np.eye(3))])
    with pytest.raises(ValueError):
        w.floor("late")
    copy, wall = zvg.open(tmp_path / "copy.zvg")["copy"], model["wall"]
    assert np.array_equal(copy.box, wall.box) and copy.area == pytest.approx(wall.area)
    assert set(copy.mesh().looks) == set(wall.mesh().looks)


def test_a_writer_that_fails_leaves_no_file(tmp_path):
    with pytest.raises(Enough):
        with zvg.Writer(tmp_path / "new.zvg") as w:
            w.floor("Ground")
            raise Enough
    assert list(tmp_path.iterdir()) == []
