#include "ViewModels/SettingsViewModel.h"
#include "Fakes/FakeClock.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/NotionDatabases.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;
using namespace korvo::databases;

namespace {

const QString meCall = u"GET /users/me"_s;
const QString trackerCall = u"GET /databases/tracker"_s;
const QString tasksCall = u"GET /databases/tasks"_s;
const QString projectsCall = u"GET /databases/projects"_s;

QStringList namesOf(const QList<NotionProperty> &properties)
{
    QStringList names;
    for (const auto &property : properties)
        names.append(property.name);
    return names;
}

QStringList namesOf(const SettingsViewModel::Schema &schema)
{
    return schema ? namesOf(schema->properties) : QStringList(u"no schema"_s);
}

/// A database of one property, by which the answers can be told apart.
QJsonObject databaseOf(const QString &name)
{
    return database({{name, column(u"number"_s)}});
}

/// A property of each type that a picker shows, and one that none does. The names are those of the types.
QJsonObject databaseOfAllTypes()
{
    QJsonObject properties{{u"relation"_s, relation(u"elsewhere"_s)}};
    for (const auto &type : {u"title"_s, u"rich_text"_s, u"number"_s, u"select"_s, u"multi_select"_s, u"status"_s,
                             u"date"_s, u"rollup"_s, u"created_time"_s, u"last_edited_time"_s, u"hologram"_s})
        properties.insert(type, column(type));
    return database(properties);
}

/// The schemas differ only in where they stand, so what holds for one is tested for each.
struct Database {
    void (SettingsViewModel::*load)();
    const SettingsViewModel::Schema &(SettingsViewModel::*schema)() const;
    bool (SettingsViewModel::*isLoading)() const;
    QBindable<bool> (SettingsViewModel::*bindableIsLoading)() const;
    const SettingsViewModel::Text &(SettingsViewModel::*error)() const;
    QString call;
};

} // namespace

Q_DECLARE_METATYPE(Database)

class SettingsViewModelTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void nothingIsKnownAndNothingIsAskedAtConstruction();

    // The connection test
    void aConnectionTestAsksWhoTheKeyBelongsToAndSucceeds();
    void aConnectionTestWithoutAKeyFailsWithoutARequest();
    void aFailedConnectionTestTellsWhy_data();
    void aFailedConnectionTestTellsWhy();
    void anExceptionInAConnectionTestIsAFailure();
    void aNewConnectionTestForgetsTheLastResult();
    void aChangedKeyIsInForceAtTheNextConnectionTest();
    void theFlagOfAConnectionTestFallsLast_data();
    void theFlagOfAConnectionTestFallsLast();
    void ofTwoConnectionTestsTheFlagFallsAtTheFirstEnd();
    void ofTwoConnectionTestsTheAnswerThatArrivesLastWins();

    // Loading
    void aLoadWithoutDatabaseIdDoesNothing_data();
    void aLoadWithoutDatabaseIdDoesNothing();
    void aLoadRaisesItsFlagAloneAndKeepsTheSchema_data();
    void aLoadRaisesItsFlagAloneAndKeepsTheSchema();
    void aFailedLoadTellsWhy_data();
    void aFailedLoadTellsWhy();
    void anExceptionInALoadIsAFailure_data();
    void anExceptionInALoadIsAFailure();
    void aFailedReloadKeepsTheOldSchemaNextToTheNewError_data();
    void aFailedReloadKeepsTheOldSchemaNextToTheNewError();
    void aReloadClearsTheErrorAtItsStart_data();
    void aReloadClearsTheErrorAtItsStart();
    void aMalformedPropertyGivesAnEmptySchemaAndNoError_data();
    void aMalformedPropertyGivesAnEmptySchemaAndNoError();
    void theFlagOfALoadFallsLast_data();
    void theFlagOfALoadFallsLast();
    void ofTwoLoadsTheFlagFallsAtTheFirstEnd_data();
    void ofTwoLoadsTheFlagFallsAtTheFirstEnd();
    void ofTwoLoadsTheAnswerThatArrivesLastWins();
    void aFailureLeavesItsErrorBesideTheSchemaOfALoadThatEndsLater();
    void theTwoDatabasesLoadSideBySide();
    void aChangedIdIsInForceAtTheNextLoadAndClearsNothingBefore();
    void anEqualSchemaIsToldToObserversAllTheSame();
    void theEndOfTheViewModelEndsItsRequests_data();
    void theEndOfTheViewModelEndsItsRequests();

    // The Projects database
    void theProjectsSchemaFollowsTheRelation();
    void loadingTasksDoesNotGoOnToProjects();
    void loadingProjectsBeforeTasksHaveEndedDoesNothingAndSaysNothing();
    void loadingProjectsWithoutAMappedRelationDoesNothingAndSaysNothing();
    void aRelationThatLeadsNowhereIsAnErrorWithoutTheFlag_data();
    void aRelationThatLeadsNowhereIsAnErrorWithoutTheFlag();
    void theErrorOfARelationStandsUntilALoadGetsPastIt();
    void loadingProjectsMapsNothing();

    // Auto-mapping
    void oneRelationAndOneSelectFillTaskRelationAndStatus();
    void oneStatusPropertyFillsStatusAsWell();
    void aRoleThatIsChosenStaysEvenIfThePropertyIsGone();
    void aSelectAndAStatusAreTwoCandidates();
    void twoRelationsLeaveTaskRelationEmpty();
    void theTasksDatabaseFillsNameDateAndTimerStatus();
    void twoDatesLeaveTaskDateEmpty();
    void aCreatedTimeIsNoCandidateForTaskDate();
    void theOtherRolesAreNeverFilled();
    void eachFilledRoleIsSavedAndNothingElseIs();
    void aViewModelThatGoesAsARoleIsFilledLeavesTheRolesFilled();
    void aFailedLoadMapsNothing();

    // What the pickers offer
    void withoutSchemasThePickersAreEmpty();
    void eachPickerOffersItsTypesInTheOrderOfNames();
    void statusOptionsAreThoseOfTheMappedProperty();
    void statusOptionsAreEmptyWithoutSuchAPropertyOrOptions_data();
    void statusOptionsAreEmptyWithoutSuchAPropertyOrOptions();
    void aBindingOverAPickerFollowsSchemaAndMapping();

