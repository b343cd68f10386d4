#pragma once

#include "BuildDirectivesCore.h"

// Runs its executable at once while building, or registers it for a later phase.
class CodeBlockDecorator : public Decorator
{
public:
    CodeBlockDecorator(std::shared_ptr<CodeBlockExecutable> codeBlockExecutable,
                       CodeExecutionPhase codeBlockExecution)
        : codeBlockExecutable(std::move(codeBlockExecutable))
        , codeBlockExecution(codeBlockExecution)
    { }

    void apply(QWidget *view, const std::shared_ptr<Binding> &binding, Assembly *assembly,
               CodeExecutionPhase codePhase, QList<CodeBlock> &codeBlocks) override
    {
        if (codeBlockExecution == CodeExecutionPhase::buildAndLayout) {
            codeBlockExecutable->execute(view, binding.get(), assembly);
            return;
        }
        Q_UNUSED(codePhase)
        codeBlocks.append({codeBlockExecution, codeBlockExecutable, view, binding});
    }

    const std::shared_ptr<CodeBlockExecutable> codeBlockExecutable;
    const CodeExecutionPhase codeBlockExecution;
};
