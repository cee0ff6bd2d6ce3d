#!/usr/bin/env python3
"""Turns the pilot's manual into a PDF: buildManual.py MANUAL.md LOGO VERSION MANUAL.pdf

The text is Markdown with pictures beside it. Its only heading of the first level is the title; title
and first picture go on the cover. The contents, with links and page numbers, and the bookmarks of the
PDF come from the other headings. manual.css has the look.
"""

import html
import mimetypes
import os
import pathlib
import sys
import urllib.parse

import markdown
import weasyprint
from markdown.treeprocessors import Treeprocessor
from xml.etree import ElementTree


# The addresses of the pictures get into the PDF: these are the same in whatever folder it is made.
BASE = "file:///vistrel/"
LOGO = "logo"


class Layout(Treeprocessor):
    """Takes title and cover picture out of the text, and gives each other picture a caption."""

    def __init__(self, md, folder):
        super().__init__(md)
        self.folder = folder
        self.title = None
        self.cover = None

    def run(self, root):
        for element in list(root):
            if element.tag == "h1" and self.title is None:
                self.title = "".join(element.itertext())
                root.remove(element)
            elif element.tag == "p" and len(element) == 1 and element[0].tag == "img":
                picture = element[0]
                if not (self.folder / picture.get("src")).is_file():
                    raise FileNotFoundError(f"no picture {picture.get('src')}")
                if self.cover is None:
                    self.cover = picture.get("src")
                    root.remove(element)
                else:
                    element.tag = "figure"
                    ElementTree.SubElement(element, "figcaption").text = picture.get("alt")


def contents(entries):
    """The headings of `toc_tokens` as nested lists of links."""
    lines = (
        f'<li><a href="#{entry["id"]}">{entry["name"]}</a>{contents(entry["children"])}</li>'
        for entry in entries
    )
    return f"<ul>{''.join(lines)}</ul>" if entries else ""


def fetcher(folder, logo):
    """Reads what is below BASE: pictures from `folder`, and the logo."""

    def fetch(url):
        name = urllib.parse.unquote(url.removeprefix(BASE))
        file = logo if name == LOGO else folder / name
        return {"string": file.read_bytes(), "mime_type": mimetypes.guess_type(file.name)[0]}

    return fetch


def build(manual, logo, version, pdf):
    converter = markdown.Markdown(extensions=["tables", "fenced_code", "sane_lists", "toc"])
    layout = Layout(converter, manual.parent)
    converter.treeprocessors.register(layout, "layout", priority=1)
    text = converter.convert(manual.read_text(encoding="utf-8"))
    if layout.title is None or layout.cover is None:
        raise ValueError("the manual has no title or no picture for its cover")
    chapters = [entry for entry in converter.toc_tokens if entry["level"] == 2]
    for entry in converter.toc_tokens:
        if entry["level"] == 1:
            chapters += entry["children"]
    name = f"Vistrel {version}: {layout.title}"
    page = f"""<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>{html.escape(name)}</title></head><body>
<section id="cover">
<div class="band"><img class="logo" src="{LOGO}" alt="Vistrel">
<p class="title">{html.escape(layout.title)}</p></div>
<img class="picture" src="{layout.cover}" alt="">
<p class="version">Version {html.escape(version)}</p>
</section>
<nav><p id="name">{html.escape(name)}</p>
<p class="heading">Contents</p>{contents(chapters)}</nav>
<main>{text}</main>
</body></html>"""
    # Equal texts give equal bytes: the fonts inside would carry the time of the build.
    os.environ.setdefault("SOURCE_DATE_EPOCH", "315532800")
    style = pathlib.Path(__file__).with_name("manual.css")
    source = weasyprint.HTML(string=page, base_url=BASE, url_fetcher=fetcher(manual.parent, logo))
    source.write_pdf(pdf, stylesheets=[weasyprint.CSS(filename=str(style))])


def main():
    if len(sys.argv) != 5:
        sys.exit("usage: buildManual.py MANUAL.md LOGO VERSION MANUAL.pdf")
    try:
        build(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3], sys.argv[4])
    except (OSError, ValueError) as error:
        sys.exit(f"buildManual.py: {error}")


if __name__ == "__main__":
    main()
