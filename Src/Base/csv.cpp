#include "Base/csv.h"

namespace corv {

QByteArray csvText(const QString& text)
{
    const QByteArray formulaStarts("=+-@\t\r\n'");
    QByteArray field = text.toUtf8();
    if (!field.isEmpty() && formulaStarts.contains(field[0]))
        field.prepend('\'');
    const bool needsQuotes = field.contains(',') || field.contains('"') || field.contains('\n') ||
                             field.contains('\r') || field.contains(';') || field.contains('\t');
    return needsQuotes ? '"' + field.replace("\"", "\"\"") + '"' : field;
}

} // namespace corv
