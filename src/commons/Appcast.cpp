#include "Appcast.h"

#include "VersionComparator.h"

#include <QXmlStreamReader>

namespace {

// Elements and attributes of the update namespace: any namespace but RSS's own (none).
bool isUpdateName(QStringView namespaceUri, QStringView localName, QStringView wanted)
{
    return !namespaceUri.isEmpty() && localName == wanted;
}

QString updateAttribute(const QXmlStreamAttributes &attributes, QStringView wanted)
{
    for (const QXmlStreamAttribute &attribute : attributes) {
        if (isUpdateName(attribute.namespaceUri(), attribute.name(), wanted))
            return attribute.value().trimmed().toString();
    }
    return {};
}

AppcastItem readItem(QXmlStreamReader &xml)
{
    AppcastItem item;
    QString shortVersion;
    QString download;
    while (xml.readNextStartElement()) {
        const QStringView name = xml.name();
        const QStringView uri = xml.namespaceUri();
        if (uri.isEmpty() && name == u"title") {
            item.title = xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
        } else if (uri.isEmpty() && name == u"link") {
            item.link = xml.readElementText().trimmed();
        } else if (uri.isEmpty() && name == u"description") {
            item.releaseNotes
                = xml.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
        } else if (uri.isEmpty() && name == u"pubDate") {
            item.publicationDate
                = QDateTime::fromString(xml.readElementText().trimmed(), Qt::RFC2822Date);
        } else if (uri.isEmpty() && name == u"enclosure") {
            const QXmlStreamAttributes attributes = xml.attributes();
            download = attributes.value(QStringLiteral("url")).trimmed().toString();
            if (item.version.isEmpty())
                item.version = updateAttribute(attributes, u"version");
            if (shortVersion.isEmpty())
                shortVersion = updateAttribute(attributes, u"shortVersionString");
            xml.skipCurrentElement();
        } else if (isUpdateName(uri, name, u"version")) {
            item.version = xml.readElementText().trimmed();
        } else if (isUpdateName(uri, name, u"shortVersionString")) {
            shortVersion = xml.readElementText().trimmed();
        } else if (isUpdateName(uri, name, u"releaseNotesLink")) {
            item.releaseNotesLink = xml.readElementText().trimmed();
        } else {
            xml.skipCurrentElement();
        }
    }
    if (item.version.isEmpty())
        item.version = shortVersion;
    item.displayVersion = shortVersion.isEmpty() ? item.version : shortVersion;
    if (item.link.isEmpty())
        item.link = download;
    return item;
}

} // namespace

Appcast Appcast::parse(const QByteArray &data)
{
    Appcast appcast;
    QXmlStreamReader xml(data);
    if (!xml.readNextStartElement() || xml.name() != u"rss" || !xml.namespaceUri().isEmpty()) {
        appcast.m_errorString = xml.hasError()
            ? QStringLiteral("not XML (line %1: %2)").arg(xml.lineNumber()).arg(xml.errorString())
            : QStringLiteral("not an RSS feed");
        return appcast;
    }
    while (xml.readNextStartElement()) {
        if (xml.name() != u"channel") {
            xml.skipCurrentElement();
            continue;
        }
        while (xml.readNextStartElement()) {
            if (xml.name() != u"item" || !xml.namespaceUri().isEmpty()) {
                xml.skipCurrentElement();
                continue;
            }
            AppcastItem item = readItem(xml);
            if (!item.version.isEmpty())
                appcast.items.append(std::move(item));
        }
    }
    if (xml.hasError()) {
        appcast.items.clear();
        appcast.m_errorString = QStringLiteral("not well-formed (line %1: %2)")
                                    .arg(xml.lineNumber())
                                    .arg(xml.errorString());
    } else if (appcast.items.isEmpty()) {
        appcast.m_errorString = QStringLiteral("no release with a version");
    }
    return appcast;
}

std::optional<AppcastItem> Appcast::newestItem() const
{
    std::optional<AppcastItem> newest;
    for (const AppcastItem &item : items) {
        if (!newest || VersionComparator::compareVersions(item.version, newest->version) > 0)
            newest = item;
    }
    return newest;
}
