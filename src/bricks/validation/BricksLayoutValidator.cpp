#include "BricksLayoutValidator.h"

#include "bricks/ViewAttachments.h"
#include "bricks/ViewTree.h"
#include "bricks/layout/ConstraintLayout.h"
#include "bricks/walls/FragmentStackView.h"
#include "bricks/walls/GridWall.h"
#include "bricks/walls/ScrollWall.h"
#include "bricks/walls/Wall.h"
#include "commons/Log.h"

#include <QGraphicsOpacityEffect>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLayout>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QWidget>

namespace {

using V = BricksLayoutValidator;
// Beyond this a side is taken for a runaway constraint rather than a design.
constexpr double ExcessiveLength = 20000;

QString className(const QWidget *view)
{
    return QString::fromLatin1(view->metaObject()->className());
}

// Qt's own helper widgets are named "qt_..."; they are not checked, but what they hold is.
// A split's dividers are part of the split.
bool isPrivate(const QWidget *view)
{
    return className(view).startsWith(u'_') || view->objectName().startsWith(u"qt_")
        || qobject_cast<const QSplitterHandle *>(view);
}

bool isEmbedded(const QWidget *view)
{
    const ViewAttachment *attached = ViewAttachments::find(view);
    return attached && attached->embedded;
}

// Controls are leaves: their inner widgets are the control's own business, and so are those of
// a widget embedded from elsewhere.
bool holdsViews(const QWidget *view)
{
    if (isEmbedded(view))
        return false;
    return qobject_cast<const Wall *>(view) || qobject_cast<const GridWall *>(view)
        || qobject_cast<const FragmentStackView *>(view)
        || qobject_cast<const QAbstractScrollArea *>(view) || qobject_cast<const ClipWall *>(view)
        || qobject_cast<const QTabWidget *>(view) || qobject_cast<const QStackedWidget *>(view)
        || qobject_cast<const QSplitter *>(view) || view->metaObject() == &QWidget::staticMetaObject
        || isPrivate(view);
}

bool isTransparent(const QWidget *view)
{
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(view->graphicsEffect());
    return effect && effect->opacity() <= 0;
}

bool isClipView(const QWidget *view)
{
    if (qobject_cast<const ClipWall *>(view))
        return true;
    auto *scroll = view->parentWidget() ? qobject_cast<QAbstractScrollArea *>(view->parentWidget())
                                        : nullptr;
    return scroll && scroll->viewport() == view;
}

ConstraintLayout *constraintLayoutOf(const QWidget *parent)
{
    return parent ? qobject_cast<ConstraintLayout *>(parent->layout()) : nullptr;
}

// Whether the parent's ordinary Qt layout places the view.
QLayout *placingQtLayout(QWidget *view)
{
    QWidget *parent = view->parentWidget();
    if (!parent || !parent->layout() || constraintLayoutOf(parent))
        return nullptr;
    return parent->layout()->indexOf(view) >= 0 ? parent->layout() : nullptr;
}

// Constraints of the view on itself that a Qt layout cannot hold: only a required width or
// height becomes a size limit that it respects.
bool hasConstraintsBeyondSizeLimits(const QWidget *view)
{
    const ViewAttachment *attached = ViewAttachments::find(view);
    if (!attached)
        return false;
    for (const LayoutConstraint &c : attached->ownConstraints) {
        const bool size = c.firstAttribute == LayoutAttribute::width
            || c.firstAttribute == LayoutAttribute::height;
        if (!size || c.priority < LayoutPriority::required)
            return true;
    }
    return false;
}

QVariantMap rectMap(const QRectF &r)
{
    return {{"x", r.x()}, {"y", r.y()}, {"width", r.width()}, {"height", r.height()}};
}

class Walker
{
public:
    QList<V::Issue> issues;
    bool constraintChecks = false;
    bool geometryChecks = false;
    QWidget *root = nullptr;

