#pragma once

#include "Wall.h"

// A wall that offers a fixed intrinsic size, for empty areas that must still take room.
class WallWithInstrinsicSize : public Wall
{
    Q_OBJECT

public:
    explicit WallWithInstrinsicSize(const QSize &intrinsicSize, QWidget *parent = nullptr)
        : Wall(parent)
        , _myIntrinsicSize(intrinsicSize)
    { }
    QSize sizeHint() const override { return _myIntrinsicSize; }

private:
    const QSize _myIntrinsicSize;
};
