#pragma once

#include "BrickBinding.h"

#include <QWidget>

class QButtonGroup;
class QToolButton;

// A row of joined, mutually exclusive segments.
class SegmentedControlBrick
    : public QWidget
    , public BrickType
{
    Q_OBJECT

public:
    explicit SegmentedControlBrick(const QStringList &labels, QWidget *parent = nullptr);

    int selectedSegment() const;
    void setSelectedSegment(int index);
    int segmentCount() const;
    QToolButton *segment(int index) const;
    std::function<void(int)> selectedSegmentFunc;

protected:
    QWidget *brickWidget() override { return this; }
    void changeEvent(QEvent *event) override;

private:
    void markSelectedSegment();

    QButtonGroup *m_group;
};

class SegmentedControlBrickBinding : public BrickBinding<SegmentedControlBrick, int>
{
public:
    using BrickBinding::BrickBinding;

protected:
    Presenter presenter() const override
    {
        return [](SegmentedControlBrick *brick, const int &value) {
            brick->setSelectedSegment(value);
        };
    }
    void install(SegmentedControlBrick *brick, Writer write) override
    {
        brick->selectedSegmentFunc = std::move(write);
    }
};
