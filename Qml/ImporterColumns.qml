import QtQuick 2.7

// The columns of the importer's list, the same for its header and for each row: shares of the row,
// the first column taking what the others leave.
Row {
    id: importerColumns

    property real rowWidth
    readonly property real timeWidth: rowWidth * 0.05
    readonly property real missionWidth: rowWidth * 0.2
    readonly property real flightWidth: rowWidth * 0.3
    readonly property real numberWidth: rowWidth * 0.05
    readonly property real nameWidth: width - timeWidth - missionWidth - flightWidth - numberWidth
                                      - 4 * spacing

    spacing: 6
}
