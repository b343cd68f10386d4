#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

#include <functional>

// An image scaled to fit inside the view, keeping its shape. It asks for no size of its own, so
// a large picture never pushes the layout of the window. Grid cells also draw a tile behind the
// picture and a frame while the mouse is over them.
class NonExpandingImageView : public QWidget
{
public:
    explicit NonExpandingImageView(QWidget *parent = nullptr);

    void setImage(const QImage &image);
    bool hasImage() const { return !m_pixmap.isNull(); }
    // The rectangle the picture is drawn in, in this view's coordinates; empty without one.
    QRectF displayedImageRect() const;

    // The position in the preview's list of the file shown here.
    int previewIndex() const { return m_previewIndex; }
    void setPreviewIndex(int index) { m_previewIndex = index; }
    void setCellStyle(bool cell);

    // Called on a click (press and release inside) with the left button.
    std::function<void(NonExpandingImageView *)> onClick;

    QSize sizeHint() const override { return {0, 0}; }
    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    QRectF imageArea() const;

    QPixmap m_pixmap;
    int m_previewIndex = -1;
    bool m_cellStyle = false;
    bool m_hovered = false;
    bool m_pressed = false;
};
