.pragma library

// What the about window says of the rights in the program and in the libraries it uses.

var ownership = "Vistrel is the work and the property of the Vistrel authors, &copy; 2026. It may be used, copied "
    + "and changed under the terms of its end-user licence agreement, the file LICENSE that comes "
    + "with it, and comes without any warranty.";

var components = [
    {
        name: "OpenCV",
        paragraphs: [
            "Reads, converts and writes the video. &copy; 2000-2022 Intel Corporation and the "
            + "OpenCV contributors.",
            "Licensed under the Apache License, Version 2.0, with older parts under the 3-clause "
            + "BSD license. The Apache License lets anybody use, change and pass on the work and "
            + "the patents in it, in source or binary form, if its text and the notices of its "
            + "authors are passed on with it and changed files say so; it gives no right to the "
            + "authors' trademarks. The BSD license asks that its notice is kept and that the "
            + "authors' names endorse nothing. Both come without warranty and without liability.",
            "Full texts: /usr/share/common-licenses/Apache-2.0 and "
            + "/usr/share/doc/libopencv-core406/copyright."
        ]
    },
    {
        name: "DocxFactory",
        paragraphs: [
            "The report is merged from a template in the manner of DocxFactory by a component of "
            + "Vistrel's own. No part of the DocxFactory library is contained in this program or "
            + "delivered with it, so none of its license terms apply here."
        ]
    },
    {
        name: "Qt",
        paragraphs: [
            "Windows, drawing, threads, files and network. &copy; The Qt Company Ltd. and other "
            + "contributors.",
            "Used under the GNU Lesser General Public License, version 3. The libraries are linked "
            + "dynamically and unchanged: you may replace them with a version "
            + "of your own that has the same interface, may study how the two work together for "
            + "that purpose, and get the source code of Qt from the distribution that delivers "
            + "it. Qt comes without warranty.",
            "Full texts: /usr/share/common-licenses/LGPL-3 and /usr/share/common-licenses/GPL-3."
        ]
    },
    {
        name: "pugixml",
        paragraphs: [
            "Reads XML. &copy; 2006-2022 Arseny Kapoulkine, 2003 Kristen Wegner.",
            "MIT license: everybody may use, change, pass on and sell it, provided that its "
            + "copyright notice and the license go along. No warranty, no liability.",
            "Full text: /usr/share/doc/libpugixml1v5/copyright."
        ]
    },
    {
        name: "QuaZip",
        paragraphs: [
            "Reads and writes the ZIP container of Word documents. &copy; 2005-2016 Sergey A. "
            + "Tachenov and contributors, with parts of MiniZip, &copy; 1998-2010 Gilles Vollant.",
            "GNU Lesser General Public License, version 2.1 or later, with an exception for static "
            + "linking; MiniZip under the zlib license. The library is linked dynamically and may be "
            + "replaced as Qt may.",
            "Full texts: /usr/share/common-licenses/LGPL-2.1 and "
            + "/usr/share/doc/libquazip1-qt5-1/copyright."
        ]
    },
    {
        name: "FFmpeg",
        paragraphs: [
            "Decodes and encodes video on behalf of OpenCV. &copy; 2000-2023 the FFmpeg developers.",
            "GNU Lesser General Public License, version 2.1 or later; as built by the distribution, "
            + "with optional parts, under the GNU General Public License. It is installed, and may "
            + "be replaced, apart from this program.",
            "Full texts: /usr/share/common-licenses/LGPL-2.1, /usr/share/common-licenses/GPL-2 and "
            + "/usr/share/common-licenses/GPL-3."
        ]
    },
    {
        name: "zlib",
        paragraphs: [
            "Compresses data for QuaZip and Qt. &copy; 1995-2022 Jean-loup Gailly and Mark Adler.",
            "zlib license: free for any use and change, as long as nobody else claims to have "
            + "written it, changed versions say that they are changed, and the notice stays in the "
            + "source. No warranty.",
            "Full text: /usr/share/doc/zlib1g/copyright."
        ]
    }
];

function section(component) {
    return "<h3>" + component.name + "</h3><p>" + component.paragraphs.join("</p><p>") + "</p>";
}

function text() {
    return "<p>" + ownership + "</p><h2>Open source licenses</h2><p>This software uses components "
        + "available under open source licenses, listed below.</p>"
        + components.map(section).join("");
}
