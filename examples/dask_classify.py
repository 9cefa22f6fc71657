#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Classifies a table that is never whole in one process, on several processes.

A scheduler and worker processes are started on the loopback interface. The model travels to them as
archive bytes; each worker makes its partitions of the table from a seed, as it would read them from
a disk of its own, and gives back how often each category was decided and a digest of all answers.
Then this process classifies the same partitions one after another and compares the digests: the
answers are the same bit for bit.
"""

from __future__ import annotations

import argparse
import hashlib
import os
import signal
import sys
import time
import warnings
from dataclasses import dataclass
from typing import Any, Dict, Iterator, List, Tuple

import numpy as np
import numpy.typing as npt
from distributed import Client, LocalCluster, as_completed

import vxclss

CATEGORIES = 5
SEED = 20250101

Rows = npt.NDArray[np.float64]


@dataclass(frozen=True)
class Answers:
    """What comes back of a partition: a few hundred bytes, however many rows it has."""

    digest: str
    counts: Tuple[int, ...]
    right: int
    seconds: float


def rows_of(place: int, rows: int, width: int) -> Tuple[Rows, npt.NDArray[np.int64]]:
    """A partition of the table (rows, width) and its true labels, from its place alone."""
    random = np.random.default_rng([SEED, place])
    truth = random.integers(0, CATEGORIES, rows)
    return random.normal(size=(rows, width)) + 0.5 * truth[:, None], truth


def classify(tool: vxclss.Tool, X: Rows, truth: npt.NDArray[np.int64]) -> Answers:
    start = time.perf_counter()
    answers = tool.run(X)
    seconds = time.perf_counter() - start
    digest = hashlib.sha256()
    for array in (answers.labels, answers.class_scores, answers.match_scores,
                  answers.expected_costs, answers.match_score_factor_logs):
        digest.update(np.ascontiguousarray(array).tobytes())
    counts = np.bincount(answers.labels, minlength=CATEGORIES)
    return Answers(digest.hexdigest(), tuple(counts.tolist()),
                   int((answers.labels == truth).sum()), seconds)


def classify_partition(tool: vxclss.Tool, place: int, rows: int, width: int) -> Answers:
    return classify(tool, *rows_of(place, rows, width))


def trained(technique: str, rows: int, width: int) -> vxclss.Tool:
    X, y = rows_of(-1 % 2 ** 32, rows, width)
    params: vxclss.TrainParams = vxclss.TrainParamsBayesian() if technique == "bayes" \
        else vxclss.TrainParamsKNN(5)
    return vxclss.Tool().train(vxclss.DataProvider(X, y), params)


def partitions(rows: int, size: int) -> Iterator[Tuple[int, int]]:
    """(place, rows) of each partition; the last one may be smaller."""
    for place, first in enumerate(range(0, rows, size)):
        yield place, min(size, rows - first)


class Progress:
    def __init__(self, what: str, partitions: int, rows: int) -> None:
        self._what, self._partitions, self._rows = what, partitions, rows
        self._done = self._done_rows = 0
        self._start = self._shown = time.perf_counter()

    def add(self, rows: int) -> None:
        self._done += 1
        self._done_rows += rows
        now = time.perf_counter()
        if now - self._shown > 1.0 or self._done == self._partitions:
            self._shown = now
            print(f"{self._what}: {self._done} of {self._partitions} partitions, "
                  f"{self._done_rows / (now - self._start):,.0f} rows/s", file=sys.stderr)


def kill_one(client: Client) -> None:
    pids: Dict[str, int] = client.run(os.getpid)
    address, pid = sorted(pids.items())[0]
    print(f"killing the worker at {address}, process {pid}", file=sys.stderr)
    os.kill(pid, signal.SIGKILL)


def on_workers(data: bytes, options: argparse.Namespace) -> Dict[int, Answers]:
    """The answers of all partitions, by place."""
    wanted = list(partitions(options.rows, options.partition))
    found: Dict[int, Answers] = {}
    # Rows and models of some size are in the tasks on purpose: they survive any worker's death.
    warnings.filterwarnings("ignore", "Large object of size|.*Consider scattering")
    with LocalCluster(n_workers=options.workers, threads_per_worker=1, processes=True,
                      host="127.0.0.1", dashboard_address=None) as cluster, \
            Client(cluster) as client:
        client.wait_for_workers(options.workers)
        # A task of its own, so that the scheduler can have it made again if its workers die.
        tool = client.submit(vxclss.loads, data, vxclss.Tool)
        waiting = iter(wanted)
        sizes = dict(wanted)
        progress = Progress(f"{options.workers} workers", len(wanted), options.rows)
        places: Dict[Any, int] = {}

        def send() -> List[Any]:
            for place, rows in waiting:
                if options.ship:
                    future = client.submit(classify, tool,
                                           *rows_of(place, rows, options.width), pure=False)
                else:
                    future = client.submit(classify_partition, tool, place, rows, options.width,
                                           pure=False)
                places[future.key] = place
                return [future]
            return []

        # A few partitions a worker are under way at any time, however many there are in all.
        queue = as_completed([future for _ in range(3 * options.workers) for future in send()])
        kill_at = len(wanted) // 3 if options.kill else -1
        for future in queue:
            place = places.pop(future.key)
            found[place] = future.result()
            progress.add(sizes[place])
            queue.update(send())
            if len(found) - 1 == kill_at:
                kill_one(client)
        # A worker that is started anew while the cluster closes would complain.
        client.wait_for_workers(options.workers)
    return found


def in_one_process(tool: vxclss.Tool, options: argparse.Namespace) -> Dict[int, Answers]:
    wanted = list(partitions(options.rows, options.partition))
    progress = Progress("one process", len(wanted), options.rows)
    found = {}
    for place, rows in wanted:
        found[place] = classify_partition(tool, place, rows, options.width)
        progress.add(rows)
    return found


def parsed(arguments: List[str]) -> argparse.Namespace:
    def count(text: str) -> int:
        number = float(text)
        if not 1 <= number < 2.0 ** 63:
            raise argparse.ArgumentTypeError(f"{text} is not at least 1 and below 2^63")
        return int(number)

    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--rows", type=count, default=4_000_000, help="rows of the table (default 4e6)")
    add("--partition", type=count, default=100_000, help="rows of a partition (default 1e5)")
    add("--width", type=count, default=16, help="measurements of a row (default 16)")
    add("--workers", type=count, default=2, help="worker processes (default 2)")
    add("--technique", choices=["bayes", "knn"], default="bayes")
    add("--train", type=count, default=2_000, help="rows that the model is trained on")
    add("--ship", action="store_true",
        help="send the rows to the workers instead of having them make their own")
    add("--kill", action="store_true",
        help="kill a worker after a third of the partitions; nothing is lost")
    add("--no-check", dest="check", action="store_false",
        help="leave out the comparison with one process")
    return parser.parse_args(arguments)


def main(arguments: List[str]) -> int:
    options = parsed(arguments)
    tool = trained(options.technique, options.train, options.width)
    data = tool.to_bytes()
    start = time.perf_counter()
    found = on_workers(data, options)
    seconds = time.perf_counter() - start
    busy = sum(answers.seconds for answers in found.values())
    counts = np.sum([answers.counts for answers in found.values()], axis=0)
    right = sum(answers.right for answers in found.values())
    print(f"model: {len(data)} bytes")
    print(f"rows: {options.rows} in {len(found)} partitions, {counts.tolist()} by category, "
          f"{100.0 * right / options.rows:.2f} % right")
    print(f"time: {seconds:.1f} s with starting and stopping, "
          f"{options.rows / busy:,.0f} rows/s a worker while it classifies")
    if not options.check:
        return 0
    expected = in_one_process(tool, options)
    wrong = [place for place in expected
             if place not in found or found[place].digest != expected[place].digest]
    if wrong or len(found) != len(expected):
        print(f"different: partitions {wrong}")
        return 1
    print(f"equal: all {len(expected)} partitions, bit for bit what one process gives")
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main(sys.argv[1:]))
    except KeyboardInterrupt:
        sys.exit(130)
