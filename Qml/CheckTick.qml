import QtQuick 2.7
import "."

// The tick of a check box or a menu entry.
Canvas {
    id: tick

    property color color: Theme.radioMark

    onColorChanged: requestPaint()
    onPaint: {
        var context = getContext("2d");
        context.reset();
        context.strokeStyle = color;
        context.lineWidth = 2;
        context.moveTo(width * 0.1, height * 0.55);
        context.lineTo(width * 0.4, height * 0.85);
        context.lineTo(width * 0.9, height * 0.15);
        context.stroke();
    }
}
