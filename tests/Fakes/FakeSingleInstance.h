#pragma once

#include "Fakes/EventList.h"
#include "Platform/SingleInstance.h"

namespace korvo {

/// A session in which the program runs already, or doesn't.
class FakeSingleInstance final : public SingleInstance {
public:
    bool claim() override
    {
        ++claimCount;
        return isOnly;
    }

    void release() override
    {
        note(events, QStringLiteral("name released"));
        ++releaseCount;
    }

    /// Starts the program once more.
    void startAgain() { emit activationRequested(); }

    bool isOnly = true;
    int claimCount = 0;
    int releaseCount = 0;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.
};

} // namespace korvo
