#include "ModernExifExtraction.h"

#include "metadata/MetadataStorage.h"
#include "platform/Resources.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int keepAliveLimit = 100;
}

ModernExifExtraction &ModernExifExtraction::shared()
{
    static ModernExifExtraction instance;
    return instance;
}

ModernExifExtraction::ModernExifExtraction(QString workerPath)
    : m_workerPath(workerPath.isEmpty() ? Resources::path(u"extract.pl"_s) : std::move(workerPath))
    , m_serializedAccessDispatchQueue(u"ModernExifExtraction"_s)
{ }

QList<ExtractedTag> ModernExifExtraction::extractTagsFor(const QString &path, bool geolocation)
{
    QList<ExtractedTag> tags;
    m_serializedAccessDispatchQueue.sync([&] { tags = internalExtractTags(path, geolocation); });
    return tags;
}

void ModernExifExtraction::storeTagsFor(const QString &path, bool geolocation)
{
    m_serializedAccessDispatchQueue.sync([&] { internalStoreTags(path, geolocation); });
}

void ModernExifExtraction::internalStoreTags(const QString &path, bool geolocation)
{
    MetadataStorage &storage = MetadataStorage::shared();
    for (const ExtractedTag &tag : internalExtractTags(path, geolocation))
        storage.store(path, tag.source, tag.key, tag.value);
}

pid_t ModernExifExtraction::workerProcessIdentifier()
{
    return m_serializedAccessDispatchQueue.syncValue<pid_t>(
        [this] { return exifToolProcess ? exifToolProcess->processIdentifier() : pid_t(-1); });
}

void ModernExifExtraction::startProcess(bool geolocation)
{
    exifToolProcess
        = std::make_unique<ExifToolProcess>(m_workerPath, whiteList, rawWhiteList, geolocation);
}

std::optional<QString> ModernExifExtraction::obtainStrippedString(const QString &path,
                                                                  bool geolocation)
{
    if (exifToolProcess && exifToolProcessKeepAliveCounter >= keepAliveLimit) {
        exifToolProcess->terminate();
        exifToolProcess.reset();
    }
    if (!exifToolProcess)
        startProcess(geolocation);
    return exifToolProcess->obtainStrippedString(path);
}

QList<ExtractedTag> ModernExifExtraction::internalExtractTags(const QString &path, bool geolocation)
{
    std::optional<QString> response = obtainStrippedString(path, geolocation);
    // Only an answer that can't be decoded comes back absent: start a fresh worker and ask
    // again, for as long as it takes.
    while (!response) {
        if (exifToolProcess)
            exifToolProcess->terminate();
        startProcess(geolocation);
        response = obtainStrippedString(path, geolocation);
    }
    return ExifToolResponseParser::parse(*response);
}
