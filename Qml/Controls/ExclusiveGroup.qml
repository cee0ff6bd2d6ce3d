import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// Has at most one of its radio buttons checked.
Controls.ExclusiveGroup {}
