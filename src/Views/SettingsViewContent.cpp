#include "Views/SettingsView.h"

#include "Models/AppSettings.h"
#include "Views/BusyButton.h"
#include "Views/BusyIndicator.h"
#include "Views/FormSection.h"
#include "Views/FormText.h"
#include "Views/HotkeyRecorderView.h"
#include "Views/LinkText.h"
#include "Views/Picker.h"
#include "Views/SettingField.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/TextStyle.h"

#include <QCheckBox>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int sectionSpacing = 20;
constexpr int pagePadding = 16;

/// The sections of a tab, from the top down.
template <typename... Sections> QWidget *page(const QString &name, Sections... sections)
{
    return section(
        name,
        vstack({.spacing = sectionSpacing, .padding = padding(pagePadding, pagePadding + 2)}, sections..., Spacer()));
}

/// A setting of type T.
template <typename T, typename Parameter>
Binding<T> setting(AppSettings &settings, T (AppSettings::*get)() const, void (AppSettings::*set)(Parameter))
{
    return {[&settings, get] { return (settings.*get)(); },
            [&settings, set](const T &value) { (settings.*set)(value); }};
}

QCheckBox *toggle(const QString &label, const Binding<bool> &isOn)
{
    auto *box = new QCheckBox(label);
    follow(*box, isOn.get, [box](bool value) { box->setChecked(value); });
    QObject::connect(box, &QCheckBox::clicked, box, [set = isOn.set](bool value) { set(value); });
    return box;
}

QStringList namesOf(const QList<NotionProperty> &properties)
{
    QStringList names;
    for (const auto &property : properties)
        names.append(property.name);
    return names;
}

/// A widget that is there while a condition holds.
template <typename Condition> void showWhile(QWidget *widget, Condition condition)
{
    follow(*widget, condition, [widget](bool isShown) { widget->setVisible(isShown); });
}

FormText *errorText(QBindable<SettingsViewModel::Text> error)
{
    auto *text = new FormText(FormText::Role::error);
    text->setObjectName(u"error"_s);
    follow(
        *text, [error] { return error.value(); },
        [text](const SettingsViewModel::Text &words) {
            text->setVisible(words.has_value());
            text->announce(words.value_or(QString()));
        });
    return text;
}

} // namespace

QWidget *SettingsView::connectionContent()
{
    auto &vm = *m_settingsVM;
    auto *key = new SettingField(setting(m_settings, &AppSettings::apiKey, &AppSettings::setApiKey));
    key->setObjectName(u"apiKey"_s);
    key->setEchoMode(QLineEdit::Password);
    key->setPlaceholderText(tr("Secret key (ntn_...)"));
    key->setAccessibleName(tr("API Key"));

    auto *test = new BusyButton(tr("&Test Connection"));
    test->setObjectName(u"testConnection"_s);
    connect(test, &QPushButton::clicked, &vm, &SettingsViewModel::testConnection);
    follow(
        *test, [&vm] { return vm.isTestingConnection(); }, [test](bool isTesting) { test->setBusy(isTesting); });
    follow(
        *test, [this, &vm] { return !m_settings.apiKey().isEmpty() && !vm.isTestingConnection(); },
        [test](bool isEnabled) { test->setEnabled(isEnabled); });

    const auto result = [&vm](const QString &name, bool outcome, Symbol symbol, FormText::Role role, auto words) {
        auto *text = new FormText(role, {}, FormText::Lines::one);
        auto *icon = new SymbolIcon(symbol, 13, text->ink());
        auto *parts = hstack({.spacing = 5}, icon, text);
        parts->setStretch(parts->indexOf(text), 1);
        auto *label = section(name, parts);
        showWhile(label, [&vm, outcome] { return vm.connectionSuccess() == outcome; });
        follow(
            *label, [&vm, outcome, words] { return vm.connectionSuccess() == outcome ? words() : QString(); },
            [text, icon](const QString &what) {
                setInk(*icon, text->ink());
                text->announce(what);
            });
        return label;
    };
    auto *connected = result(u"connected"_s, true, Symbol::checkmarkCircleFill, FormText::Role::success,
                             [] { return tr("Connected"); });
    auto *failed = result(u"failed"_s, false, Symbol::xmarkCircleFill, FormText::Role::failure,
                          [&vm] { return vm.connectionError().value_or(tr("Failed")); });

    auto *apiKey = new FormSection(tr("API Key"));
    apiKey->addRow(key);
    auto *row = hstack({.spacing = 12}, test, connected, failed, Spacer());
    for (auto *label : {connected, failed})
        row->setStretch(row->indexOf(label), 1000); // All of the room, as long as it is there.
    apiKey->addRow(row);

    auto *hint = new LinkText(
        tr("Create an integration on <a href=\"https://www.notion.so/my-integrations\">Notion's integrations page</a>, "
           "give it access to your two databases, and paste its API key into the field above."));
    hint->setObjectName(u"hint"_s);
    auto *help = new FormSection({});
    help->addRow(hint);
    return page(u"connectionContent"_s, apiKey, help);
}

