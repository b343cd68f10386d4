#pragma once

#include "FragmentWall.h"
#include "bricks/KVOResponder.h"

#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

// A fragment that hides itself when an expression over some user defaults keys holds, and
// follows every change of those keys.
class HideableFragmentWall : public FragmentWall
{
    Q_OBJECT

public:
    HideableFragmentWall(QStringList storageKeys,
                         std::function<bool(const QStringList &)> shouldHideExpression,
                         QWidget *parent = nullptr);

    void install(FragmentStackView *parentStackView) override;
    void update();

    const QStringList storageKeys;
    const std::function<bool(const QStringList &)> shouldHideExpression;
    QPointer<FragmentStackView> parentStackView;
    QList<std::optional<bool>> initialValues;
    std::vector<std::shared_ptr<KVOResponder>> kvoResponders;
};
