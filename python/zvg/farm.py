"""Packs, catalogues or verifies many files, on the cores of one machine or of many.

    python -m zvg.farm pack MODELS... -o FOLDER
    python -m zvg.farm verify FILES... -o REPORT.csv
    python -m zvg.farm catalogue FILES... -o CATALOGUE
    python -m zvg.farm ... --scheduler tcp://host:8786

Each file is a task of Dask (python3-distributed), on a cluster of as many processes as this machine
has cores unless a scheduler is named, whose workers have to see the same files. A folder stands for
the files of the kind in and below it.

`catalogue` writes a folder with a Parquet file for each table where pyarrow is installed, else, and
where the name ends in .sqlite, a database for SQLite.

What the machine failed at is tried again, a damaged file is not. `pack` writes FOLDER/report.csv, a
row for each model, and leaves what an earlier run has packed from the same bytes. The exit status is
0, or 4 where a file could not be done."""

import argparse
import csv
import glob
import hashlib
import os
import pathlib
import sqlite3
import sys
import time

import zvg

MODELS = {".ifc", ".ifczip", ".glb", ".gltf", ".obj", ".stl", ".ply", ".fbx", ".dae"}
TABLES = ("files", "floors", "elements", "properties", "materials", "relations")
FIELDS = ("source", "target", "state", "seconds", "bytes", "elements", "warnings", "error", "digest")
FINAL = {zvg.Status.USAGE, zvg.Status.DAMAGED, zvg.Status.NOT_FOUND}


def main(arguments=None):
    options = _parsed(arguments)
    suffixes = MODELS if options.work == "pack" else {".zvg"}
    sources = sorted(set(_found(options.sources, suffixes)))
    if not sources:
        sys.exit("zvg.farm: there is nothing to do")
    work = {"pack": _pack_all, "verify": _verify_all, "catalogue": _catalogue_all}[options.work]
    begun = time.monotonic()
    with _client(options) as client:
        rows = work(client, sources, options)
    failed = sum(row["state"] == "failed" for row in rows)
    left = sum(row["state"] == "left" for row in rows)
    print(f"zvg.farm: {len(rows) - failed - left} done, {left} left, {failed} failed "
          f"in {time.monotonic() - begun:.1f} s", file=sys.stderr)
    return 4 if failed else 0


def _parsed(arguments):
    parser = argparse.ArgumentParser("python -m zvg.farm", description=__doc__.split("\n")[0])
    parser.add_argument("work", choices=("pack", "verify", "catalogue"))
    parser.add_argument("sources", nargs="+", help="files and folders")
    parser.add_argument("-o", "--output", required=True, type=pathlib.Path)
    parser.add_argument("--scheduler", help="the address of a Dask scheduler")
    parser.add_argument("--processes", type=int, default=0, help="here; 0 is one for each core")
    parser.add_argument("--retries", type=int, default=2, help="where the machine failed (2)")
    parser.add_argument("--max-memory", type=int, default=0, help="bytes for each import")
    parser.add_argument("--max-seconds", type=float, default=0, help="for each import")
    parser.add_argument("--no-preview", action="store_true")
    return parser.parse_args(arguments)


def _client(options):
    from distributed import Client, LocalCluster
    if options.scheduler:
        return Client(options.scheduler)
    return Client(LocalCluster(n_workers=options.processes or os.cpu_count(), threads_per_worker=1,
                               dashboard_address="127.0.0.1:0", memory_limit=0,
                               silence_logs=40))


def _found(sources, suffixes):
    """(file, its path below the source that was named)"""
    for source in map(pathlib.Path, sources):
        if not source.is_dir():
            yield source, pathlib.Path(source.name)
        else:
            for file in source.rglob("*"):
                if file.suffix.lower() in suffixes and file.is_file():
                    yield file, file.relative_to(source)


def _rows(client, tasks, retries):
    """Yields what becomes of each (function, source, *arguments), as it becomes known."""
    from distributed import as_completed
    futures = {client.submit(*task, retries=retries, pure=False): task[1] for task in tasks}
    for number, future in enumerate(as_completed(futures), 1):
        source = futures[future]
        if future.status == "finished":
            row = future.result()
        else:  # by the last try's exception, or because workers died of it
            row = {"source": source, "state": "failed", "error": str(future.exception())}
        future.release()
        if sys.stderr.isatty():
            print(f"\r{number}/{len(futures)}", end="\r", file=sys.stderr, flush=True)
        if row["state"] == "failed":
            print(f"zvg.farm: {row['error']}", file=sys.stderr)
        yield row


def _tried(source, act):
    """A row with what `act` adds. What another try may mend is raised."""
    row = {"source": source, "state": "done"}
    begun = time.monotonic()
    try:
        row.update(act())
    except zvg.Error as error:
        if error.status not in FINAL and os.path.exists(source):
            raise RuntimeError(str(error)) from None
        row.update(state="failed", error=str(error))
    row["seconds"] = round(time.monotonic() - begun, 3)
    return row


