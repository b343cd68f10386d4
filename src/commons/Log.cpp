#include "Log.h"

#include <QByteArray>
#include <QString>

#include <cstdio>

namespace Log {

void line(QStringView text)
{
    const QByteArray bytes = text.toString().toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

} // namespace Log
