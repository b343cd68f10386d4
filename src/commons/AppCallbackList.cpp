#include "AppCallbackList.h"

void AppCallbackList::run(SmartAppDelegate &delegate, const AppNotification &notification) const
{
    // By index, so that callbacks appended during the pass run in it too.
    for (qsizetype i = 0; i < m_callbacks.size(); ++i) {
        const AppCallback callback = m_callbacks.at(i);
        if (callback)
            callback(delegate, notification);
    }
}
