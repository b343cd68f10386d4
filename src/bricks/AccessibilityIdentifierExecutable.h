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

    // Qt Widgets have no identifier of their own for assistive tools: a property carries it.
    static constexpr const char *property = "accessibilityIdentifier";

    const LayoutTag tag;
};
