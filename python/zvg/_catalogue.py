"""SQL over many block files, and their contents as tables."""

import functools
import os

from . import _zvg


def query(sql, paths, *, threads=0, progress=None):
    """Ask block files in SQL and return a Table.

    sql: one statement in SQLite's dialect over the tables files, floors, elements, properties,
        materials, relations, shapes and boxes, whose columns docs/GUIDE.md lists
    paths: a path or several; a folder stands for all *.zvg in and below it
    threads: how many files are read at once, or how many threads decode ahead in a single one; 0
        for as many as there are processors
    progress: as in pack()

    Nothing is stored: a scan decodes what its columns and conditions ask for. A file that cannot be
    read keeps the others from nothing: it is in the table's faults, and in `files` with its error.
    Raises Error with Status.USAGE for SQL that cannot be answered.
    """
    return _zvg._query(sql, _listed(paths), threads, progress)


def catalogue(paths, *, threads=0):
    """What block files hold, as tables that are read when they are first asked for: a Catalogue."""
    return Catalogue(paths, threads)


class Catalogue:
    """The contents of block files, a Table each: files, floors, elements, properties, materials and
    relations; shapes and boxes, which decode geometry."""

    def __init__(self, paths, threads=0):
        self.paths = _listed(paths)
        self.threads = threads

    def query(self, sql, progress=None):
        """Ask these files in SQL, as zvg.query does."""
        return query(sql, self.paths, threads=self.threads, progress=progress)

    def __repr__(self):
        return f"<zvg.Catalogue of {', '.join(map(os.fspath, self.paths))}>"


for _table in ("files", "floors", "elements", "properties", "materials", "relations", "shapes",
               "boxes"):
    def _read(self, table=_table):
        return self.query(f"SELECT * FROM {table}")

    _read.__doc__ = f"The Table `{_table}`."
    _property = functools.cached_property(_read)
    _property.__set_name__(Catalogue, _table)
    setattr(Catalogue, _table, _property)
del _table, _read, _property


def _listed(paths):
    return [paths] if isinstance(paths, (str, bytes, os.PathLike)) else list(paths)
