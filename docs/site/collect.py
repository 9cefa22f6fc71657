# SPDX-License-Identifier: MIT
"""Turns the pages of the tree into input of mkdocs: collect.py WORK, which holds doxygen's xml."""

import json
import os
import pathlib
import re
import shutil
import sys
import xml.etree.ElementTree as ElementTree

NAVIGATION = {
    "Guide": ["guide", "recipes", "traps", "conventions", "errors"],
    "Techniques": ["bayes", "nearest_neighbours", "decision_trees", "rule_tables", "generators"],
    "Command": ["command_line", "evaluation"],
    "Examples": ["picture_example", "python_tutorial"],
    "In service": ["packages", "performance", "scale", "reliability", "compatibility", "archive"],
}
FRONT = {"README.md": "index.md", "CHANGELOG.md": "changelog.md", "docs/README.md": "pages.md"}

work = pathlib.Path(sys.argv[1])
pages = work / "pages"


def place_of(path):
    """Where a file of the tree stands in the site."""
    if path in FRONT:
        return FRONT[path]
    if re.fullmatch(r"docs/[^/]+\.md", path):
        return path[len("docs/"):]
    if path.startswith("docs/images/"):
        return path[len("docs/"):]
    if not os.path.isfile(path):
        sys.exit(f"site: a page links to {path}, which is no file")
    # A browser shows any text whose name ends so, and saves or runs some others.
    place = "files/" + path.replace("/", "-") + ".txt"
    (pages / "files").mkdir(exist_ok=True)
    shutil.copyfile(path, pages / place)
    return place


def title_of(page):
    return open(page, encoding="utf-8").readline().lstrip("# ").strip()


def text_of(element):
    return " ".join("".join(element.itertext()).split()) if element is not None else ""


def read_classes():
    """Name, page, description and header of each documented class, from doxygen's xml."""
    classes = []
    for file in sorted((work / "xml").glob("*.xml")):
        for compound in ElementTree.parse(file).getroot().iter("compounddef"):
            if compound.get("kind") not in ("class", "struct") or compound.get("prot") != "public":
                continue
            name = compound.findtext("compoundname")
            if "<" in name:
                continue
            header = compound.find("location").get("file")
            brief = text_of(compound.find("briefdescription"))
            if not brief:
                sys.exit(f"site: {name} in {header} has no description")
            classes.append((name, file.stem + ".html", brief, header))
    return classes


def link_classes(line, pages_of):
    def link(match):
        page = pages_of.get(match[1])
        return f'<a href="reference/{page}"><code>{match[1]}</code></a>' if page else match[0]
    # Not inside a link's own text.
    return re.sub(r"(?<!\[)`([A-Za-z_:]+)`(?!\])", link, line)


def fence_of(indent, info):
    """mkdocs takes a language and a title; the tree's pages say which test runs a block."""
    language, _, rest = info.partition(" ")
    for pattern, title in ((r"in (\S+)", r"\1, in part"), (r"part of the output of .*", "output"),
                           (r"output of .*", "output"), (r"(by|in) .*", ""), (r"bytes|long", "")):
        if re.fullmatch(pattern, rest):
            rest = re.sub(pattern, title, rest)
            break
    return f"{indent}```{language}" + (f' title="{rest}"' if rest else "")


def convert(path, pages_of):
    def follow(match):
        target = os.path.normpath(os.path.join(os.path.dirname(path), match[2]))
        text = match[1]
        if text.endswith(".md") and text.rpartition("/")[2] == os.path.basename(target):
            text = title_of(target)
        return f"[{text}]({place_of(target)}{match[3] or ''})"

    out = []
    inside, indent = False, ""
    for line in open(path, encoding="utf-8").read().split("\n"):
        fence = re.fullmatch(r"( *)```(.*)", line)
        if fence:
            # What belongs to an item of a list is indented by two here, by four in mkdocs.
            inside = not inside
            indent = fence[1]
            out.append(fence_of(indent * 2, fence[2]) if inside else indent + line)
        elif inside or line.startswith("    "):
            out.append(indent + line if inside else line)
        else:
            line = re.sub(r"\[([^\]]*)\]\((?![a-z]+:)([^)#\s]+)(#[^)\s]*)?\)", follow, line)
            out.append(line if line.startswith("#") else link_classes(line, pages_of))
    # Where a list follows a line of text at once, python-markdown sees no list.
    text = re.sub(r"(?m)^((?!- |\s|\d+\. ).+)\n(- )", r"\1\n\n\2", "\n".join(out))
    (pages / place_of(path)).write_text(text, encoding="utf-8")


def write_reference(classes):
    lines = ["# Reference", "",
             'Every public class; <a href="reference/files.html">the headers</a> show functions and',
             "other types too. `<vxclss/vxclss.h>` and `<vxfoundation/vxfoundation.h>` include them",
             "all."]
    for title, library in (("Classification", "vxclss/"), ("Foundation", "vxfoundation/")):
        lines += ["", "## " + title, "", "| class | what it is |", "|---|---|"]
        for name, page, brief, header in sorted(classes, key=lambda found: (found[3], found[0])):
            if library in header:
                brief = brief.replace("|", "\\|").replace("<", "&lt;")
                lines.append(f'| <a href="reference/{page}"><code>{name}</code></a> | {brief} |')
    (pages / "reference.md").write_text("\n".join(lines) + "\n", encoding="utf-8")


def navigation(names):
    nav = [{"Home": ["index.md", "pages.md", "changelog.md"]}]
    placed = set()
    for title, wanted in NAVIGATION.items():
        there = [name for name in wanted if name in names]
        placed.update(there)
        if there:
            nav.append({title: [name + ".md" for name in there]})
    rest = sorted(set(names) - placed - {"README"})
    if rest:
        nav.append({"More": [name + ".md" for name in rest]})
    return nav + [{"Reference": "reference.md"}]


def main():
    classes = read_classes()
    pages_of = {name: page for name, page, _, _ in classes}
    names = [path.stem for path in pathlib.Path("docs").glob("*.md")]
    for path in ["README.md", "CHANGELOG.md"] + [f"docs/{name}.md" for name in sorted(names)]:
        convert(path, pages_of)
    write_reference(classes)
    if os.path.isdir("docs/images"):
        shutil.copytree("docs/images", pages / "images")
    shutil.copyfile("docs/site/style.css", pages / "style.css")
    config = open("docs/site/mkdocs.yml", encoding="utf-8").read()
    (work / "mkdocs.yml").write_text(
        config + f"docs_dir: {json.dumps(str(pages))}\nnav: {json.dumps(navigation(names))}\n",
        encoding="utf-8")


main()
