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
    """Serves parts of `content`, and counts them."""
    content, asked = b"", 0

    def do_GET(self):
        type(self).asked += 1
        first, last = map(int, self.headers["Range"].removeprefix("bytes=").split("-"))
        part = self.content[first:last + 1]
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


def test_a_file_on_a_server_is_asked_seldom(tmp_path):
    random = np.random.default_rng(1)
    with zvg.Writer(tmp_path / "large.zvg") as w:
        floors = [w.floor(f"Floor {i}") for i in range(8)]
        for i in range(1500):
            shape = w.shape(random.random((90, 3)), random.integers(0, 90, (50, 3)))
            w.element(f"{random.integers(1 << 60):x}", "IfcWall", floor=floors[i % 8],
                      shapes=[shape], properties={"A.b": f"{random.integers(1 << 60):x}"})
        w.element("last", "IfcWall", floor=floors[7], shapes=[400])
    Ranges.content = (tmp_path / "large.zvg").read_bytes()
    assert 1_000_000 < len(Ranges.content) < 2_000_000
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Ranges)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    try:
        model = zvg.open(Remote(f"http://127.0.0.1:{server.server_port}/", len(Ranges.content)))
        assert len(model.floors) == 8 and Ranges.asked <= 3
        opened = Ranges.asked
        assert len(model[7, 100].mesh().points) > 50
        assert Ranges.asked <= opened + 2
    finally:
        server.shutdown()
        server.server_close()
