#include "Log/printable.h"

#include <algorithm>

namespace corv {

bool isSteering(QChar character)
{
    const ushort code = character.unicode();
    const bool isControl = code < 0x20 || (code >= 0x7f && code < 0xa0);
    const bool turnsDirection = code == 0x200e || code == 0x200f || code == 0x061c ||
                                (code >= 0x2028 && code <= 0x202e) ||
                                (code >= 0x2066 && code <= 0x2069);
    return isControl || turnsDirection;
}

QString printable(QString text)
{
    std::replace_if(text.begin(), text.end(), isSteering, QChar(QChar::ReplacementCharacter));
    return text;
}

} // namespace corv
