#include "HideableFragmentWall.h"

#include "FragmentStackView.h"
#include "platform/UserDefaults.h"

HideableFragmentWall::HideableFragmentWall(
    QStringList storageKeys, std::function<bool(const QStringList &)> shouldHideExpression,
    QWidget *parent)
    : FragmentWall(parent)
    , storageKeys(std::move(storageKeys))
    , shouldHideExpression(std::move(shouldHideExpression))
{ }

void HideableFragmentWall::install(FragmentStackView *stack)
{
    parentStackView = stack;
    for (const QString &key : storageKeys) {
        auto responder = std::make_shared<KVOResponder>(
            key, UserDefaults::standard(), false,
            [this](const QVariant &, const QString &) { update(); });
        kvoResponders.push_back(responder);
        // The bag runs after this class's fields are gone, so it holds the responder itself.
        endOfLifeBag().add([responder]() mutable { responder.reset(); });
    }
    update();
}

void HideableFragmentWall::update()
{
    if (!parentStackView)
        qFatal("HideableFragmentWall: update before the fragment was installed in its stack");
    parentStackView->setVisibilityPriority(shouldHideExpression(storageKeys)
                                               ? FragmentStackView::notVisible
                                               : FragmentStackView::mustHold,
                                           this);
}
