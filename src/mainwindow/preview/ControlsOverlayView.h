#pragma once

#include <QAbstractButton>
#include <QWidget>

class QVariantAnimation;

// The preview's paging controls, over the picture: back, the grid toggle and forward in one
// small bar at the bottom. Only the bar takes clicks; elsewhere, and whenever it is faded out,
// they reach the picture below. It fades in and out as the mouse comes and goes; the bar and its
// buttons paint themselves at the current alpha.
class ControlsOverlayView : public QWidget
{
    Q_OBJECT

public:
    explicit ControlsOverlayView(QWidget *parent = nullptr);

    QAbstractButton *backButton() const { return m_backButton; }
    QAbstractButton *forwardButton() const { return m_forwardButton; }
    QAbstractButton *gridToggleButton() const { return m_gridToggleButton; }

    double alphaValue() const { return m_alpha; }
    void setAlphaValue(double alpha);
    // Animates the alpha to the target over durationMs milliseconds.
    void fadeTo(double alpha, int durationMs);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QRect barRect() const;
    void placeButtons();

    QAbstractButton *m_backButton;
    QAbstractButton *m_gridToggleButton;
    QAbstractButton *m_forwardButton;
    QVariantAnimation *m_fade;
    double m_alpha = 0.0;
};
