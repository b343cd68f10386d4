#pragma once

#include "bricks/walls/WallDirectives.h"
#include "session/SortMode.h"

#include <QCoreApplication>

class DataModel;

// The two sort modes of the parameter side: the list is sorted by the first and, among items
// that tie, by the second. Choosing a group to step by sorts by its value.
class SortingFragment
{
    Q_DECLARE_TR_FUNCTIONS(SortingFragment)

public:
    static BuildDirectivesNamespace::FragmentWall directive(DataModel &model);
    // The popup's entries: each key ascending, then descending, in the order of the raw values.
    static QList<std::pair<QString, SortMode>> sortModeTitles();
};
