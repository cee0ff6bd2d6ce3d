import QtQuick 2.7

// The entries of the menus for a screen reader: the bus does not list menus that open as windows of
// their own. Nothing is to be seen, and nothing takes the pointer.
Item {
    id: menuReader

    property var menuBar: null
    // Not before the first frame, which it would hold up.
    property bool listed: false

    // All entries of the menus and of those inside them, without separators. The recent projects
    // come and go; the start page has them, too.
    function entriesOf(menus) {
        var entries = [];
        for (var i = 0; i < menus.length; ++i) {
            var entry = menus[i];
            if (entry.objectName === "recentProjectsMenu")
                continue;
            if (entry.items !== undefined)
                entries = entries.concat(entriesOf(entry.items));
            else if (entry.triggered !== undefined)
                entries.push(entry);
        }
        return entries;
    }

    width: 1
    height: 1
    Accessible.role: Accessible.PopupMenu
    Accessible.name: "Entries of the menus"

    Timer {
        interval: 500
        running: true
        onTriggered: menuReader.listed = true
    }

    Repeater {
        model: menuReader.listed && menuReader.menuBar !== null
               ? menuReader.entriesOf(menuReader.menuBar.menus) : []

        Item {
            readonly property string plainText: menuReader.menuBar.plainText(modelData.text)

            width: 1
            height: 1
            enabled: modelData.enabled
            Accessible.role: Accessible.MenuItem
            Accessible.name: plainText
            Accessible.description: enabled ? "" : "unavailable"
            Accessible.focusable: enabled
            Accessible.checkable: modelData.checkable
            Accessible.checked: modelData.checked
            Accessible.onPressAction: modelData.trigger()
        }
    }
}
