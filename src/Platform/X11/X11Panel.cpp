#include "Platform/X11/X11Panel.h"

#include "Platform/X11/PanelShadow.h"
#include "Platform/X11/PanelStack.h"
#include "Platform/X11/WindowShape.h"
#include "Platform/X11/X11Connection.h"

#include <QEvent>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>
#include <QTransform>
#include <QWidget>
#include <QWindow>

#include <optional>

namespace korvo {

namespace {

QRegion regionOf(const QPainterPath &path)
{
    QRegion region;
    for (const QPolygonF &polygon : path.toFillPolygons())
        region |= QRegion(polygon.toPolygon(), path.fillRule());
    return region;
}

/// What of `region` is at least `distance` away from its edge.
QRegion inside(const QRegion &region, int distance)
{
    return region & region.translated(distance, 0) & region.translated(-distance, 0) & region.translated(0, distance)
        & region.translated(0, -distance);
}

} // namespace

/// The edge of the panel: takes away what the content has painted outside of the shape, and puts the shadow there.
class X11Panel::Rim final : public QWidget {
public:
    explicit Rim(QWidget *parent) : QWidget(parent)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
    }

    void setShape(const QPainterPath &shape, bool hasShadow)
    {
        if (m_shape == shape && m_hasShadow == hasShadow && m_size == size())
            return;
        m_shape = shape;
        m_hasShadow = hasShadow;
        m_size = size();
        m_shadow.reset();
        // The toolkit paints it anew with all that changes under it, so it is only there where it has something to do.
        setMask(QRegion(rect()) - inside(regionOf(shape), 2));
        update();
    }

private:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath outside;
        outside.setFillRule(Qt::OddEvenFill);
        outside.addRect(rect());
        outside.addPath(m_shape);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        painter.fillPath(outside, Qt::black);
        if (!m_hasShadow)
            return;
        if (!m_shadow || m_shadow->devicePixelRatio() != devicePixelRatioF())
            m_shadow = panelShadow(m_shape, size(), devicePixelRatioF());
        painter.setCompositionMode(QPainter::CompositionMode_Plus);
        painter.drawImage(QPointF(), *m_shadow);
    }

    QPainterPath m_shape;
    QSize m_size; ///< For which the shape was set.
    bool m_hasShadow = false;
    std::optional<QImage> m_shadow; ///< Drawn when it is first needed.
};

class X11Panel::Window final : public QWidget {
public:
    explicit Window(X11Panel &panel) :
        QWidget(nullptr,
                Qt::Window | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint | Qt::WindowStaysOnTopHint
                    | Qt::WindowDoesNotAcceptFocus | Qt::NoDropShadowWindowHint),
        m_panel(&panel)
    {
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_AlwaysShowToolTips);          // It is never the active one.
        setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu); // For compositors, which treat windows by their type.
        setAttribute(Qt::WA_QuitOnClose, false);
    }

    void leave() { m_panel = nullptr; }

private:
    bool event(QEvent *event) override
    {
        const bool isHandled = QWidget::event(event);
        if (event->type() == QEvent::ScreenChangeInternal && m_panel)
            m_panel->applyNativeShape(); // In device pixels, which may have another size now.
        return isHandled;
    }

    X11Panel *m_panel;
};

X11Panel::X11Panel(const PanelStyle &style) :
    m_style(style),
    m_stack(PanelStack::shared()),
    m_window(new Window(*this)),
    m_rim(new Rim(m_window))
{
    connect(&m_compositor, &CompositorWatch::isRunningChanged, this, &X11Panel::layOut);
}

X11Panel::~X11Panel()
{
    m_window->leave();
    orderOut();
    m_window->deleteLater();
}

void X11Panel::setContent(std::unique_ptr<QWidget> content)
{
    if (m_content) {
        m_content->hide();
        m_content->deleteLater();
    }
    m_content = content.release();
    if (m_content) {
        m_content->setParent(m_window);
        m_content->setGeometry(m_frame.translated(-windowPlace().topLeft()));
        m_content->show();
    }
    layOut();
    m_rim->raise();
}

void X11Panel::setFrame(const QRect &frame)
{
    m_frame = frame;
    layOut();
}

void X11Panel::setRoom(const QRect &room)
{
    m_room = room;
    layOut();
}

void X11Panel::setShape(const QPainterPath &shape)
{
    m_shape = shape;
    applyShape();
}

void X11Panel::orderFront()
{
    if (!isVisible()) {
        m_window->winId(); // The native window: it has its shape before anybody sees it.
        m_window->windowHandle()->installEventFilter(this);
        layOut();
        m_window->show();
    }
    m_stack->raise(xcb_window_t(m_window->winId()), m_style.isAboveEverything);
}

void X11Panel::orderOut()
{
    m_stack->remove(xcb_window_t(m_window->internalWinId()));
    m_window->hide();
}

bool X11Panel::isVisible() const
{
    return m_window->isVisible();
}

/// Of the native window only: widgets are told of a pointer that left long ago when others are shown at its last place.
bool X11Panel::eventFilter(QObject *watched, QEvent *event)
{
    if (isVisible() && event->type() == QEvent::Enter)
        emit pointerEntered();
    else if (isVisible() && event->type() == QEvent::Leave)
        emit pointerLeft();
    return Panel::eventFilter(watched, event);
}

QMargins X11Panel::margins() const
{
    return m_style.hasShadow && m_compositor.isRunning() ? panelShadowMargins : QMargins();
}

QRect X11Panel::windowPlace() const
{
    return (m_room.isEmpty() ? m_frame : m_room).marginsAdded(margins());
}

QPainterPath X11Panel::shapeInWindow() const
{
    QPainterPath shape = m_shape;
    if (shape.isEmpty())
        shape.addRect(QRectF(QPointF(), m_frame.size()));
    return shape.translated(m_frame.topLeft() - windowPlace().topLeft());
}

void X11Panel::layOut()
{
    const QRect place = windowPlace();
    if (!x11Connection())
        m_window->setFixedSize(place.size()); // Wayland's tiling compositors don't tile such windows.
    m_window->setGeometry(place);
    if (m_content)
        m_content->setGeometry(m_frame.translated(-place.topLeft()));
    m_rim->setGeometry(QRect(QPoint(), place.size()));
    applyShape();
}

void X11Panel::applyShape()
{
    m_rim->setVisible(m_compositor.isRunning());
    if (m_compositor.isRunning())
        m_rim->setShape(shapeInWindow(), m_style.hasShadow);
    applyNativeShape();
}

void X11Panel::applyNativeShape()
{
    if (!m_window->internalWinId())
        return;
    const double scale = m_window->devicePixelRatioF();
    const NativeShape wanted{xcb_window_t(m_window->internalWinId()),
                             QTransform::fromScale(scale, scale).map(shapeInWindow()),
                             (QSizeF(m_window->size()) * scale).toSize(), m_compositor.isRunning()};
    if (wanted == m_nativeShape)
        return;
    m_nativeShape = wanted;
    setWindowShape(*m_window, shapeInWindow(), !m_compositor.isRunning());
}

} // namespace korvo
