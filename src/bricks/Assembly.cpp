#include "Assembly.h"

Assembly::Assembly(QList<QWidget *> views, QHash<LayoutTag, std::shared_ptr<Binding>> bindingsByTag,
                   QHash<QWidget *, std::shared_ptr<Binding>> bindingsByView,
                   QList<CodeBlock> codeBlocks)
    : views(std::move(views))
    , bindingsByTag(std::move(bindingsByTag))
    , bindingsByView(std::move(bindingsByView))
    , codeBlocks(std::move(codeBlocks))
{ }

Assembly &Assembly::activate()
{
    // Blocks of the activate and finalize phases stay registered without running: that is
    // kept deliberately, and is why a tag's accessibility identifier is never set this way.
    if (currentPhase == CodeExecutionPhase::buildAndLayout) {
        currentPhase = CodeExecutionPhase::prepare;
        for (const CodeBlock &block : codeBlocks) {
            if (block.phase == currentPhase)
                block.executable->execute(block.view, block.binding.get(), this);
        }
    }
    for (auto it = bindingsByView.cbegin(); it != bindingsByView.cend(); ++it) {
        if (!it.value())
            continue;
        Binding *result = it.value()->activate();
        if (auto *unbindable = dynamic_cast<Unbindable *>(result))
            unbindables.append(std::shared_ptr<Unbindable>(it.value(), unbindable));
    }
    return *this;
}
