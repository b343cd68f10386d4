#pragma once

#include <QByteArrayView>
#include <QString>

// Text in the classic Mac OS Roman encoding: the lower half is ASCII, the upper half a fixed
// table. Every byte sequence decodes, so the decoder never fails.
namespace MacRomanDecoder {

QString decode(QByteArrayView bytes);

} // namespace MacRomanDecoder
