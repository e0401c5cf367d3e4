#pragma once

#include "Models/FieldMapping.h"
#include "Platform/UserDefaults.h"

#include <QList>
#include <QObject>
#include <QProperty>
#include <QString>

#include <functional>
#include <utility>

namespace korvo {

/// Everything the program remembers between runs. Each write is in the store when the setter returns, also that of an
/// equal value; observers are told within the write, of real changes alone.
class AppSettings : public QObject {
    Q_OBJECT
public:
    /// The settings of the process, loaded from `UserDefaults::standard()` at first use.
    static AppSettings &shared();

    /// Whether the key, both databases and the mapping's status, start and task relation of an entry are all set.
    bool isConfigured() const { return m_isConfigured; }
    QBindable<bool> bindableIsConfigured() const { return &m_isConfigured; }

    /// The Notion integration's secret key. Never logged.
    QString apiKey() const { return m_apiKey; }
    QBindable<QString> bindableApiKey() const { return &m_apiKey; }
    void setApiKey(const QString &apiKey);

    /// Identifier of the Time Tracker database.
    QString timeTrackerDBId() const { return m_timeTrackerDBId; }
    QBindable<QString> bindableTimeTrackerDBId() const { return &m_timeTrackerDBId; }
    void setTimeTrackerDBId(const QString &timeTrackerDBId);

    /// Identifier of the Tasks database.
    QString tasksDBId() const { return m_tasksDBId; }
    QBindable<QString> bindableTasksDBId() const { return &m_tasksDBId; }
    void setTasksDBId(const QString &tasksDBId);

    /// Which Notion property plays which role.
    FieldMapping fieldMapping() const { return m_fieldMapping; }
    QBindable<FieldMapping> bindableFieldMapping() const { return &m_fieldMapping; }
    void setFieldMapping(const FieldMapping &fieldMapping);

    /// Seconds between polls while a timer runs.
    double pollIntervalActive() const { return m_pollIntervalActive; }
    QBindable<double> bindablePollIntervalActive() const { return &m_pollIntervalActive; }
    void setPollIntervalActive(double pollIntervalActive);

    /// Seconds between polls while none runs.
    double pollIntervalIdle() const { return m_pollIntervalIdle; }
    QBindable<double> bindablePollIntervalIdle() const { return &m_pollIntervalIdle; }
    void setPollIntervalIdle(double pollIntervalIdle);

    /// Whether the program starts at login, as the user wants it. Each write is carried to the desktop too; what comes of
    /// it doesn't change the setting.
    bool launchAtLogin() const { return m_launchAtLogin; }
    QBindable<bool> bindableLaunchAtLogin() const { return &m_launchAtLogin; }
    void setLaunchAtLogin(bool launchAtLogin);

    /// Hours that a timer may run before the reminder.
    double reminderHours() const { return m_reminderHours; }
    QBindable<double> bindableReminderHours() const { return &m_reminderHours; }
    void setReminderHours(double reminderHours);

    /// Whether the reminder is on.
    bool reminderEnabled() const { return m_reminderEnabled; }
    QBindable<bool> bindableReminderEnabled() const { return &m_reminderEnabled; }
    void setReminderEnabled(bool reminderEnabled);

    /// Whether the timer stands around the camera notch instead of in the tray.
    bool useNotchUI() const { return m_useNotchUI; }
    QBindable<bool> bindableUseNotchUI() const { return &m_useNotchUI; }
    void setUseNotchUI(bool useNotchUI);

    /// Virtual key code of the quick-add shortcut.
    quint32 quickAddKeyCode() const { return m_quickAddKeyCode; }
    QBindable<quint32> bindableQuickAddKeyCode() const { return &m_quickAddKeyCode; }
    void setQuickAddKeyCode(quint32 quickAddKeyCode);

    /// Modifier bits of that shortcut: control 0x1000, option 0x800, shift 0x200, command 0x100.
    quint32 quickAddModifiers() const { return m_quickAddModifiers; }
    QBindable<quint32> bindableQuickAddModifiers() const { return &m_quickAddModifiers; }
    void setQuickAddModifiers(quint32 quickAddModifiers);

    /// Whether the program stands in the Dock.
    bool showDockIcon() const { return m_showDockIcon; }
    QBindable<bool> bindableShowDockIcon() const { return &m_showDockIcon; }
    void setShowDockIcon(bool showDockIcon);

    /// Changes fields of the mapping in place: observers are told in every case, and the settings are saved.
    void changeFieldMapping(const std::function<void(FieldMapping &)> &change);

signals:
    void apiKeyChanged();
    void timeTrackerDBIdChanged();
    void tasksDBIdChanged();
    void fieldMappingChanged();
    void pollIntervalActiveChanged();
    void pollIntervalIdleChanged();
    void launchAtLoginChanged();
    void reminderHoursChanged();
    void reminderEnabledChanged();
    void useNotchUIChanged();
    void quickAddKeyCodeChanged();
    void quickAddModifiersChanged();
    void showDockIconChanged();

private:
    friend class TestSettings; // In the tests: settings over a store of their own.

    explicit AppSettings(UserDefaults &defaults);
    void save();
    QList<std::pair<QString, UserDefaults::Value>> values() const; ///< All of them, in the order of the store.

    UserDefaults &m_defaults;
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_apiKey, &AppSettings::apiKeyChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_timeTrackerDBId, &AppSettings::timeTrackerDBIdChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, QString, m_tasksDBId, &AppSettings::tasksDBIdChanged)
    Q_OBJECT_BINDABLE_PROPERTY(AppSettings, FieldMapping, m_fieldMapping, &AppSettings::fieldMappingChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, double, m_pollIntervalActive, 30.0,
                                         &AppSettings::pollIntervalActiveChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, double, m_pollIntervalIdle, 60.0,
                                         &AppSettings::pollIntervalIdleChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_launchAtLogin, false, &AppSettings::launchAtLoginChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, double, m_reminderHours, 8.0, &AppSettings::reminderHoursChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_reminderEnabled, false,
                                         &AppSettings::reminderEnabledChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_useNotchUI, false, &AppSettings::useNotchUIChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, quint32, m_quickAddKeyCode, 45,
                                         &AppSettings::quickAddKeyCodeChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, quint32, m_quickAddModifiers, 768,
                                         &AppSettings::quickAddModifiersChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(AppSettings, bool, m_showDockIcon, true, &AppSettings::showDockIconChanged)
    QProperty<bool> m_isConfigured;
    bool m_isTellingOfMapping = false;
};

} // namespace korvo
