#include "MapFloatingBar.h"

#include "MapSymbols.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QToolButton>

MapFloatingBar::MapFloatingBar(QWidget *parent)
    : QFrame(parent)
{
    setAttribute(Qt::WA_TranslucentBackground);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 3, 4, 3);
    layout->setSpacing(2);
}

void MapFloatingBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = palette().color(QPalette::Window);
    fill.setAlpha(238);
    QColor border = palette().color(QPalette::WindowText);
    border.setAlpha(60);
    painter.setPen(QPen(border, 1.0));
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 7.0, 7.0);
}

QToolButton *MapFloatingBar::addButton(const QIcon &icon, const QString &label,
                                       const QString &toolTip, const QString &objectName)
{
    auto *button = new QToolButton(this);
    button->setObjectName(objectName);
    button->setIcon(icon);
    button->setIconSize(QSize(18, 18));
    button->setAutoRaise(true);
    button->setToolTip(toolTip);
    button->setAccessibleName(label);
    button->setFocusPolicy(Qt::TabFocus);
    if (icon.isNull())
        button->setText(label);
    layout()->addWidget(button);
    return button;
}

void MapFloatingBar::addZoomButtons(const std::function<void(double)> &zoomBy)
{
    using namespace Qt::StringLiterals;
    m_zoomOut = addButton(MapSymbols::icon(u"minus"_s, {}, u"zoom-out"_s), tr("Zoom Out"),
                          tr("Zoom out"), u"zoomOutButton"_s);
    m_zoomIn = addButton(MapSymbols::icon(u"plus"_s, {}, u"zoom-in"_s), tr("Zoom In"),
                         tr("Zoom in"), u"zoomInButton"_s);
    connect(m_zoomOut, &QToolButton::clicked, this, [zoomBy] { zoomBy(-1.0); });
    connect(m_zoomIn, &QToolButton::clicked, this, [zoomBy] { zoomBy(1.0); });
}
