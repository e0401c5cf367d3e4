#include "ViewModels/SettingsViewModel.h"

#include "Utilities/Spawn.h"

#include <algorithm>
#include <exception>

namespace korvo {

using namespace Qt::StringLiterals;
using PropertyType = NotionProperty::PropertyType;

namespace {

using Schema = SettingsViewModel::Schema;

QList<NotionProperty> propertiesOfType(const QList<PropertyType> &types, const Schema &schema)
{
    return schema ? NotionSchemaService::propertiesOfType(types, *schema) : QList<NotionProperty>();
}

/// The first property of exactly that name; none without a schema or a name.
std::optional<NotionProperty> propertyNamed(const QString &name, const Schema &schema)
{
    if (!schema || name.isEmpty())
        return std::nullopt;
    const auto &properties = schema->properties;
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&name](const NotionProperty &property) { return property.name == name; });
    return found == properties.end() ? std::nullopt : std::optional(*found);
}

QStringList optionsOf(const QString &name, const Schema &schema)
{
    const auto property = propertyNamed(name, schema);
    return property ? property->selectOptions : QStringList();
}

/// Chooses for the user where there is one candidate and nothing has been chosen.
void fillRole(AppSettings &settings, QString FieldMapping::*role, const QList<NotionProperty> &candidates)
{
    if (candidates.size() != 1 || !(settings.fieldMapping().*role).isEmpty())
        return;
    const auto name = candidates.first().name;
    settings.changeFieldMapping([role, name](FieldMapping &mapping) { mapping.*role = name; });
}

} // namespace

SettingsViewModel::SettingsViewModel(HttpTransport &transport, AppSettings &settings, Clock &clock, QObject *parent) :
    QObject(parent),
    m_transport(transport),
    m_settings(settings),
    m_clock(clock),
    m_schemaService(transport, settings, clock)
{
}

SettingsViewModel::~SettingsViewModel()
{
    m_stop.request_stop();
}

void SettingsViewModel::testConnection()
{
    spawn(runConnectionTest(this));
}

QCoro::Task<> SettingsViewModel::runConnectionTest(QPointer<SettingsViewModel> self)
{
    self->m_isTestingConnection = true;
    self->m_connectionSuccess = std::nullopt;
    self->m_connectionError = std::nullopt;

    Text failure;
    try {
        NotionAPIService api(self->m_transport, self->m_settings, self->m_clock);
        const auto me = co_await api.getMe(self->m_stop.get_token());
        if (!me)
            failure = me.error().errorDescription();
    } catch (const std::exception &exception) {
        failure = QString::fromUtf8(exception.what());
    }
    // Who is told of a change may end the view model, so each is followed by another look.
    if (self)
        self->m_connectionSuccess = !failure;
    if (self && failure)
        self->m_connectionError = failure;
    if (self)
        self->m_isTestingConnection = false;
}

void SettingsViewModel::loadTimeTrackerSchema()
{
    spawn(loadTimeTracker(this));
}

void SettingsViewModel::loadTasksSchema()
{
    spawn(loadTasks(this));
}

void SettingsViewModel::loadProjectsSchema()
{
    spawn(loadProjects(this));
}

void SettingsViewModel::loadMissingSchemas()
{
    spawn(runMissingLoads(this));
}

QCoro::Task<> SettingsViewModel::runMissingLoads(QPointer<SettingsViewModel> self)
{
    if (self && !self->timeTrackerSchema())
        co_await loadTimeTracker(self);
    if (self && !self->tasksSchema())
        co_await loadTasks(self);
    if (self && !self->projectsSchema())
        co_await loadProjects(self);
}

QCoro::Task<> SettingsViewModel::loadTimeTracker(QPointer<SettingsViewModel> self)
{
    const auto databaseId = self->m_settings.timeTrackerDBId();
    if (databaseId.isEmpty())
        co_return;
    co_await load(self, &SettingsViewModel::m_timeTracker, databaseId, &SettingsViewModel::autoMapTimeTrackerFields);
}

QCoro::Task<> SettingsViewModel::loadTasks(QPointer<SettingsViewModel> self)
{
    const auto databaseId = self->m_settings.tasksDBId();
    if (databaseId.isEmpty())
        co_return;
    co_await load(self, &SettingsViewModel::m_tasks, databaseId, &SettingsViewModel::autoMapTaskFields);
}

