#pragma once

#include "metadata/MetadataSource.h"
#include "metadata/TagManager.h"

#include <array>
#include <span>

// The fixed rows from which TagManager builds its maps.
namespace TagManagerTables {

struct TagSpaceRow
{
    const char *columnID;
    TagManager::DescriptiveTagSpace space;
};

struct KeySourceRow
{
    const char *key;
    MetadataSource source;
};

struct DisplayNameRow
{
    const char *columnID;
    const char *displayName;
};

extern const char *const columnIDsArray[8];
extern const TagSpaceRow descriptiveTagSpaceRows[67];
extern const std::array<std::span<const char *const>, 6> columnIDsByCategoryLists;
extern const KeySourceRow keySourceRows[131];
// The system's own columns and the content hashes come first, the readers' names after them.
extern const std::array<std::span<const DisplayNameRow>, 8> columnDisplayNameGroups;

} // namespace TagManagerTables
