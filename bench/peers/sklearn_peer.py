#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Answers questions about GaussianNB, one JSON line each; ends with its input.

Times are processor seconds of what was asked for; those of a batch are for one row.
"""
import json
import sys
import time

try:
    import numpy
    import sklearn
    from sklearn.naive_bayes import GaussianNB
except ImportError as error:
    sys.exit(f"sklearn_peer: {error}; without it its cases are left out")

MAX_BATCH_ROWS = 1000


def seconds(work, repeats):
    start = time.process_time()
    for i in range(repeats):
        work(i)
    return time.process_time() - start


class Peer:
    def version(self):
        return f"{sklearn.__version__}, numpy {numpy.__version__}, double"

    def fit(self, rows, queries, d, categories):
        self.rows = numpy.fromfile(rows).reshape(-1, d)
        self.categories = numpy.arange(len(self.rows)) % categories
        self.queries = numpy.fromfile(queries).reshape(-1, d)
        self.single = [self.queries[i : i + 1] for i in range(len(self.queries))]
        times = -(-MAX_BATCH_ROWS // len(self.queries))
        self.batch_rows = numpy.tile(self.queries, (times, 1))
        self.model = GaussianNB().fit(self.rows, self.categories)
        return None

    def labels(self):
        return self.model.predict(self.queries).tolist()

    def row(self, repeats):
        count = len(self.single)
        return seconds(lambda i: self.model.predict(self.single[i % count]), repeats)

    def batch(self, rows, repeats):
        # As many rows as were asked for, in whole batches.
        batches = -(-repeats // rows)
        taken = seconds(lambda i: self.model.predict(self.batch_rows[:rows]), batches)
        return taken * repeats / (batches * rows)

    def training(self, repeats):
        return seconds(lambda i: GaussianNB().fit(self.rows, self.categories), repeats)


def main():
    peer = Peer()
    for line in sys.stdin:
        question = json.loads(line)
        answer = getattr(peer, question.pop("do"))(**question)
        print(json.dumps(answer), flush=True)


if __name__ == "__main__":
    main()
