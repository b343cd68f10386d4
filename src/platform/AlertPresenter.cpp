#include "AlertPresenter.h"

#include "commons/Log.h"

#include <atomic>

namespace {
std::atomic<AlertPresenter *> s_presenter = nullptr;
}

int AlertPresenter::show(const Alert &alert)
{
    if (AlertPresenter *presenter = s_presenter.load())
        return presenter->present(alert);
    Log::line(QStringLiteral("Alert: %1 %2").arg(alert.title, alert.text));
    return 0;
}

void AlertPresenter::install(AlertPresenter *presenter)
{
    s_presenter.store(presenter);
}