    void walk(QWidget *view, const QString &parentPath)
    {
        if (view->isWindow() && view != root)
            return;
        const QString path
            = parentPath.isEmpty() ? className(view) : parentPath + u'/' + className(view);
        // A window not yet shown counts as hidden; the root is checked all the same.
        if (geometryChecks && ((view->isHidden() && view != root) || isTransparent(view)))
            return;
        if (!isPrivate(view)) {
            if (constraintChecks)
                checkTranslatesAutoresizingMask(view, path);
            if (geometryChecks)
                validateGeometry(view, path);
        }
        if (!holdsViews(view))
            return;
        for (QObject *child : view->children())
            if (auto *widget = qobject_cast<QWidget *>(child))
                walk(widget, path);
    }

private:
    void add(V::Severity severity, V::IssueKind kind, QWidget *view, const QString &path,
             const QRectF &frame, QVariantMap details, QStringList hints)
    {
        issues.append({severity, kind, path, view->objectName(), className(view), frame,
                       std::move(details), std::move(hints)});
    }

    QRectF frameOf(QWidget *view)
    {
        // Where the constraint layout placed it, before rounding to whole pixels.
        if (ConstraintLayout *layout = constraintLayoutOf(view->parentWidget())) {
            if (layout->indexOf(view) >= 0)
                return layout->solvedFrame(view);
        }
        return QRectF(view->geometry());
    }

    void checkTranslatesAutoresizingMask(QWidget *view, const QString &path)
    {
        QLayout *qtLayout = placingQtLayout(view);
        if (!qtLayout || !hasConstraintsBeyondSizeLimits(view))
            return;
        add(V::Severity::error, V::IssueKind::translatesAutoresizingMaskMisuse, view, path,
            frameOf(view),
            {{"message",
              "View has translatesAutoresizingMaskIntoConstraints = true but also has "
              "active constraints"},
             {"qtLayout", QString::fromLatin1(qtLayout->metaObject()->className())}},
            {"Set translatesAutoresizingMaskIntoConstraints = false for views managed by Auto "
             "Layout"});
    }

    void validateGeometry(QWidget *view, const QString &path)
    {
        const V::ValidationExemptions exempt = V::exemptions(view);
        const QRectF frame = frameOf(view);
        QWidget *parent = view == root ? nullptr : view->parentWidget();
        ConstraintLayout *constraints = constraintLayoutOf(parent);
        Qt::Orientations ambiguous;
        if (constraints && constraints->indexOf(view) >= 0)
            ambiguous = constraints->ambiguousAxes(view);

        if (!(exempt & V::Exemption::ambiguousLayout) && ambiguous) {
            QStringList axes;
            if (ambiguous & Qt::Horizontal)
                axes << "horizontal position or width";
            if (ambiguous & Qt::Vertical)
                axes << "vertical position or height";
            add(V::Severity::error, V::IssueKind::ambiguousLayout, view, path, frame,
                {{"message",
                  "View has ambiguous layout - Auto Layout cannot determine unique "
                  "position/size"}},
                {"Add constraints for: " + axes.join(", "),
                 "Check that translatesAutoresizingMaskIntoConstraints = false"});
        }

        const bool zeroWidth = V::isZeroLength(frame.width());
        const bool zeroHeight = V::isZeroLength(frame.height());
        if (!(exempt & V::Exemption::zeroSize) && (zeroWidth || zeroHeight) && !isClipView(view)) {
            if (zeroWidth)
                add(V::Severity::warning, V::IssueKind::zeroSize, view, path, frame,
                    {{"message", "View has zero width"}},
                    {"Ensure horizontal constraint chain is complete (left + right, or "
                     "explicit width)",
                     "Check if view has intrinsic width or needs explicit width constraint"});
            if (zeroHeight)
                add(V::Severity::warning, V::IssueKind::zeroSize, view, path, frame,
                    {{"message", "View has zero height"}},
                    {"Ensure vertical constraint chain is complete (top + bottom, or explicit "
                     "height)",
                     "If this is a container, child views need top AND bottom constraints"});
        }

        // Inside a parent without area everything is outside; the parent's own issue tells.
        const QRectF bounds(QPointF(0, 0), parent ? QSizeF(parent->size()) : QSizeF());
        if (parent && !bounds.isEmpty() && !(exempt & V::Exemption::outsideBounds)) {
            // A frame without area is outside when its corner is.
            const bool outside
                = frame.isEmpty() ? !bounds.contains(frame.topLeft()) : !frame.intersects(bounds);
            if (outside)
                add(V::Severity::warning, V::IssueKind::outsideBounds, view, path, frame,
                    {{"message", "View is completely outside its parent's bounds"},
                     {"parentBounds", rectMap(bounds)}},
                    {"Check positioning constraints"});
        }

        if (parent && !(exempt & V::Exemption::noSizeSource)) {
            const QSize hint = view->sizeHint();
            const bool hasIntrinsicWidth = hint.width() > 0;
            const bool hasIntrinsicHeight = hint.height() > 0;
            const bool placedByQt = placingQtLayout(view) != nullptr
                || qobject_cast<QAbstractScrollArea *>(parent)
                || qobject_cast<QStackedWidget *>(parent) || qobject_cast<QSplitter *>(parent)
                || isClipView(view) || qobject_cast<QAbstractScrollArea *>(parent->parentWidget());
            const bool constrained = constraints && constraints->indexOf(view) >= 0;
            QStringList axes;
            if (!hasIntrinsicWidth && !placedByQt && !(constrained && !(ambiguous & Qt::Horizontal))
                && view->minimumWidth() != view->maximumWidth())
                axes << "width";
            if (!hasIntrinsicHeight && !placedByQt && !(constrained && !(ambiguous & Qt::Vertical))
                && view->minimumHeight() != view->maximumHeight())
                axes << "height";
            if (!axes.isEmpty())
                add(V::Severity::warning, V::IssueKind::noSizeSource, view, path, frame,
                    {{"message", "View has no size source for: " + axes.join(", ")},
                     {"hasIntrinsicWidth", hasIntrinsicWidth},
                     {"hasIntrinsicHeight", hasIntrinsicHeight}},
                    {"Add explicit size constraints or ensure view provides intrinsic content "
                     "size"});
        }

        if (frame.width() > ExcessiveLength || frame.height() > ExcessiveLength)
            add(V::Severity::warning, V::IssueKind::excessiveSize, view, path, frame,
                {{"message", "View is excessively large"}},
                {"Check for a constraint that grows without bound"});
    }
};

} // namespace