private:
    struct World {
        FakeNotion notion;
        FakeClock clock;
        TestSettings settings;
        FakeSystemLog log;
        std::unique_ptr<SettingsViewModel> viewModel;
    };

    static void addDatabases(bool hasProjects);
    static void addFailures();
    FakeNotion &notion() { return m_world->notion; }
    AppSettings &settings() { return m_world->settings.settings; }
    SettingsViewModel &viewModel() { return *m_world->viewModel; }
    int callCount(const QString &call) const { return int(m_world->notion.calls().count(call)); }
    /// Lets the requests under way have their answers, and the operations end.
    void settle() { QTRY_VERIFY((notion().release(), spawnedCount() == 0)); }
    void fail(const QString &call, const QString &how);
    void mapProjectRelation(const QString &name);
    void loadTracker(const QJsonObject &properties);
    void loadTasks(const QJsonObject &properties);

    std::unique_ptr<World> m_world;
};

void SettingsViewModelTest::init()
{
    m_world = std::make_unique<World>();
    m_world->clock.isInstant = true;
    notion().isHolding = true;
    settings().setApiKey(u"ntn_test"_s);
    settings().setTimeTrackerDBId(u"tracker"_s);
    settings().setTasksDBId(u"tasks"_s);
    m_world->viewModel = std::make_unique<SettingsViewModel>(notion(), settings(), m_world->clock);
}

void SettingsViewModelTest::cleanup()
{
    m_world->viewModel.reset();
    QVERIFY2(finishSpawned(2000), "An operation went on without its owner");
    m_world.reset();
}

/// One row for each database whose schema can be loaded.
void SettingsViewModelTest::addDatabases(bool hasProjects)
{
    using VM = SettingsViewModel;
    QTest::addColumn<Database>("database");
    QTest::newRow("Time Tracker") << Database{&VM::loadTimeTrackerSchema, &VM::timeTrackerSchema,
                                              &VM::isLoadingTTSchema,     &VM::bindableIsLoadingTTSchema,
                                              &VM::ttSchemaError,         trackerCall};
    QTest::newRow("Tasks") << Database{&VM::loadTasksSchema,      &VM::tasksSchema,
                                       &VM::isLoadingTasksSchema, &VM::bindableIsLoadingTasksSchema,
                                       &VM::tasksSchemaError,     tasksCall};
    if (hasProjects)
        QTest::newRow("Projects") << Database{&VM::loadProjectsSchema,      &VM::projectsSchema,
                                              &VM::isLoadingProjectsSchema, &VM::bindableIsLoadingProjectsSchema,
                                              &VM::projectsSchemaError,     projectsCall};
}

/// One row for each kind of failure, as `fail` knows them, with the text for the user.
void SettingsViewModelTest::addFailures()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<QString>("text");
    QTest::newRow("no key") << u"no key"_s << u"No API key configured"_s;
    QTest::newRow("a wrong key") << u"401"_s << u"Invalid API key"_s;
    QTest::newRow("nothing there") << u"404"_s << u"Resource not found"_s;
    QTest::newRow("a refusal") << u"400"_s << uR"(Server error 400: {"message":"no"})"_s;
    QTest::newRow("a server in trouble") << u"503"_s << uR"(Server error 503: {"message":"no"})"_s;
    QTest::newRow("too many requests") << u"429"_s << u"Rate limited, retrying..."_s;
    QTest::newRow("no network") << u"offline"_s << u"Network error: The Internet connection appears to be offline."_s;
}

void SettingsViewModelTest::fail(const QString &call, const QString &how)
{
    notion().forget(call);
    if (how == u"no key"_s)
        settings().setApiKey({});
    else if (how == u"offline"_s)
        notion().isOffline = true;
    else
        notion().answer(call, {{u"message"_s, u"no"_s}}, how.toInt());
}

void SettingsViewModelTest::mapProjectRelation(const QString &name)
{
    settings().changeFieldMapping([&name](FieldMapping &mapping) { mapping.taskProjectRelation = name; });
}

void SettingsViewModelTest::loadTracker(const QJsonObject &properties)
{
    notion().forget(trackerCall);
    notion().answer(trackerCall, database(properties));
    viewModel().loadTimeTrackerSchema();
    settle();
    QVERIFY(viewModel().timeTrackerSchema());
}

void SettingsViewModelTest::loadTasks(const QJsonObject &properties)
{
    notion().forget(tasksCall);
    notion().answer(tasksCall, database(properties));
    viewModel().loadTasksSchema();
    settle();
    QVERIFY(viewModel().tasksSchema());
}

void SettingsViewModelTest::nothingIsKnownAndNothingIsAskedAtConstruction()
{
    QCOMPARE(&viewModel().settings(), &settings());
    QVERIFY(!viewModel().timeTrackerSchema());
    QVERIFY(!viewModel().tasksSchema());
    QVERIFY(!viewModel().projectsSchema());
    QVERIFY(!viewModel().isLoadingTTSchema());
    QVERIFY(!viewModel().isLoadingTasksSchema());
    QVERIFY(!viewModel().isLoadingProjectsSchema());
    QVERIFY(!viewModel().ttSchemaError());
    QVERIFY(!viewModel().tasksSchemaError());
    QVERIFY(!viewModel().projectsSchemaError());
    QVERIFY(!viewModel().isTestingConnection());
    QVERIFY(!viewModel().connectionSuccess());
    QVERIFY(!viewModel().connectionError());
    QCOMPARE(spawnedCount(), 0);
    QVERIFY(notion().asked.isEmpty());
}

