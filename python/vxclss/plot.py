# SPDX-License-Identifier: MIT
"""Pictures of classifiers. Each function draws on a matplotlib axis and returns it::

    import matplotlib.pyplot as plt
    from vxclss import plot

    figure, axis = plt.subplots()
    plot.confusion_matrix(axis, truth, classifier.predict(X))

Classes differ by lightness and marker as well as by colour, in colours that colour-blind people
tell apart (M. Okabe, K. Ito, Color Universal Design, 2008). Nothing global is changed. Importing
this module needs matplotlib; importing vxclss doesn't.
"""

from __future__ import annotations

from typing import Any, List, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt
from matplotlib.axes import Axes  # type: ignore[import]
from matplotlib.colors import ListedColormap, to_rgb  # type: ignore[import]

from ._core import BinomialDensity, CategoryModelBayesian, ClassifierBayesian, Tool

__all__ = ["COLOURS", "confusion_matrix", "decision_regions", "densities", "reject_curve"]

COLOURS = ("#0072B2", "#E69F00", "#009E73", "#CC79A7", "#D55E00", "#56B4E9", "#000000", "#F0E442")
_MARKERS = ("o", "^", "s", "D", "v", "P", "X", "*", "<", ">", "p", "h")

_Floats = npt.NDArray[np.float64]


def confusion_matrix(ax: Axes, truth: npt.ArrayLike, decided: npt.ArrayLike, *,
                     classes: Optional[Sequence[Any]] = None, normalize: bool = False) -> Axes:
    """How often each class was taken for each other one.

    A row for each true class, a column for each decision; what was decided wrongly is in another
    colour than the diagonal. Shades tell the share of the row.

    Parameters
    ----------
    truth, decided : (n,)
        Names of the classes.
    classes : None or list
        All classes, in order; None: those that occur, sorted. Raises ValueError for others.
    normalize : bool
        Write shares of the row in percent instead of counts.

    Raises ValueError for lists of different length, without rows, or of names that can't be
    compared, such as texts and numbers.
    """
    true_names, decided_names = np.asarray(truth), np.asarray(decided)
    if true_names.shape != decided_names.shape or true_names.ndim != 1:
        raise ValueError(f"truth of shape {true_names.shape}, decisions of {decided_names.shape}")
    if len(true_names) == 0:
        raise ValueError("no rows to draw")
    names = _sorted_names(true_names, decided_names) if classes is None else np.asarray(classes)
    counts = np.zeros((len(names), len(names)), np.int64)
    np.add.at(counts, (_places(true_names, names), _places(decided_names, names)), 1)
    shares = counts / np.maximum(counts.sum(axis=1, keepdims=True), 1)

    right, wrong = np.array(to_rgb(COLOURS[0])), np.array(to_rgb(COLOURS[4]))
    hue = np.where(np.eye(len(names), dtype=bool)[:, :, None], right, wrong)
    # Rare mistakes stay visible: a cell that counts anything has a fifth of its colour at least.
    strength = np.where(counts > 0, 0.2 + 0.8 * np.sqrt(shares), 0.0)[:, :, None]
    ax.imshow(1.0 - strength * (1.0 - hue), aspect="equal", interpolation="nearest")
    size = float(np.clip(90.0 / max(len(names), 1), 4.0, 11.0))
    for (row, column), count in np.ndenumerate(counts):
        if count:
            text = f"{100.0 * shares[row, column]:.0f} %" if normalize else str(count)
            dark = strength[row, column, 0] > 0.6
            ax.text(column, row, text, ha="center", va="center", fontsize=size,
                    color="white" if dark else "#202020")
    slanted = max((len(str(name)) for name in names), default=0) > 4
    ax.set_xticks(range(len(names)), [str(name) for name in names],
                  rotation=45 if slanted else 0, ha="right" if slanted else "center")
    ax.set_yticks(range(len(names)), [str(name) for name in names])
    ax.set_xticks(np.arange(len(names) - 1) + 0.5, minor=True)
    ax.set_yticks(np.arange(len(names) - 1) + 0.5, minor=True)
    ax.grid(which="minor", color="#D8D8D8", linewidth=0.6)
    ax.tick_params(which="both", length=0)
    ax.spines[:].set_color("#808080")
    ax.set_xlabel("decided")
    ax.set_ylabel("true")
    accuracy = np.trace(counts) / max(counts.sum(), 1)
    ax.set_title(f"{100.0 * accuracy:.1f} % of {counts.sum()} right", fontsize="medium")
    return ax


