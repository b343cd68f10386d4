#include "DateFormatter.h"

#include <QLocale>

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <memory>

namespace {

// ICU knows each locale's medium and short forms, which QLocale does not offer. A formatter per
// thread, made again when the application's locale changes.
struct ThreadFormatter
{
    QString localeName;
    std::unique_ptr<icu::DateFormat> format;
};

icu::DateFormat *formatterFor(const QString &localeName)
{
    thread_local ThreadFormatter cached;
    if (!cached.format || cached.localeName != localeName) {
        cached.localeName = localeName;
        cached.format.reset(icu::DateFormat::createDateTimeInstance(
            icu::DateFormat::kMedium, icu::DateFormat::kShort,
            icu::Locale::createCanonical(localeName.toUtf8().constData())));
    }
    return cached.format.get();
}

} // namespace

QString DateFormatter::mediumDateShortTime(const QDateTime &date)
{
    const QLocale locale;
    icu::DateFormat *format = formatterFor(locale.name());
    if (!format)
        return locale.toString(date.toLocalTime(), QLocale::ShortFormat);
    icu::UnicodeString text;
    format->format(UDate(date.toMSecsSinceEpoch()), text);
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}
