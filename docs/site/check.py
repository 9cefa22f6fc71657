# SPDX-License-Identifier: MIT
"""check.py SITE: fails on a link, picture or anchor that the built site does not have."""

import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name"):
                self.anchors.add(value)
            elif name in ("href", "src") and value:
                self.links.append(value)


def main():
    site = pathlib.Path(sys.argv[1]).resolve()
    pages = {path: Page(path) for path in sorted(site.rglob("*.html"))}
    broken, count, outside = [], 0, []
    for path, page in pages.items():
        for link in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme in ("javascript", "data", "mailto"):
                continue
            if parts.scheme or parts.netloc:
                outside.append(link)
                continue
            if path.name == "404.html":
                continue  # its links are absolute, for whatever server shows it
            count += 1
            target = path
            if parts.path:
                target = (path.parent / urllib.parse.unquote(parts.path)).resolve()
            if target.is_dir():
                target = target / "index.html"
            anchor = urllib.parse.unquote(parts.fragment)
            if not target.is_file():
                broken.append(f"{path.relative_to(site)}: {link}")
            elif anchor == "nested-classes":
                pass  # doxygen's own, to a heading that it leaves out where all of them are private
            elif anchor and target in pages and anchor not in pages[target].anchors:
                broken.append(f"{path.relative_to(site)}: no such place: {link}")
    for line in broken:
        print("site:", line, file=sys.stderr)
    print(f"site: {len(pages)} pages, {count} links inside, {len(broken)} broken; outside: "
          + ", ".join(sorted(set(outside))))
    return 1 if broken else 0


sys.exit(main())
