#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <functional>
#include <mutex>
#include <optional>

// The vocabulary of the ExifTool reader: which tags the worker is asked for, which file types
// are worth asking about, and which of them keep their position the QuickTime way.
class ExifToolHelper
{
public:
    static ExifToolHelper &sharedInstance();

    QStringList rawWhiteList() const;
    QStringList whiteList() const;
    // Extends the white list once, at start-up, before the first file is read; later calls
    // change nothing, since a running worker would not see them.
    void appendToWhiteList(const QStringList &additional);

    // Reads path through the worker once: a file already marked as read is skipped, an
    // unsupported one only marked. Returns when its tags are queued to MetadataStorage.
    void obtainMetaDataFor(const QString &path, bool geolocation);

    const QStringList &supportedFileFormats() const { return m_supportedFileFormats; }
    bool fileFormatSupported(QStringView fileExtension) const;

    // Movie and sound files whose position is one signed pair, without reference tags.
    static const QStringList &quickTimeFamily();
    static bool isQuickTimeFamily(QStringView fileExtension);

    // The values of GPSDataAvailable and IPTCDataComplete.
    enum LocationStatus : int { None = 0, Complete = 1, Incomplete = 2, Divergent = 3 };
    // A file's ExifTool value of a key at the generic source, or absent.
    using KeyLookup = std::function<std::optional<QString>(const QString &key)>;
    struct GPSStatusDecision
    {
        LocationStatus status;
        // Complete positions get a map marker, even when the XMP copy then disagrees.
        bool addsMarker;
    };
    static GPSStatusDecision decideGPSStatus(QStringView fileExtension, const KeyLookup &valueOf);
    static LocationStatus decideIPTCStatus(const KeyLookup &valueOf);

private:
    ExifToolHelper();

    // Owned by m_mutex: the two lists.
    mutable std::mutex m_mutex;
    QStringList m_rawWhiteList;
    QStringList m_whiteList;
    bool m_appended = false;
    const QStringList m_supportedFileFormats;
};
