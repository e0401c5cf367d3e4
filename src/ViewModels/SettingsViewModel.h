#pragma once

#include "Models/AppSettings.h"
#include "Models/NotionSchema.h"
#include "Services/NotionSchemaService.h"
#include "Utilities/Clock.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QProperty>
#include <QString>
#include <QStringList>

#include <optional>
#include <stop_token>

namespace korvo {

/// What the settings window has learned from Notion: whether the key works, and the layouts of the three databases from
/// which the user maps properties to roles. Lives as long as its window and persists nothing itself; a role that leaves
/// no choice goes into the settings. Its end ends its requests.
class SettingsViewModel : public QObject {
    Q_OBJECT
public:
    /// Performs no request and reads no setting. All three references must outlive it and its requests.
    explicit SettingsViewModel(HttpTransport &transport = HttpTransport::shared(),
                               AppSettings &settings = AppSettings::shared(), Clock &clock = Clock::shared(),
                               QObject *parent = nullptr);
    ~SettingsViewModel() override;

    AppSettings &settings() const { return m_settings; }

    using Schema = std::optional<NotionDatabaseSchema>;
    using Text = std::optional<QString>;

    /// The Time Tracker database as last loaded. A failed load leaves it, and so does a change of the settings.
    const Schema &timeTrackerSchema() const { return m_timeTracker.schema.value(); }
    QBindable<Schema> bindableTimeTrackerSchema() const { return &m_timeTracker.schema; }

    /// The Tasks database as last loaded, in the same way.
    const Schema &tasksSchema() const { return m_tasks.schema.value(); }
    QBindable<Schema> bindableTasksSchema() const { return &m_tasks.schema; }

    /// The Projects database as last loaded, in the same way.
    const Schema &projectsSchema() const { return m_projects.schema.value(); }
    QBindable<Schema> bindableProjectsSchema() const { return &m_projects.schema; }

    /// Whether a load of the Time Tracker schema is in progress. Of two that overlap the first end counts.
    bool isLoadingTTSchema() const { return m_timeTracker.isLoading; }
    QBindable<bool> bindableIsLoadingTTSchema() const { return &m_timeTracker.isLoading; }

    /// The same for the Tasks schema.
    bool isLoadingTasksSchema() const { return m_tasks.isLoading; }
    QBindable<bool> bindableIsLoadingTasksSchema() const { return &m_tasks.isLoading; }

    /// The same for the Projects schema.
    bool isLoadingProjectsSchema() const { return m_projects.isLoading; }
    QBindable<bool> bindableIsLoadingProjectsSchema() const { return &m_projects.isLoading; }

    /// Why the last load of the Time Tracker schema failed; the start of the next one clears it.
    const Text &ttSchemaError() const { return m_timeTracker.error.value(); }
    QBindable<Text> bindableTTSchemaError() const { return &m_timeTracker.error; }

    /// The same for the Tasks schema.
    const Text &tasksSchemaError() const { return m_tasks.error.value(); }
    QBindable<Text> bindableTasksSchemaError() const { return &m_tasks.error; }

    /// The same for the Projects schema, or that it is not known which database that is.
    const Text &projectsSchemaError() const { return m_projects.error.value(); }
    QBindable<Text> bindableProjectsSchemaError() const { return &m_projects.error; }

    /// Whether a connection test is in progress.
    bool isTestingConnection() const { return m_isTestingConnection; }
    QBindable<bool> bindableIsTestingConnection() const { return &m_isTestingConnection; }

    /// How the last connection test ended; none if there was none, or while one runs.
    std::optional<bool> connectionSuccess() const { return m_connectionSuccess; }
    QBindable<std::optional<bool>> bindableConnectionSuccess() const { return &m_connectionSuccess; }

    /// Why the last connection test failed.
    const Text &connectionError() const { return m_connectionError.value(); }
    QBindable<Text> bindableConnectionError() const { return &m_connectionError; }

    /// Asks Notion whether the key works. Like the loads below it never fails outwards and may overlap with itself.
    void testConnection();

    /// Loads the layout of the Time Tracker database, and fills the roles that it leaves no choice for. Does nothing
    /// without the identifier of the database.
    void loadTimeTrackerSchema();

    /// The same for the Tasks database.
    void loadTasksSchema();

    /// Loads the layout of the database that the mapped project relation of the Tasks database leads to. Does nothing
    /// without a Tasks schema or without a mapped relation. A relation that leads nowhere is an error.
    void loadProjectsSchema();

    /// Loads the schemas that are not there yet and that the settings lead to: Time Tracker, Tasks and Projects, each
    /// after the one before has ended, by what the settings say then.
    void loadMissingSchemas();

    /// Lets go of the Projects schema, as another relation may lead elsewhere.
    void forgetProjectsSchema() { m_projects.schema = Schema(); }

    // What the pickers offer: read from the schemas each time, in the order of names, and empty without the schema.
    QList<NotionProperty> ttDateProperties() const;   ///< Also created times.
    QList<NotionProperty> ttSelectProperties() const; ///< Also of the status type.
    QList<NotionProperty> ttRelationProperties() const;
    QList<NotionProperty> taskTitleProperties() const;
    QList<NotionProperty> taskDateProperties() const;
    QList<NotionProperty> taskSelectProperties() const; ///< Also of the status type.
    QList<NotionProperty> taskRelationProperties() const;
    QList<NotionProperty> projectRelationProperties() const;
    QList<NotionProperty> taskRollupProperties() const;
    QStringList ttStatusOptions() const;        ///< The options of the mapped status property of an entry.
    QStringList taskTimerStatusOptions() const; ///< The options of the mapped status property of a task.

private:
    /// What is known of one database.
    struct LoadedSchema {
        QProperty<Schema> schema;
        QProperty<bool> isLoading{false};
        QProperty<Text> error;
    };
    using Step = void (SettingsViewModel::*)();

    static QCoro::Task<> runConnectionTest(QPointer<SettingsViewModel> self);
    static QCoro::Task<> runMissingLoads(QPointer<SettingsViewModel> self);
    // A load as a whole, with its conditions. It begins at once.
    static QCoro::Task<> loadTimeTracker(QPointer<SettingsViewModel> self);
    static QCoro::Task<> loadTasks(QPointer<SettingsViewModel> self);
    static QCoro::Task<> loadProjects(QPointer<SettingsViewModel> self);
    /// Loads into `target`, and after a success runs `autoMap` if there is one.
    static QCoro::Task<> load(QPointer<SettingsViewModel> self, LoadedSchema SettingsViewModel::*target,
                              QString databaseId, Step autoMap);
    void autoMapTimeTrackerFields();
    void autoMapTaskFields();

    HttpTransport &m_transport;
    AppSettings &m_settings;
    Clock &m_clock;
    NotionSchemaService m_schemaService;
    std::stop_source m_stop;

    LoadedSchema m_timeTracker;
    LoadedSchema m_tasks;
    LoadedSchema m_projects;
    QProperty<bool> m_isTestingConnection{false};
    QProperty<std::optional<bool>> m_connectionSuccess;
    QProperty<Text> m_connectionError;
};

} // namespace korvo
