#include "SimulatedNotch.h"

#include "Platform/DockTile.h"
#include "Platform/InputPanel.h"
#include "Platform/KeyGrabber.h"
#include "Platform/MouseMonitor.h"
#include "Platform/Panel.h"
#include "Platform/Platform.h"
#include "Platform/Screens.h"
#include "Platform/StatusItem.h"

#include <QMetaMethod>

#include <optional>
#include <utility>

namespace korvo::demo {

namespace {

constexpr double inset = 32; // As on a laptop of 14 inches at its usual scale.

class NotchedScreens final : public Screens {
public:
    explicit NotchedScreens(Screens &real) : m_real(real) { }

    QList<Screen> screens() const override
    {
        auto screens = m_real.screens();
        if (!m_laptop && !screens.isEmpty())
            m_laptop = screens.first().name;
        for (auto &screen : screens)
            cut(screen);
        return screens;
    }
    std::optional<Screen> mainScreen() const override
    {
        auto screen = m_real.mainScreen();
        if (screen)
            cut(*screen);
        return screen;
    }
    std::optional<QPointF> pointerPosition() const override { return m_real.pointerPosition(); }

protected:
    void connectNotify(const QMetaMethod &signal) override
    {
        // Not before somebody listens here: only then there is an application whose screens can be watched.
        if (signal == QMetaMethod::fromSignal(&Screens::changed))
            connect(&m_real, &Screens::changed, this, &Screens::changed, Qt::UniqueConnection);
    }

private:
    void cut(Screen &screen) const
    {
        if (screen.name == m_laptop)
            screen.topSafeAreaInset = inset;
    }

    Screens &m_real;
    mutable std::optional<QString> m_laptop; ///< The screen with the housing, from the first look at all of them on.
};

class NotchedPlatform final : public Platform {
public:
    explicit NotchedPlatform(std::unique_ptr<Platform> real) : m_real(std::move(real)), m_screens(m_real->screens()) { }

    Screens &screens() override { return m_screens; }

    Clock &clock() override { return m_real->clock(); }
    SystemLog &systemLog() override { return m_real->systemLog(); }
    UserDefaults &userDefaults() override { return m_real->userDefaults(); }
    const KeyboardLayout &keyboardLayout() override { return m_real->keyboardLayout(); }
    LoginItem &loginItem() override { return m_real->loginItem(); }
    NotificationCenter &notificationCenter() override { return m_real->notificationCenter(); }
    SingleInstance &singleInstance() override { return m_real->singleInstance(); }
    DockTile &dockTile() override { return m_real->dockTile(); }
    std::unique_ptr<StatusItem> makeStatusItem() override { return m_real->makeStatusItem(); }
    std::unique_ptr<KeyGrabber> makeKeyGrabber() override { return m_real->makeKeyGrabber(); }
    std::unique_ptr<Panel> makePanel(const PanelStyle &style) override { return m_real->makePanel(style); }
    std::unique_ptr<InputPanel> makeInputPanel() override { return m_real->makeInputPanel(); }
    std::unique_ptr<MouseMonitor> makeMouseMonitor() override { return m_real->makeMouseMonitor(); }
    void setSignalHandler(void (*handler)(int)) override { m_real->setSignalHandler(handler); }
    void setExceptionHandler(void (*handler)(const UncaughtException &)) override
    {
        m_real->setExceptionHandler(handler);
    }

private:
    std::unique_ptr<Platform> m_real;
    NotchedScreens m_screens;
};

} // namespace

std::unique_ptr<Platform> withSimulatedNotch(std::unique_ptr<Platform> platform)
{
    return std::make_unique<NotchedPlatform>(std::move(platform));
}

} // namespace korvo::demo
