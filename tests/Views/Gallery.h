#pragma once

#include <QImage>
#include <QList>
#include <QString>

#include <functional>

class QWidget;

/// The program's views, drawn with sample content in one look on every machine.
namespace korvo::gallery {

/// A change to a view before it is drawn.
using Alteration = std::function<void(QWidget &)>;

struct Sample {
    QString name;
    std::function<QImage(const Alteration &)> draw; ///< At the scale of the screen. What isn't a view is not altered.
};

/// Style, font and colours that no desktop's settings reach. To be called once, before anything is drawn.
void useFixedLook();

QList<Sample> panels();       ///< The menu panel in each of its states.
QList<Sample> focusRings();   ///< The same, where the keyboard has gone two steps.
QList<Sample> systemViews();  ///< The timer and the tasks in the desktop's own colours, dark and light.
QList<Sample> settingsTabs(); ///< Each tab in both palettes, set up and as a new user finds it.
QList<Sample> faces();        ///< What stands in the tray, and the tiles of the dock.

/// Those that are compared with pictures kept beside the tests.
QList<Sample> references();

/// The name of the file for a sample at the scale of the screen, as "panel-idle@2x.png".
QString fileName(const Sample &sample);

} // namespace korvo::gallery
