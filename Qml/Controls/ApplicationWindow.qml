import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// A window with a menu bar.
Controls.ApplicationWindow {}
