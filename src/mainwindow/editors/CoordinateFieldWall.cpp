#include "CoordinateFieldWall.h"

#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"

#include <QLabel>
#include <QPainter>
#include <QPainterPath>

CoordinateFieldWall::CoordinateFieldWall(QWidget *parent)
    : Wall(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void CoordinateFieldWall::setFrameColor(const QColor &color)
{
    if (color == m_frameColor)
        return;
    m_frameColor = color;
    update();
}

void CoordinateFieldWall::setChipColor(const QColor &color)
{
    if (color == m_chipColor)
        return;
    m_chipColor = color;
    update();
}

void CoordinateFieldWall::setShowsChips(bool shows)
{
    if (shows == m_showsChips)
        return;
    m_showsChips = shows;
    update();
}

QRectF CoordinateFieldWall::leftChipRect() const
{
    return QRectF(chipInset, (height() - chipSide) / 2.0, chipSide, chipSide);
}

QRectF CoordinateFieldWall::rightChipRect() const
{
    return QRectF(width() - chipInset - chipSide, (height() - chipSide) / 2.0, chipSide, chipSide);
}

void CoordinateFieldWall::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(m_frameColor.isValid() ? m_frameColor : palette().color(QPalette::Mid), 1));
    painter.setBrush(
        palette().brush(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Base));
    painter.drawRoundedRect(frame, cornerRadius, cornerRadius);
    if (!m_showsChips)
        return;

    // The sign's chip is rounded on the outer side only, the direction's likewise, so that each
    // reads as the end of the field.
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_chipColor);
    const auto chip = [&](const QRectF &r, bool left) {
        QPainterPath path;
        path.addRoundedRect(r, 4, 4);
        QPainterPath square;
        square.addRect(left ? r.adjusted(r.width() / 2, 0, 0, 0)
                            : r.adjusted(0, 0, -r.width() / 2, 0));
        painter.drawPath(path.united(square));
    };
    chip(leftChipRect(), true);
    chip(rightChipRect(), false);
}

namespace BuildDirectivesNamespace {

BuiltView CoordinateField::buildContainer() const
{
    return {new CoordinateFieldWall, std::make_shared<NullBinding>()};
}

namespace {

// One bold character, centred, white on the chip.
void styleChipLabel(QLabel *label)
{
    label->setFixedSize(CoordinateFieldWall::chipSide, CoordinateFieldWall::chipSide);
    label->setAlignment(Qt::AlignCenter);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    EditorStyle::setTextColor(label, Qt::white);
}

} // namespace

CoordinateField coordinateField(const BuildDirectiveList &inner, const LayoutTag &innerTag,
                                const LayoutTag &wallTag, const CoordinateChip &sign,
                                const CoordinateChip &direction)
{
    using namespace LayoutRecipeNamespace;
    using D = SmartLayoutDirectionsType;
    const int inset = CoordinateFieldWall::chipInset;
    return CoordinateField {
        inner, DynamicLabel(sign.text).tag(sign.tag).style<QLabel>(&styleChipLabel),
        DynamicLabel(direction.text).tag(direction.tag).style<QLabel>(&styleChipLabel)}
        .tag(wallTag)
        .layout({pin(sign.tag, D::left, inset), pin(direction.tag, D::right, inset),
                 after(innerTag, sign.tag, 3), before(innerTag, direction.tag, 3),
                 pin(innerTag, D::top, 2), pin(innerTag, D::bottom, 2),
                 sameCenterY({innerTag, sign.tag, direction.tag})});
}

} // namespace BuildDirectivesNamespace
