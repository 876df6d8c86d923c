"""The code on the pages runs as it stands there, and the types name what there is."""

import ast
import pathlib
import re
import shutil
import sys
import types

import pytest

import zvg
from zvg import _zvg

ROOT = pathlib.Path(__file__).parents[2]


@pytest.mark.skipif("IFC" not in zvg.import_formats(), reason="no importer reads IFC here")
@pytest.mark.parametrize("page", ["README.md", "docs/PYTHON.md"])
def test_pages_run(page, tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    remote = types.SimpleNamespace(open=lambda url, **_: open(pathlib.Path(url).name, "rb"))
    monkeypatch.setitem(sys.modules, "fsspec", remote)
    zvg.pack(shutil.copy(ROOT / "examples" / "house.ifc", tmp_path), "house.zvg")
    (tmp_path / "models").mkdir()
    for name in ("old.zvg", "new.zvg", "models/house.zvg"):
        shutil.copy("house.zvg", name)
    blocks = re.findall(r"^```python\n(.*?)^```", (ROOT / page).read_text(), re.M | re.S)
    assert blocks
    for block in blocks:
        names = {"zvg": zvg, "fsspec": remote, "model": zvg.open("house.zvg")}
        exec(compile(block, page, "exec"), names)
    assert "Front" in capsys.readouterr().out


def test_the_types_name_what_there_is():
    tree = ast.parse(pathlib.Path(zvg.__file__).with_name("_zvg.pyi").read_text())
    for node in tree.body:
        if isinstance(node, ast.ClassDef):
            told = {item.target.id if isinstance(item, ast.AnnAssign) else item.name
                    for item in node.body if isinstance(item, (ast.FunctionDef, ast.AnnAssign))}
            there = {name for name in vars(getattr(_zvg, node.name)) if not name.startswith("_")}
            assert {name for name in told if not name.startswith("_")} == there, node.name
        elif isinstance(node, ast.FunctionDef):
            assert callable(getattr(_zvg, node.name))
