.pragma library

// The row of the importer's list that shows one matching, which is a map of the search.
function rowOf(matching) {
    return {
        name: matching.videoFilename + " : " + matching.logFilename,
        videoPath: matching.videoFile,
        logPath: matching.logFile,
        matchFound: matching.matchFound,
        duration: matching.videoDuration, // in milliseconds
        missionName: matching.missionName,
        flightName: matching.flightName,
        flightNumber: matching.flightNumber,
        namingDefined: matching.namingDefined,
        evidence: matching.evidence,
        doubtful: matching.doubtful,
        evidenceText: matching.evidenceText,
        partText: matching.partText,
        fileText: fileText(matching)
    };
}

// Time, size and folder of the video.
function fileText(matching) {
    var folder = matching.videoFile.substring(0, matching.videoFile.lastIndexOf("/"));
    var time = matching.videoTime === "" ? "" : "Written " + matching.videoTime.replace("T", " ")
                                                + ", ";
    return time + sizeText(matching.videoSize) + ", in " + folder;
}

// What is left of a video that was cut off after a moment is no "0.0 MB".
function sizeText(bytes) {
    return bytes < 100000 ? Math.ceil(bytes / 1000) + " kB"
                          : (bytes / 1000000).toFixed(1) + " MB";
}
