#include "ControlsOverlayView.h"

#include "PreviewSymbols.h"

#include <QPainter>
#include <QVariantAnimation>

namespace {

constexpr int buttonSize = 28;
constexpr int bottomMargin = 10;

// A flat round button that draws its symbol at the bar's alpha.
class OverlayButton : public QAbstractButton
{
public:
    OverlayButton(ControlsOverlayView *bar, const QString &symbol, const QString &tip)
        : QAbstractButton(bar)
        , m_bar(bar)
    {
        setIcon(PreviewSymbols::icon(symbol));
        setIconSize(QSize(16, 16));
        setFixedSize(buttonSize, buttonSize);
        setFocusPolicy(Qt::NoFocus);
        setAttribute(Qt::WA_Hover);
        setToolTip(tip);
        setAccessibleName(tip);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setOpacity(m_bar->alphaValue());
        painter.setRenderHint(QPainter::Antialiasing);
        if (isEnabled() && (underMouse() || isDown())) {
            QColor shade = palette().color(QPalette::WindowText);
            shade.setAlphaF(isDown() ? 0.22f : 0.12f);
            painter.setPen(Qt::NoPen);
            painter.setBrush(shade);
            painter.drawEllipse(QRectF(rect()).adjusted(2, 2, -2, -2));
        }
        const QRect iconArea(
            QPoint((width() - iconSize().width()) / 2, (height() - iconSize().height()) / 2),
            iconSize());
        icon().paint(&painter, iconArea, Qt::AlignCenter,
                     isEnabled() ? QIcon::Normal : QIcon::Disabled);
    }

private:
    ControlsOverlayView *m_bar;
};

} // namespace

ControlsOverlayView::ControlsOverlayView(QWidget *parent)
    : QWidget(parent)
    , m_backButton(new OverlayButton(this, QStringLiteral("chevron.left"), tr("Previous")))
    , m_gridToggleButton(
          new OverlayButton(this, QStringLiteral("square.grid.2x2"), tr("Show as Grid")))
    , m_forwardButton(new OverlayButton(this, QStringLiteral("chevron.right"), tr("Next")))
    , m_fade(new QVariantAnimation(this))
{
    connect(m_fade, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &value) { setAlphaValue(value.toDouble()); });
    setAttribute(Qt::WA_TransparentForMouseEvents);
    placeButtons();
}

void ControlsOverlayView::setAlphaValue(double alpha)
{
    m_alpha = alpha;
    update();
    for (QWidget *button : {m_backButton, m_gridToggleButton, m_forwardButton})
        button->update();
}

void ControlsOverlayView::fadeTo(double alpha, int durationMs)
{
    // Faded out, the bar lets every click through to the picture.
    setAttribute(Qt::WA_TransparentForMouseEvents, alpha <= 0.0);
    m_fade->stop();
    m_fade->setDuration(durationMs);
    m_fade->setStartValue(m_alpha);
    m_fade->setEndValue(alpha);
    m_fade->start();
}

QRect ControlsOverlayView::barRect() const
{
    const QSize bar(3 * buttonSize, buttonSize);
    return QRect(QPoint((width() - bar.width()) / 2, height() - bottomMargin - bar.height()), bar);
}

void ControlsOverlayView::placeButtons()
{
    const QRect bar = barRect();
    m_backButton->move(bar.topLeft());
    m_gridToggleButton->move(bar.topLeft() + QPoint(buttonSize, 0));
    m_forwardButton->move(bar.topLeft() + QPoint(2 * buttonSize, 0));
    setMask(QRegion(bar));
}

void ControlsOverlayView::resizeEvent(QResizeEvent *)
{
    placeButtons();
}

void ControlsOverlayView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setOpacity(m_alpha);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = palette().color(QPalette::Window);
    fill.setAlphaF(0.88f);
    QColor edge = palette().color(QPalette::WindowText);
    edge.setAlphaF(0.18f);
    painter.setPen(QPen(edge, 1));
    painter.setBrush(fill);
    const QRectF bar = QRectF(barRect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.drawRoundedRect(bar, bar.height() / 2, bar.height() / 2);
}
