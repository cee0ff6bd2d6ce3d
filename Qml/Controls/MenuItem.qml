import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// A line of a menu, with its key.
Controls.MenuItem {}
