#pragma once

#include <QPainterPath>
#include <QWidget>

#include <functional>

namespace korvo {

class MenuBarView;

/// Fills the frame of the menu panel with the view, which stands at the upper edge, or at the lower one where the panel
/// opens upwards, and takes no more height than its content. The rest of the frame is empty.
class MenuPanelContent : public QWidget {
    Q_OBJECT
public:
    using ShapeHandler = std::function<void(const QPainterPath &)>;

    /// Takes `view` over. `onShapeChange` is called with the rounded outline of the view, for the first time at once, and
    /// whenever that changes.
    MenuPanelContent(MenuBarView *view, const QSize &frame, bool opensUpwards, ShapeHandler onShapeChange);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void arrange();

    MenuBarView *m_view;
    bool m_opensUpwards;
    ShapeHandler m_onShapeChange;
};

} // namespace korvo
