# SPDX-License-Identifier: MIT
"""Draws times over a size, both axes logarithmic, as an SVG that suits light and dark pages."""
import math

WIDTH, HEIGHT = 760, 400
LEFT, RIGHT, TOP, BOTTOM = 70, 200, 44, 50
LABEL_HEIGHT = 15

# A contestant has its colour in every plot.
COLOURS = {
    "vxclss": 1,
    "vxclss, uniform costs": 1,
    "vxclss, with overrides": 4,
    "FAISS flat": 2,
    "OpenCV brute force": 3,
    "OpenCV NormalBayes": 3,
    "OpenCV DTrees": 3,
    "plain double scan": 4,
    "FLANN kd-tree": 5,
    "nanoflann kd-tree": 6,
    "GaussianNB, one row": 2,
    "GaussianNB, a row of 100": 5,
    "GaussianNB, a row of 1000": 6,
    "std::sort of C doubles": 2,
}

LIGHT = {"page": "#ffffff", "ink": "#1f2328", "faint": "#6e7781", "grid": "#d8dee4"}
LIGHT |= {1: "#2a78d6", 2: "#eb6834", 3: "#1baf7a", 4: "#c98500", 5: "#d55181", 6: "#7a5fd0"}
DARK = {"page": "#0d1117", "ink": "#e6edf3", "faint": "#9198a1", "grid": "#30363d"}
DARK |= {1: "#58a6ff", 2: "#f0834f", 3: "#3fc48f", 4: "#dba32c", 5: "#e87ba4", 6: "#a48bf0"}


def colours(scheme):
    rules = [f".page {{ fill: {scheme['page']} }}", f"text {{ fill: {scheme['faint']} }}"]
    rules += [f".title, .name {{ fill: {scheme['ink']} }}", f".grid {{ stroke: {scheme['grid']} }}"]
    for i in range(1, 7):
        rules.append(f".c{i} {{ stroke: {scheme[i]} }} .d{i} {{ fill: {scheme[i]} }}")
    return "\n".join(rules)


STYLE = f"""
text {{ font: 12px system-ui, sans-serif }}
.title {{ font-size: 14px; font-weight: 600 }}
.line {{ fill: none; stroke-width: 1.5 }}
.own {{ stroke-width: 3 }}
{colours(LIGHT)}
@media (prefers-color-scheme: dark) {{
{colours(DARK)}
}}
"""


def time_text(seconds):
    for unit, size in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= 0.9995 * size:
            return f"{number(seconds / size)} {unit}"
    return f"{number(seconds * 1e9)} ns"


def number(value):
    """Three digits, no exponent."""
    digits = max(0, 2 - math.floor(math.log10(value))) if value > 0 else 0
    digits = f"{value:.{digits}f}"
    return digits.rstrip("0").rstrip(".") if "." in digits else digits


def spread(places):
    """Moves labels apart, in order, and keeps the lowest one on the plot."""
    order = sorted(range(len(places)), key=lambda i: places[i])
    moved = list(places)
    for above, i in zip(order, order[1:]):
        moved[i] = max(moved[i], moved[above] + LABEL_HEIGHT)
    lowest = HEIGHT - BOTTOM
    for i in reversed(order):
        moved[i] = min(moved[i], lowest)
        lowest = moved[i] - LABEL_HEIGHT
    return moved


def text(x, y, content, anchor="start", kind=""):
    kind = f'class="{kind}" ' if kind else ""
    return f'<text {kind}x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">{content}</text>'


def polyline(kind, points, more=""):
    way = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
    return f'<polyline class="line {kind}" points="{way}"{more}/>'


def axes(title, size_name, sizes, powers, x_of, y_of):
    out = [text(LEFT, 24, title, kind="title")]
    for power in powers:
        y = y_of(10.0**power)
        ends = f'x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" y2="{y:.1f}"'
        out.append(f'<line class="grid" {ends}/>')
        out.append(text(LEFT - 8, y + 4, time_text(10.0**power), "end"))
    for size in sizes:
        out.append(text(x_of(size), HEIGHT - BOTTOM + 18, f"{size:,.0f}", "middle"))
    out.append(text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 10, size_name, "middle"))
    return out


def series(name, line, label):
    """A line, its points, and its name at height `label`."""
    colour = COLOURS[name]
    out = [polyline(f"c{colour}" + (" own" if name.startswith("vxclss") else ""), line)]
    for x, y in line:
        out.append(f'<circle class="d{colour}" cx="{x:.1f}" cy="{y:.1f}" r="3.5"/>')
    x, y = line[-1]
    at = WIDTH - RIGHT + 22
    out.append(polyline(f"c{colour}", [(x + 6, y), (at - 4, label)], ' stroke-opacity="0.5"'))
    out.append(text(at, label + 4, name, kind="name"))
    return out


def draw(title, size_name, points):
    """`points`: [{"x": size, "times": {name: seconds}}, ...], sizes ascending."""
    names = sorted({n for p in points for n in p["times"]}, key=lambda n: (COLOURS[n], n))
    every = [t for p in points for t in p["times"].values()]
    low, high = math.floor(math.log10(min(every))), math.ceil(math.log10(max(every)))
    first, last = math.log10(points[0]["x"]), math.log10(points[-1]["x"])

    def x_of(size):
        return LEFT + (WIDTH - LEFT - RIGHT) * (math.log10(size) - first) / (last - first)

    def y_of(seconds):
        share = (math.log10(seconds) - low) / (high - low)
        return HEIGHT - BOTTOM - (HEIGHT - TOP - BOTTOM) * share

    lines = [
        [(x_of(p["x"]), y_of(p["times"][n])) for p in points if n in p["times"]] for n in names
    ]
    labels = spread([line[-1][1] for line in lines])
    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" role="img">',
        f"<title>{title}</title>",
        f"<style>{STYLE}</style>",
        f'<rect class="page" width="{WIDTH}" height="{HEIGHT}"/>',
    ]
    out += axes(title, size_name, [p["x"] for p in points], range(low, high + 1), x_of, y_of)
    # This library's line is drawn last, on top.
    for drawn in reversed(list(zip(names, lines, labels))):
        out += series(*drawn)
    return "\n".join(out + ["</svg>"]) + "\n"
