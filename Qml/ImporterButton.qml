import QtQuick 2.15
import "."

// A button of the importer, where Return has no use but to press the button that has the keyboard.
CorvButton {
    height: 30
    isPressedByReturn: true
}
