#pragma once

#include "BuildDirectivesCore.h"
#include "LayoutTag.h"

#include <QHash>
#include <QList>
#include <QPointer>

#include <memory>

// What a build gave: the root views, the bindings by view and by tag, and the code blocks of
// later phases. The views stay inactive until activate() connects the bindings.
class Assembly
{
public:
    Assembly(QList<QWidget *> views, QHash<LayoutTag, std::shared_ptr<Binding>> bindingsByTag,
             QHash<QWidget *, std::shared_ptr<Binding>> bindingsByView,
             QList<CodeBlock> codeBlocks);

    // Runs the prepare blocks once, then activates every binding, also on a second call: only
    // the prepare phase is ever run, and each call adds its unbindables again.
    Assembly &activate();

    QWidget *view() const { return views.value(0); }

    const QList<QWidget *> views;
    const QHash<LayoutTag, std::shared_ptr<Binding>> bindingsByTag;
    const QHash<QWidget *, std::shared_ptr<Binding>> bindingsByView;
    QList<std::shared_ptr<Unbindable>> unbindables;
    const QList<CodeBlock> codeBlocks;
    CodeExecutionPhase currentPhase = CodeExecutionPhase::buildAndLayout;
};
