#pragma once

#include "bricks/LayoutTag.h"

#include <QHash>
#include <QObject>
#include <QRectF>

class QWidget;

// An invisible rectangle that takes part in a view's constraints like a child view would.
class LayoutGuide : public QObject
{
    Q_OBJECT

public:
    // The guide belongs to its owning view and dies with it.
    explicit LayoutGuide(QWidget *owningView, const QString &identifier = {});

    QWidget *owningView() const;
    QString identifier() const { return objectName(); }
    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF &frame) { m_frame = frame; }

    // The guides a view offers to tag lookups.
    static void setTaggedLayoutGuide(QWidget *view, const LayoutTag &tag, LayoutGuide *guide);
    static LayoutGuide *taggedLayoutGuide(QWidget *view, const LayoutTag &tag);

private:
    QRectF m_frame;
};
