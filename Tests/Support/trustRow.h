#pragma once

#include <QFile>
#include <QString>

namespace corv::test {

/// Adds a line to the page of what was measured (Docs/trust.md): `subject` is the heading it comes
/// under, `what` what was measured, `value` the result with its unit. Does nothing unless
/// Docs/make-trust runs the suite, which it does for every suite with the label "trust"; it adds
/// the command that measures it again.
inline void trustRow(const QString& subject, const QString& what, const QString& value)
{
    const QString path = qEnvironmentVariable("VISTREL_TRUST_ROWS");
    if (path.isEmpty())
        return;
    QFile rows(path);
    if (!rows.open(QIODevice::WriteOnly | QIODevice::Append))
        qFatal("cannot write the rows of the page: %s", qPrintable(path));
    rows.write((subject + '\t' + what + '\t' + value + '\n').toUtf8());
}

} // namespace corv::test