def decision_regions(ax: Axes, classifier: Any, X: npt.ArrayLike,
                     y: Optional[npt.ArrayLike] = None, *, columns: Tuple[int, int] = (0, 1),
                     others: Optional[npt.ArrayLike] = None, resolution: int = 300,
                     names: Optional[Tuple[str, str]] = None) -> Axes:
    """Where in the plane of two measurements a classifier decides for which class.

    Parameters
    ----------
    classifier : estimator or Tool
        Has ``predict``, or is a Tool, whose labels are the classes.
    X : (n, d)
        Rows that the picture covers; points where y is given.
    y : None or (n,)
        Their true classes; a point that is decided wrongly has a black rim.
    columns : two ints
        Measurements along x and y.
    others : None or (d,)
        What the other measurements are; None: the medians of X.
    resolution : int
        Points along each axis that the classifier is asked about.
    names : None or two str
        What the axes are called; None: the names of the classifier's columns, if it has any.

    Raises ValueError for no rows, columns that X has not, and a y of another length or of names
    that can't be compared with the classifier's, such as texts and numbers.
    """
    rows = np.asarray(X, dtype=float)
    across, up = columns
    if rows.ndim != 2 or not (0 <= across < rows.shape[1] and 0 <= up < rows.shape[1]):
        raise ValueError(f"no columns {columns} in X of shape {rows.shape}")
    if len(rows) == 0:
        raise ValueError("no rows to draw")
    fixed = np.nanmedian(rows, axis=0) if others is None else np.asarray(others, dtype=float)
    if fixed.shape != rows.shape[1:]:
        raise ValueError(f"others of shape {fixed.shape}, rows of {rows.shape[1:]}")
    xs, ys = _ticks(rows[:, across], resolution), _ticks(rows[:, up], resolution)
    grid = np.tile(fixed, (resolution * resolution, 1))
    grid[:, across] = np.tile(xs, resolution)
    grid[:, up] = np.repeat(ys, resolution)
    truth = None if y is None else _truth_of(y, rows)
    decisions = _decisions(classifier, grid)
    known = _sorted_names(np.asarray(getattr(classifier, "classes_", decisions[:0])), decisions,
                          *([] if truth is None else [truth]))
    regions = _places(decisions, known).reshape(resolution, resolution)

    light = ListedColormap([_lighter(_colour(i), 0.65) for i in range(len(known))])
    ax.pcolormesh(xs, ys, regions, cmap=light, vmin=-0.5, vmax=len(known) - 0.5, shading="nearest",
                  rasterized=True, zorder=0)
    for i in range(len(known)):
        inside = (regions == i).astype(float)
        if 0.0 < inside.mean() < 1.0:
            ax.contour(xs, ys, inside, levels=[0.5], colors="#505050", linewidths=0.8, zorder=1)
    if truth is not None:
        wrong = _decisions(classifier, rows) != truth
        for i, name in enumerate(known):
            points = truth == name
            ax.scatter(rows[points, across], rows[points, up], s=26, marker=_marker(i),
                       color=_colour(i), linewidths=np.where(wrong[points], 1.4, 0.5),
                       edgecolors=[("black" if w else "white") for w in wrong[points]],
                       label=str(name), zorder=2)
    else:
        for i, name in enumerate(known):
            ax.scatter([], [], s=60, marker="s", color=light(i), edgecolors="#505050",
                       label=str(name))
    # Beside the picture, where it hides no point.
    ax.legend(frameon=False, fontsize="small", loc="upper left", bbox_to_anchor=(1.0, 1.0))
    titles = names or _column_names(classifier, columns)
    ax.set_xlabel(titles[0])
    ax.set_ylabel(titles[1])
    ax.set_xlim(xs[0], xs[-1])
    ax.set_ylim(ys[0], ys[-1])
    return ax


def densities(ax: Axes, classifier: Any, X: npt.ArrayLike, y: npt.ArrayLike, *,
              measurement: int = 0, bins: Union[int, str, npt.ArrayLike] = 30,
              name: Optional[str] = None) -> Axes:
    """The densities that a Bayesian classifier has learnt, against histograms of the data.

    The area of each histogram and under each curve is 1. A binomial density has a dot for each
    number of successes, divided by their distance. In a dependency set the marginal is shown.

    Parameters
    ----------
    classifier : BayesClassifier, or Tool trained by the Bayesian technique
        Raises TypeError for another one.
    X, y : (n, d), (n,)
        Rows and their classes (labels, for a Tool). NaN and rows of other classes are left out.
    measurement : int
        Column of X.
    bins : int, str or array-like
        As for ``numpy.histogram_bin_edges``, over all classes.
    name : None or str
        What the measurement is called.

    Raises ValueError for a column that X has not, one without a finite number, and a y of another
    length or of names that can't be compared with the classifier's.
    """
    tool = classifier if isinstance(classifier, Tool) else getattr(classifier, "tool_", None)
    technique = tool.classifier if isinstance(tool, Tool) else None
    if not isinstance(technique, ClassifierBayesian):
        raise TypeError(f"{classifier!r} has no densities")
    rows = np.asarray(X, dtype=float)
    if rows.ndim != 2 or not 0 <= measurement < rows.shape[1]:
        raise ValueError(f"no measurement {measurement} in X of shape {rows.shape}")
    values, truth = rows[:, measurement], _truth_of(y, rows)
    if not np.isfinite(values).any():
        raise ValueError(f"measurement {measurement} has no finite number")
    edges = np.histogram_bin_edges(values[np.isfinite(values)], bins=bins)
    names: Sequence[Any] = getattr(classifier, "classes_", range(2 ** 31))
    _sorted_names(truth, np.asarray(names[:1]))  # refuses what can't be compared
    models = sorted(technique.category_models, key=lambda model: model.category_label)
    for i, model in enumerate(models):
        called = names[model.category_label]
        here = values[(truth == called) & np.isfinite(values)]
        if np.histogram(here, edges)[0].any():  # matplotlib divides by the number of them
            ax.hist(here, bins=edges, density=True, color=_lighter(_colour(i), 0.6), alpha=0.65,
                    edgecolor=_colour(i), linewidth=0.6, histtype="stepfilled")
        _draw_density(ax, model, measurement, edges, i, str(called))
    ax.set_xlabel(name or _column_names(classifier, (measurement, measurement))[0])
    ax.set_ylabel("density")
    ax.set_ylim(bottom=0.0)
    _bare(ax)
    ax.legend(frameon=False, fontsize="small")
    return ax


def reject_curve(ax: Axes, classifier: Any, X: npt.ArrayLike, y: npt.ArrayLike, *,
                 label: Optional[str] = None) -> Axes:
    """How many mistakes remain where the doubtful patterns are rejected.

    Patterns are rejected by their highest class score, the lowest first, those of equal score
    together; one whose scores are NaN has none, and goes before all others. Several classifiers
    may be drawn on one axis.

    Parameters
    ----------
    classifier : estimator with ``predict`` and ``predict_proba``, or Tool
    X, y : (n, d), (n,)
        Rows that were not used in training, and their true classes (labels, for a Tool).
    label : None or str
        What the legend calls the classifier.

    Raises ValueError for no rows, and a y of another length or of names that can't be compared
    with the classifier's.
    """
    truth = np.asarray(y)
    if truth.size == 0:
        raise ValueError("no rows to draw")
    if isinstance(classifier, Tool):
        answers = classifier.run(X)
        all_scores, decided = answers.class_scores, answers.labels
    else:
        all_scores, decided = classifier.predict_proba(X), np.asarray(classifier.predict(X))
    truth = _truth_of(y, decided)
    _sorted_names(decided, truth)  # refuses what can't be compared
    wrong = decided != truth
    scores = np.where(np.isnan(all_scores), -np.inf, all_scores).max(axis=1)
    order = np.argsort(scores, kind="stable")
    kept = len(truth) - np.arange(len(truth))
    errors = wrong[order][::-1].cumsum()[::-1] / kept
    scores = scores[order]
    first = np.concatenate([[True], scores[1:] > scores[:-1]])  # of those with equal scores
    rejected = np.arange(len(truth)) / len(truth)
    number = sum(line.get_gid() == "reject curve" for line in ax.get_lines())
    ax.plot(100.0 * rejected[first], 100.0 * errors[first], color=_colour(number), linewidth=1.8,
            linestyle=("-", "--", "-.", ":")[number % 4], drawstyle="steps-post",
            marker=_marker(number), markevery=[0], markersize=5, label=label, gid="reject curve")
    ax.set_xlabel("rejected (%)")
    ax.set_ylabel("wrong among the rest (%)")
    ax.set_xlim(left=0.0)
    ax.set_ylim(bottom=0.0)
    _bare(ax)
    ax.grid(color="#E4E4E4", linewidth=0.6)
    ax.set_axisbelow(True)
    if label is not None:
        ax.legend(frameon=False, fontsize="small")
    return ax


def _draw_density(ax: Axes, model: CategoryModelBayesian, measurement: int, edges: _Floats,
                  place: int, called: str) -> None:
    for group, density in zip(model.measurement_groups, model.densities):
        if measurement not in group:
            continue
        style = {"color": _colour(place), "label": called, "zorder": 3}
        if isinstance(density, BinomialDensity):
            step = density.maximum_value / density.num_trials
            at = step * np.arange(density.num_trials + 1)
            heights = np.exp(density.log_values(at[:, None])) / step
            ax.plot(at, heights, marker=_marker(place), markersize=5, linestyle=":", **style)
        else:
            at = np.linspace(edges[0], edges[-1], 400)
            rows = np.full((len(at), len(group)), np.nan)  # the others are invalid: a marginal
            rows[:, group.index(measurement)] = at
            ax.plot(at, np.exp(density.log_values(rows)), linewidth=2.0,
                    linestyle=("-", "--", "-.", ":")[place % 4], **style)


def _colour(place: int) -> Tuple[float, ...]:
    # Darker when the colours come round again.
    darker = 0.55 ** (place // len(COLOURS))
    return tuple(darker * part for part in to_rgb(COLOURS[place % len(COLOURS)]))


def _marker(place: int) -> str:
    return _MARKERS[place % len(_MARKERS)]


def _lighter(colour: Tuple[float, ...], share: float) -> Tuple[float, ...]:
    return tuple(1.0 - (1.0 - share) * (1.0 - part) for part in colour)


def _bare(ax: Axes) -> None:
    ax.spines[["top", "right"]].set_visible(False)


def _ticks(values: _Floats, count: int) -> _Floats:
    """Numbers that cover the values and a twentieth more on either side."""
    low, high = float(np.nanmin(values)), float(np.nanmax(values))
    margin = 0.05 * (high - low) or 0.5
    return np.linspace(low - margin, high + margin, count)


def _places(values: npt.NDArray[Any], names: npt.NDArray[Any]) -> npt.NDArray[np.int64]:
    places = {name: place for place, name in enumerate(names.tolist())}
    try:
        return np.array([places[value] for value in values.tolist()], np.int64)
    except KeyError as unknown:
        raise ValueError(f"{unknown.args[0]!r} is none of {names.tolist()}") from None


def _decisions(classifier: Any, rows: _Floats) -> npt.NDArray[Any]:
    if isinstance(classifier, Tool):
        return classifier.decide(rows)
    if hasattr(classifier, "feature_names_in_"):
        try:
            from pandas import DataFrame  # type: ignore[import]
            return np.asarray(classifier.predict(
                DataFrame(rows, columns=classifier.feature_names_in_)))
        except ImportError:
            pass
    return np.asarray(classifier.predict(rows))


def _truth_of(y: npt.ArrayLike, rows: npt.NDArray[Any]) -> npt.NDArray[Any]:
    truth = np.asarray(y)
    if truth.shape != rows.shape[:1]:
        raise ValueError(f"y of shape {truth.shape} for {len(rows)} rows")
    return truth


def _sorted_names(*names: npt.NDArray[Any]) -> npt.NDArray[Any]:
    """All names, each once. Raises ValueError for texts among numbers, NaN, what has no order."""
    texts = [array.dtype.kind in "US" for array in names if array.dtype.kind != "O"]
    values = {name for array in names for name in array.tolist()}
    try:
        if (any(texts) and not all(texts)) or any(value != value for value in values):
            raise TypeError
        return np.array(sorted(values))
    except TypeError:
        kinds = sorted({type(value).__name__ for value in values})
        raise ValueError(f"names of kinds that can't be compared: {', '.join(kinds)}") from None


def _column_names(classifier: Any, columns: Tuple[int, int]) -> Tuple[str, str]:
    names = getattr(classifier, "feature_names_in_", None)
    if names is None:
        return f"measurement {columns[0]}", f"measurement {columns[1]}"
    return str(names[columns[0]]), str(names[columns[1]])
