#pragma once

#include "Fakes/EventList.h"
#include "Platform/Panel.h"

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QWidget>

namespace korvo {

/// A panel that holds its content as a real one does, in a plain window, and notes what it is told.
class FakePanel final : public Panel {
public:
    explicit FakePanel(const PanelStyle &panelStyle = {}) : style(panelStyle) { }
    ~FakePanel() override { window.deleteLater(); } // Not at once: the content may be what asked for it.

    void setContent(std::unique_ptr<QWidget> newContent) override
    {
        calls.append(QStringLiteral("setContent"));
        if (content)
            content->deleteLater();
        content = newContent.release();
        if (!content)
            return;
        content->setParent(&window);
        content->setGeometry(window.rect());
        content->show();
    }
    void setFrame(const QRect &newFrame) override
    {
        calls.append(QStringLiteral("setFrame"));
        frame = newFrame;
        frames.append(newFrame);
        window.resize(newFrame.size());
        if (content)
            content->setGeometry(window.rect());
    }
    void setRoom(const QRect &newRoom) override
    {
        calls.append(QStringLiteral("setRoom"));
        room = newRoom;
    }
    void setShape(const QPainterPath &newShape) override
    {
        calls.append(QStringLiteral("setShape"));
        shape = newShape;
    }
    void orderFront() override
    {
        calls.append(QStringLiteral("orderFront"));
        m_isVisible = true;
        window.show();
    }
    void orderOut() override
    {
        note(events, QStringLiteral("panel orderOut"));
        calls.append(QStringLiteral("orderOut"));
        m_isVisible = false;
        window.hide();
    }
    bool isVisible() const override { return m_isVisible; }

    /// The pointer comes or goes; a panel that isn't there tells nobody.
    void enter()
    {
        if (m_isVisible)
            emit pointerEntered();
    }
    void leave()
    {
        if (m_isVisible)
            emit pointerLeft();
    }

    const PanelStyle style;
    QWidget &window = *new QWidget; ///< Holds the content.
    QPointer<QWidget> content;
    QRect frame;
    QRect room;
    QList<QRect> frames; ///< Of each call, in order.
    QPainterPath shape;
    QStringList calls;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.

private:
    bool m_isVisible = false;
};

} // namespace korvo
