#pragma once

#include "Models/FieldMapping.h"
#include "ViewModels/SettingsViewModel.h"
#include "Views/Binding.h"
#include "Views/SettingsTab.h"

#include <QWidget>

#include <functional>
#include <memory>

class QStackedWidget;

namespace korvo {

class FormSection;
class Picker;
class Screens;
class SettingsSidebar;
class TimerViewModel;

/// Whom the settings call when a value changes that something on the desktop follows. A recording of a shortcut may
/// call after the view has gone.
struct SettingsCallbacks {
    std::function<void()> onDockIconChange = [] {};
    std::function<void()> onHotkeyChange = [] {};
};

/// The content of the settings window: a sidebar of four tabs, and beside it a form that scrolls. Each control writes
/// its setting as it changes. Appearing it loads what the forms offer; disappearing it starts the polls again.
class SettingsView : public QWidget {
    Q_OBJECT
public:
    /// All references must outlive it.
    SettingsView(TimerViewModel &timerVM, AppSettings &settings, HttpTransport &transport, Clock &clock,
                 const Screens &screens, const SettingsCallbacks &callbacks, QWidget *parent = nullptr);
    ~SettingsView() override;

    SettingsViewModel &settingsVM() { return *m_settingsVM; }
    SettingsTab selectedTab() const;
    void setSelectedTab(SettingsTab tab);

    /// The room that no tab needs more than, whatever the desktop's font.
    QSize minimumSizeHint() const override;
    QSize sizeHint() const override { return minimumSizeHint(); }

    /// Lets it disappear without a poll, as at the end of the program.
    void endWithoutPoll() { m_pollsAfterwards = false; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    using Role = QString FieldMapping::*;

    bool hasPhysicalNotch() const;
    void lookForNotch();
    void showDetail();

    // The forms.
    QWidget *connectionContent();
    QWidget *timeTrackerContent();
    QWidget *tasksContent();
    QWidget *generalContent();

    // Their parts.
    Picker *fieldPicker(Role role, QList<NotionProperty> (SettingsViewModel::*options)() const);
    Picker *fieldPicker(const Binding<QString> &selection, QList<NotionProperty> (SettingsViewModel::*options)() const);
    Picker *valuePicker(Role role, QStringList (SettingsViewModel::*options)() const);
    Binding<QString> mapping(Role role) const;
    Binding<QString> projectRelation() const;
    void addDatabaseRows(FormSection &database, const Binding<QString> &id, QBindable<bool> isLoading,
                         QBindable<SettingsViewModel::Text> error, void (SettingsViewModel::*load)());

    TimerViewModel &m_timerVM;
    AppSettings &m_settings;
    const Screens &m_screens;
    SettingsCallbacks m_callbacks;
    std::unique_ptr<SettingsViewModel> m_settingsVM;
    QProperty<bool> m_hasPhysicalNotch{false};
    SettingsSidebar *m_sidebar;
    QStackedWidget *m_detail;
    bool m_pollsAfterwards = true;
};

} // namespace korvo
