#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Changes the libraries' sources one place at a time and tells which changes no test notices."""

import argparse
import fnmatch
import json
import os
import pathlib
import signal
import sys
import time

import mutants
import workshop

TREE = pathlib.Path(__file__).resolve().parents[2]
SURVIVORS = pathlib.Path(__file__).with_name("survivors.md")
SOURCES = ["foundation/*.cpp", "foundation/*.h", "foundation/kernel/*.cpp", "foundation/kernel/*.h",
           "clss/**/*.cpp", "clss/**/*.h"]
# The quickest first.
PROGRAMS = ["foundation_tests", "thread_tests", "reliability_tests", "fuzz_tests", "vxclss_tests"]
CAUGHT = {"failed", "crashed", "hung"}
# No test near the source noticed; the others were not tried yet.
UNNOTICED = "unnoticed"
ALIVE = {UNNOTICED, "survived"}
GOAL = 95.0

EPILOG = """\
How it goes. The tree is copied to DIR/src and built in DIR/out; the working tree is never changed.
A mutant is one operator, constant or condition of one source that reads differently. Each source
gets its share of COUNT by its size, at least one, in an order that the seed decides. A mutant that
doesn't compile, or whose machine code is that of the original, is replaced by the next one of its
source. The others meet the tests of the same path, then those of the folder, until a test fails,
the program breaks down, or it takes five times its processor time. What went unnoticed there, and
has no explanation yet, meets all other tests in the end.

DIR/state.json keeps every outcome. A run that is started again goes on where the last one stopped;
what changed in a source is tried anew. After adding tests, try the survivors again with --retry.

survivors.md, beside this script, lists the survivors that make no difference, so that no test could
notice them: a line with the path, one with the line before (- ...), one with the line after (+ ...),
and why. The exit code is 0 if at least 95 % of the others are caught.

examples
  run.py                                   all, or the rest of it
  run.py --only 'clss/ruletable/*' --count 40
  run.py --retry                           unexplained survivors, against today's tests
  run.py --report                          what is known so far
  run.py --show 'foundation/random.cpp'    what could be changed in a file, in the drawn order
"""


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, epilog=EPILOG,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=240, help="mutants in all (%(default)s)")
    parser.add_argument("--seed", type=int, default=1, help="of the choice (%(default)s)")
    parser.add_argument("--only", metavar="GLOB", default="*", help="sources whose path matches")
    parser.add_argument("--dir", default=TREE / "build" / "mutation", type=pathlib.Path,
                        help="where the copy and the outcomes are (build/mutation)")
    parser.add_argument("--jobs", type=int, default=2, help="compilers at once (%(default)s)")
    parser.add_argument("--keep", action="store_true",
                        help="take the copy as it is, not what has changed in the tree since")
    parser.add_argument("--trust", action="store_true",
                        help="don't run the tests on the unchanged sources first")
    parser.add_argument("--retry", action="store_true", help="try the unexplained survivors again")
    parser.add_argument("--report", action="store_true", help="only print what is known")
    parser.add_argument("--show", metavar="GLOB", help="only list what can be changed")
    return parser.parse_args()


def sources(tree, only):
    """Path and text of each source that is changed."""
    found = {}
    for pattern in SOURCES:
        for file in sorted(tree.glob(pattern)):
            path = file.relative_to(tree).as_posix()
            if fnmatch.fnmatch(path, only):
                found[path] = file.read_text()
    return found


def stages(path, shop):
    """(program, filter) of the tests near a source, the likeliest first, and of all others."""
    first = "foundation_tests" if path.startswith("foundation/") else "vxclss_tests"
    folder, stem = os.path.split(os.path.splitext(path)[0])
    words = stem.split("_")
    own = ""
    while words and not own:
        own = shop.suites(f"tests/{folder}/{'_'.join(words)}*_test.cpp")
        words.pop()
    around = shop.suites(f"tests/{folder}/*_test.cpp")
    beside = f"{around}-{own}" if own else around
    far = f"*-{around}" if around else "*"
    # Classes know nothing of the foundation's tests.
    others = [program for program in PROGRAMS[1:] if program != first]
    near = [(program, tests) for tests in (own, beside) if tests for program in [first, *others]]
    wide = [(program, far) for program in PROGRAMS if program in (first, *others)]

    def known(tests):
        return [each for each in tests if shop.usual_seconds(*each) is not None]

    return known(near), known(wide)


def tried(mutant, text, shop, tests, otherwise):
    """The outcome of one mutant: "no code", "same code", how a test ended, or `otherwise`."""
    path, programs = mutant.path, []
    before = shop.write(path, mutant.apply(text))
    try:
        shop.build(shop.library_objects(path))
        if shop.is_same_code(path):
            return "same code", ""
        for program, filter_ in tests:
            if program not in programs:
                programs.append(program)
                shop.build([program])
            end = shop.run(program, filter_)
            if end in CAUGHT:
                return end, f"{program} {filter_}"
        return otherwise, ""
    except workshop.BuildError:
        return "no code", ""
    finally:
        shop.restore(path, *before, programs)


