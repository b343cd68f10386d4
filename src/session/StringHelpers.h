#pragma once

#include <QString>
#include <QStringList>

namespace StringHelpers {

// Pads every run of numeric characters to at least 32 characters with "0", so that a plain
// string comparison orders embedded numbers by value (IMG2 before IMG12).
QString stringByExpandingAllNumberGroups(const QString &text);

// Line feeds, carriage returns and tabs become the two-character escapes \n, \r and \t.
QString withEncodedLineBreaksAndTabs(const QString &text);

QString asCommaSeparatedString(const QStringList &list);

// The characters a reader counts: "é" written as e and a combining accent, or an emoji made of
// several code points, is one.
qsizetype characterCount(const QString &text);

// "a", "a and b", "a, b, and c".
QString englishListJoined(const QStringList &items);

// Path pieces as the file system names them, trailing slashes ignored; "/" is its own last
// component, and the folder of "/a" is "/".
QString lastPathComponent(const QString &path);
QString deletingLastPathComponent(const QString &path);

} // namespace StringHelpers