void BricksLayoutValidator::setExemptions(QWidget *view, ValidationExemptions exemptions)
{
    ViewAttachments::of(view).validationExemptions = int(exemptions);
}

BricksLayoutValidator::ValidationExemptions BricksLayoutValidator::exemptions(const QWidget *view)
{
    const ViewAttachment *attached = ViewAttachments::find(view);
    return ValidationExemptions::fromInt(attached ? attached->validationExemptions : 0);
}

QList<BricksLayoutValidator::Issue> BricksLayoutValidator::validate(QWidget *root, Phase phase)
{
    Walker walker;
    walker.root = root;
    if (phase == Phase::postActivate || phase == Phase::both) {
        walker.constraintChecks = true;
        walker.walk(root, {});
        walker.constraintChecks = false;
    }
    if (phase == Phase::postLayout || phase == Phase::both) {
        ViewTree::layoutSubtreeIfNeeded(root);
        walker.geometryChecks = true;
        walker.walk(root, {});
    }
    QList<Issue> kept;
    for (const Issue &issue : std::as_const(walker.issues))
        if (issue.severity >= BricksValidation::minimumSeverity)
            kept.append(issue);
    return kept;
}

QList<BricksLayoutValidator::Issue> BricksLayoutValidator::validateAndReport(QWidget *root,
                                                                             Phase phase)
{
    if (!BricksValidation::isEnabled)
        return {};
    const QList<Issue> issues = validate(root, phase);
    report(issues);
    return issues;
}

QString BricksLayoutValidator::word(Severity severity)
{
    switch (severity) {
    case Severity::info:
        return QStringLiteral("INFO");
    case Severity::warning:
        return QStringLiteral("WARNING");
    case Severity::error:
        break;
    }
    return QStringLiteral("ERROR");
}

