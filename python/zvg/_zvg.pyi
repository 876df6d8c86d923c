"""Types of the compiled part of zvg; help(zvg) says what each does."""

import os
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from typing import Any, Final, Literal, Union, overload

import numpy as np
import numpy.typing as npt

__version__: str

_Path = Union[str, bytes, "os.PathLike[str]"]
_Progress = Union[Callable[[str, Union[float, None]], Any], None]
_Names = Union[str, Iterable[str], None]
_Floor = Union[str, int, None]
_Where = Union[Mapping[str, Union[str, bool, float]], None]
_Normals = Union[Literal["flat", "smooth"], None]
_Place = tuple[int, int]
_Colour = tuple[int, int, int, int]
_Doubles = npt.NDArray[np.float64]
_Floats = npt.NDArray[np.float32]
_Numbers = npt.NDArray[np.uint32]
_Pixels = npt.NDArray[np.uint8]


class Property:
    def __init__(self, set: str, name: str, value: str, kind: str = "text",
                 unit: str = "") -> None: ...
    set: Final[str]
    name: Final[str]
    value: Final[str]
    kind: Final[str]
    unit: Final[str]
    number: Final[float | None]


class Material:
    name: Final[str]
    category: Final[str]
    thickness: Final[float | None]
    properties: Final[dict[str, Property]]


class Element:
    guid: Final[str]
    name: Final[str]
    cls: Final[str]
    predefined_type: Final[str]
    type: Final[str]
    floor: Final[str]
    material: Final[str]
    building: Final[str]
    site: Final[str]
    group: Final[str]
    index: Final[_Place]
    properties: Final[dict[str, Property]]
    materials: Final[list[Material]]
    colour: Final[_Colour | None]
    parent: Final[Element | None]
    children: Final[list[Element]]
    box: Final[_Doubles | None]
    area: Final[float]
    volume: Final[float]
    closed: Final[bool]
    def mesh(self, *, normals: _Normals = None, crease_angle: float = ..., curves: bool = False,
             chord_error: float = 0.001) -> Mesh: ...


class Look:
    def __init__(self, name: str, colour: Sequence[int]) -> None: ...
    name: Final[str]
    colour: Final[_Colour]


class Curve:
    role: Final[str]
    points: Final[_Doubles]
    closed: Final[bool]


class Mesh:
    points: Final[_Doubles]
    triangles: Final[_Numbers]
    normals: Final[_Floats | None]
    looks: Final[list[Look]]
    look_of: Final[_Numbers]
    curves: Final[list[Curve]]
    def __bool__(self) -> bool: ...


class Surface:
    look: Final[Look | None]
    points: Final[_Doubles]
    triangles: Final[_Numbers]
    normals: Final[_Floats | None]


class Shape:
    key: Final[str]
    surfaces: Final[list[Surface]]
    curves: Final[list[Curve]]


class Shapes:
    shapes: Final[list[Shape]]
    placements: Final[_Doubles]
    shape_of: Final[_Numbers]
    element_of: Final[_Numbers]
    looks: Final[list[Look]]
    missing: Final[int]


class Floor:
    name: Final[str]
    order: Final[int]
    elevation: Final[float]
    height: Final[float]
    elements: Final[int]


class Damage:
    position: Final[int]
    reason: Final[str]


class Plan:
    document: Final[bytes]
    svg: Final[str]
    scale: Final[float]
    floors: Final[int]
    elements: Final[int]
    lost: Final[str]
    per_floor: Final[list[PlanFloor]]


class PlanRoom:
    guid: Final[str]
    number: Final[str]
    name: Final[str]
    zone: Final[str]
    stated: Final[float | None]
    measured: Final[float | None]


class PlanFloor:
    name: Final[str]
    elevation: Final[float]
    plane: Final[float]
    cut: Final[int]
    visiting: Final[int]
    symbols: Final[int]
    below: Final[int]
    overhead: Final[int]
    refused: Final[int]
    left_below: Final[int]
    left_above: Final[int]
    left_gaps: Final[int]
    left_empty: Final[int]
    left_far: Final[int]
    strays: Final[list[str]]
    rooms: Final[list[PlanRoom]]


class ExportSummary:
    elements: Final[int]
    meshes: Final[int]
    missing: Final[int]
    lost: Final[str]


