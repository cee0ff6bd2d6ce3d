#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace corv::test {

/// The parts of a package by their names.
using Parts = QMap<QString, QByteArray>;

/// The parts of a small template whose document has these blocks, in UTF-8, and a page of
/// 10000 x 16000 twentieths of a point within margins of 500.
Parts templateParts(const QByteArray& blocks);

/// A content control of that name about `content`, with further properties.
QByteArray control(const QByteArray& name, const QByteArray& content,
                   const QByteArray& properties = {});

/// A paragraph around `content`.
QByteArray paragraph(const QByteArray& content);

/// A run of text.
QByteArray run(const QByteArray& text);

/// A run with a picture of this width, in English Metric Units, shown through a relationship.
QByteArray drawing(qint64 width, const QByteArray& relationship = "sample");

void writeZip(const QString& fileName, const Parts& parts);
Parts readZip(const QString& fileName);

/// What breaks a rule of the format in this document: a part that is not well-formed, of a type
/// that is not declared, or that leads to a part that is not there; an id that is used twice; a
/// control character. Empty if all is well.
QStringList brokenRules(const Parts& parts);

/// The text of the document, a line for each paragraph and line break.
QString documentText(const Parts& parts);

} // namespace corv::test
