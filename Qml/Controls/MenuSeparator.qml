import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// A line between groups of a menu.
Controls.MenuSeparator {}
