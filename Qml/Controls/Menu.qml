import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// A menu of the menu bar, or one in a menu.
Controls.Menu {}
