import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// Turns while something is being waited for.
Controls.BusyIndicator {}
