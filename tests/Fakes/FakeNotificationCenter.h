#pragma once

#include "Fakes/EventList.h"
#include "Platform/NotificationCenter.h"

#include <QList>

namespace korvo {

/// Keeps what was to be shown.
class FakeNotificationCenter final : public NotificationCenter {
public:
    void requestAuthorization() override
    {
        note(events, QStringLiteral("authorization"));
        ++authorizationCount;
    }
    void add(const Notification &notification) override { shown.append(notification); }

    int authorizationCount = 0;
    QList<Notification> shown;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.
};

} // namespace korvo
