# SPDX-License-Identifier: MIT
"""Compares the decisions of --method bayes with scikit-learn's, point by point.

usage: sklearn_compare.py VXCLSS DATA.csv LABEL; ends with 77 where scikit-learn is missing.
"""
import csv
import itertools
import os
import subprocess
import sys
import tempfile

try:
    import numpy as np
    from sklearn.discriminant_analysis import QuadraticDiscriminantAnalysis
    from sklearn.naive_bayes import GaussianNB
except ImportError:
    print("skipped: python3-sklearn is not installed")
    sys.exit(77)

TIE = 1e-9  # of logarithms; nearer than that, rounding decides


def gaussian_nb(samples, labels):
    """Equal priors, and n - 1 in place of n under the sum of squares."""
    count = len(set(labels))
    model = GaussianNB(priors=[1.0 / count] * count, var_smoothing=0.0).fit(samples, labels)
    model.var_ *= (model.class_count_ / (model.class_count_ - 1.0))[:, np.newaxis]
    return model.classes_, model.predict_joint_log_proba


def quadratic(samples, labels):
    """Divides by n - 1 already."""
    count = len(set(labels))
    model = QuadraticDiscriminantAnalysis(priors=[1.0 / count] * count).fit(samples, labels)
    return model.classes_, model.decision_function


def decisions(tool, data, label, options, columns, queries):
    with tempfile.TemporaryDirectory() as scratch:
        model = os.path.join(scratch, "model")
        query = os.path.join(scratch, "queries.csv")
        with open(query, "w", newline="", encoding="utf-8") as stream:
            csv.writer(stream).writerows([columns, *queries.tolist()])
        train = [tool, "train", data, "--label", label, "--method", "bayes", "-o", model]
        subprocess.run(train + options, check=True, stdout=subprocess.DEVNULL)
        run = subprocess.run([tool, "run", model, query], check=True, stdout=subprocess.PIPE)
    rows = csv.DictReader(run.stdout.decode("utf-8").splitlines())
    return [row["category"] for row in rows]


def main():
    tool, data, label = sys.argv[1:]
    with open(data, newline="", encoding="utf-8") as stream:
        rows = list(csv.DictReader(stream))
    columns = [name for name in rows[0] if name != label]
    samples = np.array([[float(row[name]) for name in columns] for row in rows])
    labels = np.array([row[label] for row in rows])
    # The points half-way between any two samples lie on both sides of every boundary.
    queries = np.array([(a + b) / 2 for a, b in itertools.combinations_with_replacement(samples, 2)])
    failed = False
    for name, options, fit in [
        ("GaussianNB", [], gaussian_nb),
        ("QuadraticDiscriminantAnalysis", ["--dependent", ",".join(columns)], quadratic),
    ]:
        classes, evaluate = fit(samples, labels)
        scores = evaluate(queries)
        ours = decisions(tool, data, label, options, columns, queries)
        best = np.sort(scores, axis=1)
        clear = best[:, -1] - best[:, -2] > TIE
        differ = clear & (classes[np.argmax(scores, axis=1)] != np.array(ours))
        print(f"{name}: {differ.sum()} of {clear.sum()} decisions differ")
        failed |= bool(differ.any()) or clear.sum() < 0.9 * len(queries)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
