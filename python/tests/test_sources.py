"""Where models come from: bytes, file objects, servers, other threads and processes, damage."""

import concurrent.futures
import http.server
import io
import multiprocessing
import os
import pickle
import threading
import urllib.request

import numpy as np
import pytest

import zvg


def bodies(model):
    return [e.mesh().points.sum() for e in model]


@pytest.mark.parametrize("open_it", [str, os.fsencode, lambda p: p.read_bytes(),
                                     lambda p: bytearray(p.read_bytes()), lambda p: p.open("rb"),
                                     lambda p: open(p, "rb", buffering=0)])
def test_one_model_serves_several_threads(path, open_it):
    source = open_it(path)
    if isinstance(source, bytes) and len(source) < 200:
        source = os.fsdecode(source)
    model = zvg.open(source)
    expected = bodies(model)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        runs = [pool.submit(bodies, model) for _ in range(20)]
        assert all(run.result() == expected for run in runs)
    assert model.verify() == []


def in_child(act):
    """What `act` gives in a process that is forked here."""
    receiver, sender = multiprocessing.Pipe(False)
    child = os.fork()
    if child == 0:
        try:
            sender.send(act())
        except BaseException as error:
            sender.send(error)
        os._exit(0)
    assert receiver.poll(30), "the child hangs"
    os.waitpid(child, 0)
    return receiver.recv()


def test_a_fork_finds_its_model(path, monkeypatch):
    monkeypatch.chdir(path.parent)
    models = [zvg.open(path.name), zvg.open(path.read_bytes())]
    monkeypatch.chdir("/")
    expected = bodies(models[0])
    busy = True

    def ask():
        while busy:
            models[0].verify(), bodies(models[0])
    threads = [threading.Thread(target=ask) for _ in range(3)]
    for thread in threads:
        thread.start()
    try:  # the lock of the file is held at most of these forks
        for _ in range(10):
            assert in_child(lambda: [bodies(m) for m in models]) == [expected] * 2
    finally:
        busy = False
        for thread in threads:
            thread.join()
    assert all(bodies(pickle.loads(pickle.dumps(m))) == expected for m in models)
    shared = zvg.open(open(path, "rb"))
    assert in_child(lambda: len(shared)).status == zvg.Status.USAGE
    with pytest.raises(TypeError):
        pickle.dumps(shared)


class Failing(io.BytesIO):
    answer = None

    def read(self, size=-1):
        if isinstance(self.answer, BaseException):
            raise self.answer
        return super().read(size) if self.answer is None else self.answer


def test_what_a_file_object_raises_comes_through(path):
    bytes_there = path.read_bytes()
    file = Failing(bytes_there)
    model = zvg.open(file)
    for answer, error in [(KeyboardInterrupt(), KeyboardInterrupt), (OSError("gone"), OSError),
                          ("text", TypeError), (bytes(1 << 20), ValueError), (b"", zvg.Error)]:
        broken = Failing(bytes_there)
        broken.answer = answer
        with pytest.raises(error):
            zvg.open(broken)
        file.answer = answer
        with pytest.raises(error):
            model.verify()
    file.answer = None
    assert bodies(model) == bodies(zvg.open(path))
    with pytest.raises(AttributeError):
        zvg.open(type("Pipe", (), {"read": None, "seek": lambda *_: None})())


def test_threads_change_no_answer(path):
    one, many = zvg.open(path), pickle.loads(pickle.dumps(zvg.open(path, threads=3)))
    assert bodies(many) == bodies(one) and zvg.diff(one, many) == []
    assert len(many.shapes().placements) == len(one.shapes().placements) > 0
    sql = "SELECT floor, class, guid, count(*) FROM elements JOIN properties ON element = id GROUP BY id"
    answers = [list(zvg.query(sql, path, threads=threads)) for threads in (1, 3)]
    assert answers[0] == answers[1] != []


def test_damage_is_told_by_place(path):
    sound = path.read_bytes()
    told = 0
    for place in range(60, len(sound), 37):
        bytes_there = bytearray(sound)
        bytes_there[place] ^= 0x55
        try:
            with zvg.open(bytes_there) as model:
                list(model), bodies(model), model.preview()
                told += bool(model.damage)
                assert all(d.position < len(sound) and d.reason for d in model.damage)
        except zvg.DamagedError as error:
            told += error.position is not None and error.status == zvg.Status.DAMAGED
    assert told > 10
    for bad in (b"", b"no block file", sound[:-1]):
        with pytest.raises(zvg.DamagedError):
            zvg.open(bad)
    with pytest.raises(zvg.Error) as raised:
        zvg.open("/nowhere.zvg")
    assert raised.value.path == "/nowhere.zvg"
    assert raised.value.status == zvg.Status.INPUT_OUTPUT


