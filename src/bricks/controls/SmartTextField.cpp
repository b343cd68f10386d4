#include "SmartTextField.h"

#include <QApplication>
#include <QIntValidator>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

SmartTextField::SmartTextField(QWidget *parent)
    : QLineEdit(parent)
{
    connect(this, &QLineEdit::textEdited, this, [this](const QString &text) {
        if (textChangedAction)
            textChangedAction(text);
        if (callsReturnKeyFunctionOnTextHasChanged)
            callReturnKeyFunction();
    });
    connect(this, &QLineEdit::returnPressed, this, &SmartTextField::callReturnKeyFunction);
}

void SmartTextField::callReturnKeyFunction()
{
    if (returnKeyActionFunction)
        returnKeyActionFunction(text());
}

void SmartTextField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    if (beginEditingActionFunction)
        beginEditingActionFunction();
}

void SmartTextField::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    // A menu opening over the field, or another window coming to the front, leaves the field
    // in charge of its text: the user has not finished with it.
    const bool stillEditing
        = event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason;
    if (callsReturnKeyFunctionOnResigningFirstResponder && !stillEditing)
        callReturnKeyFunction();
}

void SmartTextField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Up && upArrowBehaviour && upArrowBehaviour())
        return;
    QLineEdit::keyPressEvent(event);
}

// Back-tab is taken by focus handling before keyPressEvent, so it is caught here.
bool SmartTextField::event(QEvent *event)
{
    if (event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Backtab && backTabBehaviour
        && backTabBehaviour())
        return true;
    return QLineEdit::event(event);
}

void TextFieldBinding::install(SmartTextField *field, Writer write)
{
    if (!write) {
        field->returnKeyActionFunction = nullptr;
        return;
    }
    // The field's own return action still runs, after the variable has the text.
    const auto kept = field->returnKeyActionFunction;
    field->returnKeyActionFunction = [write, kept](const QString &text) {
        write(text);
        if (kept)
            kept(text);
    };
    field->callsReturnKeyFunctionOnResigningFirstResponder = true;
    field->callsReturnKeyFunctionOnTextHasChanged = true;
}

bool SmartTextField::hasOwnBorder() const
{
    return (layerBorderColor && layerBorderWidth > 0) || (borderColor && borderWidth > 0);
}

// The style's frame and its square background give way to the field's own; the text keeps a
// little room from the border.
void SmartTextField::applyOwnBorder()
{
    const bool own = hasOwnBorder();
    if (own == m_ownBorderApplied)
        return;
    m_ownBorderApplied = own;
    setFrame(!own);
    QPalette colours = palette();
    colours.setBrush(QPalette::Base,
                     own ? QBrush(Qt::transparent) : QApplication::palette(this).base());
    setPalette(colours);
    setTextMargins(own ? QMargins(4, 0, 4, 0) : QMargins());
}

void SmartTextField::updateLayerBorder()
{
    applyOwnBorder();
    update();
}

void SmartTextField::setBorderForSelection(bool hasSelection)
{
    layerBorderColor = hasSelection ? borderBlueColor(palette()) : systemGrayColor(palette());
    layerBorderWidth = 1;
    layerCornerRadius = 5;
    updateLayerBorder();
}

namespace {
bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < 128;
}
} // namespace

QColor SmartTextField::borderBlueColor(const QPalette &palette)
{
    return isDark(palette) ? QColor(0x4c, 0x9b, 0xff) : QColor(0x2f, 0x7b, 0xf5);
}

QColor SmartTextField::systemGrayColor(const QPalette &palette)
{
    return isDark(palette) ? QColor(152, 152, 157) : QColor(142, 142, 147);
}

void SmartTextField::paintEvent(QPaintEvent *event)
{
    applyOwnBorder();
    if (!m_ownBorderApplied) {
        QLineEdit::paintEvent(event);
        return;
    }
    const double radius = layerBorderColor && layerBorderWidth > 0 ? layerCornerRadius : 0;
    const QRectF bounds(rect());
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QApplication::palette(this).brush(
            isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Base));
        painter.drawRoundedRect(bounds, radius, radius);
    }
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    const auto stroke = [&](const QColor &colour, double width, double cornerRadius) {
        // The line runs half a width inside the bounds, so that all of it shows.
        const double inset = width / 2;
        painter.setPen(QPen(colour, width));
        painter.drawRoundedRect(bounds.adjusted(inset, inset, -inset, -inset), cornerRadius,
                                cornerRadius);
    };
    if (borderColor && borderWidth > 0)
        stroke(*borderColor, borderWidth, 0);
    if (layerBorderColor && layerBorderWidth > 0)
        stroke(*layerBorderColor, layerBorderWidth, layerCornerRadius);
}

IntegerTextField::IntegerTextField(QWidget *parent)
    : SmartTextField(parent)
{
    setValidator(new QIntValidator(this));
}

void IntegerTextFieldBinding::install(IntegerTextField *field, Writer write)
{
    if (!write) {
        field->returnKeyActionFunction = nullptr;
        return;
    }
    field->returnKeyActionFunction = [write](const QString &text) {
        if (const std::optional<int> value = IntegerTextField::valueOf(text))
            write(*value);
    };
    field->callsReturnKeyFunctionOnResigningFirstResponder = true;
    field->callsReturnKeyFunctionOnTextHasChanged = true;
}

std::optional<int> IntegerTextField::valueOf(const QString &text)
{
    if (text.trimmed().isEmpty())
        return 0;
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok ? std::optional<int>(value) : std::nullopt;
}
