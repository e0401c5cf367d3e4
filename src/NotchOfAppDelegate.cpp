#include "AppDelegate.h"

#include "Controllers/NotchWindowController.h"
#include "Platform/Platform.h"
#include "Platform/UserDefaults.h"
#include "Utilities/DiagnosticLogger.h"

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

QString textOf(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

} // namespace

void AppDelegate::decideAboutNotch()
{
    const bool hasNotch = hasPhysicalNotch();
    Log::info(u"Physical notch detected: "_s + textOf(hasNotch));
    if (!hasNotch) {
        m_settings.setUseNotchUI(false);
        Log::info(u"No notch — menu bar mode only"_s);
        return;
    }
    chooseNotchOnFirstRun();
    if (m_settings.useNotchUI()) {
        setupNotchUI();
        Log::info(u"Notch UI initialized"_s);
    }
}

/// The notch interface is switched on once for every user of a machine with a notch; afterwards the saved value stands.
void AppDelegate::chooseNotchOnFirstRun()
{
    const QString key = u"hasSetNotchDefault4"_s;
    UserDefaults &defaults = m_platform.userDefaults();
    if (defaults.boolean(key).value_or(false))
        return;
    m_settings.setUseNotchUI(true);
    defaults.set({{key, true}});
}

void AppDelegate::setupNotchUI()
{
    m_notchController = std::make_unique<NotchWindowController>(m_timerVM, m_platform, m_settings);
    m_notchController->setup();
}

void AppDelegate::teardownNotchUI()
{
    if (m_notchController)
        m_notchController->hide();
    m_notchController.reset();
}

/// Only a launch builds the notch interface: once it has gone with the screen that has the notch, it doesn't come back.
void AppDelegate::screenDidChange()
{
    const bool hasNotch = hasPhysicalNotch();
    const bool useNotchUI = m_settings.useNotchUI();
    Log::info(u"Screen changed — physical notch: "_s + textOf(hasNotch) + u", useNotchUI: "_s + textOf(useNotchUI));
    if (!hasNotch || !useNotchUI) {
        teardownNotchUI();
    } else if (m_notchController) {
        m_notchController->hide();
        m_notchController->setup();
        m_notchController->updateForTimerState();
    }
    updateStatusBarAppearance();
}

} // namespace korvo
