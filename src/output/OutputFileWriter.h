#pragma once

#include "OutputFormatType.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

// Writes a list's text to a file in one of the three encodings a user can choose.
class OutputFileWriter
{
public:
    struct EncodedText
    {
        QByteArray bytes;
        // Each character the encoding could not hold, once, in order of first appearance.
        QStringList unmappableCharacters;
    };

    // encodingMode 1 is UTF-16, 2 ISO Latin 1; any other value UTF-8.
    static TextEncoding encodingForMode(int encodingMode);
    // UTF-16 is little-endian with a byte order mark; ISO Latin 1 writes "?" for a character
    // it cannot hold.
    static EncodedText encode(const QString &text, TextEncoding encoding);
    // filePath with the first allowed type added, unless it already ends in one of them.
    static QString withAllowedFileType(const QString &filePath, const QStringList &allowedTypes);
    // Writes to a temporary file beside the target and renames it over the target, so that a
    // failure leaves any earlier file as it was.
    static CommitResult save(const QString &text, TextEncoding encoding, const QString &filePath);
};
