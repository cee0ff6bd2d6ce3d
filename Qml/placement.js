.pragma library

// Where a window comes up over the window that it belongs to. Some desktops put it into a corner of
// the screen otherwise. Its title bar stays on the screen, also where the window is too high for it.

function screenRight(parent) {
    return parent.screen.virtualX + parent.screen.width;
}

function screenBottom(parent) {
    return parent.screen.virtualY + parent.screen.height;
}

// To the right of the parent, or at its right edge where the screen ends: what is done there is
// done with the picture in view.
function besidePicture(window, parent) {
    var right = parent.x + parent.width;
    window.x = Math.max(parent.x, Math.min(right + 8, screenRight(parent) - window.width - 8));
    window.y = parent.y + 40;
}

function inMiddle(window, parent) {
    var left = parent.x + (parent.width - window.width) / 2;
    var top = parent.y + (parent.height - window.height) / 2;
    window.x = Math.max(parent.screen.virtualX,
                        Math.min(left, screenRight(parent) - window.width));
    window.y = Math.max(parent.y, Math.min(top, screenBottom(parent) - window.height - 8));
}
