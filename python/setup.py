"""Makes a wheel: pip wheel --no-build-isolation python/

The wheel holds the libraries and the importer; what these stand on is the system's.
"""

import pathlib
import re
import sys

from skbuild import setup

HERE = pathlib.Path(__file__).resolve().parent
VERSION = re.search(r"project\(\w+ VERSION ([\d.]+)", (HERE.parent / "CMakeLists.txt").read_text())

setup(
    name="zvg",
    version=VERSION[1],
    description="Building models in block files",
    long_description=(HERE.parent / "docs" / "PYTHON.md").read_text(),
    long_description_content_type="text/markdown",
    packages=["zvg"],
    package_data={"zvg": ["_zvg.pyi", "py.typed"]},
    python_requires=">=3.9",
    install_requires=["numpy"],
    cmake_source_dir="..",
    cmake_install_target="install-python-bundle",
    cmake_args=["-DZVG_BUILD_PYTHON=ON", "-DZVG_BUILD_TESTS=OFF", "-DZVG_BUILD_EXAMPLES=OFF",
                f"-DPython_EXECUTABLE={sys.executable}"],
    zip_safe=False)