QWidget *SettingsView::timeTrackerContent()
{
    auto &vm = *m_settingsVM;
    auto *database = new FormSection(tr("Database"));
    const auto id = setting(m_settings, &AppSettings::timeTrackerDBId, &AppSettings::setTimeTrackerDBId);
    addDatabaseRows(*database, id, vm.bindableIsLoadingTTSchema(), vm.bindableTTSchemaError(),
                    &SettingsViewModel::loadTimeTrackerSchema);

    auto *fields = new FormSection(tr("Field Mapping"));
    fields->setObjectName(u"fieldMapping"_s);
    fields->addRow(tr("Task &Relation"),
                   fieldPicker(&FieldMapping::ttTaskRelation, &SettingsViewModel::ttRelationProperties));
    fields->addRow(tr("&Start Time"), fieldPicker(&FieldMapping::ttStartTime, &SettingsViewModel::ttDateProperties));
    fields->addRow(tr("&End Time"), fieldPicker(&FieldMapping::ttEndTime, &SettingsViewModel::ttDateProperties));
    fields->addRow(tr("&Timer Status"), fieldPicker(&FieldMapping::ttStatus, &SettingsViewModel::ttSelectProperties));
    showWhile(fields, [&vm] { return vm.timeTrackerSchema().has_value(); });

    auto *values = new FormSection(tr("Status Values"));
    values->setObjectName(u"statusValues"_s);
    values->addRow(tr("\"R&unning\" value"),
                   valuePicker(&FieldMapping::ttStatusRunning, &SettingsViewModel::ttStatusOptions));
    values->addRow(tr("\"St&opped\" value"),
                   valuePicker(&FieldMapping::ttStatusStopped, &SettingsViewModel::ttStatusOptions));
    showWhile(values, [this, &vm] { return vm.timeTrackerSchema() && !m_settings.fieldMapping().ttStatus.isEmpty(); });
    return page(u"timeTrackerContent"_s, database, fields, values);
}

