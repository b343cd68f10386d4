#pragma once

#include "LayoutTag.h"
#include "layout/LayoutConstraint.h"
#include "layout/LayoutGuide.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class ConstraintSystem;
class QWidget;

// What the toolkit keeps about a widget beyond what Qt keeps for it.
struct ViewAttachment
{
    // The layout tags of the view, in the order they were given.
    QList<LayoutTag> tags;
    // Constraints of the view on itself (its size), solved by whoever places the view.
    QList<LayoutConstraint> ownConstraints;
    QHash<LayoutTag, QPointer<LayoutGuide>> taggedLayoutGuides;
    // By axis, horizontal first; absent where the size policy decides.
    std::optional<float> contentHuggingPriority[2];
    std::optional<float> compressionResistancePriority[2];
    int validationExemptions = 0;
    QString accessibilityIdentifier;
    QString tabTitle;
    // A widget made elsewhere and placed as a leaf: its insides are its own.
    bool embedded = false;
    // The constraints that a container without a constraint layout holds for views inside it.
    std::shared_ptr<ConstraintSystem> hostedConstraintSystem;
};

// One table of the toolkit's data for every widget that has some; an entry goes away with its
// widget. Main thread only.
class ViewAttachments
{
public:
    // The view's entry, made on first use.
    static ViewAttachment &of(QWidget *view);
    // The view's entry, or null when it has none.
    static const ViewAttachment *find(const QWidget *view);
};
