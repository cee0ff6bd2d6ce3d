.pragma library

// What the dialogs give are URLs, what the native objects take are paths. Every way from one to the
// other is here, for both families of systems: `os` is the name that Qt.platform.os gives and
// is only passed by tests.

function isWindows(os) {
    return (os === undefined ? Qt.platform.os : os) === "windows";
}

// "file:///C:/a" is "C:/a", "file:///tmp/a" is "/tmp/a": there the last slash is the root.
function withoutPrefix(url, os) {
    return url.toString().replace(/^(file:\/{3})/, isWindows(os) ? "" : "/");
}

// What is left of "file:" once the prefix did not match: a share, "file://server/a".
function undecodedPath(url, os) {
    return withoutPrefix(url, os).replace(/^file:/, "");
}

function decodedPath(url, os) {
    return decoded(undecodedPath(url, os));
}

// As decodedPath, for the callers that leave a share's "file:" in place.
function decodedLocalPath(url, os) {
    return decoded(withoutPrefix(url, os));
}

// The path in a url property. A plain word written to such a property became relative to the
// documents, and is that word again.
function chosenPath(url, os) {
    return decodedPath(url.toString().replace(/^qrc:\/*/, ""), os);
}

// A text that is no proper encoding is returned as it is.
function decoded(text) {
    try {
        return decodeURIComponent(text);
    } catch (malformed) {
        return text;
    }
}

// The URL of an absolute path, always with three slashes; any other text, and a URL, as it is.
function toUrl(path) {
    var text = path.toString();
    if (!/^(\/|[A-Za-z]:[\/\\])/.test(text))
        return text;
    // Elsewhere than on Windows a backslash is a letter like others.
    var slashed = text.charAt(0) === "/" ? text : text.replace(/\\/g, "/");
    var parts = slashed.split("/").map(encodeURIComponent);
    return "file:///" + parts.join("/").replace(/^\/+/, "").replace(/^([A-Za-z])%3A/, "$1:");
}

// A file beside the program, for the shell.
function urlInFolder(folder, fileName) {
    return toUrl(folder.toString().replace(/\/+$/, "") + "/" + fileName);
}

// Completes a name with the first suffix of a filter such as "JPEG (*.jpg)", unless it ends in one
// of that filter's or of the dialog's others: a date at the end of a name is no suffix.
function withSuffix(path, nameFilter, otherFilters) {
    var name = path.substring(path.lastIndexOf("/") + 1);
    var suffixes = filterSuffixes(nameFilter);
    if (name === "" || suffixes.length === 0)
        return path;
    var known = suffixes.concat(filterSuffixes((otherFilters || []).join(" ")));
    var endsInOne = known.some(function(suffix) {
        var end = "." + suffix.toLowerCase();
        return name.length > end.length && name.slice(-end.length).toLowerCase() === end;
    });
    return endsInOne ? path : path + "." + suffixes[0];
}

function filterSuffixes(nameFilter) {
    var found = (nameFilter || "").match(/\*\.([^\s)*]+)/g) || [];
    return found.map(function(pattern) { return pattern.substring(2); });
}

// The last four characters show the kind of a file, in any case.
function hasExtension(url, extensions) {
    return extensions.indexOf(url.toString().slice(-4).toLowerCase()) >= 0;
}
