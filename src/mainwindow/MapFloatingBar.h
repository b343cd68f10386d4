#pragma once

#include <QFrame>

class QToolButton;

// A small bar of tool buttons that floats over the map: a rounded panel in the window's colour,
// so that it reads on tiles and country shapes alike, in light and dark themes.
class MapFloatingBar : public QFrame
{
    Q_OBJECT

public:
    explicit MapFloatingBar(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    // A tool button of the bar; its label stands in when there is no icon.
    QToolButton *addButton(const QIcon &icon, const QString &label, const QString &toolTip,
                           const QString &objectName);
};
