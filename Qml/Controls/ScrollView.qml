import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls

// A view of contents that are larger, with scroll bars.
Controls.ScrollView {}
