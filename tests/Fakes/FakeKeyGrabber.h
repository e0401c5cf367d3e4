#pragma once

#include "Fakes/EventList.h"
#include "Platform/KeyGrabber.h"

#include <QList>
#include <QStringList>

#include <optional>
#include <utility>

namespace korvo {

/// A desktop that gives the key, or refuses with the status it is told, and notes what it is asked for.
class FakeKeyGrabber final : public KeyGrabber {
public:
    int install() override
    {
        note(events, QStringLiteral("key install"));
        calls.append(QStringLiteral("install"));
        isInstalled = installStatus == ok;
        return installStatus;
    }
    void uninstall() override
    {
        note(events, QStringLiteral("key uninstall"));
        calls.append(QStringLiteral("uninstall"));
        isInstalled = false;
        held.reset();
    }
    int grab(quint32 keyCode, quint32 modifiers) override
    {
        note(events, QStringLiteral("key grab"));
        calls.append(QStringLiteral("grab"));
        asked.append({keyCode, modifiers});
        held.reset();
        if (grabStatus == ok)
            held = {keyCode, modifiers};
        return grabStatus;
    }
    void ungrab() override
    {
        note(events, QStringLiteral("key ungrab"));
        calls.append(QStringLiteral("ungrab"));
        held.reset();
    }
    void press() { emit pressed(); }
    void fail(int status)
    {
        held.reset();
        emit failed(status);
    }
    /// Gives the key that was last asked for, after a failure.
    void giveLate()
    {
        held = asked.last();
        emit grabbed();
    }

    int installStatus = ok;
    int grabStatus = ok;
    bool isInstalled = false;
    std::optional<std::pair<quint32, quint32>> held; ///< The key that is held, with its modifiers.
    QList<std::pair<quint32, quint32>> asked;
    QStringList calls;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.
};

} // namespace korvo
