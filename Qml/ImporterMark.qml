import QtQuick 2.7
import "."

// The mark of a row: its colour says whether there is a log, the shape on it what that rests on. A
// check for time and length, a double arrow for length, a triangle for time alone or for a doubt, a
// dash for no log.
Item {
    id: importerMark

    property bool matchFound
    // "none", "time", "lengthDiffers", "length" or "timeAndLength".
    property string evidence
    property bool doubtful

    readonly property string shape: !matchFound ? "dash"
        : doubtful || evidence === "time" || evidence === "lengthDiffers" ? "triangle"
        : evidence === "length" ? "arrow" : "check"
    readonly property color shade: shape === "check" ? Theme.evidenceCheck
        : shape === "arrow" ? Theme.evidenceLength
        : shape === "dash" ? Theme.evidenceNone
        : doubtful ? Theme.evidenceDoubt : Theme.evidenceTime

    onShapeChanged: drawing.requestPaint()
    onShadeChanged: drawing.requestPaint()

    Rectangle {
        objectName: "mark"
        anchors.fill: parent
        radius: width / 2
        color: importerMark.matchFound ? Theme.mark : Theme.textMissingMark
        border { width: 1; color: Theme.markEdge }
    }

    Canvas {
        id: drawing
        anchors.fill: parent

        function line(context, points) {
            context.beginPath();
            for (var i = 0; i < points.length; ++i)
                context.lineTo(points[i][0] * width, points[i][1] * height);
            context.stroke();
        }

        function drawTriangle(context) {
            context.beginPath();
            context.moveTo(width * 0.5, height * 0.1);
            context.lineTo(width * 0.92, height * 0.82);
            context.lineTo(width * 0.08, height * 0.82);
            context.closePath();
            context.fill();
            context.strokeStyle = Theme.markEdge;
            context.lineWidth = 1;
            context.stroke();
            context.lineWidth = width * 0.1;
            line(context, [[0.5, 0.36], [0.5, 0.56]]);
            line(context, [[0.5, 0.66], [0.5, 0.72]]);
        }

        onPaint: {
            var context = getContext("2d");
            context.reset();
            context.fillStyle = importerMark.shade;
            context.strokeStyle = importerMark.shade;
            context.lineWidth = width * 0.13;
            context.lineCap = "round";
            context.lineJoin = "round";
            if (importerMark.shape === "triangle") {
                drawTriangle(context);
            } else if (importerMark.shape === "check") {
                line(context, [[0.27, 0.53], [0.43, 0.69], [0.74, 0.33]]);
            } else if (importerMark.shape === "arrow") {
                line(context, [[0.2, 0.5], [0.8, 0.5]]);
                line(context, [[0.36, 0.34], [0.2, 0.5], [0.36, 0.66]]);
                line(context, [[0.64, 0.34], [0.8, 0.5], [0.64, 0.66]]);
            } else {
                line(context, [[0.3, 0.5], [0.7, 0.5]]);
            }
        }
    }
}
