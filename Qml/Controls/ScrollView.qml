import QtQuick 2.7
import QtQuick.Controls 1.4 as Controls
import QtQuick.Controls.Styles 1.4

// A scrolled area, with scroll bars in the colours of its window.
Controls.ScrollView {
    style: ScrollViewStyle {
        transientScrollBars: false
        handleOverlap: 0
        corner: Item {}
        incrementControl: Item {}
        decrementControl: Item {}
        scrollBarBackground: ScrollGround {}
        handle: ScrollHandle { hovered: styleData.hovered || styleData.pressed }
    }
}