void SettingsViewModelTest::aConnectionTestAsksWhoTheKeyBelongsToAndSucceeds()
{
    notion().answer(meCall, {{u"type"_s, u"anything at all"_s}});
    viewModel().testConnection();
    QVERIFY(viewModel().isTestingConnection());
    QVERIFY(!viewModel().connectionSuccess());
    settle();
    QCOMPARE(notion().calls(), QStringList(meCall));
    QCOMPARE(viewModel().connectionSuccess(), std::optional(true));
    QVERIFY(!viewModel().connectionError());
    QVERIFY(!viewModel().isTestingConnection());
    QVERIFY(m_world->log.lines.isEmpty());
}

void SettingsViewModelTest::aConnectionTestWithoutAKeyFailsWithoutARequest()
{
    settings().setApiKey({});
    viewModel().testConnection();
    settle();
    QCOMPARE(viewModel().connectionSuccess(), std::optional(false));
    QCOMPARE(viewModel().connectionError(), u"No API key configured"_s);
    QVERIFY(!viewModel().isTestingConnection());
    QVERIFY(notion().asked.isEmpty());
}

void SettingsViewModelTest::aFailedConnectionTestTellsWhy_data()
{
    addFailures();
}

void SettingsViewModelTest::aFailedConnectionTestTellsWhy()
{
    QFETCH(QString, how);
    QFETCH(QString, text);
    fail(meCall, how);
    viewModel().testConnection();
    settle();
    QCOMPARE(viewModel().connectionSuccess(), std::optional(false));
    QCOMPARE(viewModel().connectionError(), text);
    QVERIFY(!viewModel().isTestingConnection());
}

void SettingsViewModelTest::anExceptionInAConnectionTestIsAFailure()
{
    notion().throwsNext = true;
    viewModel().testConnection();
    settle();
    QVERIFY(!viewModel().isTestingConnection());
    QCOMPARE(viewModel().connectionSuccess(), std::optional(false));
    QCOMPARE(viewModel().connectionError(), std::optional(u"no memory for it"_s));
}

void SettingsViewModelTest::aNewConnectionTestForgetsTheLastResult()
{
    fail(meCall, u"401"_s);
    viewModel().testConnection();
    settle();
    QVERIFY(viewModel().connectionError());

    notion().forget(meCall);
    notion().answer(meCall, {});
    viewModel().testConnection();
    QVERIFY(viewModel().isTestingConnection());
    QVERIFY(!viewModel().connectionSuccess());
    QVERIFY(!viewModel().connectionError());
    settle();
    QCOMPARE(viewModel().connectionSuccess(), std::optional(true));
    QVERIFY(!viewModel().connectionError());
}

void SettingsViewModelTest::aChangedKeyIsInForceAtTheNextConnectionTest()
{
    settings().setApiKey({});
    viewModel().testConnection();
    settle();
    notion().answer(meCall, {});
    settings().setApiKey(u"ntn_other"_s);
    QCOMPARE(viewModel().connectionSuccess(), std::optional(false)); // Until the next test has ended.
    viewModel().testConnection();
    settle();
    QCOMPARE(viewModel().connectionSuccess(), std::optional(true));
}

void SettingsViewModelTest::theFlagOfAConnectionTestFallsLast_data()
{
    QTest::addColumn<bool>("isSuccess");
    QTest::newRow("after a success") << true;
    QTest::newRow("after a failure") << false;
}

void SettingsViewModelTest::theFlagOfAConnectionTestFallsLast()
{
    QFETCH(bool, isSuccess);
    if (isSuccess)
        notion().answer(meCall, {});
    else
        fail(meCall, u"401"_s);
    std::optional<bool> success;
    SettingsViewModel::Text error;
    int falls = 0;
    const auto observer = viewModel().bindableIsTestingConnection().addNotifier([&] {
        if (viewModel().isTestingConnection())
            return;
        ++falls;
        success = viewModel().connectionSuccess();
        error = viewModel().connectionError();
    });
    viewModel().testConnection();
    settle();
    QCOMPARE(falls, 1);
    QCOMPARE(success, std::optional(isSuccess));
    QCOMPARE(error, isSuccess ? std::nullopt : std::optional(u"Invalid API key"_s));
}

void SettingsViewModelTest::ofTwoConnectionTestsTheFlagFallsAtTheFirstEnd()
{
    notion().answer(meCall, {});
    viewModel().testConnection();
    notion().release();
    viewModel().testConnection();
    QVERIFY(viewModel().isTestingConnection());
    QTRY_VERIFY(!viewModel().isTestingConnection());
    QCOMPARE(spawnedCount(), 1); // The second still waits.
    notion().release();
    settle();
    QVERIFY(!viewModel().isTestingConnection());
    QCOMPARE(viewModel().connectionSuccess(), std::optional(true));
}

void SettingsViewModelTest::ofTwoConnectionTestsTheAnswerThatArrivesLastWins()
{
    m_world->clock.isInstant = false;
    notion().isHolding = false;
    notion().answer(meCall, {}, 503); // The first test tries again a second later,
    notion().answer(meCall, {}, 401); // the second one fails,
    notion().answer(meCall, {});      // and then the first one succeeds.
    viewModel().testConnection();
    viewModel().testConnection();
    QTRY_COMPARE(viewModel().connectionSuccess(), std::optional(false));
    QVERIFY(!viewModel().isTestingConnection());
    m_world->clock.advance(1);
    settle();
    QCOMPARE(viewModel().connectionSuccess(), std::optional(true));
    QCOMPARE(viewModel().connectionError(), u"Invalid API key"_s); // A success clears nothing but at its start.
}

