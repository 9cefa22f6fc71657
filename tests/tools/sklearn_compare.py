# SPDX-License-Identifier: MIT
"""Compares the decisions of --method bayes with scikit-learn's, point by point, and what evaluate
makes of decisions with scikit-learn's figures for them.

usage: sklearn_compare.py VXCLSS DATA.csv LABEL; ends with 77 where scikit-learn is missing.
"""
import csv
import itertools
import json
import math
import os
import subprocess
import sys
import tempfile

try:
    import numpy as np
    from sklearn.discriminant_analysis import QuadraticDiscriminantAnalysis
    from sklearn.metrics import (accuracy_score, confusion_matrix, log_loss,
                                 precision_recall_fscore_support)
    from sklearn.model_selection import StratifiedKFold
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


def evaluation_differs(tool, data, label, labels, options):
    """Tells what differs; the fold sizes too, which no shuffling changes."""
    command = [tool, "evaluate", data, "--label", label, "--folds", "7", "--json"]
    run = subprocess.run(command + options, check=True, stdout=subprocess.PIPE)
    told = json.loads(run.stdout)
    names = [category["name"] for category in told["categories"]]
    true = [record["true"] for record in told["records"]]
    decided = [record["decided"] for record in told["records"]]
    scores = [{result["category"]: result["class_score"] for result in record["results"]}
              for record in told["records"]]
    probabilities = [[of.get(name, 0.0) for name in names] for of in scores]
    precision, recall, f1, _ = precision_recall_fscore_support(true, decided, labels=names)

    rounds = np.array([record["round"] for record in told["records"]])
    ours = sorted([int(sum((rounds == fold) & (np.array(true) == name))) for name in names]
                  for fold in range(7))
    splits = StratifiedKFold(7, shuffle=True, random_state=0).split(labels, labels)
    theirs = sorted([int(sum(labels[tested] == name)) for name in names] for _, tested in splits)

    def near(a, b):
        return all(math.isclose(x, y, rel_tol=1e-12) for x, y in zip(a, b))

    same = {
        "confusion_matrix": told["confusion"]["counts"]
        == confusion_matrix(true, decided, labels=names).tolist(),
        "accuracy_score": told["accuracy"] == accuracy_score(true, decided),
        "log_loss": near([told["log_loss"]], [log_loss(true, probabilities, labels=names)]),
        "precision": near([c["precision"] for c in told["categories"]], precision),
        "recall": near([c["recall"] for c in told["categories"]], recall),
        "f1": near([c["f1"] for c in told["categories"]], f1),
        "StratifiedKFold": ours == theirs,
    }
    print(f"evaluate {' '.join(options)}: " +
          ", ".join(f"{name} {'equal' if equal else 'DIFFERS'}" for name, equal in same.items()))
    return not all(same.values())


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
    dear = f"{min(labels)},{max(labels)}=9"
    for options in (["--method", "bayes"], ["--method", "bayes", "--cost", dear],
                    ["--method", "knn", "--k", "3"]):
        failed |= evaluation_differs(tool, data, label, labels, options)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
