"""The farm, on a cluster of this machine."""

import csv
import pathlib
import shutil
import sqlite3

import pytest

pytest.importorskip("distributed")

import zvg
from zvg import farm

HOUSE = pathlib.Path(__file__).parents[2] / "examples" / "house.ifc"


def states(report):
    with open(report, newline="") as file:
        return {pathlib.Path(row["source"]).name: row["state"] for row in csv.DictReader(file)}


@pytest.mark.skipif("IFC" not in zvg.import_formats(), reason="no importer reads IFC here")
def test_packs_once_verifies_and_catalogues(tmp_path, capsys):
    models, blocks = tmp_path / "models", tmp_path / "blocks"
    (models / "below").mkdir(parents=True)
    shutil.copy(HOUSE, models / "a.ifc")
    shutil.copy(HOUSE, models / "below" / "b.ifc")
    (models / "cut.ifc").write_bytes(HOUSE.read_bytes()[:3000])
    (models / "note.txt").write_text("no model")
    pack = ["pack", str(models), "-o", str(blocks), "--no-preview", "--processes", "2"]
    assert farm.main(pack) == 4
    assert "cut.ifc: the file is cut short" in capsys.readouterr().err
    assert states(blocks / "report.csv") == {"a.ifc": "done", "b.ifc": "done", "cut.ifc": "failed"}
    block = blocks / "below" / "b.ifc.zvg"
    first = block.stat().st_mtime_ns
    killed = blocks / "a.ifc.zvg.unfinished.Ab12Cd"
    killed.touch()
    kept = blocks / "a.ifc.zvg.backup"
    kept.touch()

    (models / "a.ifc").write_bytes(HOUSE.read_bytes().replace(b"Front wall", b"Other wall"))
    (models / "cut.ifc").unlink()
    assert farm.main(pack) == 0
    assert states(blocks / "report.csv") == {"a.ifc": "done", "b.ifc": "left"}
    assert block.stat().st_mtime_ns == first and kept.exists() and not killed.exists()

    content = bytearray(block.read_bytes())
    content[content.find(b"\xfd7zXZ") + 40] ^= 0x55
    block.write_bytes(content)
    assert farm.main(["verify", str(blocks), "-o", str(tmp_path / "v.csv")]) == 4
    assert states(tmp_path / "v.csv") == {"a.ifc.zvg": "done", "b.ifc.zvg": "failed"}
    block.unlink()
    assert farm.main(["catalogue", str(blocks), "-o", str(tmp_path / "c.sqlite")]) == 0
    database = sqlite3.connect(tmp_path / "c.sqlite")
    assert database.execute("SELECT count(*) FROM elements WHERE name = 'Other wall'").fetchone() == (1,)
    assert database.execute("SELECT count(*) FROM elements").fetchone() == (49,)


def test_a_catalogue_is_parquet_where_that_can_be_written(path, tmp_path):
    parquet = pytest.importorskip("pyarrow.parquet")
    assert farm.main(["catalogue", str(path), "-o", str(tmp_path / "c")]) == 0
    elements = parquet.read_table(tmp_path / "c" / "elements.parquet")
    assert elements["guid"].to_pylist() == ["wall", "door", "slab"]
    assert str(elements.schema.field("idx").type) == "int64"
    properties = parquet.read_table(tmp_path / "c" / "properties.parquet")
    assert 0.25 in properties["number"].to_pylist()
    assert sorted(tmp_path.iterdir()) == [tmp_path / "c"]