void SettingsViewModelTest::aLoadWithoutDatabaseIdDoesNothing_data()
{
    addDatabases(false);
}

void SettingsViewModelTest::aLoadWithoutDatabaseIdDoesNothing()
{
    QFETCH(Database, database);
    fail(database.call, u"404"_s);
    (viewModel().*database.load)();
    settle();
    const auto before = (viewModel().*database.error)();
    QVERIFY(before);
    notion().asked.clear();

    settings().setTimeTrackerDBId({});
    settings().setTasksDBId({});
    (viewModel().*database.load)();
    QVERIFY(!(viewModel().*database.isLoading)());
    settle();
    QVERIFY(!(viewModel().*database.schema)());
    QCOMPARE((viewModel().*database.error)(), before);
    QVERIFY(notion().asked.isEmpty());
}

void SettingsViewModelTest::aLoadRaisesItsFlagAloneAndKeepsTheSchema_data()
{
    addDatabases(true);
}

void SettingsViewModelTest::aLoadRaisesItsFlagAloneAndKeepsTheSchema()
{
    QFETCH(Database, database);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    notion().asked.clear();
    notion().forget(database.call);
    notion().answer(database.call, databaseOf(u"New"_s));
    (viewModel().*database.load)();
    QVERIFY((viewModel().*database.isLoading)());
    QCOMPARE(viewModel().isLoadingTTSchema() + viewModel().isLoadingTasksSchema()
                 + viewModel().isLoadingProjectsSchema(),
             1);
    settle();
    QVERIFY(!(viewModel().*database.isLoading)());
    QVERIFY(!(viewModel().*database.error)());
    QCOMPARE(namesOf((viewModel().*database.schema)()), QStringList(u"New"_s));
    QCOMPARE(notion().calls(), QStringList(database.call));
    QVERIFY(m_world->log.lines.isEmpty());
}

void SettingsViewModelTest::aFailedLoadTellsWhy_data()
{
    addFailures();
}

void SettingsViewModelTest::aFailedLoadTellsWhy()
{
    QFETCH(QString, how);
    QFETCH(QString, text);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    for (const auto &call : {trackerCall, tasksCall, projectsCall})
        fail(call, how);
    viewModel().loadTimeTrackerSchema();
    viewModel().loadProjectsSchema();
    viewModel().loadTasksSchema();
    settle();
    QCOMPARE(viewModel().ttSchemaError(), text);
    QCOMPARE(viewModel().tasksSchemaError(), text);
    QCOMPARE(viewModel().projectsSchemaError(), text);
    QVERIFY(!viewModel().isLoadingTTSchema());
    QVERIFY(!viewModel().isLoadingTasksSchema());
    QVERIFY(!viewModel().isLoadingProjectsSchema());
    QVERIFY(!viewModel().connectionError());
}

void SettingsViewModelTest::anExceptionInALoadIsAFailure_data()
{
    addDatabases(false);
}

void SettingsViewModelTest::anExceptionInALoadIsAFailure()
{
    QFETCH(Database, database);
    notion().throwsNext = true;
    (viewModel().*database.load)();
    settle();
    QVERIFY(!(viewModel().*database.isLoading)());
    QVERIFY(!(viewModel().*database.schema)());
    QCOMPARE((viewModel().*database.error)(), std::optional(u"no memory for it"_s));
}

void SettingsViewModelTest::aFailedReloadKeepsTheOldSchemaNextToTheNewError_data()
{
    addDatabases(true);
}

void SettingsViewModelTest::aFailedReloadKeepsTheOldSchemaNextToTheNewError()
{
    QFETCH(Database, database);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    if (database.call != tasksCall)
        notion().answer(database.call, databaseOf(u"Old"_s));
    (viewModel().*database.load)();
    settle();
    const auto old = namesOf((viewModel().*database.schema)());
    QCOMPARE(old.size(), 1);

    fail(database.call, u"401"_s);
    (viewModel().*database.load)();
    settle();
    QCOMPARE(namesOf((viewModel().*database.schema)()), old);
    QCOMPARE((viewModel().*database.error)(), u"Invalid API key"_s);
    QVERIFY(!(viewModel().*database.isLoading)());
}

void SettingsViewModelTest::aReloadClearsTheErrorAtItsStart_data()
{
    addDatabases(true);
}

void SettingsViewModelTest::aReloadClearsTheErrorAtItsStart()
{
    QFETCH(Database, database);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    fail(database.call, u"401"_s);
    (viewModel().*database.load)();
    settle();
    QVERIFY((viewModel().*database.error)());
    (viewModel().*database.load)();
    QVERIFY(!(viewModel().*database.error)());
    QVERIFY((viewModel().*database.isLoading)());
}

void SettingsViewModelTest::aMalformedPropertyGivesAnEmptySchemaAndNoError_data()
{
    addDatabases(true);
}

void SettingsViewModelTest::aMalformedPropertyGivesAnEmptySchemaAndNoError()
{
    QFETCH(Database, database);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    notion().forget(database.call);
    const QJsonObject properties{{u"Task"_s, relation(u"tasks"_s)}, {u"Bad"_s, QJsonValue::Null}};
    notion().answer(database.call, databases::database(properties));
    (viewModel().*database.load)();
    settle();
    QVERIFY((viewModel().*database.schema)());
    QCOMPARE(namesOf((viewModel().*database.schema)()), QStringList());
    QVERIFY(!(viewModel().*database.error)());
    QCOMPARE(settings().fieldMapping().ttTaskRelation, QString());
}

