#pragma once

#include "AppDelegate.h"

#include <QApplication>

#include <memory>

namespace korvo {

class Platform;

/// The application: gives the process its clock, store, log, keyboard layout and login item, and hands control to the
/// `AppDelegate`. It ends by quitting, also with the desktop's session: a session manager that says so by XSMP is obeyed
/// by the toolkit, by the same road as the power button. Without one the display goes away and the process with it; no
/// signal ends it. What starts it at the next login is the login item alone, never a saved session.
class KorvoApp {
public:
    /// The platform must outlive it.
    KorvoApp(int &argc, char **argv, Platform &platform);
    ~KorvoApp();

    /// Launches, runs until somebody quits, and takes everything down. Gives the exit status.
    int exec();

    AppDelegate &delegate() { return *m_delegate; }

private:
    struct Shared {
        explicit Shared(Platform &platform);
        ~Shared();
    };

    Shared m_shared;
    QApplication m_application;
    std::unique_ptr<AppDelegate> m_delegate;
};

} // namespace korvo
