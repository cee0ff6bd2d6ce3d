import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// One tab: its contents are made when it is first shown.
Controls.Tab {}
