#include "TagManager.h"

#include "TagManagerTables.h"

#include <algorithm>

namespace {

QStringList toStringList(std::span<const char *const> ids)
{
    QStringList list;
    list.reserve(qsizetype(ids.size()));
    for (const char *id : ids)
        list.append(QString::fromLatin1(id));
    return list;
}

// The separator stays as it is, since the screens test for it.
QStringList localizedCategories()
{
    //: tag category name
    static const char *const categories[] = {
        QT_TRANSLATE_NOOP("TagManager", "Basic"), QT_TRANSLATE_NOOP("TagManager", "Size"), "-",
        QT_TRANSLATE_NOOP("TagManager", "EXIF"),  QT_TRANSLATE_NOOP("TagManager", "GPS"),  "-",
        QT_TRANSLATE_NOOP("TagManager", "IPTC"),
    };
    QStringList list;
    for (const char *category : categories) {
        list.append(qstrcmp(category, "-") == 0
                        ? QStringLiteral("-")
                        : QCoreApplication::translate("TagManager", category));
    }
    return list;
}

} // namespace

std::optional<QString> TagManager::localizedAbbreviation(DescriptiveTagSpace space)
{
    switch (space) {
    case DescriptiveTagSpace::Basic:
    case DescriptiveTagSpace::Size:
        return std::nullopt;
    case DescriptiveTagSpace::EXIF:
        //: Descriptive Tag Space Abbreviation
        return tr("EXIF");
    case DescriptiveTagSpace::GPS:
        //: Descriptive Tag Space Abbreviation
        return tr("GPS");
    case DescriptiveTagSpace::IPTC:
        //: Descriptive Tag Space Abbreviation
        return tr("IPTC");
    }
    return std::nullopt;
}

const TagManager &TagManager::shared()
{
    // A function-local static is built once, even when first asked for on several threads.
    static const TagManager &instance = *new TagManager;
    return instance;
}

TagManager::TagManager()
{
    using namespace TagManagerTables;

    // Both hold the same short names; the brief list serves the narrow places.
    m_localizedTagCategories = localizedCategories();
    m_localizedBriefTagCategories = localizedCategories();

    for (const TagSpaceRow &row : descriptiveTagSpaceRows)
        m_columnIDsToDescriptiveTagSpaceMapping.insert(QString::fromLatin1(row.columnID),
                                                       row.space);

    for (std::span<const char *const> category : columnIDsByCategoryLists)
        m_columnIDsByCategory.append(toStringList(category));

    for (const KeySourceRow &row : keySourceRows)
        m_metaDataKeysToSourceMapping.insert(QString::fromLatin1(row.key), row.source);

    m_columnIDs = toStringList(columnIDsArray);

    // The names are taken in the language of the moment and do not follow a later change.
    for (std::span<const DisplayNameRow> group : columnDisplayNameGroups) {
        for (const DisplayNameRow &row : group) {
            m_columnNameTranslations.insert(
                QString::fromLatin1(row.columnID),
                QCoreApplication::translate("TagManager", row.displayName));
        }
    }

    buildColumnIDArrayForDescriptiveTag();
}

void TagManager::buildColumnIDArrayForDescriptiveTag()
{
    // Positions in the category lists laid end to end, separators included.
    QHash<QString, qsizetype> firstPosition;
    qsizetype position = 0;
    for (const QStringList &category : std::as_const(m_columnIDsByCategory)) {
        for (const QString &id : category) {
            if (!firstPosition.contains(id))
                firstPosition.insert(id, position);
            ++position;
        }
    }

    // Ids that no category list holds go last, in the order of the catalogue's rows.
    const auto sortKey = [&](const QString &id) {
        const auto found = firstPosition.constFind(id);
        return found == firstPosition.cend() ? std::pair(1, qsizetype(0)) : std::pair(0, *found);
    };
    for (const TagManagerTables::TagSpaceRow &row : TagManagerTables::descriptiveTagSpaceRows)
        m_columnIDArrayForDescriptiveTag[size_t(row.space)].append(
            QString::fromLatin1(row.columnID));
    for (QStringList &ids : m_columnIDArrayForDescriptiveTag) {
        std::stable_sort(ids.begin(), ids.end(), [&](const QString &a, const QString &b) {
            return sortKey(a) < sortKey(b);
        });
    }
}

std::optional<MetadataSource> TagManager::sourceForKey(const QString &key) const
{
    const auto found = m_metaDataKeysToSourceMapping.constFind(key);
    if (found == m_metaDataKeysToSourceMapping.cend())
        return std::nullopt;
    return *found;
}

QString TagManager::displayName(const QString &columnID) const
{
    return m_columnNameTranslations.value(columnID, columnID);
}

std::optional<QString> TagManager::divergenceFlagKey(const QString &xmpColumnID)
{
    static const QHash<QString, QString> flags = {
        {QStringLiteral("XMPCity"), QStringLiteral("CityDivergent")},
        {QStringLiteral("XMPCountry"), QStringLiteral("CountryDivergent")},
        {QStringLiteral("XMPState"), QStringLiteral("StateDivergent")},
        {QStringLiteral("XMPLocation"), QStringLiteral("SublocationDivergent")},
        {QStringLiteral("XMPGPSLatitude#"), QStringLiteral("GPSDivergent")},
        {QStringLiteral("XMPGPSLongitude#"), QStringLiteral("GPSDivergent")},
        {QStringLiteral("SidecarCity"), QStringLiteral("SidecarCityDivergent")},
        {QStringLiteral("SidecarCountry"), QStringLiteral("SidecarCountryDivergent")},
        {QStringLiteral("SidecarState"), QStringLiteral("SidecarStateDivergent")},
        {QStringLiteral("SidecarLocation"), QStringLiteral("SidecarSublocationDivergent")},
        {QStringLiteral("SidecarGPSLatitude#"), QStringLiteral("SidecarGPSDivergent")},
        {QStringLiteral("SidecarGPSLongitude#"), QStringLiteral("SidecarGPSDivergent")},
    };
    const auto found = flags.constFind(xmpColumnID);
    if (found == flags.cend())
        return std::nullopt;
    return *found;
}