class Model:
    def __init__(self, source: Any, cache: int, unlimited: bool, threads: int = 1) -> None: ...
    def close(self) -> None: ...
    def __enter__(self) -> Model: ...
    def __exit__(self, *raised: object) -> None: ...
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[Element]: ...
    def __getitem__(self, guid_or_place: str | _Place) -> Element: ...
    def __contains__(self, guid: str) -> bool: ...
    closed: Final[bool]
    path: Final[str]
    title: Final[str]
    remark: Final[str]
    version: Final[int]
    bytes: Final[int]
    floors: Final[list[Floor]]
    classes: Final[dict[str, int]]
    damage: Final[list[Damage]]
    def verify(self, progress: _Progress = None) -> list[Damage]: ...
    @overload
    def find(self, *, guid: str) -> Element: ...
    @overload
    def find(self, *, name: str | None = None, cls: _Names = None, floor: _Floor = None,
             where: _Where = None) -> list[Element]: ...
    def shapes(self, *, cls: _Names = None, floor: _Floor = None, where: _Where = None,
               rooms: bool = True, normals: _Normals = None, crease_angle: float = ...,
               curves: bool = False, chord_error: float = 0.001,
               progress: _Progress = None) -> Shapes: ...
    def plan(self, floor: _Floor = None, title: str = "", progress: _Progress = None, *,
             cut_height: float = 1.2, depth: float = 0.5, all: bool = False, roof: bool = False,
             zones: bool = False, paper: str = "", scale: float = 0.0,
             format: Literal["svg", "pdf", "dxf"] = "svg") -> Plan: ...
    def preview(self) -> _Pixels | None: ...
    def render(self, *, width: int = 640, height: int = 480, rooms: bool = False,
               unlimited: bool = False, progress: _Progress = None) -> _Pixels: ...
    def export(self, path: _Path, *, cls: _Names = None, floor: _Floor = None,
               where: _Where = None, rooms: bool = False, salvage: bool = False,
               merge: bool = False, properties: bool = True, normals: _Normals = None,
               crease_angle: float = ..., edges: bool = False, instances: bool = False,
               quantize: bool = False, compress: bool = False,
               progress: _Progress = None) -> ExportSummary: ...


class Difference:
    kind: Final[Literal["added", "removed", "changed", "moved", "renamed"]]
    subject: Final[Literal["floor", "element"]]
    in_a: Final[int | _Place | None]
    in_b: Final[int | _Place | None]
    name: Final[str]
    guid: Final[str]
    cls: Final[str]
    changes: Final[dict[str, tuple[Any, Any]]]
    properties: Final[dict[str, tuple[str | None, str | None]]]
    classes: Final[dict[str, tuple[str | None, str | None]]]
    fields: Final[list[str]]
    field_values: Final[dict[str, tuple[str | None, str | None]]]
    geometry: Final[bool]
    distance: Final[float | None]


class PackWarning:
    kind: Final[str]
    text: Final[str]
    lost: Final[bool]
    count: Final[int]
    where: Final[list[str]]


class FileFault:
    path: Final[str]
    is_damaged: Final[bool]
    reason: Final[str]


class Table:
    columns: Final[list[str]]
    faults: Final[list[FileFault]]
    def __len__(self) -> int: ...
    @overload
    def __getitem__(self, row: int) -> tuple[None | int | float | str, ...]: ...
    @overload
    def __getitem__(self, column: str) -> list[None | int | float | str]: ...
    def __arrow_c_stream__(self, requested_schema: object = None) -> object: ...
    def to_pandas(self) -> Any: ...


class PackReport:
    def __init__(self) -> None: ...
    schema: Final[str]
    warnings: Final[list[PackWarning]]
    types: Final[dict[str, tuple[int, int, int]]]
    lost: Final[str]
    floors: Final[int]
    elements: Final[int]
    shapes: Final[int]
    placements: Final[int]
    notes: Final[list[str]]


class Writer:
    def __init__(self, path: _Path, *, title: str = "", remark: str = ..., building: str = "",
                 building_guid: str = "", site: str = "", site_guid: str = "",
                 format_version: int = 4, fast: bool = False, seal: bool = False) -> None: ...
    def floor(self, name: str, elevation: float = 0.0, height: float = 0.0) -> int: ...
    @overload
    def shape(self, points: Mesh) -> int: ...
    @overload
    def shape(self, points: npt.ArrayLike, triangles: npt.ArrayLike,
              look: Look | None = None) -> int: ...
    def element(self, guid: str, cls: str, name: str = "", *, floor: int | None = None,
                shapes: Iterable[int | tuple[int, npt.ArrayLike]] = (),
                properties: (Mapping[str, str | bool | float | Property] | Iterable[Property]
                             | None) = None,
                materials: Sequence[Material] = (), type: str = "", predefined_type: str = "",
                parents: Sequence[str] = (), group: str = "") -> None: ...
    def preview(self, picture: _Pixels) -> None: ...
    def finish(self) -> None: ...
    def __enter__(self) -> Writer: ...
    def __exit__(self, *raised: object) -> None: ...


def png(picture: _Pixels) -> bytes: ...
def import_formats(importer: _Path | None = None) -> list[str]: ...
