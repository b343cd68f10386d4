#pragma once

#include "BuildDirectivesCore.h"
#include "LayoutTag.h"

// Sets the view's accessibility identifier from a tag.
class AccessibilityIdentifierExecutable : public CodeBlockExecutable
{
public:
    explicit AccessibilityIdentifierExecutable(const LayoutTag &tag)
        : tag(tag)
    { }
    void execute(QWidget *view, Binding *, Assembly *) override;

    // Qt Widgets have no identifier of their own for assistive tools: the view's attachments
    // carry it.
    static QString identifier(const QWidget *view);

    const LayoutTag tag;
};