void SettingsViewModelTest::theFlagOfALoadFallsLast_data()
{
    addDatabases(true);
}

void SettingsViewModelTest::theFlagOfALoadFallsLast()
{
    QFETCH(Database, database);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    auto mapping = settings().fieldMapping();
    if (database.call == trackerCall)
        mapping.ttTaskRelation = u"Link"_s;
    else if (database.call == tasksCall)
        mapping.taskName = u"Title"_s;

    QStringList names;
    SettingsViewModel::Text error;
    FieldMapping mapped;
    int falls = 0;
    const auto observer = (viewModel().*database.bindableIsLoading)().addNotifier([&] {
        if ((viewModel().*database.isLoading)())
            return;
        ++falls;
        names = namesOf((viewModel().*database.schema)());
        error = (viewModel().*database.error)();
        mapped = settings().fieldMapping();
    });
    notion().forget(database.call);
    notion().answer(database.call,
                    databases::database({{u"Link"_s, relation(u"elsewhere"_s)}, {u"Title"_s, column(u"title"_s)}}));
    (viewModel().*database.load)();
    settle();
    QCOMPARE(falls, 1);
    QCOMPARE(names, QStringList({u"Link"_s, u"Title"_s}));
    QVERIFY(!error);
    QCOMPARE(mapped, mapping);

    falls = 0;
    fail(database.call, u"404"_s);
    (viewModel().*database.load)();
    settle();
    QCOMPARE(falls, 1);
    QCOMPARE(error, u"Resource not found"_s);
}

void SettingsViewModelTest::ofTwoLoadsTheFlagFallsAtTheFirstEnd_data()
{
    addDatabases(true);
}

void SettingsViewModelTest::ofTwoLoadsTheFlagFallsAtTheFirstEnd()
{
    QFETCH(Database, database);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    notion().forget(database.call);
    notion().answer(database.call, databaseOf(u"First"_s));
    notion().answer(database.call, databaseOf(u"Second"_s));
    (viewModel().*database.load)();
    notion().release();
    (viewModel().*database.load)();
    QVERIFY((viewModel().*database.isLoading)());

    QTRY_VERIFY(!(viewModel().*database.isLoading)());
    QCOMPARE(namesOf((viewModel().*database.schema)()), QStringList(u"First"_s));
    QCOMPARE(spawnedCount(), 1); // The second still waits.
    notion().release();
    settle();
    QCOMPARE(namesOf((viewModel().*database.schema)()), QStringList(u"Second"_s));
    QVERIFY(!(viewModel().*database.isLoading)());
}

void SettingsViewModelTest::ofTwoLoadsTheAnswerThatArrivesLastWins()
{
    m_world->clock.isInstant = false;
    notion().isHolding = false;
    notion().answer(trackerCall, {}, 503); // The first load tries again a second later,
    notion().answer(trackerCall, databaseOf(u"Asked second"_s));
    notion().answer(trackerCall, databaseOf(u"Asked first"_s));
    viewModel().loadTimeTrackerSchema();
    viewModel().loadTimeTrackerSchema();
    QTRY_COMPARE(namesOf(viewModel().timeTrackerSchema()), QStringList(u"Asked second"_s));
    QVERIFY(!viewModel().isLoadingTTSchema());
    m_world->clock.advance(1);
    settle();
    QCOMPARE(namesOf(viewModel().timeTrackerSchema()), QStringList(u"Asked first"_s));
}

void SettingsViewModelTest::aFailureLeavesItsErrorBesideTheSchemaOfALoadThatEndsLater()
{
    m_world->clock.isInstant = false;
    notion().isHolding = false;
    notion().answer(trackerCall, {}, 503); // The first load tries again a second later.
    notion().answer(trackerCall, {}, 401);
    notion().answer(trackerCall, databaseOf(u"Late"_s));
    viewModel().loadTimeTrackerSchema();
    viewModel().loadTimeTrackerSchema();
    QTRY_VERIFY(viewModel().ttSchemaError());
    m_world->clock.advance(1);
    settle();
    QCOMPARE(namesOf(viewModel().timeTrackerSchema()), QStringList(u"Late"_s));
    QCOMPARE(viewModel().ttSchemaError(), u"Invalid API key"_s);
}

void SettingsViewModelTest::theTwoDatabasesLoadSideBySide()
{
    notion().answer(trackerCall, databaseOf(u"Tracker"_s));
    notion().answer(tasksCall, databaseOf(u"Tasks"_s));
    viewModel().loadTasksSchema();
    viewModel().loadTimeTrackerSchema();
    QCOMPARE(notion().heldCount(), 2);
    QVERIFY(viewModel().isLoadingTTSchema() && viewModel().isLoadingTasksSchema());
    notion().release();
    settle();
    QCOMPARE(namesOf(viewModel().timeTrackerSchema()), QStringList(u"Tracker"_s));
    QCOMPARE(namesOf(viewModel().tasksSchema()), QStringList(u"Tasks"_s));
}

void SettingsViewModelTest::aChangedIdIsInForceAtTheNextLoadAndClearsNothingBefore()
{
    loadTracker({{u"Old"_s, column(u"number"_s)}});
    notion().answer(u"GET /databases/other"_s, databaseOf(u"New"_s));
    settings().setTimeTrackerDBId(u"other"_s);
    QCOMPARE(namesOf(viewModel().timeTrackerSchema()), QStringList(u"Old"_s));
    viewModel().loadTimeTrackerSchema();
    settle();
    QCOMPARE(namesOf(viewModel().timeTrackerSchema()), QStringList(u"New"_s));
}

