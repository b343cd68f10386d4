// Fuzz target for the reading of worker answers: the reader's completeness test, the final
// decoding, the parse loop and the date parser must take any bytes without crashing or reading
// out of bounds.
#include "acquisition/DateTimeOriginalParser.h"
#include "acquisition/ExifToolProcess.h"
#include "acquisition/ExifToolResponseParser.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const bool complete = ExifToolProcess::responseIsComplete(bytes);
    const std::optional<QString> text = ExifToolProcess::decodeResponse(bytes);
    if (!text)
        __builtin_trap();
    if (complete
        && !text->endsWith(QLatin1StringView(ExifToolProcess::terminator.data(),
                                             ExifToolProcess::terminator.size()))
        && !bytes.endsWith(ExifToolProcess::terminator))
        __builtin_trap();
    const QList<ExtractedTag> tags = ExifToolResponseParser::parse(*text);
    for (const ExtractedTag &tag : tags) {
        if (tag.value.isEmpty())
            __builtin_trap();
        DateTimeOriginalParser::sharedInstance().parseISO8601(tag.value);
    }
    return 0;
}