QCoro::Task<> SettingsViewModel::loadProjects(QPointer<SettingsViewModel> self)
{
    const auto relationName = self->m_settings.fieldMapping().taskProjectRelation;
    if (!self->tasksSchema() || relationName.isEmpty())
        co_return;
    const auto relation = propertyNamed(relationName, self->tasksSchema());
    if (!relation || !relation->relationDatabaseId) {
        self->m_projects.error = u"Could not determine Projects database ID"_s;
        co_return;
    }
    co_await load(self, &SettingsViewModel::m_projects, *relation->relationDatabaseId, nullptr);
}

QCoro::Task<> SettingsViewModel::load(QPointer<SettingsViewModel> self, LoadedSchema SettingsViewModel::*target,
                                      QString databaseId, Step autoMap)
{
    auto &loaded = self.data()->*target;
    loaded.isLoading = true;
    loaded.error = std::nullopt;

    Text failure;
    try {
        const auto schema = co_await self->m_schemaService.loadSchema(databaseId, self->m_stop.get_token());
        if (!self)
            co_return; // And `loaded` went with it, as it may at each change that others are told of.
        if (schema)
            loaded.schema = *schema;
        else
            failure = schema.error().errorDescription();
        if (self && schema && autoMap)
            (self.data()->*autoMap)();
    } catch (const std::exception &exception) {
        failure = QString::fromUtf8(exception.what());
    }
    if (self && failure)
        loaded.error = failure;
    if (self)
        loaded.isLoading = false;
}

void SettingsViewModel::autoMapTimeTrackerFields()
{
    auto &settings = m_settings; // Outlives this object, which may end as others are told of a filled role.
    const auto relations = ttRelationProperties();
    const auto selects = ttSelectProperties();
    fillRole(settings, &FieldMapping::ttTaskRelation, relations);
    fillRole(settings, &FieldMapping::ttStatus, selects);
}

void SettingsViewModel::autoMapTaskFields()
{
    auto &settings = m_settings; // As above.
    const auto titles = taskTitleProperties();
    const auto dates = taskDateProperties();
    const auto selects = taskSelectProperties();
    fillRole(settings, &FieldMapping::taskName, titles);
    fillRole(settings, &FieldMapping::taskDate, dates);
    fillRole(settings, &FieldMapping::taskTimerStatus, selects);
}

QList<NotionProperty> SettingsViewModel::ttDateProperties() const
{
    return propertiesOfType({PropertyType::date, PropertyType::createdTime}, timeTrackerSchema());
}

QList<NotionProperty> SettingsViewModel::ttSelectProperties() const
{
    return propertiesOfType({PropertyType::select, PropertyType::status}, timeTrackerSchema());
}

QList<NotionProperty> SettingsViewModel::ttRelationProperties() const
{
    return propertiesOfType({PropertyType::relation}, timeTrackerSchema());
}

QList<NotionProperty> SettingsViewModel::taskTitleProperties() const
{
    return propertiesOfType({PropertyType::title}, tasksSchema());
}

QList<NotionProperty> SettingsViewModel::taskDateProperties() const
{
    return propertiesOfType({PropertyType::date}, tasksSchema());
}

QList<NotionProperty> SettingsViewModel::taskSelectProperties() const
{
    return propertiesOfType({PropertyType::select, PropertyType::status}, tasksSchema());
}

QList<NotionProperty> SettingsViewModel::taskRelationProperties() const
{
    return propertiesOfType({PropertyType::relation}, tasksSchema());
}

QList<NotionProperty> SettingsViewModel::projectRelationProperties() const
{
    return propertiesOfType({PropertyType::relation}, projectsSchema());
}

QList<NotionProperty> SettingsViewModel::taskRollupProperties() const
{
    return propertiesOfType({PropertyType::rollup}, tasksSchema());
}

QStringList SettingsViewModel::ttStatusOptions() const
{
    return optionsOf(m_settings.fieldMapping().ttStatus, timeTrackerSchema());
}

QStringList SettingsViewModel::taskTimerStatusOptions() const
{
    return optionsOf(m_settings.fieldMapping().taskTimerStatus, tasksSchema());
}

} // namespace korvo
