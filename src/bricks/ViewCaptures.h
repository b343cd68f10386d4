#pragma once

#include <QHash>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

// Views stored by name while a tree is built, so that a recipe can reach a view made elsewhere.
class ViewCaptures
{
public:
    QHash<QString, QPointer<QWidget>> capturedViews;
};

struct ViewCaptureReference
{
    std::shared_ptr<ViewCaptures> captures;
    QString key;
};
