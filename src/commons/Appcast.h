#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// One release in an update feed.
struct AppcastItem
{
    QString title;
    QString version; // compared with the running version
    QString displayVersion; // shown to the user; the version when the feed gives no other
    QString releaseNotes; // HTML or plain text from the item's description
    QString releaseNotesLink;
    QString link; // where the user gets the release: its web page, else its download
    QDateTime publicationDate; // invalid when the feed gives none
};

// An update feed: an RSS 2.0 channel whose items carry a version in the update namespace,
// as an element (<sparkle:version>) or on the enclosure (sparkle:version="…"). The namespace is
// recognised by its prefix's local names, whatever address it is declared with.
class Appcast
{
public:
    static Appcast parse(const QByteArray &data);

    bool isValid() const { return m_errorString.isEmpty(); }
    // Why the feed could not be used; empty when it can.
    QString errorString() const { return m_errorString; }

    // The item with the highest version, the first of equals.
    std::optional<AppcastItem> newestItem() const;

    QList<AppcastItem> items; // items without a version are left out

private:
    QString m_errorString;
};
