# SPDX-License-Identifier: MIT
"""The tutorial page does what it says: its blocks are run in order, and print what stands there."""

import contextlib
import io
import os
import pathlib
import re
import shutil
import subprocess

import pytest

pytest.importorskip("matplotlib")
pytest.importorskip("sklearn")
import vxclss

ROOT = pathlib.Path(__file__).parents[2]
PAGE = ROOT / "docs" / "python_tutorial.md"
BLOCKS = re.findall(r"^```(\w+)\n(.*?)^```$", PAGE.read_text(encoding="utf-8"), re.M | re.S)


def after(language, part):
    """Index of the block of that language in which the part stands."""
    return next(i for i, (kind, code) in enumerate(BLOCKS) if kind == language and part in code)


@pytest.fixture(scope="module")
def session(tmp_path_factory):
    """A folder in which all Python blocks were run, and what each of them printed."""
    folder, namespace, printed = tmp_path_factory.mktemp("tutorial"), {}, {}
    before = os.getcwd()
    os.chdir(folder)
    try:
        for i, (kind, code) in enumerate(BLOCKS):
            if kind == "python":
                output = io.StringIO()
                with contextlib.redirect_stdout(output):
                    exec(compile(code, f"{PAGE.name}, block {i}", "exec"), namespace)
                printed[i] = output.getvalue()
    finally:
        os.chdir(before)
    return folder, printed


def test_python_blocks_print_what_the_page_says(session):
    _, printed = session
    assert len(printed) >= 7
    for i, output in printed.items():
        expected = BLOCKS[i + 1][1] if BLOCKS[i + 1][0] == "text" else ""
        assert output == expected


def test_pictures_are_made(session):
    folder, _ = session
    for name in ("confusion.png", "reject.png"):
        assert (folder / name).read_bytes().startswith(b"\x89PNG")
    assert (ROOT / "docs" / "images" / "python_confusion.png").exists()


def test_the_command_prints_what_the_page_says(session, command):
    folder, _ = session
    i = after("sh", "vxclss run")
    path = os.pathsep.join([str(pathlib.Path(command).parent), os.environ["PATH"]])
    done = subprocess.run(["sh", "-ec", BLOCKS[i][1]], cwd=folder, capture_output=True, text=True,
                          env={**os.environ, "PATH": path})
    assert done.returncode == 0, done.stderr
    assert done.stdout == BLOCKS[i + 1][1]


def libraries():
    """Folders of the libraries that the module was built with."""
    listed = subprocess.run(["ldd", vxclss._core.__file__], capture_output=True, text=True,
                            env={**os.environ, "LD_PRELOAD": ""}).stdout
    return sorted({str(pathlib.Path(file).parent)
                   for file in re.findall(r"=> (\S*libvx\S+)", listed)})


def headers(folder):
    """Folders of headers: the tree's, and the one that the build made."""
    made = next((above / "include" for above in pathlib.Path(folder).parents
                 if (above / "include" / "vxclss" / "version.h").exists()), None)
    return [ROOT / "include", ROOT / "foundation" / "include"] + ([made] if made else [])


def test_the_program_prints_what_the_page_says(session):
    folder, _ = session
    folders = libraries()
    if not shutil.which("g++") or not folders or "asan" in os.environ.get("LD_PRELOAD", ""):
        pytest.skip("needs g++ and the shared libraries, without sanitizers")
    (folder / "digits.cpp").write_text(BLOCKS[after("cpp", "digits.model")][1])
    i = after("sh", "g++ -std")
    build, run = BLOCKS[i][1].splitlines()
    options = [f"-I{each}" for each in headers(folders[0] + "/x")]
    options += [f"{flag}{each}" for each in folders for flag in ("-L", "-Wl,-rpath,")]
    subprocess.run(["sh", "-ec", f"{build} {' '.join(options)}"], cwd=folder, check=True)
    done = subprocess.run(["sh", "-ec", run], cwd=folder, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert done.stdout == BLOCKS[i + 1][1]
