#pragma once

#include "Fakes/EventList.h"
#include "Platform/InputPanel.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

namespace korvo {

/// A panel that holds its content as a real one does, in a plain window, and notes what it is told.
class FakeInputPanel final : public InputPanel {
public:
    ~FakeInputPanel() override // Not at once: the content may be what asked for it.
    {
        window.hide();
        window.deleteLater();
    }

    void setContent(std::unique_ptr<QWidget> newContent, const QMargins &newOverflow) override
    {
        calls.append(QStringLiteral("setContent"));
        if (view)
            view->deleteLater();
        view = newContent.release();
        overflow = newOverflow;
        if (!view)
            return;
        view->setParent(&window);
        view->show();
    }
    QWidget *content() const override { return view; }
    void setFrame(const QRect &newFrame) override
    {
        calls.append(QStringLiteral("setFrame"));
        frame = newFrame;
        window.resize(newFrame.marginsAdded(overflow).size());
        if (view)
            view->setGeometry(window.rect());
    }
    void setShape(const QPainterPath &newShape) override
    {
        calls.append(QStringLiteral("setShape"));
        shape = newShape;
    }
    void makeKeyAndOrderFront() override
    {
        calls.append(QStringLiteral("makeKeyAndOrderFront"));
        window.show();
    }
    void activateIgnoringOtherApps() override
    {
        calls.append(QStringLiteral("activateIgnoringOtherApps"));
        window.activateWindow();
    }
    void makeKey() override
    {
        calls.append(QStringLiteral("makeKey"));
        if (isVisible())
            window.activateWindow();
    }
    void orderOut() override
    {
        note(events, QStringLiteral("quick add orderOut"));
        calls.append(QStringLiteral("orderOut"));
        window.hide();
    }
    bool isVisible() const override { return window.isVisible(); }

    /// Gives the keyboard to another program.
    void deactivate() { window.hide(); }

    QWidget &window = *new QWidget; ///< Holds the content.
    QPointer<QWidget> view;
    QMargins overflow;
    QRect frame;
    QPainterPath shape;
    QStringList calls;
    std::shared_ptr<EventList> events; ///< Shared with the other fakes, if at all.
};

} // namespace korvo
