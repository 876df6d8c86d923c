"""SQL over several files, and tables as other libraries take them."""

import ctypes
import shutil

import pytest

import zvg

from conftest import write


@pytest.fixture
def folder(tmp_path):
    write(tmp_path / "a.zvg")
    write(tmp_path / "b.zvg", name="Müller")
    damaged = tmp_path / "below" / "c.zvg"
    damaged.parent.mkdir()
    shutil.copy(tmp_path / "a.zvg", damaged)
    content = bytearray(damaged.read_bytes())
    content[content.rfind(b"\xfd7zXZ") + 40] ^= 0x55  # the index of the file
    damaged.write_bytes(content)
    return tmp_path


def test_rows(folder):
    table = zvg.query("SELECT name, count(*) AS n, avg(floor) AS f FROM elements "
                      "WHERE class = 'IfcWall' GROUP BY name ORDER BY name", folder)
    assert table.columns == ["name", "n", "f"]
    assert list(table) == [("Müller", 1, 0.0), ("Wall", 1, 0.0)]
    assert table[-1] == ("Wall", 1, 0.0) and table["n"] == [1, 1] and len(table) == 2
    [fault] = table.faults
    assert fault.path.endswith("c.zvg") and fault.is_damaged and "c.zvg" in fault.reason
    with pytest.raises(IndexError):
        table[2]
    with pytest.raises(KeyError):
        table["x"]
    with pytest.raises(zvg.Error) as error:
        zvg.query("DROP TABLE files", [folder / "a.zvg"])
    assert error.value.status == zvg.Status.USAGE


def test_catalogue(folder):
    catalogue = zvg.catalogue([folder / "a.zvg", folder / "b.zvg"])
    assert len(catalogue.files) == 2 and len(catalogue.elements) == 6
    assert catalogue.elements is catalogue.elements
    lengths = catalogue.query("SELECT number, unit FROM properties WHERE name = 'Length'")
    assert list(lengths) == [(4.0, "m")] * 2
    volumes = catalogue.query("SELECT volume FROM boxes JOIN elements ON elements.id = element "
                              "WHERE guid = 'slab'")
    assert [volume for volume, in volumes] == pytest.approx([24, 24])


class Array(ctypes.Structure):
    pass


Array._fields_ = [(name, ctypes.c_int64) for name in
                  ("length", "null_count", "offset", "n_buffers", "n_children")] + [
    ("buffers", ctypes.POINTER(ctypes.c_void_p)), ("children", ctypes.POINTER(ctypes.POINTER(Array))),
    ("dictionary", ctypes.c_void_p), ("release", ctypes.CFUNCTYPE(None, ctypes.POINTER(Array))),
    ("private", ctypes.c_void_p)]


class Schema(ctypes.Structure):
    pass


Schema._fields_ = [
    ("format", ctypes.c_char_p), ("name", ctypes.c_char_p), ("metadata", ctypes.c_char_p),
    ("flags", ctypes.c_int64), ("n_children", ctypes.c_int64),
    ("children", ctypes.POINTER(ctypes.POINTER(Schema))), ("dictionary", ctypes.c_void_p),
    ("release", ctypes.CFUNCTYPE(None, ctypes.POINTER(Schema))), ("private", ctypes.c_void_p)]


class Stream(ctypes.Structure):
    pass


Stream._fields_ = [
    ("get_schema", ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(Stream), ctypes.POINTER(Schema))),
    ("get_next", ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(Stream), ctypes.POINTER(Array))),
    ("error", ctypes.c_void_p), ("release", ctypes.c_void_p), ("private", ctypes.c_void_p)]


def test_arrow_takes_the_columns_as_they_are(folder):
    capsule = zvg.query("SELECT 7 AS i, 2.5 AS r, 'ü' AS t UNION ALL SELECT NULL, 3, NULL "
                        "UNION ALL SELECT -1, NULL, 'xyz'", folder / "a.zvg").__arrow_c_stream__()
    pointer = ctypes.pythonapi.PyCapsule_GetPointer
    pointer.restype, pointer.argtypes = ctypes.c_void_p, [ctypes.py_object, ctypes.c_char_p]
    stream = Stream.from_address(pointer(capsule, b"arrow_array_stream"))
    schema, array = Schema(), Array()
    assert stream.get_schema(stream, schema) == 0 and schema.format == b"+s"
    fields = [schema.children[i].contents for i in range(schema.n_children)]
    assert [(f.format, f.name) for f in fields] == [(b"l", b"i"), (b"g", b"r"), (b"U", b"t")]
    assert stream.get_next(stream, array) == 0 and array.length == 3
    integers, reals, texts = (array.children[i].contents for i in range(3))

    def values(column, kind, count, buffer=1):
        return list((kind * count).from_address(column.buffers[buffer]))

    assert [c.null_count for c in (integers, reals, texts)] == [1, 1, 1]
    assert [values(c, ctypes.c_uint8, 1, 0)[0] for c in (integers, reals, texts)] == [5, 3, 5]
    assert values(integers, ctypes.c_int64, 3) == [7, 0, -1]
    assert values(reals, ctypes.c_double, 3) == [2.5, 3, 0]
    assert values(texts, ctypes.c_int64, 4) == [0, 2, 2, 5]
    assert bytes(values(texts, ctypes.c_uint8, 5, 2)) == "üxyz".encode()
    array.release(array)
    schema.release(schema)
    assert stream.get_next(stream, array) == 0 and not array.release
