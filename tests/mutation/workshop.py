# SPDX-License-Identifier: MIT
"""A copy of the tree in which sources are changed, built and tested."""

import fnmatch
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess

# Seconds of processor time beyond five times what the tests take; a load elsewhere doesn't count.
SPARE_SECONDS = 8
WALL_FACTOR = 15
MEMORY = 6 << 30

SUITE = re.compile(r"^(TYPED_TEST_P|TYPED_TEST|TEST_P|TEST_F|TEST)\(\s*(\w+)", re.MULTILINE)


class BuildError(Exception):
    """The compiler or the linker refused; the text is what it said."""


class Workshop:
    """`folder` holds the copy (src), its build (out) and the compiled originals (originals)."""

    def __init__(self, tree, folder, jobs):
        self.tree = pathlib.Path(tree)
        self.src = pathlib.Path(folder, "src").resolve()
        self.out = pathlib.Path(folder, "out").resolve()
        self.originals = pathlib.Path(folder, "originals").resolve()
        self.jobs = jobs
        self.pending = pathlib.Path(folder, "pending.json").resolve()
        if self.pending.exists():  # a run was killed
            self._put(**json.loads(self.pending.read_text()))
            self.pending.unlink()
        self.dependents = {}
        self.usual = {}

    def refresh(self):
        """Brings the copy up to date."""
        listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard"], cwd=self.tree,
                                check=True, capture_output=True, text=True).stdout.splitlines()
        for name in listed:
            source, copy = self.tree / name, self.src / name
            if not source.is_file():
                continue
            if not copy.is_file() or source.read_bytes() != copy.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(source, copy)
                shutil.copymode(source, copy)

    def start(self, programs):
        """Builds the copy."""
        # Optimised a little, so that changes without effect give the same code; no line tables,
        # so that what comes out depends on nothing else.
        subprocess.run(["cmake", "-S", self.src, "-B", self.out, "-G", "Ninja",
                        "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O1",
                        "-DVXCLSS_BUILD_TOOLS=OFF"], check=True, stdout=subprocess.DEVNULL)
        self.build(["vxfoundation_objects", "vxclss_objects", *programs])
        self._keep_originals()

    def build(self, targets):
        run = subprocess.run(["ninja", "-C", self.out, f"-j{self.jobs}", *targets],
                             capture_output=True, text=True)
        if run.returncode != 0:
            raise BuildError(run.stdout[-4000:])

    def _keep_originals(self):
        shutil.rmtree(self.originals, ignore_errors=True)
        shutil.copytree(self.out, self.originals, ignore=lambda folder, names: [
            name for name in names
            if not name.endswith(".o") and not pathlib.Path(folder, name).is_dir()])
        self.dependents = {}
        listing = subprocess.run(["ninja", "-C", self.out, "-t", "deps"], check=True,
                                 capture_output=True, text=True).stdout
        compiled = None
        for line in listing.splitlines():
            if not line.startswith(" "):
                compiled = line.split(":")[0]
            elif compiled.endswith(".o") and str(self.src) in line:
                path = os.path.relpath(os.path.join(self.out, line.strip()), self.src)
                self.dependents.setdefault(path, []).append(compiled)

    def library_objects(self, path):
        return [name for name in self.dependents.get(path, []) if "_objects.dir/" in name]

    def is_same_code(self, path):
        return all(pathlib.Path(self.out, name).read_bytes() ==
                   pathlib.Path(self.originals, name).read_bytes()
                   for name in self.library_objects(path))

    def _put(self, path, text):
        (self.src / path).write_text(text)

    def write(self, path, text):
        """Changes a source; gives what restore() needs."""
        file = self.src / path
        original, written_at = file.read_text(), file.stat().st_mtime_ns
        self.pending.write_text(json.dumps({"path": path, "text": original}))
        self._put(path, text)
        return original, written_at

    def restore(self, path, original_text, written_at, programs):
        """Undoes write() without compiling again: times are as ninja expects them after a build.

        The source comes last: whoever is interrupted before finds it changed, and builds it anew.
        """
        for name in self.dependents.get(path, []):
            compiled, original = self.out / name, self.originals / name
            when = (compiled if compiled.exists() else original).stat().st_mtime_ns
            shutil.copyfile(original, compiled)
            os.utime(compiled, ns=(when, when))
        for program in programs:
            (self.out / "tests" / program).unlink(missing_ok=True)
        self._put(path, original_text)
        os.utime(self.src / path, ns=(written_at, written_at))
        self.pending.unlink()

    def suites(self, pattern):
        """The GoogleTest filter of the suites in the test files that match, or an empty text."""
        filters = set()
        for file in self.src.glob(pattern):
            for kind, suite in SUITE.findall(file.read_text()):
                filters.update({"TEST": [f"{suite}.*"], "TEST_F": [f"{suite}.*"],
                                "TEST_P": [f"*/{suite}.*"], "TYPED_TEST": [f"{suite}/*.*"],
                                "TYPED_TEST_P": [f"*/{suite}/*.*"]}[kind])
        return ":".join(sorted(filters))

    def measure(self, program, is_trusted):
        """Runs all tests of a program on the original and keeps what each takes.

        Of a trusted program the last times stand, if there are any; a new suite gets a second.
        """
        binary = (self.out / "tests" / program).read_bytes()
        cache = self.out / f"{program}.seconds.json"
        kept = json.loads(cache.read_text()) if cache.exists() else {}
        if is_trusted and kept:
            listed = subprocess.run([self.out / "tests" / program, "--gtest_list_tests"],
                                    check=True, capture_output=True, text=True).stdout
            suites = [line.split(".")[0] for line in listed.splitlines()
                      if line[:1] not in ("", " ") and "." in line.split("#")[0]]
            kept["suites"] = {suite: kept["suites"].get(suite, 1.0) for suite in suites}
        elif kept.get("binary") != hashlib.sha256(binary).hexdigest():
            details = self.out / f"{program}.details.json"
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            code = self._start(program, [f"--gtest_output=json:{details}"], None).wait()
            if code != 0:
                raise BuildError(f"{program} fails on the unchanged sources")
            used = processor_seconds() - processor_seconds(before)
            suites = json.loads(details.read_text())["testsuites"]
            passed = {suite["name"]: float(suite["time"].rstrip("s")) for suite in suites}
            share = used / max(sum(passed.values()), 1e-3)
            kept = {"binary": hashlib.sha256(binary).hexdigest(),
                    "suites": {name: seconds * share for name, seconds in passed.items()}}
            cache.write_text(json.dumps(kept, indent=1))
        self.usual[program] = kept["suites"]

    def usual_seconds(self, program, tests):
        """The processor time of the tests that match, or None if none does."""
        wanted, _, unwanted = tests.partition("-")

        def among(suite, patterns):
            return any(fnmatch.fnmatchcase(suite + ".", pattern) for pattern in patterns.split(":"))

        matching = [seconds for suite, seconds in self.usual[program].items()
                    if among(suite, wanted) and not among(suite, unwanted)]
        return sum(matching) if matching else None

    def _start(self, program, options, seconds):
        def limit():
            os.setsid()
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            if seconds is not None:
                resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds))

        return subprocess.Popen(
            [self.out / "tests" / program, "--gtest_brief=1", *options], cwd=self.out,
            preexec_fn=limit, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            env={**os.environ, "GTEST_FAIL_FAST": "1"})

    def run(self, program, tests):
        """How the tests of a program end: "passed", "failed", "crashed" or "hung"."""
        seconds = int(SPARE_SECONDS + 5 * self.usual_seconds(program, tests))
        process = self._start(program, [f"--gtest_filter={tests}"], seconds)
        try:
            code = process.wait(WALL_FACTOR * seconds)
        except subprocess.TimeoutExpired:
            return "hung"
        finally:
            if process.returncode is None:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
        if code in (-signal.SIGXCPU, -signal.SIGKILL):
            return "hung"
        return "passed" if code == 0 else "crashed" if code < 0 else "failed"


def processor_seconds(usage=None):
    usage = usage or resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime
