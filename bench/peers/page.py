#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Puts measured figures into docs/performance.md and draws its plots.

Usage: page.py WIDE.json PLAIN.json, what vxclss_peers wrote in a build with code for wider
registers and in one without.
"""
import json
import pathlib
import re
import sys

import plot

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"

PLOTS = {
    "neighbours by n": ("neighbours_n", "Nearest neighbours, d = 16, k = 5", "n, patterns"),
    "neighbours by d": ("neighbours_d", "Nearest neighbours, n = 1e5, k = 5", "d, measurements"),
    "neighbours by k": ("neighbours_k", "Nearest neighbours, n = 1e5, d = 16", "k, neighbours"),
    "Bayes by C": ("bayes_c", "Bayes, single measurements, d = 16", "C, categories"),
    "Bayes, full covariance, by C": (
        "bayes_full_c",
        "Bayes, full covariance, d = 16",
        "C, categories",
    ),
    "weighting by C": ("weighting_c", "Result weighting, scores of a Bayes run", "C, categories"),
    "tree by depth": ("tree_depth", "Decision tree", "questions asked"),
}

# What the second table shows, of all that was timed.
SHOWN = re.compile(
    r"nearest neighbours, n = 100000, d = \d+, k = 5|training|Bayes|result weighting|decision tree"
    r"|rule table|archive"
)


def replace(page, name, text):
    pattern = re.compile(rf"(<!-- begin {name} -->\n).*?(<!-- end {name} -->)", re.S)
    if not pattern.search(page):
        sys.exit(f"page.py: the page has no place for {name}")
    return pattern.sub(lambda match: match[1] + text + match[2], page)


def facts(wide, plain):
    rows = {name: value for name, value in wide["facts"].items() if name != "registers"}
    rows["registers, first column"] = wide["facts"]["registers"]
    rows["registers, second column"] = plain["facts"]["registers"]
    return "| | |\n|---|---|\n" + "".join(f"| {n} | {v} |\n" for n, v in rows.items())


def cell(figure):
    """A figure and what became of its goal; bold where it wasn't reached."""
    text = f'{plot.number(figure["value"])} {figure["unit"].replace("us", "µs")}'.rstrip()
    return f"**{text}**, not reached" if figure["state"] == "not reached" else text


def figures(wide, plain):
    lines = ["| | wide registers | plain | goal (plain) |", "|---|---|---|---|"]
    others = {(f["group"], f["what"]): f for f in plain["figures"]}
    group = None
    for figure in wide["figures"]:
        if figure["group"] != group:
            group = figure["group"]
            lines.append(f"| **{group}** | | | |")
        other = others.get((group, figure["what"])) or find_worst(plain, figure)
        goal = figure["goal"].replace("<=", "≤").replace(">=", "≥")
        plain_cell = cell(other) if other else ""
        lines.append(f'| {figure["what"]} | {cell(figure)} | {plain_cell} | {goal} |')
    return "\n".join(lines) + "\n"


def find_worst(plain, figure):
    """The same figure, where the text names the case that turned out worst."""
    start = figure["what"].split(" (")[0]
    return next((f for f in plain["figures"] if f["what"].startswith(start + " (")), None)


def times(wide):
    def named(items):
        return ", ".join(f"{name} {plot.time_text(seconds)}" for name, seconds in items)

    lines = ["| work | vxclss | others |", "|---|---|---|"]
    for work, by_name in wide["times"].items():
        if not SHOWN.match(work):
            continue
        own = {n.removeprefix("vxclss, "): t for n, t in by_name.items() if n.startswith("vxclss")}
        first = plot.time_text(own["vxclss"]) if "vxclss" in own else named(own.items())
        others = [(n, t) for n, t in by_name.items() if not n.startswith("vxclss")]
        lines.append(f"| {work} | {first} | {named(sorted(others, key=lambda o: o[1]))} |")
    return "\n".join(lines) + "\n"


def answers(wide):
    """A line for this library, one for each that differs anywhere, one for the rest."""
    own = [a for a in wide["answers"] if "vxclss" in a["who"]]
    others = [a for a in wide["answers"] if "vxclss" not in a["who"]]
    differing = [a for a in others if a["different"]]
    equal = [a for a in others if not a["different"]]

    def line(who, rows):
        different, compared = (sum(a[count] for a in rows) for count in ("different", "compared"))
        return f"| {who} | {different} | {compared} |"

    lines = ["| answers | differ | of |", "|---|---|---|", line("vxclss, everything", own)]
    lines += [line(a["who"], [a]) for a in differing]
    lines.append(line("the others, everything else", equal))
    return "\n".join(lines) + "\n"


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    wide, plain = (json.loads(pathlib.Path(path).read_text()) for path in sys.argv[1:])
    path = DOCS / "performance.md"
    page = path.read_text()
    page = replace(page, "facts", facts(wide, plain))
    page = replace(page, "figures", figures(wide, plain))
    page = replace(page, "times", times(wide))
    page = replace(page, "answers", answers(wide))
    (DOCS / "images").mkdir(exist_ok=True)
    for name, (file, title, size_name) in PLOTS.items():
        if name in wide.get("plots", {}):
            drawing = plot.draw(title, size_name, wide["plots"][name])
            (DOCS / "images" / f"{file}.svg").write_text(drawing)
    path.write_text(page)


if __name__ == "__main__":
    main()