def _pack_all(client, sources, options):
    report = options.output / "report.csv"
    packed = {row["source"]: row for row in _read(report)}
    tasks = []
    for source, below in sources:
        target = options.output / below.with_name(below.name + ".zvg")
        target.parent.mkdir(parents=True, exist_ok=True)
        tasks.append((_pack, str(source.resolve()), str(target.resolve()),
                      packed.get(str(source.resolve()), {}).get("digest", ""),
                      {"max_memory": options.max_memory, "max_seconds": options.max_seconds,
                       "draw_preview": not options.no_preview}))
    rows = []
    for row in _rows(client, tasks, options.retries):
        if row["state"] == "left":
            row = {**packed[row["source"]], "state": "left"}
        rows.append(row)
    _write(report, rows)
    return rows


def _pack(source, target, digest_before, options):
    def act():
        digest = _digest(source)
        newer = os.path.exists(target) and os.path.getmtime(target) >= os.path.getmtime(source)
        if newer and digest == digest_before:
            return {"state": "left"}
        unfinished = target + ".unfinished"
        # What a process left that was killed; the library's own name for it ends in six letters.
        for left in glob.glob(glob.escape(unfinished) + "*"):
            os.unlink(left)
        report = zvg.pack(source, unfinished, **options)
        os.replace(unfinished, target)
        return {"target": target, "bytes": os.path.getsize(target), "elements": report.elements,
                "warnings": len(report.warnings), "digest": digest}

    return _tried(source, act)


def _verify_all(client, sources, options):
    rows = list(_rows(client, [(_verify, str(source)) for source, _ in sources], options.retries))
    _write(options.output, rows)
    return rows


def _verify(source):
    def act():
        with zvg.open(source) as model:
            found = model.verify()
            row = {"bytes": os.path.getsize(source), "elements": len(model)}
        return {**row, "state": "failed", "error": f"{source}: {found[0]}"} if found else row

    return _tried(source, act)


def _catalogue_all(client, sources, options):
    output = options.output
    parquet = output.suffix != ".sqlite" and _pyarrow()
    if output.suffix != ".sqlite" and not parquet:
        output = output.with_name(output.name + ".sqlite")
        print(f"zvg.farm: pyarrow is missing: {output}", file=sys.stderr)
    unfinished = output.with_name(output.name + ".unfinished")
    unfinished.unlink(missing_ok=True)
    rows = []
    database = sqlite3.connect(unfinished)
    for row in _rows(client, [(_tables, str(source)) for source, _ in sources], options.retries):
        for name, (columns, values) in row.pop("tables", {}).items():
            quoted = ", ".join(f'"{column}"' for column in columns)
            database.execute(f"CREATE TABLE IF NOT EXISTS {name} ({quoted})")
            database.executemany(
                f"INSERT INTO {name} VALUES ({', '.join('?' * len(columns))})", values)
        rows.append(row)
    database.commit()
    if parquet:
        _write_parquet(database, output)
    database.close()
    if parquet:
        unfinished.unlink()
    else:
        os.replace(unfinished, output)
    return rows


def _pyarrow():
    try:
        import pyarrow.parquet
    except ImportError:
        return None
    return pyarrow


def _write_parquet(database, folder):
    """A file for each table; a column is of numbers where all its values are."""
    pyarrow = _pyarrow()
    texts, reals = ("TEXT", pyarrow.string()), ("REAL", pyarrow.float64())
    kinds = {frozenset({"integer"}): ("INTEGER", pyarrow.int64()), frozenset({"real"}): reals,
             frozenset({"integer", "real"}): reals}
    folder.mkdir(parents=True, exist_ok=True)
    there = {name for name, in database.execute("SELECT name FROM sqlite_schema")}
    for table in there.intersection(TABLES):
        fields, values = [], []
        for name, *_ in database.execute(f"SELECT * FROM {table} LIMIT 0").description:
            found = database.execute(f'SELECT DISTINCT typeof("{name}") FROM {table}')
            wanted, kind = kinds.get(frozenset(kind for kind, in found) - {"null"}, texts)
            fields.append((name, kind))
            values.append(f'CAST("{name}" AS {wanted})')
        cursor = database.execute(f"SELECT {', '.join(values)} FROM {table}")
        schema = pyarrow.schema(fields)
        unfinished = folder / f"{table}.parquet.unfinished"
        with pyarrow.parquet.ParquetWriter(unfinished, schema) as writer:
            while some := cursor.fetchmany(100_000):
                arrays = [pyarrow.array(column, field.type) for column, field in zip(zip(*some), schema)]
                writer.write_table(pyarrow.Table.from_arrays(arrays, schema=schema))
        os.replace(unfinished, folder / f"{table}.parquet")


def _tables(source):
    def act():
        tables = {}
        for name in TABLES:
            table = zvg.query(f"SELECT * FROM {name}", source, threads=1)
            tables[name] = table.columns, list(table)
        if table.faults:
            return {"tables": tables, "state": "failed", "error": table.faults[0].reason}
        return {"tables": tables, "elements": len(tables["elements"][1])}

    return _tried(source, act)


def _digest(path):
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def _read(path):
    if not path.exists():
        return []
    with open(path, newline="", encoding="utf-8") as file:
        return list(csv.DictReader(file))


def _write(path, rows):
    unfinished = path.with_name(path.name + ".unfinished")
    with open(unfinished, "w", newline="", encoding="utf-8") as file:
        writer = csv.DictWriter(file, FIELDS)
        writer.writeheader()
        writer.writerows(sorted(rows, key=lambda row: row["source"]))
    os.replace(unfinished, path)


if __name__ == "__main__":
    sys.exit(main())
