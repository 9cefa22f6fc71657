# SPDX-License-Identifier: MIT
"""Runs the commands of the pages: page_commands.py VXCLSS SOURCE_TREE [--long].

Each page gets a folder of its own with the tree's examples, vxclss on the PATH and the files that
its reader is told to have; its commands run there in the page's order. With --long also those that
build and install from a copy of the tree. A command that no rule below knows fails the test.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

# Pages whose blocks another test runs, which tells the page by its name.
ELSEWHERE = {
    "docs/picture_example.md": "tests/examples/inspect_parts/run_test.sh",
    "docs/python_tutorial.md": "python/tests/test_tutorial.py",
}

# What takes minutes, other software or a clock: beginnings of commands and where they are run.
BY_HAND = {
    "./run.sh": "by hand, before a release",
    "./test.sh": ".ci/run",
    "bench/peers/run.sh": "by hand, where docs/performance.md is renewed",
    "build/peers/bench/": "by hand, where docs/performance.md is renewed",
    "cmake --preset release && cmake --build --preset release": ".ci/run",
    "build/release/bench/vxclss_bench": "by hand",
    "examples/dask_classify.py": "python/tests/test_dask.py",
    "./setup.sh --packages": ".ci/run --long",
    "packaging/": ".ci/run --long",
    "sudo apt-get install ./build/packages": "packaging/try_in_clean_root.sh",
    "cmake --build build/dev --target update_abi": "by hand, with a release",
    "./setup.sh --python": ".ci/run",
    "/usr/bin/python3 -m venv": "python/tests/test_install.py",
    "build/env/bin/pip install": "python/tests/test_install.py",
}

# Commands of a host that builds against an installed tree: run with --long.
LONG = ("cmake -S . -B build/install", "cmake --build build/install", "cmake --install",
        "export PKG_CONFIG_PATH", "g++ -std=c++17 classify_parts.cpp", "LD_LIBRARY_PATH=")

# Commands whose exit code tells something, as their page says.
CODES = {"vxclss diff parts.model strict.model": 1}

PARTS = "width,height,scratches,kind\n" + "".join(
    f"{10 + i % 5},{20 + 2 * (i % 5) + i % 3},{i % 4 if kind == 'good' else 4 + i % 7},{kind}\n"
    for kind in ("good", "crack") for i in range(15))


def files_of(page, tree):
    """What the reader of a page has at hand, by name."""
    iris = (tree / "examples/data/iris.csv").read_text(encoding="utf-8")
    if page == "docs/command_line.md":
        return {"iris.csv": iris, "new.csv": iris, "parts.csv": PARTS}
    return {}


def commands_of(text):
    for block in re.findall(r"(?ms)^ *```sh\n(.*?)^ *```$", text):
        for line in block.replace("\\\n", " ").split("\n"):
            line = re.sub(r"\s+#.*", "", " ".join(line.split()))
            if line:
                yield line


def run(lines, folder, environment):
    """Runs the commands in one shell; gives how many there were, or ends the test."""
    for command in lines:
        wanted = CODES.get(command, 0)
        # What an earlier command exported stands in the file "exports".
        script = f"touch exports; . ./exports; {command}"
        if command.startswith("export "):
            script = f"echo {command!r} >> exports"
        done = subprocess.run(["bash", "-euo", "pipefail", "-c", script], cwd=folder,
                              env=environment, capture_output=True, text=True, timeout=1800)
        if done.returncode != wanted:
            sys.exit(f"page_commands: exit code {done.returncode} of {command}\n{done.stderr}")
    return len(lines)


def run_page(page, tree, tool, scratch):
    folder = scratch / page.replace("/", "-")
    folder.mkdir()
    (folder / "examples").symlink_to(tree / "examples")
    (folder / "build/release/tools").mkdir(parents=True)
    (folder / "build/release/tools/vxclss").symlink_to(tool)
    for name, content in files_of(page, tree).items():
        (folder / name).write_text(content, encoding="utf-8")
    lines = []
    for command in commands_of((tree / page).read_text(encoding="utf-8")):
        if command.startswith(tuple(BY_HAND)) or command.startswith(LONG):
            continue
        if not re.match(r"(build/release/tools/|source <\(build/release/tools/)?vxclss ", command):
            sys.exit(f"page_commands: no rule runs what {page} says: {command}")
        if "| man" in command and shutil.which("man") is None:
            continue
        lines.append(command)
    environment = dict(os.environ, MANPAGER="cat",
                       PATH=f"{folder}/build/release/tools:{os.environ['PATH']}")
    return run(lines, folder, environment)


def run_long(page, tree, scratch):
    lines = [command for command in commands_of((tree / page).read_text(encoding="utf-8"))
             if command.startswith(LONG)]
    if not lines:
        return 0
    copy = scratch / "tree"
    shutil.copytree(tree, copy, ignore=shutil.ignore_patterns("build", ".git"))
    shutil.copyfile(tree / "examples/classify_parts.cpp", copy / "classify_parts.cpp")
    (scratch / "home").mkdir()
    return run(lines, copy, dict(os.environ, HOME=str(scratch / "home")))


def main():
    tool, tree = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    pages = ["README.md", "CHANGELOG.md"]
    pages += sorted(f"docs/{path.name}" for path in (tree / "docs").glob("*.md"))
    with tempfile.TemporaryDirectory() as name:
        scratch = pathlib.Path(name)
        if sys.argv[3:] == ["--long"]:
            count = run_long("README.md", tree, scratch)
            print(f"README.md: {count} commands of a host's build run")
            return
        for page in pages:
            if page not in ELSEWHERE:
                print(f"{page}: {run_page(page, tree, tool, scratch)} commands run")
            elif pathlib.Path(page).name not in (tree / ELSEWHERE[page]).read_text(encoding="utf-8"):
                sys.exit(f"page_commands: {ELSEWHERE[page]} does not name {page}")


main()
