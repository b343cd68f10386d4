#pragma once

#include "bricks/walls/WallDirectives.h"

#include <QColor>

// The frame of one coordinate: a field with rounded corners whose border shows the editor's
// state, with a chip for the sign at its left end and one for the compass direction at its right
// end. The sign and the direction are child labels laid over the chips; the text field (or, in
// the pin panel, a read-only label) sits between them.
class CoordinateFieldWall : public Wall
{
    Q_OBJECT

public:
    static constexpr int chipSide = 18;
    static constexpr int chipInset = 3;
    static constexpr double cornerRadius = 5.0;

    explicit CoordinateFieldWall(QWidget *parent = nullptr);

    void setFrameColor(const QColor &color);
    void setChipColor(const QColor &color);
    // The chips show only while there is a coordinate to sign.
    void setShowsChips(bool shows);
    QColor frameColor() const { return m_frameColor; }
    QColor chipColor() const { return m_chipColor; }
    bool showsChips() const { return m_showsChips; }

    QRectF leftChipRect() const;
    QRectF rightChipRect() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_frameColor;
    QColor m_chipColor;
    bool m_showsChips = false;
};

namespace BuildDirectivesNamespace {

// A CoordinateFieldWall in a description; its children are the field and the two chip labels.
class CoordinateField : public ContainerDirective<CoordinateField>
{
public:
    using ContainerDirective::ContainerDirective;
    QString description() const override { return QStringLiteral("CoordinateField"); }
    BuiltView buildContainer() const override;
};

// A chip's label: its tag and the one-character text it shows.
struct CoordinateChip
{
    LayoutTag tag;
    AnyReadOnlyVariable<QString> text;
};

// A coordinate frame around `inner` (tagged innerTag), with the sign and the direction over its
// chips.
CoordinateField coordinateField(const BuildDirectiveList &inner, const LayoutTag &innerTag,
                                const LayoutTag &wallTag, const CoordinateChip &sign,
                                const CoordinateChip &direction);

} // namespace BuildDirectivesNamespace
