#pragma once

#include "Fakes/EventList.h"
#include "Platform/StatusItem.h"

#include <QStringList>

#include <utility>

namespace korvo {

/// A status item that remembers what it was told, and that a test clicks.
class FakeStatusItem final : public StatusItem {
public:
    ~FakeStatusItem() override { note(events, QStringLiteral("status item gone")); }

    void setImage(const StatusImage &newImage) override
    {
        note(events, QStringLiteral("image ") + newImage.key);
        image = newImage;
        imageKeys.append(newImage.key);
    }
    void setTitle(const QString &newTitle) override
    {
        title = newTitle;
        titles.append(newTitle);
    }
    void setToolTip(const QString &newHeadline, const QString &newText) override
    {
        headline = newHeadline;
        text = newText;
    }
    void setMenu(const QList<StatusMenuEntry> &newMenu) override { menu = newMenu; }
    QRect button() const override { return place; }
    bool isShown() const override { return m_isShown; }

    void click() { emit activated(place); }

    /// Runs the action of the menu entry with that label; false if there is none that can be chosen.
    bool choose(const QString &label)
    {
        for (const StatusMenuEntry &entry : std::as_const(menu)) {
            if (entry.label == label && entry.isEnabled && entry.action) {
                const auto action = entry.action; // It may set another menu.
                action();
                return true;
            }
        }
        return false;
    }

    void setShown(bool isShown)
    {
        if (std::exchange(m_isShown, isShown) != isShown)
            emit isShownChanged();
    }

    QRect place{1000, 0, 24, 24};
    StatusImage image;
    QString title;
    QString headline;
    QString text;
    QList<StatusMenuEntry> menu;
    QStringList imageKeys; ///< Of each call, in order.
    QStringList titles;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.

private:
    bool m_isShown = true;
};

} // namespace korvo
