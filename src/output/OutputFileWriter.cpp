#include "OutputFileWriter.h"

#include <QFileInfo>
#include <QSaveFile>
#include <QStringEncoder>

TextEncoding OutputFileWriter::encodingForMode(int encodingMode)
{
    switch (encodingMode) {
    case 1:
        return TextEncoding::UTF16;
    case 2:
        return TextEncoding::ISOLatin1;
    default:
        return TextEncoding::UTF8;
    }
}

OutputFileWriter::EncodedText OutputFileWriter::encode(const QString &text, TextEncoding encoding)
{
    EncodedText result;
    switch (encoding) {
    case TextEncoding::UTF8:
        result.bytes = text.toUtf8();
        break;
    case TextEncoding::UTF16: {
        QStringEncoder encoder(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
        result.bytes = encoder.encode(text);
        break;
    }
    case TextEncoding::ISOLatin1: {
        result.bytes.reserve(text.size());
        // By code point, so that a character outside the basic plane is one "?", not two.
        for (const char32_t c : text.toUcs4()) {
            if (c <= 0xFF) {
                result.bytes.append(char(c));
                continue;
            }
            result.bytes.append('?');
            const QString character = QString::fromUcs4(&c, 1);
            if (!result.unmappableCharacters.contains(character))
                result.unmappableCharacters.append(character);
        }
        break;
    }
    }
    return result;
}

QString OutputFileWriter::withAllowedFileType(const QString &filePath,
                                              const QStringList &allowedTypes)
{
    if (allowedTypes.isEmpty() || filePath.isEmpty())
        return filePath;
    const QString suffix = QFileInfo(filePath).suffix();
    if (allowedTypes.contains(suffix, Qt::CaseInsensitive))
        return filePath;
    return filePath + QLatin1Char('.') + allowedTypes.first();
}

CommitResult OutputFileWriter::save(const QString &text, TextEncoding encoding,
                                    const QString &filePath)
{
    CommitResult result;
    result.filePath = filePath;
    if (filePath.isEmpty()) {
        result.message = QStringLiteral("No file name was given for the list.");
        return result;
    }
    const EncodedText encoded = encode(text, encoding);
    QSaveFile file(filePath);
    // Writing in place would defeat the point: a failure must not leave half a file.
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly) || file.write(encoded.bytes) != encoded.bytes.size()
        || !file.commit()) {
        result.message = QStringLiteral("Could not save the list as \"%1\": %2")
                             .arg(filePath, file.errorString());
        return result;
    }
    result.success = true;
    if (!encoded.unmappableCharacters.isEmpty()) {
        result.message = QStringLiteral("ISO Latin 1 cannot hold %1, so each was saved as \"?\".")
                             .arg(encoded.unmappableCharacters.join(QStringLiteral(", ")));
    }
    return result;
}
