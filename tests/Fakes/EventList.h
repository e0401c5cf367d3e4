#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace korvo {

/// What the fakes of one desktop were told, over all of them in one order.
class EventList {
public:
    void append(const QString &event)
    {
        if (beforeEach)
            beforeEach();
        all.append(event);
    }

    QStringList all;
    std::function<void()> beforeEach; ///< For what tells nobody of itself: a test looks here whether it has changed.
};

/// Adds an event, if the fake shares a list.
inline void note(const std::shared_ptr<EventList> &events, const QString &event)
{
    if (events)
        events->append(event);
}

} // namespace korvo