QWidget *SettingsView::tasksContent()
{
    auto &vm = *m_settingsVM;
    auto *database = new FormSection(tr("Database"));
    const auto id = setting(m_settings, &AppSettings::tasksDBId, &AppSettings::setTasksDBId);
    addDatabaseRows(*database, id, vm.bindableIsLoadingTasksSchema(), vm.bindableTasksSchemaError(),
                    &SettingsViewModel::loadTasksSchema);

    auto *fields = new FormSection(tr("Field Mapping"));
    fields->setObjectName(u"fieldMapping"_s);
    fields->addRow(tr("Task &Name"), fieldPicker(&FieldMapping::taskName, &SettingsViewModel::taskTitleProperties));
    fields->addRow(tr("Task &Date"), fieldPicker(&FieldMapping::taskDate, &SettingsViewModel::taskDateProperties));
    fields->addRow(tr("&Timer Status"),
                   fieldPicker(&FieldMapping::taskTimerStatus, &SettingsViewModel::taskSelectProperties));
    showWhile(fields, [&vm] { return vm.tasksSchema().has_value(); });

    auto *values = new FormSection(tr("Status Values"));
    values->setObjectName(u"statusValues"_s);
    values->addRow(tr("\"R&unning\" value"),
                   valuePicker(&FieldMapping::taskTimerStatusRunning, &SettingsViewModel::taskTimerStatusOptions));
    values->addRow(tr("\"St&opped\" value"),
                   valuePicker(&FieldMapping::taskTimerStatusStopped, &SettingsViewModel::taskTimerStatusOptions));
    showWhile(values, [this, &vm] { return vm.tasksSchema() && !m_settings.fieldMapping().taskTimerStatus.isEmpty(); });

    auto *extended = new FormSection(tr("Extended Fields"));
    extended->setObjectName(u"extendedFields"_s);
    auto *busy = new BusyIndicator;
    showWhile(busy, [&vm] { return vm.isLoadingProjectsSchema(); });
    extended->addRow(tr("&Project Relation"),
                     fieldPicker(projectRelation(), &SettingsViewModel::taskRelationProperties), busy);
    auto *client = extended->addRow(
        tr("&Client Relation"),
        fieldPicker(&FieldMapping::projectClientRelation, &SettingsViewModel::projectRelationProperties));
    showWhile(client, [&vm] { return vm.projectsSchema().has_value(); });
    auto *failure = extended->addNote(errorText(vm.bindableProjectsSchemaError()));
    showWhile(failure, [&vm] { return vm.projectsSchemaError().has_value(); });
    extended->addRow(tr("Total Ti&me Rollup"),
                     fieldPicker(&FieldMapping::taskTotalTimeRollup, &SettingsViewModel::taskRollupProperties));
    showWhile(extended, [&vm] { return vm.tasksSchema().has_value(); });
    return page(u"tasksContent"_s, database, fields, values, extended);
}

QWidget *SettingsView::generalContent()
{
    const auto note = [](const QString &text) { return new FormText(FormText::Role::caption, text); };

    auto *polling = new FormSection(tr("Polling"));
    polling->addRow(
        tr("&Active timer interval"),
        new Picker(setting(m_settings, &AppSettings::pollIntervalActive, &AppSettings::setPollIntervalActive),
                   {{tr("15s"), 15}, {tr("30s"), 30}, {tr("60s"), 60}, {tr("120s"), 120}}));
    polling->addRow(tr("&Idle interval"),
                    new Picker(setting(m_settings, &AppSettings::pollIntervalIdle, &AppSettings::setPollIntervalIdle),
                               {{tr("30s"), 30}, {tr("60s"), 60}, {tr("120s"), 120}, {tr("300s"), 300}}));

    auto *system = new FormSection(tr("System"));
    system->addRow(toggle(tr("&Launch at Login"),
                          setting(m_settings, &AppSettings::launchAtLogin, &AppSettings::setLaunchAtLogin)));
    auto showDockIcon = setting(m_settings, &AppSettings::showDockIcon, &AppSettings::setShowDockIcon);
    showDockIcon.set = [set = showDockIcon.set, tell = m_callbacks.onDockIconChange](const bool &value) {
        set(value);
        tell();
    };
    system->addRow(toggle(tr("&Show app icon in Dock"), showDockIcon));
    system->addNote(note(tr("When enabled, the Dock icon shows elapsed time while a timer is running.")));

    auto *notifications = new FormSection(tr("Notifications"));
    notifications->addRow(toggle(tr("&Notify when timer runs too long"),
                                 setting(m_settings, &AppSettings::reminderEnabled, &AppSettings::setReminderEnabled)));
    auto *hours = notifications->addRow(
        tr("&Remind after"),
        new Picker(
            setting(m_settings, &AppSettings::reminderHours, &AppSettings::setReminderHours),
            {{tr("2 hours"), 2}, {tr("4 hours"), 4}, {tr("6 hours"), 6}, {tr("8 hours"), 8}, {tr("10 hours"), 10}}));
    showWhile(hours, [this] { return m_settings.reminderEnabled(); });

    auto *notch = new FormSection(tr("Notch Interface"));
    notch->setObjectName(u"notchInterface"_s);
    notch->addRow(
        toggle(tr("&Use notch interface"), setting(m_settings, &AppSettings::useNotchUI, &AppSettings::setUseNotchUI)));
    notch->addNote(note(tr("Shows timer around the MacBook notch. Menu bar will show icon only.")));
    showWhile(notch, [this] { return m_hasPhysicalNotch.value(); });

    // What these hold must live on while a shortcut is being recorded, which the view need not.
    const auto registering = [this](Binding<quint32> value) {
        value.set = [set = value.set, tell = m_callbacks.onHotkeyChange](const quint32 &number) {
            set(number);
            tell();
        };
        return value;
    };
    auto *shortcuts = new FormSection(tr("Shortcuts"));
    auto *recorder = new HotkeyRecorderView(
        registering(setting(m_settings, &AppSettings::quickAddKeyCode, &AppSettings::setQuickAddKeyCode)),
        registering(setting(m_settings, &AppSettings::quickAddModifiers, &AppSettings::setQuickAddModifiers)));
    recorder->setObjectName(u"recorder"_s);
    shortcuts->addRow(tr("&Quick Add"), recorder);
    return page(u"generalContent"_s, polling, system, notifications, notch, shortcuts);
}

