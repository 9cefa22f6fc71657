#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""How fast the Python estimators are beside scikit-learn's, in one run.

Prints medians of processor time and the time of vxclss as a part of the other's. Both sides get the
same arrays and one thread, and take turns, so ratios hold on a machine that does other things too.
What two threads gain is a matter of the clock, and needs a machine that does nothing else. Two
processes of one thread each, which share nothing, tell what the machine's processors give at most.
"""

from __future__ import annotations

import os

os.environ["OMP_NUM_THREADS"] = os.environ["OPENBLAS_NUM_THREADS"] = "1"

import argparse
import multiprocessing
import platform
import statistics
import time
from typing import Any, Callable, Dict, List

import numpy as np
import sklearn  # type: ignore[import]
from sklearn.naive_bayes import GaussianNB  # type: ignore[import]
from sklearn.neighbors import KNeighborsClassifier  # type: ignore[import]

import vxclss
from vxclss.sklearn import BayesClassifier, KNNClassifier

WIDTH = 16
CATEGORIES = 5


def seconds(calls: Dict[str, Callable[[], Any]], repeats: int, inner: int = 1,
            clock: Callable[[], float] = time.process_time) -> Dict[str, float]:
    """Median seconds of each call, the calls taking turns."""
    times: Dict[str, List[float]] = {name: [] for name in calls}
    for call in calls.values():
        call()
    for _ in range(repeats):
        for name, call in calls.items():
            start = clock()
            for _ in range(inner):
                call()
            times[name].append((clock() - start) / inner)
    return {name: statistics.median(measured) for name, measured in times.items()}


def two_processes(work: Callable[[], Any], repeats: int) -> float:
    """Median seconds of `work` where two processes do it at the same time."""
    context = multiprocessing.get_context("fork")
    together = context.Barrier(2)
    answers = context.SimpleQueue()

    def go() -> None:
        work()
        times = []
        for _ in range(repeats):
            together.wait()
            start = time.perf_counter()
            work()
            times.append(time.perf_counter() - start)
        answers.put(times)

    processes = [context.Process(target=go) for _ in range(2)]
    for process in processes:
        process.start()
    times = [answers.get() for _ in processes]
    for process in processes:
        process.join()
    return statistics.median(max(pair) for pair in zip(*times))


def shown(what: str, times: Dict[str, float], unit: str = "ms") -> None:
    factor = {"ms": 1e3, "us": 1e6}[unit]
    (first, ours), (second, theirs) = times.items()
    print(f"{what:<46} {first} {factor * ours:9.2f} {unit}   {second} {factor * theirs:9.2f} {unit}"
          f"   {ours / theirs:7.3f}")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rows", type=int, default=100_000, help="rows of a query")
    parser.add_argument("--neighbour-rows", type=int, default=10_000,
                        help="rows of a query of nearest neighbours, whose time scikit-learn's "
                             "side dominates; 100000 for the whole")
    parser.add_argument("--train", type=int, default=2_000, help="training rows")
    parser.add_argument("--repeats", type=int, default=5)
    options = parser.parse_args()

    random = np.random.default_rng(1)

    def rows(count: int) -> Any:
        y = random.integers(0, CATEGORIES, count)
        return random.normal(size=(count, WIDTH)) + 0.5 * y[:, None], y

    X, y = rows(options.train)
    queries, _ = rows(options.rows)
    few = queries[:options.neighbour_rows]
    one = queries[:1]
    print(f"python {platform.python_version()}, numpy {np.__version__}, scikit-learn "
          f"{sklearn.__version__}, vxclss {vxclss.__version__}, {os.cpu_count()} processors, "
          f"load {os.getloadavg()[0]:.1f}")
    print(f"{options.train} training rows, {WIDTH} measurements, {CATEGORIES} classes, "
          f"median of {options.repeats}")

    bayes, gauss = BayesClassifier(frequencies="empirical").fit(X, y), GaussianNB().fit(X, y)
    assert (bayes.predict(queries) == gauss.predict(queries)).mean() > 0.999
    for method in ("predict", "predict_proba"):
        ours, theirs = getattr(bayes, method), getattr(gauss, method)
        shown(f"Bayes, {method} of {options.rows} rows", seconds(
            {"vxclss": lambda: ours(queries), "GaussianNB": lambda: theirs(queries)},
            options.repeats))
    shown("Bayes, predict of one row", seconds(
        {"vxclss": lambda: bayes.predict(one), "GaussianNB": lambda: gauss.predict(one)},
        options.repeats, 200), "us")
    pattern = vxclss.FeaturePattern(one[0])
    shown("  without the checks of an estimator", seconds(
        {"tool.run": lambda: bayes.tool_.run(pattern), "GaussianNB": lambda: gauss.predict(one)},
        options.repeats, 200), "us")

    nearest = KNNClassifier(5).fit(X, y)
    for algorithm in ("auto", "brute"):
        theirs_k = KNeighborsClassifier(5, algorithm=algorithm, n_jobs=1).fit(X, y)
        assert (nearest.predict(few[:500]) == theirs_k.predict(few[:500])).all()
        shown(f"5 neighbours, predict of {len(few)} rows, {algorithm}", seconds(
            {"vxclss": lambda: nearest.predict(few), "KNeighbors": lambda: theirs_k.predict(few)},
            min(options.repeats, 3)))
        shown(f"5 neighbours, predict of one row, {algorithm}", seconds(
            {"vxclss": lambda: nearest.predict(one), "KNeighbors": lambda: theirs_k.predict(one)},
            options.repeats, 100), "us")

    # Enough rows that starting the threads doesn't count.
    many = np.tile(queries, (5, 1))
    for name, tool, asked in (("Bayes", bayes.tool_, many), ("5 neighbours", nearest.tool_, few)):
        times = seconds({"two": lambda: tool.run(asked, n_jobs=2),
                         "one": lambda: tool.run(asked, n_jobs=1)}, options.repeats,
                        clock=time.perf_counter)
        halves = two_processes(lambda: tool.run(asked[:len(asked) // 2]), options.repeats)
        print(f"{name}, {len(asked)} rows: two threads are {times['one'] / times['two']:.2f} times "
              f"as fast as one, two processes {times['one'] / halves:.2f} times")


if __name__ == "__main__":
    main()
