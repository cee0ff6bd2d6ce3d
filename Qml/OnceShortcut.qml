import QtQuick 2.15
import Shortcuts 1.0 as Native

// A shortcut that acts once for each press: a held key repeats nothing.
Shortcut {
    signal pressed()

    autoRepeat: false
    // Under load the library does not know every repeat.
    onActivated: {
        if (!Native.HeldKey.repeats)
            pressed();
    }
}