void SettingsView::addDatabaseRows(FormSection &database, const Binding<QString> &id, QBindable<bool> isLoading,
                                   QBindable<SettingsViewModel::Text> error, void (SettingsViewModel::*load)())
{
    auto *field = new SettingField(id);
    field->setObjectName(u"databaseId"_s);
    field->setPlaceholderText(tr("Database ID (32 characters)"));
    field->setAccessibleName(tr("Database ID"));

    auto *button = new BusyButton(tr("&Load Fields"));
    button->setObjectName(u"loadFields"_s);
    connect(button, &QPushButton::clicked, m_settingsVM.get(), load);
    follow(
        *button, [isLoading] { return isLoading.value(); }, [button](bool isBusy) { button->setBusy(isBusy); });
    follow(
        *button, [isLoading, get = id.get] { return !get().isEmpty() && !isLoading.value(); },
        [button](bool isEnabled) { button->setEnabled(isEnabled); });

    database.addRow(field);
    auto *row = hstack({.spacing = 12}, button, errorText(error), Spacer());
    row->setStretch(1, 1000); // All of the room, as long as there is an error.
    database.addRow(row);
}

Binding<QString> SettingsView::mapping(Role role) const
{
    auto &settings = m_settings;
    return {[&settings, role] { return settings.fieldMapping().*role; },
            [&settings, role](const QString &name) {
                settings.changeFieldMapping([role, name](FieldMapping &mapping) { mapping.*role = name; });
            }};
}

/// Another relation may lead to another database, in which the client's name and all else is to be found anew.
Binding<QString> SettingsView::projectRelation() const
{
    const auto relation = mapping(&FieldMapping::taskProjectRelation);
    const auto client = mapping(&FieldMapping::projectClientRelation);
    return {relation.get, [relation, client, vm = m_settingsVM.get()](const QString &name) {
                relation.set(name);
                client.set({});
                vm->forgetProjectsSchema();
                if (!name.isEmpty())
                    vm->loadProjectsSchema();
            }};
}

Picker *SettingsView::fieldPicker(const Binding<QString> &selection,
                                  QList<NotionProperty> (SettingsViewModel::*options)() const)
{
    return new Picker(selection, [vm = m_settingsVM.get(), options] { return namesOf((vm->*options)()); });
}

Picker *SettingsView::fieldPicker(Role role, QList<NotionProperty> (SettingsViewModel::*options)() const)
{
    return fieldPicker(mapping(role), options);
}

Picker *SettingsView::valuePicker(Role role, QStringList (SettingsViewModel::*options)() const)
{
    return new Picker(mapping(role), [vm = m_settingsVM.get(), options] { return (vm->*options)(); });
}

} // namespace korvo
