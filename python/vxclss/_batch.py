# SPDX-License-Identifier: MIT
"""What a batch of rows gives back."""

from __future__ import annotations

from dataclasses import dataclass

import numpy as np
import numpy.typing as npt


@dataclass(frozen=True, eq=False, repr=False)
class BatchResult:
    """The answers for n rows and c categories, as new arrays.

    Row i holds what a single run of row i gives, bit for bit. A category that has no result there
    (nearest neighbours answer for the categories of neighbours only, a leaf for those that it
    holds) has scores of 0 and an expected cost of NaN.

    Attributes
    ----------
    labels : int64, (n,)
        The cheapest decision; -1 where a leaf answers with no category.
    categories : int64, (c,)
        Label of each column, ascending.
    class_scores : float64, (n, c)
        Posterior of each category, [0, 1].
    match_scores : float64, (n, c)
        How well the row matches each category, [0, 1].
    expected_costs : float64, (n, c)
        Expected cost of deciding for each category.
    match_score_factor_logs : float64, (n,)
        Natural logarithm of the factor by which the row's match scores were scaled.
    """

    labels: npt.NDArray[np.int64]
    categories: npt.NDArray[np.int64]
    class_scores: npt.NDArray[np.float64]
    match_scores: npt.NDArray[np.float64]
    expected_costs: npt.NDArray[np.float64]
    match_score_factor_logs: npt.NDArray[np.float64]

    def __len__(self) -> int:
        return len(self.labels)

    def __repr__(self) -> str:
        return f"<BatchResult of {len(self)} rows x {len(self.categories)} categories>"
