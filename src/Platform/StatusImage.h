#pragma once

#include <QSizeF>
#include <QString>

#include <functional>

class QPainter;

namespace korvo {

/// A picture for the status item, drawn only when a tray asks for it, at whatever pixel size the tray has.
struct StatusImage {
    QString key;                                          ///< Two images with one key look the same to a person.
    QString description;                                  ///< For screen readers; may be empty.
    QSizeF size;                                          ///< In points.
    std::function<void(QPainter &, const QSizeF &)> draw; ///< Paints it in points, y growing downwards.
    /// Only its shape counts: the adapter sets the pen to the colour of the desktop's bar before it calls `draw`.
    bool isTemplate = false;
};

} // namespace korvo
