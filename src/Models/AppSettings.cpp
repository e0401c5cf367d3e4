#include "Models/AppSettings.h"

#include "Models/LaunchAtLoginHelper.h"

#include <QScopedValueRollback>

#include <limits>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

/// The stored integer, or `fallback` if there is none or it is 0. Nothing in the program writes one that does not fit
/// into 32 bits: such a store is not ours to guess about, so it ends the program.
quint32 storedUnsigned(const UserDefaults &defaults, const QString &key, quint32 fallback)
{
    const qint64 stored = defaults.integer(key).value_or(0);
    if (stored < 0 || stored > std::numeric_limits<quint32>::max())
        qFatal("The stored %s is outside of 32 bits: %lld", qUtf8Printable(key), static_cast<long long>(stored));
    return stored == 0 ? fallback : static_cast<quint32>(stored);
}

FieldMapping storedMapping(const UserDefaults &defaults)
{
    return FieldMapping::fromJson(defaults.data(u"fieldMapping"_s).value_or(QByteArray())).value_or(FieldMapping());
}

} // namespace

AppSettings &AppSettings::shared()
{
    static AppSettings settings(UserDefaults::standard());
    return settings;
}

AppSettings::AppSettings(UserDefaults &defaults) : m_defaults(defaults)
{
    // Nobody observes yet, and nothing is saved: a fall-back becomes permanent with the next write.
    m_apiKey = defaults.string(u"apiKey"_s).value_or(QString());
    m_timeTrackerDBId = defaults.string(u"timeTrackerDBId"_s).value_or(QString());
    m_tasksDBId = defaults.string(u"tasksDBId"_s).value_or(QString());
    m_pollIntervalActive = defaults.number(u"pollIntervalActive"_s).value_or(m_pollIntervalActive);
    m_pollIntervalIdle = defaults.number(u"pollIntervalIdle"_s).value_or(m_pollIntervalIdle);
    m_launchAtLogin = defaults.boolean(u"launchAtLogin"_s).value_or(false);
    m_reminderHours = defaults.number(u"reminderHours"_s).value_or(m_reminderHours);
    m_reminderEnabled = defaults.boolean(u"reminderEnabled"_s).value_or(false);
    m_useNotchUI = defaults.boolean(u"useNotchUI"_s).value_or(false);
    m_quickAddKeyCode = storedUnsigned(defaults, u"quickAddKeyCode"_s, m_quickAddKeyCode);
    m_quickAddModifiers = storedUnsigned(defaults, u"quickAddModifiers"_s, m_quickAddModifiers);
    m_showDockIcon = defaults.boolean(u"showDockIcon"_s).value_or(m_showDockIcon);
    m_fieldMapping = storedMapping(defaults);
    m_defaults.registerDefaults(values()); // Saving them unchanged must not undo what another process has saved.

    m_isConfigured.setBinding([this] {
        if (apiKey().isEmpty() || timeTrackerDBId().isEmpty() || tasksDBId().isEmpty())
            return false;
        const FieldMapping mapping = fieldMapping();
        return !mapping.ttStatus.isEmpty() && !mapping.ttStartTime.isEmpty() && !mapping.ttTaskRelation.isEmpty();
    });
}

void AppSettings::setApiKey(const QString &apiKey)
{
    m_apiKey = apiKey;
    save();
}

void AppSettings::setTimeTrackerDBId(const QString &timeTrackerDBId)
{
    m_timeTrackerDBId = timeTrackerDBId;
    save();
}

void AppSettings::setTasksDBId(const QString &tasksDBId)
{
    m_tasksDBId = tasksDBId;
    save();
}

void AppSettings::setFieldMapping(const FieldMapping &fieldMapping)
{
    m_fieldMapping = fieldMapping;
    save();
}

void AppSettings::setPollIntervalActive(double pollIntervalActive)
{
    m_pollIntervalActive = pollIntervalActive;
    save();
}

void AppSettings::setPollIntervalIdle(double pollIntervalIdle)
{
    m_pollIntervalIdle = pollIntervalIdle;
    save();
}

void AppSettings::setLaunchAtLogin(bool launchAtLogin)
{
    m_launchAtLogin = launchAtLogin;
    save();
    LaunchAtLoginHelper::setEnabled(m_launchAtLogin.valueBypassingBindings()); // An observer may have changed it.
}

void AppSettings::setReminderHours(double reminderHours)
{
    m_reminderHours = reminderHours;
    save();
}

void AppSettings::setReminderEnabled(bool reminderEnabled)
{
    m_reminderEnabled = reminderEnabled;
    save();
}

void AppSettings::setUseNotchUI(bool useNotchUI)
{
    m_useNotchUI = useNotchUI;
    save();
}

void AppSettings::setQuickAddKeyCode(quint32 quickAddKeyCode)
{
    m_quickAddKeyCode = quickAddKeyCode;
    save();
}

void AppSettings::setQuickAddModifiers(quint32 quickAddModifiers)
{
    m_quickAddModifiers = quickAddModifiers;
    save();
}

void AppSettings::setShowDockIcon(bool showDockIcon)
{
    m_showDockIcon = showDockIcon;
    save();
}

void AppSettings::changeFieldMapping(const std::function<void(FieldMapping &)> &change)
{
    FieldMapping mapping = m_fieldMapping.valueBypassingBindings();
    change(mapping);
    if (m_isTellingOfMapping) {
        m_fieldMapping = mapping; // From an observer: told only if it is a change, or it would go round for ever.
    } else {
        const QScopedValueRollback isTelling(m_isTellingOfMapping, true);
        m_fieldMapping.setValueBypassingBindings(mapping);
        m_fieldMapping.notify();
    }
    save();
}

void AppSettings::save()
{
    m_defaults.set(values()); // One call for all of them, as the store writes its file once a call.
}

QList<std::pair<QString, UserDefaults::Value>> AppSettings::values() const
{
    // Read past the bindings: a binding that happens to write a setting does not come to depend on all of them.
    return {
        {u"apiKey"_s, m_apiKey.valueBypassingBindings()},
        {u"timeTrackerDBId"_s, m_timeTrackerDBId.valueBypassingBindings()},
        {u"tasksDBId"_s, m_tasksDBId.valueBypassingBindings()},
        {u"pollIntervalActive"_s, m_pollIntervalActive.valueBypassingBindings()},
        {u"pollIntervalIdle"_s, m_pollIntervalIdle.valueBypassingBindings()},
        {u"launchAtLogin"_s, m_launchAtLogin.valueBypassingBindings()},
        {u"reminderHours"_s, m_reminderHours.valueBypassingBindings()},
        {u"reminderEnabled"_s, m_reminderEnabled.valueBypassingBindings()},
        {u"useNotchUI"_s, m_useNotchUI.valueBypassingBindings()},
        {u"quickAddKeyCode"_s, qint64{m_quickAddKeyCode.valueBypassingBindings()}},
        {u"quickAddModifiers"_s, qint64{m_quickAddModifiers.valueBypassingBindings()}},
        {u"showDockIcon"_s, m_showDockIcon.valueBypassingBindings()},
        {u"fieldMapping"_s, m_fieldMapping.valueBypassingBindings().toJson()},
    };
}

} // namespace korvo
