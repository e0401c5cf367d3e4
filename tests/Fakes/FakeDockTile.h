#pragma once

#include "Fakes/EventList.h"
#include "Platform/DockTile.h"

#include <QList>
#include <QStringList>

namespace korvo {

/// A dock that remembers what it was told, and that a test clicks.
class FakeDockTile final : public DockTile {
public:
    void setPresent(bool isPresentNow) override
    {
        note(events, isPresentNow ? QStringLiteral("tile present") : QStringLiteral("tile absent"));
        calls.append(isPresentNow ? QStringLiteral("present") : QStringLiteral("absent"));
        isPresent = isPresentNow;
    }
    void setContent(const std::optional<DockTileContent> &newContent) override
    {
        note(events, newContent ? QStringLiteral("tile drawn") : QStringLiteral("tile none"));
        calls.append(newContent ? QStringLiteral("content") : QStringLiteral("no content"));
        content = newContent;
        contents.append(newContent);
    }

    void click() { emit activated(); }

    bool isPresent = false;
    std::optional<DockTileContent> content;
    QList<std::optional<DockTileContent>> contents; ///< Of each call, in order.
    QStringList calls;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.
};

} // namespace korvo