void SettingsViewModelTest::anEqualSchemaIsToldToObserversAllTheSame()
{
    loadTracker({{u"Same"_s, column(u"number"_s)}});
    int told = 0;
    const auto observer = viewModel().bindableTimeTrackerSchema().addNotifier([&told] { ++told; });
    loadTracker({{u"Same"_s, column(u"number"_s)}});
    QCOMPARE(told, 1);
}

void SettingsViewModelTest::theEndOfTheViewModelEndsItsRequests_data()
{
    QTest::addColumn<bool>("isRetrying");
    QTest::newRow("while the answer is awaited") << false;
    QTest::newRow("while the next attempt is awaited") << true;
}

void SettingsViewModelTest::theEndOfTheViewModelEndsItsRequests()
{
    QFETCH(bool, isRetrying);
    m_world->clock.isInstant = false;
    const QJsonObject properties{{u"Task"_s, relation(u"tasks"_s)}, {u"Date"_s, column(u"date"_s)}};
    for (const auto &call : {meCall, trackerCall, tasksCall}) {
        if (isRetrying)
            notion().answer(call, {}, 503);
        notion().answer(call, database(properties));
    }
    notion().isHolding = !isRetrying;
    viewModel().testConnection();
    viewModel().loadTimeTrackerSchema();
    viewModel().loadTasksSchema();
    if (isRetrying)
        QTRY_COMPARE(m_world->clock.sleeperCount(), 3);
    else
        QCOMPARE(notion().heldCount(), 3);

    m_world->viewModel.reset();
    QVERIFY(finishSpawned(10000));
    QCOMPARE(settings().fieldMapping(), FieldMapping());
}

void SettingsViewModelTest::theProjectsSchemaFollowsTheRelation()
{
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}, {u"project"_s, relation(u"wrong"_s)}});
    notion().answer(projectsCall, database({{u"Client"_s, relation(u"clients"_s)}}));
    viewModel().loadProjectsSchema();
    QVERIFY(viewModel().isLoadingProjectsSchema());
    settle();
    QCOMPARE(namesOf(viewModel().projectRelationProperties()), QStringList(u"Client"_s));
    QVERIFY(!viewModel().isLoadingProjectsSchema());
}

void SettingsViewModelTest::loadingTasksDoesNotGoOnToProjects()
{
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    QCOMPARE(notion().calls(), QStringList(tasksCall));
    QVERIFY(!viewModel().projectsSchema());
}

void SettingsViewModelTest::loadingProjectsBeforeTasksHaveEndedDoesNothingAndSaysNothing()
{
    mapProjectRelation(u"Project"_s);
    notion().answer(tasksCall, database({{u"Project"_s, relation(u"projects"_s)}}));
    viewModel().loadTasksSchema();
    viewModel().loadProjectsSchema();
    QVERIFY(!viewModel().isLoadingProjectsSchema());
    settle();
    QVERIFY(!viewModel().projectsSchema());
    QVERIFY(!viewModel().projectsSchemaError());
    QCOMPARE(notion().calls(), QStringList(tasksCall));
}

void SettingsViewModelTest::loadingProjectsWithoutAMappedRelationDoesNothingAndSaysNothing()
{
    loadTasks({{u""_s, relation(u"projects"_s)}});
    viewModel().loadProjectsSchema();
    settle();
    QVERIFY(!viewModel().projectsSchema());
    QVERIFY(!viewModel().projectsSchemaError());
    QCOMPARE(callCount(projectsCall), 0);
}

void SettingsViewModelTest::aRelationThatLeadsNowhereIsAnErrorWithoutTheFlag_data()
{
    QTest::addColumn<QString>("mapped");
    QTest::newRow("a name that is not in the schema") << u"Area"_s;
    QTest::newRow("a name in another case") << u"PROJECT"_s;
    QTest::newRow("a relation without a database") << u"Loose"_s;
    QTest::newRow("a property that is no relation") << u"Count"_s;
}

void SettingsViewModelTest::aRelationThatLeadsNowhereIsAnErrorWithoutTheFlag()
{
    QFETCH(QString, mapped);
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)},
               {u"Loose"_s, column(u"relation"_s)},
               {u"Count"_s, column(u"number"_s)}});
    notion().answer(projectsCall, databaseOf(u"Old"_s));
    viewModel().loadProjectsSchema();
    settle();

    int told = 0;
    const auto observer = viewModel().bindableIsLoadingProjectsSchema().addNotifier([&told] { ++told; });
    mapProjectRelation(mapped);
    viewModel().loadProjectsSchema();
    QCOMPARE(viewModel().projectsSchemaError(), u"Could not determine Projects database ID"_s);
    QVERIFY(!viewModel().isLoadingProjectsSchema());
    QCOMPARE(told, 0);
    QCOMPARE(namesOf(viewModel().projectsSchema()), QStringList(u"Old"_s));
    QCOMPARE(callCount(projectsCall), 1);
}

