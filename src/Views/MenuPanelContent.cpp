#include "Views/MenuPanelContent.h"

#include "Views/MenuBarView.h"

#include <algorithm>
#include <utility>

namespace korvo {

namespace {
constexpr double cornerRadius = 12;
}

MenuPanelContent::MenuPanelContent(MenuBarView *view, const QSize &frame, bool opensUpwards,
                                   ShapeHandler onShapeChange) :
    m_view(view),
    m_opensUpwards(opensUpwards),
    m_onShapeChange(std::move(onShapeChange))
{
    m_view->setParent(this);
    connect(m_view, &MenuBarView::heightChanged, this, &MenuPanelContent::arrange);
    resize(frame);
    arrange();
}

void MenuPanelContent::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    arrange();
}

void MenuPanelContent::arrange()
{
    m_view->setMaximumRoom(height());
    const int shown = std::min(m_view->sizeHint().height(), height());
    const QRect place(0, m_opensUpwards ? height() - shown : 0, width(), shown);
    if (m_view->geometry() == place)
        return;
    m_view->setGeometry(place);
    QPainterPath outline;
    outline.addRoundedRect(place, cornerRadius, cornerRadius);
    m_onShapeChange(outline);
}

} // namespace korvo