class State:
    """The outcomes so far, on disk after each."""

    def __init__(self, file):
        self.file = file
        self.outcomes = json.loads(file.read_text()) if file.exists() else {}

    def get(self, mutant):
        return self.outcomes.get(mutant.key, {}).get("outcome")

    def put(self, mutant, text, outcome, stage, seconds):
        before, after = mutant.lines(text)
        self.outcomes[mutant.key] = {
            "outcome": outcome, "by": stage, "seconds": round(seconds, 1), "path": mutant.path,
            "line": mutant.line, "before": before, "after": after}
        new = self.file.with_suffix(".new")
        new.write_text(json.dumps(self.outcomes, indent=1))
        new.replace(self.file)


def chosen(files, args, state, attempt):
    """The mutants that count. `attempt` gives an outcome that is not known yet, or None."""
    sizes = {path: len(mutants.candidates(path, text)) for path, text in files.items()}
    orders = {path: iter(mutants.drawn(path, files[path], args.seed)) for path in sizes}
    missing = mutants.shares(sizes, args.count)
    counted = []
    # One of each source in turn, so that a run that is stopped has seen them all alike; headers,
    # which many files are compiled anew for, when the others are through.
    while missing:
        quick = [path for path in missing if path.endswith(".cpp")]
        for path in quick or list(missing):
            for mutant in orders[path]:
                outcome = state.get(mutant) or attempt(mutant)
                if outcome in CAUGHT | ALIVE:
                    counted.append(mutant)
                    missing[path] -= 1
                    break
                if outcome is None:
                    missing[path] -= 1
                    break
            else:
                missing[path] = 0
            if missing[path] == 0:
                del missing[path]
    return counted


def explained(file):
    """(path, line before, line after) of each survivor that the list explains."""
    result, path, before = set(), "", ""
    for line in file.read_text().splitlines() if file.exists() else []:
        line = " ".join(line.split())
        if line.startswith(("foundation/", "clss/")):
            path = line
        elif line.startswith("- "):
            before = line[2:]
        elif line.startswith("+ "):
            result.add((path, before, line[2:]))
    return result


def report(counted, state):
    """Prints the outcomes; whether the goal is reached."""
    outcomes = [state.outcomes[mutant.key] for mutant in counted]
    survivors = [each for each in outcomes if each["outcome"] in ALIVE]
    known = explained(SURVIVORS)
    unexplained = 0
    for each in sorted(survivors, key=lambda each: (each["path"], each["line"])):
        has_reason = (each["path"], each["before"], each["after"]) in known
        unexplained += not has_reason
        remark = ", explained" if has_reason else ""
        print(f"\n{each['path']}:{each['line']}: {each['outcome']}{remark}")
        print(f"  - {each['before']}\n  + {each['after']}")
    dropped = [each["outcome"] for each in state.outcomes.values()]
    caught = len(outcomes) - len(survivors)
    share = 100.0 * caught / max(len(outcomes), 1)
    noticeable = 100.0 * caught / max(caught + unexplained, 1)
    print(f"\n{len(outcomes)} mutants of {len({each['path'] for each in outcomes})} sources: "
          f"{share:.1f} % caught; {len(survivors)} survived, {unexplained} of them unexplained; "
          f"{noticeable:.1f} % caught of those that make a difference")
    print("caught by: " + ", ".join(
        f"{sum(each['outcome'] == end for each in outcomes)} {end}" for end in sorted(CAUGHT)))
    print(f"not counted: {dropped.count('no code')} that don't compile, "
          f"{dropped.count('same code')} with the code of the original")
    return noticeable >= GOAL


def main():
    args = arguments()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("stopped"))
    tree = args.dir / "src" if args.keep else TREE
    files = sources(tree, args.show or args.only)
    if not files:
        sys.exit("no source matches")
    if args.show:
        for path, text in files.items():
            for mutant in mutants.drawn(path, text, args.seed):
                print("{}:{}\n  - {}\n  + {}".format(path, mutant.line, *mutant.lines(text)))
        return 0
    args.dir.mkdir(parents=True, exist_ok=True)
    state = State(args.dir / "state.json")
    if args.report:
        return 0 if report(chosen(files, args, state, lambda mutant: None), state) else 1

    shop = workshop.Workshop(tree, args.dir, args.jobs)
    print("building the copy", flush=True)
    if not args.keep:
        shop.refresh()
    shop.start(PROGRAMS)
    print("running the tests unchanged", flush=True)
    for program in PROGRAMS:
        shop.measure(program, args.trust)
    for path, text in files.items():
        if (shop.src / path).read_text() != text:
            sys.exit(f"{path} was changed meanwhile; start again")

    def attempt(mutant, is_wide=False):
        start = time.time()
        text = files[mutant.path]
        tests = stages(mutant.path, shop)[is_wide]
        outcome, test = tried(mutant, text, shop, tests, "survived" if is_wide else UNNOTICED)
        state.put(mutant, text, outcome, test, time.time() - start)
        print("{:9} {}:{}  {}  ->  {}".format(outcome, mutant.path, mutant.line,
                                              *mutant.lines(text)), flush=True)
        return outcome

    reasons = explained(SURVIVORS)

    def is_open(mutant, outcomes):
        change = (mutant.path, *mutant.lines(files[mutant.path]))
        return state.get(mutant) in outcomes and change not in reasons

    if args.retry:
        for mutant in chosen(files, args, state, lambda mutant: None):
            if is_open(mutant, ALIVE):
                attempt(mutant)
    counted = chosen(files, args, state, attempt)
    for mutant in counted:
        if is_open(mutant, {UNNOTICED}):
            attempt(mutant, is_wide=True)
    return 0 if report(counted, state) else 1


if __name__ == "__main__":
    sys.exit(main())
