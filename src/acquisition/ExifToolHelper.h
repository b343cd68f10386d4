#pragma once

#include <QStringList>
#include <QStringView>

#include <mutex>

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

    const QStringList &supportedFileFormats() const { return m_supportedFileFormats; }
    bool fileFormatSupported(QStringView fileExtension) const;

    // Movie and sound files whose position is one signed pair, without reference tags.
    static const QStringList &quickTimeFamily();
    static bool isQuickTimeFamily(QStringView fileExtension);

private:
    ExifToolHelper();

    // Owned by m_mutex: the two lists.
    mutable std::mutex m_mutex;
    QStringList m_rawWhiteList;
    QStringList m_whiteList;
    bool m_appended = false;
    const QStringList m_supportedFileFormats;
};
