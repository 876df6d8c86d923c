"""Building models in block files.

    import zvg

    with zvg.open("house.zvg") as model:
        for wall in model.find(cls="IfcWall", where={"Pset_WallCommon.IsExternal": True}):
            print(wall.name, wall.floor, wall.area)

open() gives a Model: floors, elements, bodies as numpy arrays, plans, pictures and exports.
pack() makes a block file of an IFC, glTF or other model, Writer one of your own, diff() compares
two. query() asks many files in SQL, catalogue() has their contents as tables. Texts are str,
lengths metres, Z is up.

What fails raises Error, with status, path and position: DamagedError where the file is damaged,
an Error that is a KeyError or an IndexError where something is not there.
"""

from ._errors import DamagedError, Error, NoSuchPlaceError, NotFoundError, Status
from ._catalogue import Catalogue, catalogue, query
from . import _zvg
from ._zvg import (
    Curve, Damage, Difference, Element, ExportSummary, FileFault, Floor, Look, Material, Mesh,
    Model, PackReport, PackWarning, Plan, PlanFloor, PlanRoom, Property, Shape, Shapes, Surface,
    Table, Writer, __version__, import_formats, png)

__all__ = [
    "Catalogue", "Curve", "Damage", "DamagedError", "Difference", "Element", "Error",
    "ExportSummary", "FileFault", "Floor", "Look", "Material", "Mesh", "Model", "NoSuchPlaceError",
    "NotFoundError", "PackReport", "PackWarning", "Plan", "PlanFloor", "PlanRoom", "Property",
    "Shape", "Shapes", "Status", "Surface", "Table", "Writer", "catalogue", "diff", "import_formats",
    "open", "pack", "png", "query"]

for _name in __all__:
    # As their names are to be read and pickled, wherever they are made.
    if _name not in ("catalogue", "diff", "open", "pack", "query"):
        globals()[_name].__module__ = "zvg"
del _name


def open(source, cache=4 << 20, unlimited=False, threads=1):
    """Open a block file and return a Model.

    source: the path of a file; its bytes; or a file object with read and seek, such as one of a
        library for remote files, which is read in few pieces, and has to stay open as long as the
        model
    cache: how many bytes of a file object are kept
    unlimited: take what work and memory the file asks for; else a file that asks for far more
        than files of its size need ends with DamagedError
    threads: how many decode ahead while a call goes through the file, such as shapes(), export()
        or diff(); 0 for as many as there are processors. Answers do not depend on it

    Raises Error with Status.INPUT_OUTPUT where the file cannot be opened, and DamagedError where
    it is no block file or its index cannot be read. What a file object raises comes through.
    """
    return Model(source, cache, unlimited, threads)


def diff(a, b, progress=None):
    """Return a list of what differs in the model `b` from `a`, each a Difference.

    Each of the two is a Model or whatever open() takes. Floors come first. What the files say of
    themselves, their previews, the order of elements and the names of shapes are not compared.
    """
    with _opened(a) as first, _opened(b) as second:
        return _zvg._diff(first, second, progress)


def pack(model, block, *, progress=None, report=None, **options):
    """Pack a model file (IFC, glTF and others; see import_formats()) into a new block file.

    progress: called as progress(work, fraction) a few times a second, with None as fraction where
        nobody knows; an answer of False ends the call with Status.CANCELLED, and so does an
        exception, which comes through
    report: a PackReport to be filled, even where the call raises; it is returned

    settings: a path of displacement settings
    preview: a path of a PNG file to show for the block file
    draw_preview: draw one where there is none (True)
    strict: pack nothing of a model of which something is lost
    tolerance: metres that lines may be off the curves they stand for (0.001)
    fast: compress faster and weaker
    seal: write a checksum of the file behind its end
    format_version: 0 to 4 (4)
    geos_per_block: 0 chooses by the sizes of the geometries
    max_memory: bytes that the importer may use; 0 is half of the machine's
    max_seconds: that importing may take in all; 0 has no limit
    importer: the program zvg-import, where it is not found by itself

    The block file appears whole or not at all. The importer is a process of its own, which may
    crash without harm. Raises Error.
    """
    if report is None:
        report = PackReport()
    _zvg._pack(model, block, progress, report, **options)
    return report


def _opened(source):
    """A model that a with block closes only if it is opened here."""
    import contextlib
    return contextlib.nullcontext(source) if isinstance(source, Model) else open(source)
