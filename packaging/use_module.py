# SPDX-License-Identifier: MIT
"""Usage: use_module.py MODEL DATA.csv ANSWERS.csv

Does the installed module answer bit for bit what `vxclss run MODEL DATA.csv` wrote to ANSWERS.csv?
Run by use_packages.sh.
"""

import csv
import sys

import numpy as np
import vxclss

model_path, data_path, answers_path = sys.argv[1:]
model = vxclss.load(model_path)
with open(data_path, newline="") as file:
    X = np.array([[float(row[name]) for name in model.measurement_names]
                  for row in csv.DictReader(file)])
with open(answers_path, newline="") as file:
    expected = [(row["category"], float(row["class_score"]), float(row["expected_cost"]))
                for row in csv.DictReader(file)]

answers = model.tool.run(X)
rows = np.arange(len(X))
columns = np.searchsorted(answers.categories, answers.labels)
got = [(model.category_names[label], score, cost) for label, score, cost in
       zip(answers.labels, answers.class_scores[rows, columns], answers.expected_costs[rows, columns])]
if got != expected:
    sys.exit("the module and the command answer differently")
print(f"vxclss {vxclss.__version__}: {len(got)} answers, equal to the command's")
