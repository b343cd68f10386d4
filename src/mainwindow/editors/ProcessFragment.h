#pragma once

#include "bricks/walls/WallDirectives.h"

#include <QCoreApplication>

class DataModel;

// The scan settings of the parameter side: whether files, folders and subfolders are
// processed. A change scans the sources again.
class ProcessFragment
{
    Q_DECLARE_TR_FUNCTIONS(ProcessFragment)

public:
    static BuildDirectivesNamespace::FragmentWall directive(DataModel &model);
};
