#!/usr/bin/env python3
"""Packs the template of the report: packTemplate.py SOURCES TEMPLATE PICTURE...

SOURCES is the folder of its parts; the pictures become word/media/. Equal contents give equal bytes: no
time of a file gets in, as it would with tar's zip, which keeps when a file was read.
"""
import sys
import zipfile
from pathlib import Path


def main():
    sources, template, *pictures = map(Path, sys.argv[1:])
    parts = {str(file.relative_to(sources)): file for file in sources.rglob("*") if file.is_file()}
    parts.update({f"word/media/{picture.name}": picture for picture in pictures})
    # The list of types comes first, where readers of such packages look for it.
    types = "[Content_Types].xml"
    names = [types] + sorted(name for name in parts if name != types)
    with zipfile.ZipFile(template, "w") as package:
        for name in names:
            entry = zipfile.ZipInfo(name)  # of the first day that a zip can name
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o100644 << 16
            package.writestr(entry, parts[name].read_bytes())


if __name__ == "__main__":
    main()
