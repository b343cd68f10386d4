#pragma once

#include "bricks/ViewTree.h"

#include <QColor>
#include <QHash>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>

class QVBoxLayout;

// A vertical stack of panes. A pane whose visibility priority drops to 0 leaves the stack and
// the panes below move up; at any higher priority it is back in its place.
class FragmentStackView
    : public QWidget
    , public SubviewAdopting
{
    Q_OBJECT

public:
    static constexpr int notVisible = 0;
    static constexpr int mustHold = 1000;

    explicit FragmentStackView(QWidget *parent = nullptr);

    void addArrangedSubview(QWidget *view);
    QList<QWidget *> arrangedSubviews() const;
    void setVisibilityPriority(int priority, QWidget *view);
    int visibilityPriority(QWidget *view) const;
    void adoptSubview(QWidget *child) override;

    std::function<void(const QRect &dirty)> backgroundDrawingFunc;
    std::optional<QColor> backgroundColor;
    bool inheritsFlipped = true;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QVBoxLayout *m_layout;
    QHash<QWidget *, int> m_priorities;
};
