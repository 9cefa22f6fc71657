# SPDX-License-Identifier: MIT
"""Opens reports of vxclss evaluate in headless Chromium: they render, light and dark, without a word
on the console, and every figure in the page as the browser understands it equals the JSON's.

usage: report_in_browser.py VXCLSS DATA.csv LABEL; ends with 77 where Chromium is missing.
"""
import csv
import html.parser
import json
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

NAMES = ("chromium", "chromium-browser", "google-chrome", "google-chrome-stable")
CHROMIUM = next(filter(None, map(shutil.which, NAMES)), None)
OPTIONS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
           "--disable-background-networking", "--disable-component-update", "--disable-sync",
           "--disable-dev-shm-usage", "--hide-scrollbars", "--window-size=900,700",
           "--enable-logging=stderr"]
DARK = ["--blink-settings=preferredColorScheme=0"]
WIDTH, HEIGHT = 900, 700


class Page(html.parser.HTMLParser):
    """The <data> elements, and how often each tag occurs."""

    def __init__(self, text):
        super().__init__()
        self.figures = []
        self.tags = {}
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        self.tags[tag] = self.tags.get(tag, 0) + 1
        if tag == "data":
            self.figures.append((dict(attrs)["data-path"], dict(attrs)["value"]))


def browse(path, *more):
    """What the browser prints, and what it says on the console of the page."""
    with tempfile.TemporaryDirectory() as profile:
        run = subprocess.run([CHROMIUM, *OPTIONS, f"--user-data-dir={profile}", *more,
                              "file://" + path], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                             timeout=240, check=True)
    said = [line for line in run.stderr.decode("utf-8", "replace").splitlines() if "CONSOLE" in line]
    return run.stdout.decode("utf-8"), said


def pixels(path):
    """The rows of an 8-bit RGB or RGBA PNG (ISO/IEC 15948), and the bytes of a pixel."""
    with open(path, "rb") as stream:
        content = stream.read()
    at, packed = 8, b""
    while at < len(content):
        size, kind = struct.unpack(">I4s", content[at:at + 8])
        body = content[at + 8:at + 8 + size]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert depth == 8 and colour in (2, 6)
        packed += body if kind == b"IDAT" else b""
        at += size + 12
    step = 4 if colour == 6 else 3
    raw, rows = zlib.decompress(packed), []
    above = bytearray(width * step)
    for y in range(height):
        kind, line = raw[y * (width * step + 1)], bytearray(width * step)
        coded = raw[y * (width * step + 1) + 1:(y + 1) * (width * step + 1)]
        for i, byte in enumerate(coded):
            a = line[i - step] if i >= step else 0
            b, c = above[i], above[i - step] if i >= step else 0
            nearest = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
            line[i] = (byte + (0, a, b, (a + b) // 2, nearest)[kind]) & 255
        rows.append(bytes(line))
        above = line
    return rows, step


def looks(scratch, path, dark):
    """How many colours a screenshot has, and how bright its corner is."""
    shot = os.path.join(scratch, "shot.png")
    browse(path, f"--screenshot={shot}", *(DARK if dark else []))
    rows, step = pixels(shot)
    colours = {row[i:i + 3] for row in rows for i in range(0, len(row), step)}
    return len(colours), sum(rows[0][:3]) / 3


def resolve(value, pointer):
    for key in pointer.split("/")[1:]:
        value = value[int(key)] if isinstance(value, list) else value[key]
    return value


def check_control(scratch):
    """A browser that kept silent about errors would pass anything."""
    path = os.path.join(scratch, "control.html")
    with open(path, "w", encoding="utf-8") as stream:
        stream.write("<!DOCTYPE html><script>console.error('heard')</script>")
    _, said = browse(path, "--dump-dom")
    return ["console errors are not seen"] if not any("heard" in line for line in said) else []


def check(tool, scratch, data, label, options):
    report, told = os.path.join(scratch, "report.html"), os.path.join(scratch, "told.json")
    command = [tool, "evaluate", data, "--label", label, "--report", report, "--json", "-o", told]
    subprocess.run(command + options, check=True, stdout=subprocess.DEVNULL)
    with open(told, encoding="utf-8") as stream:
        truth = json.load(stream)
    text, said = browse(report, "--dump-dom")
    page = Page(text)
    with open(report, encoding="utf-8") as stream:
        written = Page(stream.read())
    faults = [f"console: {line}" for line in said]
    for path, value in page.figures:
        if repr(float(resolve(truth, path))) != repr(float(value)):
            faults.append(f"{path}: {value} in the page, {resolve(truth, path)} in the JSON")
    if len(page.figures) < 300 or page.figures != written.figures:
        faults.append(f"{len(page.figures)} figures of {len(written.figures)} reach the browser")
    for tag in ("svg", "path", "details", "section", "td"):
        if page.tags.get(tag) != written.tags.get(tag):
            faults.append(f"{page.tags.get(tag)} of {written.tags.get(tag)} <{tag}> elements left")
    if page.tags.get("script"):
        faults.append("there is a script")
    light, dark = looks(scratch, report, False), looks(scratch, report, True)
    if min(light[0], dark[0]) < 50 or light[1] < 200 or dark[1] > 60:
        faults.append(f"colours and brightness: light {light}, dark {dark}")
    print(f"{os.path.basename(data)} {' '.join(options)}: {len(page.figures)} figures, "
          f"{page.tags.get('svg')} pictures, {light[0]} and {dark[0]} colours, {len(faults)} faults")
    return faults


def hostile(scratch):
    """Names that would break out of any tag, and missing measurements."""
    path = os.path.join(scratch, "hostile.csv")
    names = ["<script>console.error(1)</script>", "\"'><img src=x>", "</style></svg>&amp;", "]]>\u00fc"]
    with open(path, "w", newline="", encoding="utf-8") as stream:
        rows = csv.writer(stream)
        rows.writerow(["<b>x</b>", "</svg>\"'&", "z", "kind"])
        for i in range(120):
            x = (i * 37 % 101) / 25 + i % 4
            rows.writerow([x, "" if i % 17 == 3 else (i * 53 % 97) / 30 - i % 4, i * 29 % 7, names[i % 4]])
    return path


def main():
    if CHROMIUM is None:
        print("skipped: chromium is not installed")
        return 77
    tool, data, label = sys.argv[1:]
    with tempfile.TemporaryDirectory() as scratch:
        faults = check_control(scratch)
        for path, column, options in [(data, label, ["--method", "bayes"]),
                                      (data, label, ["--method", "knn", "--holdout", "0.4"]),
                                      (hostile(scratch), "kind", ["--method", "bayes"])]:
            faults += check(tool, scratch, path, column, options)
    print("\n".join(faults[:20]))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
