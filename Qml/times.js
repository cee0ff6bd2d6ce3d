.pragma library

// Times as they are typed and read: always in the digits 0 to 9, which not every locale writes.

// The zeros of the digits that locales use in place of ours.
var zeros = [0x0660, 0x06f0, 0x07c0, 0x0966, 0x09e6, 0x0a66, 0x0ae6, 0x0b66, 0x0be6, 0x0c66, 0x0ce6,
             0x0d66, 0x0e50, 0x0ed0, 0x0f20, 0x1040, 0x17e0, 0x1810, 0xff10];

function plainDigits(text) {
    return text.replace(/[^\x00-\x7f]/g, function(character) {
        var code = character.charCodeAt(0);
        for (var i = 0; i < zeros.length; ++i) {
            if (code >= zeros[i] && code < zeros[i] + 10)
                return String(code - zeros[i]);
        }
        return character;
    });
}

// A typed number as the fields show it: a comma is the point of other keyboards.
function plainNumber(text) {
    return plainDigits(text).replace(",", ".");
}

function minutesAndSeconds(time) {
    return plainDigits(Qt.formatTime(time, "mm:ss.zzz"));
}
