#pragma once

#include "acquisition/ExifToolProcess.h"
#include "acquisition/ExifToolResponseParser.h"
#include "platform/SerialQueue.h"

#include <QStringList>

#include <memory>
#include <optional>

// The single reader of the read worker: one worker, one file at a time, on one serial queue.
// The worker is started at the first read and replaced only when an answer can't be decoded.
class ModernExifExtraction
{
public:
    static ModernExifExtraction &shared();

    // The worker at workerPath, or the resource worker when it is empty.
    explicit ModernExifExtraction(QString workerPath = QString());

    ModernExifExtraction(const ModernExifExtraction &) = delete;
    ModernExifExtraction &operator=(const ModernExifExtraction &) = delete;

    SerialQueue &serializedAccessDispatchQueue() { return m_serializedAccessDispatchQueue; }

    // Reads path through the worker on the queue and returns its tags in storing order.
    QList<ExtractedTag> extractTagsFor(const QString &path, bool geolocation);
    // Reads path on the queue and hands every tag to MetadataStorage; returns once they are
    // queued there.
    void storeTagsFor(const QString &path, bool geolocation);
    // The same, for a caller that already runs on serializedAccessDispatchQueue.
    void internalStoreTags(const QString &path, bool geolocation);

    // The id of the current worker's process, or -1 before the first read.
    pid_t workerProcessIdentifier();

    // Owned by the queue, except that the lists are filled once before the first read.
    QStringList whiteList;
    QStringList rawWhiteList;

private:
    QList<ExtractedTag> internalExtractTags(const QString &path, bool geolocation);
    std::optional<QString> obtainStrippedString(const QString &path, bool geolocation);
    void startProcess(bool geolocation);

    const QString m_workerPath;
    // Meant to bound the requests a worker serves; nothing raises it, so a worker lives as long
    // as it answers.
    int exifToolProcessKeepAliveCounter = 0;
    std::unique_ptr<ExifToolProcess> exifToolProcess;
    SerialQueue m_serializedAccessDispatchQueue;
};
