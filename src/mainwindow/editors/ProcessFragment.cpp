#include "ProcessFragment.h"

#include "ContainerBound.h"
#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"
#include "session/DataModel.h"

#include <QLabel>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;

B::FragmentWall ProcessFragment::directive(DataModel &model)
{
    using namespace EditorStyle;
    const LayoutTag caption("processCaption"), files("processFilesCheckBox"),
        folders("processFoldersCheckBox"), subfolders("processSubFoldersCheckBox");
    const auto box = [](const QString &title, const std::shared_ptr<UserDefaultsVariable<bool>> &v,
                        const LayoutTag &tag, const QString &toolTip) {
        return B::CheckBox(title, v).tag(tag).style<QWidget>([title, toolTip](QWidget *w) {
            w->setToolTip(toolTip);
            w->setAccessibleName(tr("Process %1").arg(title.toLower()));
        });
    };

    return B::FragmentWall {B::StaticLabel(tr("Process:")).tag(caption).style<QLabel>(&makeCaption),
                            box(tr("Files"), model.processFiles, files,
                                tr("Process files; a change scans the sources again")),
                            box(tr("Folders"), model.processFolders, folders,
                                tr("Process folders; a change scans the sources again")),
                            box(tr("Subfolders"), model.processSubFolders, subfolders,
                                tr("Process subfolders; a change scans the sources again"))}
        .layout({pin(caption, D::left, horizontalMargin), after(files, caption, columnSpacing),
                 after(folders, files, columnSpacing), after(subfolders, folders, columnSpacing),
                 ContainerBound::atLeast(subfolders, D::right, horizontalMargin),
                 rowWithin({files, caption, folders, subfolders}, verticalMargin)})
        .code(CodeExecutionPhase::prepare, [](QWidget *view, Binding *, Assembly *) {
            view->setObjectName(QStringLiteral("processFragment"));
        });
}
