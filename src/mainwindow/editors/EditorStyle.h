#pragma once

#include "location/GPSCoordinateComponent.h"

#include <QColor>
#include <QPalette>
#include <QString>
#include <QStringView>

class QAbstractButton;
class QLabel;
class QWidget;

// How the fragments of the parameter side look and line up: the colours of the editors' states
// in the light and the dark theme, the spacing of their rows, the caption column they share and
// the two kinds of buttons. Sizes follow the widget's font, so the fragments grow with the
// system font size.
namespace EditorStyle {

// Insets of a fragment's content and the gaps between its rows and columns.
constexpr int horizontalMargin = 10;
constexpr int verticalMargin = 6;
constexpr int rowSpacing = 4;
constexpr int columnSpacing = 8;
constexpr int buttonSpacing = 2;
// The design's caption column; wider when the font needs it.
constexpr int captionInset = 100;
// The width of the right-hand column of small buttons, beside the Apply buttons.
int iconButtonSide(const QWidget *widget);

QColor color(ColorRole role, const QPalette &palette);
bool isDark(const QPalette &palette);

// A caption of a row: right-aligned, and made as wide as the widest caption of the parameter
// side by alignCaptionColumns.
void makeCaption(QLabel *label);
// Gives every caption under root the width of the widest one, so that the fields of all
// fragments start at one line. Called again when the font changes.
void alignCaptionColumns(QWidget *root);

// A square button showing a symbol; clicking it does not take the focus from a field being
// edited, but Tab reaches it.
void makeIconButton(QAbstractButton *button, QStringView symbol, const QString &toolTip,
                    const QString &accessibleName);
// A button with a short title, such as "Apply".
void makeTextButton(QAbstractButton *button, const QString &toolTip, const QString &accessibleName);

// Shows text in the colour, or in the palette's own text colour for an invalid colour.
void setTextColor(QWidget *widget, const QColor &color);

} // namespace EditorStyle
