#pragma once

#include "Platform/Panel.h"

#include <QPointer>
#include <QWidget>

namespace korvo {

class X11Panel final : public Panel {
    Q_OBJECT
public:
    explicit X11Panel(const PanelStyle &) { m_window.setAttribute(Qt::WA_TranslucentBackground); }

    void setContent(std::unique_ptr<QWidget> content) override
    {
        delete m_content.data();
        m_content = content.release();
        m_content->setParent(&m_window);
        m_content->setGeometry(m_window.rect());
        m_content->show();
    }
    void setFrame(const QRect &frame) override
    {
        m_window.setGeometry(frame);
        if (m_content)
            m_content->setGeometry(m_window.rect());
    }
    void setShape(const QPainterPath &) override { }
    void orderFront() override { m_window.show(); }
    void orderOut() override { m_window.hide(); }
    bool isVisible() const override { return m_window.isVisible(); }

private:
    QWidget m_window{nullptr, Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint};
    QPointer<QWidget> m_content;
};

} // namespace korvo
