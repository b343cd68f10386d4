#include "EditorStyle.h"

#include "bricks/SymbolIcons.h"
#include "bricks/layout/ConstraintLayout.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <algorithm>

namespace EditorStyle {

namespace {

constexpr const char *captionProperty = "palometParameterCaption";

// Keeps the captions of one parameter side aligned when the font changes.
class CaptionAligner : public QObject
{
public:
    explicit CaptionAligner(QWidget *root)
        : QObject(root)
        , m_root(root)
    {
        setObjectName(QStringLiteral("captionAligner"));
        root->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_root
            && (event->type() == QEvent::FontChange
                || event->type() == QEvent::ApplicationFontChange
                || event->type() == QEvent::StyleChange))
            alignCaptionColumns(m_root);
        return false;
    }

private:
    QPointer<QWidget> m_root;
};

} // namespace

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < 128;
}

QColor color(ColorRole role, const QPalette &palette)
{
    const bool dark = isDark(palette);
    switch (role) {
    case ColorRole::SystemGray:
        return dark ? QColor(152, 152, 157) : QColor(142, 142, 147);
    case ColorRole::IndicatorGray:
        return QColor::fromRgbF(0.577f, 0.577f, 0.577f);
    case ColorRole::BorderBlue:
        return dark ? QColor(0x4c, 0x9b, 0xff) : QColor(0x2f, 0x7b, 0xf5);
    case ColorRole::UncommittedTextColor:
        // Orange, apart from the blue of a value that is on disk and from the red of an error.
        return dark ? QColor(0xff, 0xa2, 0x3a) : QColor(0xc2, 0x5a, 0x00);
    case ColorRole::SystemRed:
        return dark ? QColor(0xff, 0x45, 0x3a) : QColor(0xd7, 0x00, 0x15);
    case ColorRole::LabelColor:
        break;
    }
    return palette.color(QPalette::Text);
}

int iconButtonSide(const QWidget *widget)
{
    return std::max(22, QFontMetrics(widget->font()).height() + 8);
}

void makeCaption(QLabel *label)
{
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setProperty(captionProperty, true);
    label->setMinimumWidth(captionInset);
    // The column's width and no more: the room left in a row goes to its fields and values.
    ConstraintLayout::setContentHuggingPriority(label, LayoutPriority::defaultHigh, Qt::Horizontal);
}

void alignCaptionColumns(QWidget *root)
{
    if (!root->findChild<CaptionAligner *>(QStringLiteral("captionAligner"),
                                           Qt::FindDirectChildrenOnly))
        new CaptionAligner(root);
    QList<QLabel *> captions;
    int widest = captionInset;
    for (QLabel *label : root->findChildren<QLabel *>()) {
        if (!label->property(captionProperty).toBool())
            continue;
        captions.append(label);
        widest = std::max(widest,
                          QFontMetrics(label->font()).horizontalAdvance(label->text())
                              + 2 * label->margin() + 2);
    }
    for (QLabel *label : std::as_const(captions))
        label->setMinimumWidth(widest);
}

void makeIconButton(QAbstractButton *button, QStringView symbol, const QString &toolTip,
                    const QString &accessibleName)
{
    const int side = iconButtonSide(button);
    const int glyph = std::max(16, QFontMetrics(button->font()).height() - 2);
    button->setText(QString());
    button->setIcon(SymbolIcons::icon(symbol));
    const QSize design = SymbolIcons::designSize(symbol);
    button->setIconSize(design.scaled(glyph, glyph, Qt::KeepAspectRatio));
    button->setFixedSize(side, side);
    button->setFocusPolicy(Qt::TabFocus);
    if (auto *push = qobject_cast<QPushButton *>(button))
        push->setFlat(true);
    button->setToolTip(toolTip);
    button->setAccessibleName(accessibleName);
}

void makeTextButton(QAbstractButton *button, const QString &toolTip, const QString &accessibleName)
{
    button->setFocusPolicy(Qt::TabFocus);
    button->setToolTip(toolTip);
    button->setAccessibleName(accessibleName);
}

void setTextColor(QWidget *widget, const QColor &color)
{
    QPalette palette = widget->palette();
    const QPalette base = QApplication::palette(widget);
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText}) {
        palette.setColor(QPalette::Active, role,
                         color.isValid() ? color : base.color(QPalette::Active, role));
        palette.setColor(QPalette::Inactive, role,
                         color.isValid() ? color : base.color(QPalette::Inactive, role));
    }
    if (palette != widget->palette())
        widget->setPalette(palette);
}

} // namespace EditorStyle
