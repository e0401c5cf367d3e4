#pragma once

#include "Platform/StatusItem.h"

#include <QColor>
#include <QProcess>
#include <QRect>
#include <QString>

namespace korvo {

/// A picture all of one colour, which can be found on the screen.
StatusImage coloredImage(const QColor &color);

/// Where on the screen that colour is, as far as it goes; empty if it is nowhere.
QRect findOnScreen(const QColor &color);

/// Whether something like text is on the bar to the right of that place: light and dark close together.
bool hasTextBeside(const QRect &place);

/// Clicks there with the pointer, as a person does. True if that worked.
bool clickAt(const QPoint &place, int button = 1);

/// The same, while this program goes on.
bool clickMeanwhile(const QPoint &place, int button = 1);

/// Presses these keys one after the other, by the X server's names for them.
bool pressKeys(const QStringList &keys);

/// A program of the headless desktop that runs in this test's session, to end it and to start it anew as it was.
class DesktopProgram {
public:
    explicit DesktopProgram(const QString &name); ///< The first 15 letters of its file's name, as the kernel has it.
    ~DesktopProgram();
    DesktopProgram(const DesktopProgram &) = delete;
    DesktopProgram &operator=(const DesktopProgram &) = delete;

    bool isFound() const { return m_id > 0; }
    bool end();
    bool startAnew();

private:
    qint64 m_id = 0;
    QStringList m_command;
    QProcessEnvironment m_environment;
    QProcess m_process;
};

} // namespace korvo