void SettingsViewModelTest::theErrorOfARelationStandsUntilALoadGetsPastIt()
{
    mapProjectRelation(u"Area"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    viewModel().loadProjectsSchema();
    QVERIFY(viewModel().projectsSchemaError());

    mapProjectRelation({});
    viewModel().loadProjectsSchema();
    QVERIFY(viewModel().projectsSchemaError());

    mapProjectRelation(u"Project"_s);
    QVERIFY(viewModel().projectsSchemaError());
    viewModel().loadProjectsSchema();
    QVERIFY(!viewModel().projectsSchemaError());
}

void SettingsViewModelTest::loadingProjectsMapsNothing()
{
    mapProjectRelation(u"Project"_s);
    loadTasks({{u"Project"_s, relation(u"projects"_s)}});
    const auto before = settings().fieldMapping();
    notion().answer(projectsCall, database({{u"Client"_s, relation(u"clients"_s)}, {u"Name"_s, column(u"title"_s)}}));
    viewModel().loadProjectsSchema();
    settle();
    QVERIFY(viewModel().projectsSchema());
    QCOMPARE(settings().fieldMapping(), before);
}

void SettingsViewModelTest::oneRelationAndOneSelectFillTaskRelationAndStatus()
{
    loadTracker({{u"Task"_s, relation(u"tasks"_s)}, {u"State"_s, choice(u"select"_s, {u"On"_s, u"Off"_s})}});
    QCOMPARE(settings().fieldMapping(), (FieldMapping{.ttTaskRelation = u"Task"_s, .ttStatus = u"State"_s}));
    QCOMPARE(viewModel().ttStatusOptions(), QStringList({u"On"_s, u"Off"_s}));
}

void SettingsViewModelTest::oneStatusPropertyFillsStatusAsWell()
{
    loadTracker({{u"State"_s, choice(u"status"_s, {u"On"_s})}});
    QCOMPARE(settings().fieldMapping(), FieldMapping{.ttStatus = u"State"_s});
}

void SettingsViewModelTest::aRoleThatIsChosenStaysEvenIfThePropertyIsGone()
{
    const FieldMapping chosen{.ttTaskRelation = u"Job"_s, .ttStatus = u"Gone"_s};
    settings().setFieldMapping(chosen);
    loadTracker({{u"Task"_s, relation(u"tasks"_s)}, {u"State"_s, choice(u"select"_s, {u"On"_s})}});
    QCOMPARE(settings().fieldMapping(), chosen);
}

void SettingsViewModelTest::aSelectAndAStatusAreTwoCandidates()
{
    loadTracker({{u"State"_s, choice(u"select"_s, {})}, {u"Progress"_s, choice(u"status"_s, {})}});
    QCOMPARE(settings().fieldMapping(), FieldMapping());
    loadTasks({{u"State"_s, choice(u"select"_s, {})}, {u"Progress"_s, choice(u"status"_s, {})}});
    QCOMPARE(settings().fieldMapping(), FieldMapping());
}

void SettingsViewModelTest::twoRelationsLeaveTaskRelationEmpty()
{
    loadTracker({{u"Task"_s, relation(u"tasks"_s)}, {u"Person"_s, relation(u"people"_s)}});
    QCOMPARE(settings().fieldMapping(), FieldMapping());
}

void SettingsViewModelTest::theTasksDatabaseFillsNameDateAndTimerStatus()
{
    loadTasks({{u"Title"_s, column(u"title"_s)}, {u"Day"_s, column(u"date"_s)}, {u"State"_s, choice(u"status"_s, {})}});
    QCOMPARE(settings().fieldMapping(),
             (FieldMapping{.taskName = u"Title"_s, .taskDate = u"Day"_s, .taskTimerStatus = u"State"_s}));
}

void SettingsViewModelTest::twoDatesLeaveTaskDateEmpty()
{
    loadTasks({{u"Title"_s, column(u"title"_s)}, {u"Day"_s, column(u"date"_s)}, {u"Due"_s, column(u"date"_s)}});
    QCOMPARE(settings().fieldMapping(), FieldMapping{.taskName = u"Title"_s});
}

void SettingsViewModelTest::aCreatedTimeIsNoCandidateForTaskDate()
{
    loadTasks({{u"Made"_s, column(u"created_time"_s)}});
    QCOMPARE(settings().fieldMapping(), FieldMapping());
    loadTasks({{u"Made"_s, column(u"created_time"_s)}, {u"Day"_s, column(u"date"_s)}});
    QCOMPARE(settings().fieldMapping(), FieldMapping{.taskDate = u"Day"_s});
}

void SettingsViewModelTest::theOtherRolesAreNeverFilled()
{
    loadTracker({{u"Start"_s, column(u"date"_s)}});
    loadTasks({{u"Project"_s, relation(u"projects"_s)}, {u"Total"_s, column(u"rollup"_s)}});
    QCOMPARE(settings().fieldMapping(), FieldMapping());
}

void SettingsViewModelTest::eachFilledRoleIsSavedAndNothingElseIs()
{
    auto &writes = m_world->settings.defaults.writes;
    writes.clear();
    loadTracker({{u"Task"_s, relation(u"tasks"_s)}, {u"State"_s, choice(u"select"_s, {})}});
    QCOMPARE(writes.size(), 2);
    const auto stored = FieldMapping::fromJson(m_world->settings.defaults.data(u"fieldMapping"_s).value());
    QCOMPARE(stored, std::optional(settings().fieldMapping()));

    writes.clear();
    loadTracker({{u"Task"_s, relation(u"tasks"_s)}, {u"State"_s, choice(u"select"_s, {})}});
    QCOMPARE(writes.size(), 0);
}

void SettingsViewModelTest::aViewModelThatGoesAsARoleIsFilledLeavesTheRolesFilled()
{
    connect(&settings(), &AppSettings::fieldMappingChanged, this, [this] { m_world->viewModel.reset(); });
    notion().answer(tasksCall, database({{u"Name"_s, column(u"title"_s)}, {u"Date"_s, column(u"date"_s)}}));
    viewModel().loadTasksSchema();
    settle();
    QVERIFY(!m_world->viewModel);
    QCOMPARE(settings().fieldMapping().taskName, u"Name"_s);
    QCOMPARE(settings().fieldMapping().taskDate, u"Date"_s);
}

void SettingsViewModelTest::aFailedLoadMapsNothing()
{
    loadTracker({{u"Task"_s, relation(u"tasks"_s)}});
    settings().setFieldMapping({});
    fail(trackerCall, u"404"_s);
    viewModel().loadTimeTrackerSchema();
    settle();
    QVERIFY(viewModel().timeTrackerSchema());
    QCOMPARE(settings().fieldMapping(), FieldMapping());
}

void SettingsViewModelTest::withoutSchemasThePickersAreEmpty()
{
    TestSettings::configure(settings());
    QVERIFY(viewModel().ttDateProperties().isEmpty());
    QVERIFY(viewModel().ttSelectProperties().isEmpty());
    QVERIFY(viewModel().ttRelationProperties().isEmpty());
    QVERIFY(viewModel().taskTitleProperties().isEmpty());
    QVERIFY(viewModel().taskDateProperties().isEmpty());
    QVERIFY(viewModel().taskSelectProperties().isEmpty());
    QVERIFY(viewModel().taskRelationProperties().isEmpty());
    QVERIFY(viewModel().projectRelationProperties().isEmpty());
    QVERIFY(viewModel().taskRollupProperties().isEmpty());
    QVERIFY(viewModel().ttStatusOptions().isEmpty());
    QVERIFY(viewModel().taskTimerStatusOptions().isEmpty());
}

void SettingsViewModelTest::eachPickerOffersItsTypesInTheOrderOfNames()
{
    mapProjectRelation(u"relation"_s);
    for (const auto &call : {trackerCall, tasksCall, u"GET /databases/elsewhere"_s})
        notion().answer(call, databaseOfAllTypes());
    viewModel().loadTimeTrackerSchema();
    settle();
    QCOMPARE(namesOf(viewModel().ttDateProperties()), QStringList({u"created_time"_s, u"date"_s}));
    QCOMPARE(namesOf(viewModel().ttSelectProperties()), QStringList({u"select"_s, u"status"_s}));
    QCOMPARE(namesOf(viewModel().ttRelationProperties()), QStringList(u"relation"_s));
    QVERIFY(viewModel().taskTitleProperties().isEmpty());

    viewModel().loadTasksSchema();
    settle();
    QCOMPARE(namesOf(viewModel().taskTitleProperties()), QStringList(u"title"_s));
    QCOMPARE(namesOf(viewModel().taskDateProperties()), QStringList(u"date"_s));
    QCOMPARE(namesOf(viewModel().taskSelectProperties()), QStringList({u"select"_s, u"status"_s}));
    QCOMPARE(namesOf(viewModel().taskRelationProperties()), QStringList(u"relation"_s));
    QCOMPARE(namesOf(viewModel().taskRollupProperties()), QStringList(u"rollup"_s));
    QVERIFY(viewModel().projectRelationProperties().isEmpty());

    viewModel().loadProjectsSchema();
    settle();
    QCOMPARE(namesOf(viewModel().projectRelationProperties()), QStringList(u"relation"_s));
}

void SettingsViewModelTest::statusOptionsAreThoseOfTheMappedProperty()
{
    settings().setFieldMapping({.ttStatus = u"B"_s, .taskTimerStatus = u"A"_s});
    const QJsonObject properties{{u"A"_s, choice(u"select"_s, {u"z"_s, u"y"_s})},
                                 {u"B"_s, choice(u"status"_s, {u"x"_s})}};
    loadTracker(properties);
    loadTasks(properties);
    QCOMPARE(viewModel().ttStatusOptions(), QStringList(u"x"_s));
    QCOMPARE(viewModel().taskTimerStatusOptions(), QStringList({u"z"_s, u"y"_s}));
}

void SettingsViewModelTest::statusOptionsAreEmptyWithoutSuchAPropertyOrOptions_data()
{
    QTest::addColumn<QString>("mapped");
    QTest::newRow("nothing mapped, with a property without a name") << QString();
    QTest::newRow("a name that matches no property") << u"Gone"_s;
    QTest::newRow("a name in another case") << u"STATE"_s;
    QTest::newRow("a property without options") << u"Bare"_s;
    QTest::newRow("a property of a type that has none") << u"Count"_s;
}

void SettingsViewModelTest::statusOptionsAreEmptyWithoutSuchAPropertyOrOptions()
{
    QFETCH(QString, mapped);
    const QJsonObject properties{{u"State"_s, choice(u"select"_s, {u"On"_s})},
                                 {u""_s, choice(u"select"_s, {u"Nameless"_s})},
                                 {u"Bare"_s, choice(u"select"_s, {})},
                                 {u"Count"_s, column(u"number"_s)}};
    loadTracker(properties);
    loadTasks(properties);
    settings().setFieldMapping({.ttStatus = mapped, .taskTimerStatus = mapped});
    QVERIFY(viewModel().ttStatusOptions().isEmpty());
    QVERIFY(viewModel().taskTimerStatusOptions().isEmpty());
}

void SettingsViewModelTest::aBindingOverAPickerFollowsSchemaAndMapping()
{
    QProperty<QStringList> options;
    options.setBinding([this] { return viewModel().ttStatusOptions(); });
    QCOMPARE(options.value(), QStringList());
    loadTracker({{u"A"_s, choice(u"select"_s, {u"a"_s})}, {u"B"_s, choice(u"select"_s, {u"b"_s})}});
    settings().setFieldMapping({.ttStatus = u"B"_s});
    QCOMPARE(options.value(), QStringList(u"b"_s));
    settings().setFieldMapping({.ttStatus = u"A"_s});
    QCOMPARE(options.value(), QStringList(u"a"_s));
    loadTracker({{u"A"_s, choice(u"select"_s, {u"other"_s})}});
    QCOMPARE(options.value(), QStringList(u"other"_s));
    options.takeBinding();
}

QTEST_GUILESS_MAIN(SettingsViewModelTest)

#include "SettingsViewModelTest.moc"
