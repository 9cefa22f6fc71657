# SPDX-License-Identifier: MIT
import os
import pathlib
import pickle
import re
import signal
import subprocess
import sys
import time

import numpy as np
import pytest

pytest.importorskip("distributed")
from conftest import bits, mixture, trained

EXAMPLE = pathlib.Path(__file__).parents[2] / "examples" / "dask_classify.py"


def run(*arguments):
    """Runs the example in a session of its own, of which nothing may be left afterwards."""
    example = subprocess.Popen([sys.executable, EXAMPLE, *arguments], stdout=subprocess.PIPE,
                               stderr=subprocess.PIPE, text=True, start_new_session=True)
    try:
        output, errors = example.communicate(timeout=900)
    finally:
        # What Python's multiprocessing keeps beside the workers ends when their pipes do.
        deadline = time.monotonic() + 60.0
        while (left := members(example.pid)) and time.monotonic() < deadline:
            time.sleep(0.1)
        if left:
            os.killpg(example.pid, signal.SIGKILL)
    assert left == []
    return subprocess.CompletedProcess(example.args, example.returncode, output, errors)


def members(session):
    """The processes of a session that still run."""
    found = []
    for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            state, _, _, of = stat.read_text().rsplit(")", 1)[1].split()[:4]
        except OSError:
            continue
        if int(of) == session and state != "Z":
            found.append(stat.parent.name)
    return found


@pytest.mark.parametrize("technique", ["bayes", "knn"])
def test_workers_answer_bit_for_bit_as_one_process(technique):
    done = run("--rows", "40000", "--partition", "3000", "--technique", technique,
               "--train", "300")
    assert done.returncode == 0, done.stdout + done.stderr
    assert "equal: all 14 partitions, bit for bit what one process gives" in done.stdout
    counted = re.search(r"rows: 40000 in 14 partitions, \[(.*)\]", done.stdout)
    assert sum(map(int, counted.group(1).split(","))) == 40000


def test_a_killed_worker_loses_nothing():
    # Few partitions: the cluster would close while the worker's successor starts.
    done = run("--rows", "12000", "--partition", "2000", "--kill")
    assert done.returncode == 0, done.stdout + done.stderr
    assert "killing the worker at" in done.stderr
    assert "equal: all 6 partitions" in done.stdout
    assert "Traceback" not in done.stderr and "assert not self.closed" not in done.stderr


def test_rows_may_travel_too():
    done = run("--rows", "9000", "--partition", "1000", "--ship")
    assert done.returncode == 0, done.stdout + done.stderr
    assert "equal: all 9 partitions" in done.stdout


def test_the_example_tells_its_options():
    done = run("--help")
    assert done.returncode == 0 and "--kill" in done.stdout
    for count in ("0", "inf", "-inf", "nan", "1e30", "many"):
        refused = run(f"--rows={count}")
        assert refused.returncode == 2 and "error: argument --rows" in refused.stderr


@pytest.mark.parametrize("technique", ["bayes", "knn", "tree"])
def test_a_model_travels_as_its_archive(technique):
    from distributed.protocol import deserialize, serialize
    tool = trained(technique)
    header, frames = serialize(tool)
    assert sum(memoryview(frame).nbytes for frame in frames) < len(tool.to_bytes()) + 200
    assert any(tool.to_bytes() in bytes(frame) for frame in frames)
    assert deserialize(header, frames) == tool
    assert tool.to_bytes() in pickle.dumps(tool)


def test_dask_arrays_are_classified_by_block():
    array = pytest.importorskip("dask.array")
    X, _ = mixture(5000, 4, 3)
    tool = trained("bayes")
    blocks = array.from_array(X, chunks=(700, 4))
    scores = blocks.map_blocks(lambda rows: tool.run(rows).class_scores, chunks=(700, 3),
                               dtype=float, meta=X[:0])
    assert bits(scores.compute(scheduler="synchronous")) == bits(tool.run(X).class_scores)


def test_the_pages_ways_to_spread_rows_agree():
    array = pytest.importorskip("dask.array")
    from joblib import Parallel, delayed
    X, _ = mixture(3000, 4, 3)
    tool = trained("bayes")
    labels = tool.decide(X)
    parts = Parallel(n_jobs=2)(delayed(tool.decide)(rows) for rows in np.array_split(X, 8))
    assert np.concatenate(parts).tolist() == labels.tolist()
    blocks = array.from_array(X, chunks=(700, 4))
    decided = blocks.map_blocks(tool.decide, dtype=np.int64, drop_axis=1)
    assert decided.compute(scheduler="synchronous").tolist() == labels.tolist()