class Ranges(http.server.BaseHTTPRequestHandler):
    """Serves parts of `content`, and notes them, each as (begin, end)."""
    content, asked = b"", []

    def do_GET(self):
        first, last = map(int, self.headers["Range"].removeprefix("bytes=").split("-"))
        part = self.content[first:last + 1]
        self.asked.append((first, first + len(part)))
        self.send_response(206)
        self.send_header("Content-Length", str(len(part)))
        self.end_headers()
        self.wfile.write(part)

    def log_message(self, *_):
        pass


class Remote(io.RawIOBase):
    """A file on a server, which asks it whenever it is asked."""
    def __init__(self, url, size):
        self.url, self.size, self.position = url, size, 0

    def seek(self, offset, whence=0):
        self.position = offset + (0, self.position, self.size)[whence]
        return self.position

    def tell(self):
        return self.position

    def read(self, size=-1):
        span = f"bytes={self.position}-{self.position + size - 1}"
        with urllib.request.urlopen(urllib.request.Request(self.url, headers={"Range": span})) as r:
            part = r.read()
        self.position += len(part)
        return part


@pytest.fixture
def serve():
    """What opens bytes on a server."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Ranges)
    threading.Thread(target=server.serve_forever, daemon=True).start()

    def opened(content):
        Ranges.content, Ranges.asked = content, []
        return zvg.open(Remote(f"http://127.0.0.1:{server.server_port}/", len(content)))
    yield opened
    server.shutdown()
    server.server_close()


class Layout:
    """Where the records of a block file lie, each as (begin, end), and how many bytes its head, its
    tables and its index take."""
    def __init__(self, content):
        def number(at, width=4):
            return int.from_bytes(content[at:at + width], "big")

        def section(at):
            table, width = at + number(at + 9), (1, 2, 4, 4)[content[at] >> 6]
            begins = [at + number(table + i * width, width) for i in range(number(at + 5))]
            return list(zip(begins, begins[1:] + [table])), at + number(at + 1)

        at = 13
        for _ in range(2):
            at += 4 + 2 * number(at)
        flags = content[at]
        assert flags & 0xE0 == 0, "what packed files have no need of"
        self.geometry, end = section(at + 5)
        self.floors, end = section(number(at + 1))
        self.opening = len(content) - sum(b - a for a, b in self.geometry + self.floors)


@pytest.mark.parametrize("floors, elements, points, size", [(8, 190, 90, 1_400_000),
                                                            (150, 200, 6, 4_000_000)])
def test_a_file_on_a_server_is_asked_for_little(tmp_path, serve, floors, elements, points, size):
    random = np.random.default_rng(1)
    with zvg.Writer(tmp_path / "large.zvg", fast=size > 2_000_000) as w:
        for floor in range(floors):
            w.floor(f"Floor {floor}")
            for i in range(elements):
                shape = w.shape(random.random((points, 3)), random.integers(0, points, (50, 3)))
                w.element(f"{random.integers(1 << 60):x}", "IfcWall", floor=floor, shapes=[shape],
                          properties={"A.b": f"{random.integers(1 << 60):x}"})
    content = (tmp_path / "large.zvg").read_bytes()
    assert 0.8 * size < len(content) < 1.25 * size
    model, layout = serve(content), Layout(content)
    assert len(model.floors) == floors and model.title == ""
    opening = len(Ranges.asked)
    assert opening <= 3

    def asked():
        return sum(end - begin for begin, end in Ranges.asked)
    assert asked() <= layout.opening + (128 << 10)
    assert len(model[7, 100].mesh().points) > 5
    assert len(Ranges.asked) <= opening + 2
    bodies = [b - a for a, b in layout.geometry
              if any(begin <= a and b <= end for begin, end in Ranges.asked[opening:])]
    begin, end = layout.floors[7]
    touched = end - begin + sum(bodies[-1:])  # what comes with a body stands ahead of it
    assert asked() <= layout.opening + touched + (128 << 10)
    assert next(iter(model)).floor == model.floors[0].name == "Floor 0"
    assert asked() < len(content) / 2, "a walk begins where it is begun"
