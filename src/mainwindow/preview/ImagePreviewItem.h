#pragma once

#include <QImage>
#include <QString>
#include <QUrl>

#include <optional>

// One file of an image preview's list and what has been loaded for it.
struct ImagePreviewItem
{
    explicit ImagePreviewItem(const QString &path)
        : path(path)
        , url(QUrl::fromLocalFile(path))
    { }

    QString path;
    QUrl url;
    std::optional<QImage> thumbnail;
    bool isLoading = false;
    bool loadFailed = false;
};
