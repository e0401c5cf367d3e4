#pragma once

#include <QObject>
#include <QSizeF>

#include <functional>
#include <optional>

class QPainter;

namespace korvo {

/// What the program's icon shows while a timer runs.
struct DockTileContent {
    QSizeF size;                                          ///< In points.
    std::function<void(QPainter &, const QSizeF &)> draw; ///< Paints it in points, y growing downwards.
    int minutes = 0;                                      ///< The elapsed time, for docks that show a number.
    double progress = 0;                                  ///< The part of the hour that has passed, 0 to 1.
};

/// The program's icon in the desktop's dock or task bar.
class DockTile : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// Whether the program stands in the dock and in the task switcher at all.
    virtual void setPresent(bool isPresent) = 0;

    /// Replaces the icon; none restores the program's own.
    virtual void setContent(const std::optional<DockTileContent> &content) = 0;

signals:
    /// The user asked for the program there.
    void activated();
};

} // namespace korvo
