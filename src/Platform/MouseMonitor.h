#pragma once

#include <QObject>

namespace korvo {

/// Sees, for as long as it exists, the presses of the left and of the right mouse button that go to other programs. A
/// click on the program's own status item is none of them, although the desktop's tray takes it.
class MouseMonitor : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

signals:
    void mouseDown();
};

} // namespace korvo
