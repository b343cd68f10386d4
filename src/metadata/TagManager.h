#pragma once

#include "metadata/MetadataSource.h"

#include <QCoreApplication>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

// The fixed catalogue of every column and metadata key known by name: its group in the info
// pane, its category, the one source that delivers it and its display name. A column id and a
// metadata key are the same string. Built once on first use; read from any thread without a lock.
class TagManager
{
    Q_DECLARE_TR_FUNCTIONS(TagManager)

public:
    // The five groups of the info pane.
    enum class DescriptiveTagSpace { Basic, Size, EXIF, GPS, IPTC };
    static constexpr std::array<DescriptiveTagSpace, 5> allDescriptiveTagSpaces
        = {DescriptiveTagSpace::Basic, DescriptiveTagSpace::Size, DescriptiveTagSpace::EXIF,
           DescriptiveTagSpace::GPS, DescriptiveTagSpace::IPTC};

    // Absent for Basic and Size.
    static std::optional<QString> localizedAbbreviation(DescriptiveTagSpace space);

    static const TagManager &shared();

    // The ids of one group, in the order of the category lists.
    const QStringList &columnIDArrayForDescriptiveTag(DescriptiveTagSpace space) const
    {
        return m_columnIDArrayForDescriptiveTag[size_t(space)];
    }
    // Seven entries each; "-" stands for a separator.
    const QStringList &localizedTagCategories() const { return m_localizedTagCategories; }
    const QStringList &localizedBriefTagCategories() const { return m_localizedBriefTagCategories; }
    const QHash<QString, DescriptiveTagSpace> &columnIDsToDescriptiveTagSpaceMapping() const
    {
        return m_columnIDsToDescriptiveTagSpaceMapping;
    }
    // Six lists: Basic, Size, search index attributes, EXIF, GPS, IPTC; "-" is a separator.
    const QList<QStringList> &columnIDsByCategory() const { return m_columnIDsByCategory; }
    const QHash<QString, MetadataSource> &metaDataKeysToSourceMapping() const
    {
        return m_metaDataKeysToSourceMapping;
    }
    // What the tag list offers.
    const QStringList &columnIDs() const { return m_columnIDs; }
    const QHash<QString, QString> &columnNameTranslations() const
    {
        return m_columnNameTranslations;
    }

    // The one source of a key, or absent for a key that is reached only by naming a source.
    std::optional<MetadataSource> sourceForKey(const QString &key) const;
    // The localised display name, or the id itself where the catalogue has none.
    QString displayName(const QString &columnID) const;

    // The boolean key that flags disagreement between an XMP column and its legacy value.
    static std::optional<QString> divergenceFlagKey(const QString &xmpColumnID);

private:
    TagManager();

    void buildColumnIDArrayForDescriptiveTag();

    std::array<QStringList, allDescriptiveTagSpaces.size()> m_columnIDArrayForDescriptiveTag;
    QStringList m_localizedTagCategories;
    QStringList m_localizedBriefTagCategories;
    QHash<QString, DescriptiveTagSpace> m_columnIDsToDescriptiveTagSpaceMapping;
    QList<QStringList> m_columnIDsByCategory;
    QHash<QString, MetadataSource> m_metaDataKeysToSourceMapping;
    QStringList m_columnIDs;
    QHash<QString, QString> m_columnNameTranslations;
};
