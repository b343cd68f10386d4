#pragma once

#include <QFlags>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class QWidget;

// A debugging aid: walks a built widget tree and reports layout faults that pass silently,
// for a person (a box in the log) or a machine (JSON). Off unless enabled.
class BricksLayoutValidator
{
public:
    enum class Severity { info = 0, warning = 1, error = 2 };
    enum class IssueKind {
        ambiguousLayout,
        zeroSize,
        outsideBounds,
        noSizeSource,
        translatesAutoresizingMaskMisuse,
        excessiveSize,
    };
    enum class Phase { postActivate = 0, postLayout = 1, both = 2 };

    struct Issue
    {
        Severity severity;
        IssueKind kind;
        QString viewPath;
        QString viewIdentifier; // empty when the view has none
        QString viewClass;
        QRectF frame;
        QVariantMap details;
        QStringList hints;
    };

    enum class Exemption {
        zeroSize = 1,
        outsideBounds = 2,
        ambiguousLayout = 4,
        noSizeSource = 8,
        all = 15,
    };
    using ValidationExemptions = QFlags<Exemption>;

    // A view that must be empty or loose by design carries its exemptions.
    static void setExemptions(QWidget *view, ValidationExemptions exemptions);
    static ValidationExemptions exemptions(const QWidget *view);

    static QList<Issue> validate(QWidget *root, Phase phase);
    static QList<Issue> validateAndReport(QWidget *root, Phase phase);
    static void report(const QList<Issue> &issues);
    static QStringList humanReport(const QList<Issue> &issues);
    static QString jsonReport(const QList<Issue> &issues);

    static QString word(Severity severity); // "ERROR", "WARNING", "INFO"
    static QString rawValue(IssueKind kind);
    // Below half a point a side counts as no size at all.
    static bool isZeroLength(double length) { return length < 0.5; }
};

Q_DECLARE_OPERATORS_FOR_FLAGS(BricksLayoutValidator::ValidationExemptions)

// The validator's settings, for the whole program.
struct BricksValidation
{
    enum class OutputMode { json = 0, humanReadable = 1, both = 2 };
    enum class Behavior { log = 0, assertOnError = 1, fatalOnError = 2 };

    static inline bool isEnabled = false;
    static inline OutputMode outputMode = OutputMode::humanReadable;
    static inline BricksLayoutValidator::Severity minimumSeverity
        = BricksLayoutValidator::Severity::warning;
    static inline Behavior behavior = Behavior::log;
};