QString BricksLayoutValidator::rawValue(IssueKind kind)
{
    switch (kind) {
    case IssueKind::ambiguousLayout:
        return QStringLiteral("ambiguous_layout");
    case IssueKind::zeroSize:
        return QStringLiteral("zero_size");
    case IssueKind::outsideBounds:
        return QStringLiteral("outside_bounds");
    case IssueKind::noSizeSource:
        return QStringLiteral("no_size_source");
    case IssueKind::translatesAutoresizingMaskMisuse:
        return QStringLiteral("translates_misuse");
    case IssueKind::excessiveSize:
        break;
    }
    return QStringLiteral("excessive_size");
}

QStringList BricksLayoutValidator::humanReport(const QList<Issue> &issues)
{
    int errors = 0, warnings = 0, infos = 0;
    for (const Issue &issue : issues) {
        errors += issue.severity == Severity::error;
        warnings += issue.severity == Severity::warning;
        infos += issue.severity == Severity::info;
    }
    const QString rule = QString(70, QChar(0x2550));
    QStringList lines;
    lines << QChar(0x2554) + rule;
    lines << QStringLiteral("\u2551 BricksLayoutValidator found %1 issue(s)").arg(issues.size());
    lines << QStringLiteral("\u2551 Errors: %1, Warnings: %2, Info: %3")
                 .arg(errors)
                 .arg(warnings)
                 .arg(infos);
    lines << QChar(0x2560) + rule;
    for (const Issue &issue : issues) {
        lines << QStringLiteral("\u2551 [%1] %2: %3")
                     .arg(word(issue.severity), rawValue(issue.kind),
                          issue.details.value("message").toString());
        lines << QStringLiteral("\u2551   Path: %1%2")
                     .arg(issue.viewPath,
                          issue.viewIdentifier.isEmpty() ? QString()
                                                         : " (" + issue.viewIdentifier + ")");
        lines << QStringLiteral("\u2551   Frame: (%1, %2, %3, %4)")
                     .arg(issue.frame.x())
                     .arg(issue.frame.y())
                     .arg(issue.frame.width())
                     .arg(issue.frame.height());
        for (const QString &hint : issue.hints)
            lines << QStringLiteral("\u2551   Hint: ") + hint;
    }
    lines << QChar(0x255a) + rule;
    return lines;
}

QString BricksLayoutValidator::jsonReport(const QList<Issue> &issues)
{
    QJsonArray list;
    for (const Issue &issue : issues) {
        list.append(QJsonObject {
            {"severity", word(issue.severity).toLower()},
            {"kind", rawValue(issue.kind)},
            {"viewPath", issue.viewPath},
            {"viewIdentifier",
             issue.viewIdentifier.isEmpty() ? QJsonValue() : QJsonValue(issue.viewIdentifier)},
            {"viewClass", issue.viewClass},
            {"frame", QJsonObject::fromVariantMap(rectMap(issue.frame))},
            {"details", QJsonObject::fromVariantMap(issue.details)},
            {"hints", QJsonArray::fromStringList(issue.hints)},
        });
    }
    const QJsonObject report {{"BricksLayoutValidator",
                               QJsonObject {{"issueCount", int(issues.size())}, {"issues", list}}}};
    return QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Compact));
}

void BricksLayoutValidator::report(const QList<Issue> &issues)
{
    using Mode = BricksValidation::OutputMode;
    if (BricksValidation::outputMode != Mode::json)
        for (const QString &line : humanReport(issues))
            Log::line(line);
    if (BricksValidation::outputMode != Mode::humanReadable)
        Log::line(jsonReport(issues));

    int errors = 0;
    for (const Issue &issue : issues)
        errors += issue.severity == Severity::error;
    if (errors == 0 || BricksValidation::behavior == BricksValidation::Behavior::log)
        return;
    const QString message = QStringLiteral("[BricksLayoutValidator] Found %1 layout error(s) - "
                                           "see log above for details")
                                .arg(errors);
    if (BricksValidation::behavior == BricksValidation::Behavior::fatalOnError)
        qFatal("%s", qPrintable(message));
    Q_ASSERT_X(false, "BricksLayoutValidator", qPrintable(message));
    qCritical("%s", qPrintable(message));
}
