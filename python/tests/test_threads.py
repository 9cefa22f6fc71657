# SPDX-License-Identifier: MIT
"""What holds while several threads, or a user at the keyboard, are at work."""

import os
import pathlib
import signal
import subprocess
import sys
import textwrap
import threading
import time

import numpy as np
import pytest

import vxclss
from conftest import bits, mixture, trained


def child(program, **environment):
    """A process that runs the text, which imports vxclss from where this one has it."""
    path = str(pathlib.Path(vxclss.__file__).parent.parent)
    return subprocess.Popen(
        [sys.executable, "-c", textwrap.dedent(program)], text=True,
        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        env={**os.environ, "PYTHONPATH": path, **environment})


def interrupted(program, **environment):
    """What the process prints after a SIGINT that follows its line 'ready'."""
    process = child(program, **environment)
    try:
        assert process.stdout.readline() == "ready\n", process.stderr.read()
        process.send_signal(signal.SIGINT)
        out, err = process.communicate(timeout=120)
    finally:
        process.kill()
    assert process.returncode == 0, err
    return out.splitlines()


# A batch that would take hours; a second thread says when it is under way.
LONG_BATCH = """
    import threading, time
    import numpy as np
    import vxclss

    X = np.random.default_rng(1).normal(size=(200_000, 8))
    tool = vxclss.Tool().train(vxclss.DataProvider(X, np.arange(len(X)) % 3),
                               vxclss.TrainParamsKNN(1))
    rows = np.broadcast_to(X[:1], (200_000_000, 8))

    def announce():
        time.sleep(0.2)
        print("ready", flush=True)

    threading.Thread(target=announce, daemon=True).start()
    try:
        tool.decide(rows, n_jobs={jobs})
        print("finished")
    except KeyboardInterrupt:
        print("interrupted", tool.decide(X[:3]).tolist())
"""


@pytest.mark.parametrize("jobs", [1, 3])
def test_ctrl_c_ends_a_batch_between_rows(jobs):
    assert interrupted(LONG_BATCH.format(jobs=jobs)) == ["interrupted [0, 1, 2]"]


# Rows of 20 million powers each, of an order without shortcuts.
SLOW_ROW = """
    import sys, threading, time
    import numpy as np
    import vxclss

    X = np.random.default_rng(1).normal(size=(300_000, 64))
    tool = vxclss.Tool().train(vxclss.DataProvider(X, np.arange(len(X)) % 3),
                               vxclss.TrainParamsKNN(1, distance_metric=0.05))

    def announce():
        time.sleep(0.1)
        print("ready", flush=True)

    def note(frame, event, function):
        global ended
        if event.startswith("c_") and function.__name__ == "run":
            ended = event

    row = vxclss.FeaturePattern(X[0])
    tool.run(row)  # which tells that it is slow
    threading.Thread(target=announce, daemon=True).start()
    sys.setprofile(note)
    try:
        for _ in range(1000):
            {call}
    except KeyboardInterrupt:
        sys.setprofile(None)
        print("within" if ended == "c_exception" else "after")
"""


@pytest.mark.parametrize("call", ["tool.run(row)", "tool.run(X[:2])", "tool.run(X, n_jobs=2)"])
@pytest.mark.parametrize("environment", [{}, {"VXCLSS_NO_ATTENTION_HANDLER": "1"}])
def test_ctrl_c_ends_a_slow_row_in_its_midst(call, environment):
    within = not environment or call != "tool.run(row)"  # nothing else looks within a single row
    assert interrupted(SLOW_ROW.format(call=call), **environment) == [
        "within" if within else "after"]


def test_a_signals_handler_may_use_the_library_and_let_the_batch_go_on():
    program = """
        import signal, threading, time
        import numpy as np
        import vxclss

        X = np.random.default_rng(1).normal(size=(50_000, 8))
        tool = vxclss.Tool().train(vxclss.DataProvider(X, np.arange(len(X)) % 3),
                                   vxclss.TrainParamsKNN(1))
        seen = []

        def on_signal(number, frame):
            seen.append(tool.decide(X[:3]).tolist())

        signal.signal(signal.SIGINT, on_signal)
        started = threading.Event()

        def announce():
            started.wait()
            print("ready", flush=True)

        threading.Thread(target=announce, daemon=True).start()
        started.set()
        batches = 0
        while not seen:
            assert tool.decide(X[:20_000]).tolist() == (np.arange(20_000) % 3).tolist()
            batches += 1
        print(seen)
    """
    assert interrupted(program) == ["[[0, 1, 2]]"]


def test_other_threads_go_on_while_a_batch_runs():
    X, y = mixture(2000, 8, 3)
    tool = vxclss.Tool().train(vxclss.DataProvider(X, y), vxclss.TrainParamsKNN(1))
    rows = np.broadcast_to(X[:1], (20_000, 8))
    enough = False
    batches = 0

    def work():
        nonlocal batches
        while not enough and batches < 3000:
            tool.decide(rows)
            batches += 1

    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)  # whoever holds the GIL keeps it until it gives it away
    try:
        thread = threading.Thread(target=work)
        thread.start()
        enough = True  # this thread comes here before the end only if a batch gives the GIL away
        thread.join()
    finally:
        sys.setswitchinterval(interval)
    assert batches < 3000


