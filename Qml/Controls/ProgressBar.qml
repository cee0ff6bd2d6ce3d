import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// A progress bar with the looks of the system.
Controls.ProgressBar {}