def test_threads_share_a_tool_that_another_one_trains():
    X, y = mixture(400, 4, 3)
    data = [vxclss.DataProvider(X[:200], y[:200]), vxclss.DataProvider(X[200:], y[200:])]
    params = vxclss.TrainParamsKNN(3)
    answers = {bits(vxclss.Tool().train(d, params).run(X).class_scores) for d in data}
    assert len(answers) == 2
    tool = vxclss.Tool().train(data[0], params)
    stop = threading.Event()
    wrong = []

    def run():
        while not stop.is_set():
            if bits(tool.run(X, n_jobs=2).class_scores) not in answers:
                wrong.append("a batch that is of neither training")

    threads = [threading.Thread(target=run) for _ in range(3)]
    for thread in threads:
        thread.start()
    for i in range(60):
        tool.train(data[i % 2], params)
        tool.classifier
        data[0].name = str(i)
    stop.set()
    for thread in threads:
        thread.join()
    assert not wrong


def test_a_classifier_that_runs_cant_be_changed():
    X, y = mixture(3000, 8, 3)
    classifier = vxclss.ClassifierKNN()
    classifier.train(vxclss.DataProvider(X, y), vxclss.TrainParamsKNN(1))
    refused = threading.Event()
    ended = threading.Event()

    def run():
        while not refused.is_set():
            classifier.run(np.broadcast_to(X[:1], (20_000, 8)))
        ended.set()

    thread = threading.Thread(target=run)
    thread.start()
    for _ in range(100_000):
        try:
            classifier.retrain(vxclss.TrainParamsKNN(1))
        except RuntimeError as error:
            assert "this classifier is running" in str(error)
            break
    else:
        pytest.fail("no change was refused")
    refused.set()
    thread.join()
    classifier.retrain(vxclss.TrainParamsKNN(2))


@pytest.fixture(scope="module")
def large():
    """A provider, a tool, a standalone classifier and a density of 100000 rows."""
    X, y = mixture(100_000, 8, 3)
    data = vxclss.DataProvider(X, y)
    classifier = vxclss.ClassifierKNN()
    classifier.train(data, vxclss.TrainParamsKNN())
    return {"X": X, "data": data, "bytes": data.to_bytes(), "classifier": classifier,
            "tool": vxclss.Tool().train(data, vxclss.TrainParamsKNN()),
            "density": trained("bayes").classifier.category_models[0].densities[0]}


@pytest.mark.parametrize("call", [
    lambda it: it["data"].to_bytes(), lambda it: it["tool"].to_bytes(),
    lambda it: it["classifier"].to_bytes(), lambda it: vxclss.DataProvider.from_bytes(it["bytes"]),
    lambda it: it["density"].log_values(it["X"][:, :1]),
    lambda it: vxclss.DataProvider(it["X"], np.zeros(len(it["X"]), int))],
    ids=["to_bytes", "tool", "classifier", "from_bytes", "log_values", "provider"])
def test_other_threads_run_during_a_long_call(large, call):
    # A thread that has the GIL keeps it until it gives it up by itself.
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000.0)
    try:
        for _ in range(20):
            turns, seen = [0], []

            def work():
                before = turns[0]
                call(large)
                seen.append(turns[0] - before)

            thread = threading.Thread(target=work)
            thread.start()
            while not seen:
                turns[0] += 1
                time.sleep(0)
            thread.join()
            if seen[0] > 0:
                return
    finally:
        sys.setswitchinterval(interval)
    pytest.fail("no other thread ran")


def test_what_is_stored_is_not_changed_meanwhile(large):
    data = large["data"]
    table = vxclss.RuleTable([vxclss.Rule([vxclss.FeatureScoreOneSided()] * 2000, label)
                              for label in range(20)])
    one_rule = [vxclss.Rule([vxclss.FeatureScoreIgnore()], 1)]
    provider = vxclss.DataProvider.from_bytes(large["bytes"])
    wanted = {table.to_bytes(), vxclss.RuleTable(one_rule).to_bytes()}
    stored = {"provider": set(), "table": set()}
    ready = threading.Barrier(3)

    def store(name, obj):
        ready.wait()
        for _ in range(5):
            stored[name].add(obj.to_bytes())

    threads = [threading.Thread(target=store, args=pair)
               for pair in (("provider", provider), ("table", table))]
    for thread in threads:
        thread.start()
    pattern = data.feature_pattern(0)
    ready.wait()
    table.train(one_rule)
    while any(thread.is_alive() for thread in threads):
        provider.append(pattern, 7)
    for thread in threads:
        thread.join()
    for text in stored["provider"]:
        other = vxclss.DataProvider.from_bytes(text)
        assert other.labels[:len(data)].tobytes() == data.labels.tobytes()
        assert set(other.labels[len(data):]) <= {7}
    assert stored["table"] <= wanted


def test_an_error_in_a_thread_reaches_the_caller_and_the_tool_goes_on():
    tool = trained("knn")
    X = np.zeros((5000, 4))
    X[4000:, 0] = np.nan
    for _ in range(20):
        with pytest.raises(vxclss.BadFeatures) as caught:
            tool.run(X, n_jobs=4)
        assert caught.value.row == 4000
    assert len(tool.run(X[:4000], n_jobs=4)) == 4000


def test_a_forked_child_runs_batches():
    program = """
        import os, sys
        import numpy as np
        import vxclss

        X = np.arange(8.0).reshape(4, 2)
        tool = vxclss.Tool().train(vxclss.DataProvider(X, [0, 1, 2, 3]), vxclss.TrainParamsKNN(1))
        tool.decide(X, n_jobs=2)
        print("ready", flush=True)
        if os.fork() == 0:
            print(tool.decide(X, n_jobs=2).tolist(), flush=True)
            os._exit(0)
        os.wait()
    """
    process = child(program)
    out, err = process.communicate(timeout=120)
    assert out.splitlines() == ["ready", "[0, 1, 2, 3]"], err
