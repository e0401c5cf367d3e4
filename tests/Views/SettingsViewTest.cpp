#include "Views/SettingsView.h"

#include "SettingsWorld.h"
#include "UrlCatcher.h"
#include "Views/BusyButton.h"
#include "Views/BusyIndicator.h"
#include "Views/FormText.h"
#include "Views/LinkText.h"
#include "Views/SettingField.h"
#include "Views/SettingsSidebar.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"

#include <QCheckBox>
#include <QKeyEvent>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;
using namespace korvo::databases;

namespace {

const QString trackerCall = u"GET /databases/tracker"_s;
const QString tasksCall = u"GET /databases/tasks"_s;
const QString projectsCall = u"GET /databases/projects"_s;

/// A tab for each of the two databases that are tracked.
void addDatabaseTabs()
{
    QTest::addColumn<SettingsTab>("tab");
    QTest::newRow("Time Tracker") << SettingsTab::timeTracker;
    QTest::newRow("Tasks") << SettingsTab::tasks;
}

} // namespace

class SettingsViewTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_world = std::make_unique<SettingsWorld>(); }
    void cleanup() { m_world.reset(); }

    // The frame
    void theSidebarListsTheTabsInOrder();
    void aNewViewStartsAtConnection();
    void eachTabShowsItsForm_data();
    void eachTabShowsItsForm();

    // Appearing and disappearing
    void aFinishedConfigurationLoadsOneDatabaseAfterTheOther();
    void withoutAnyIdThereIsNoRequest();
    void withoutAProjectRelationTheProjectsDatabaseIsNotAskedFor();
    void aFailedLoadOfTasksAtOpeningLeavesProjectsAloneAndSaysNothingOfThem();
    void appearingAgainReloadsNothing();
    void aWindowThatIsOnlyMinimisedNeitherLoadsNorPolls();
    void disappearingStartsThePolls();
    void disappearingRestartsARunningLoopWithAPollAtOnce();
    void closingUnconfiguredSettingsLeavesNoPolling();

    // Connection
    void withoutAKeyTestConnectionIsDisabled();
    void aKeystrokeIsSavedAtOnce();
    void theButtonIsBusyWhileTheConnectionIsTested();
    void aGoodConnectionIsShownInGreen();
    void aFailedConnectionTellsWhyInRed();
    void theResultStaysWhenTheKeyChanges();
    void resultsAndErrorsAreReadOut();
    void theHintOpensNotionsIntegrationsPage();

    // Time Tracker
    void withoutAnIdLoadFieldsIsDisabled_data() { addDatabaseTabs(); }
    void withoutAnIdLoadFieldsIsDisabled();
    void loadFieldsLoadsAndShowsTheMapping_data() { addDatabaseTabs(); }
    void loadFieldsLoadsAndShowsTheMapping();
    void aFailedLoadTellsWhyAndKeepsThePickers();
    void pickersOfferSelectAndThePropertiesOfTheirKind();
    void aPickWritesItsRole_data();
    void aPickWritesItsRole();
    void pickingSelectClearsTheRole();
    void aValueThatIsNotOfferedShowsNoSelectionAndStays();
    void withoutAStatusTheStatusValuesAreHiddenAndAPickShowsThem_data();
    void withoutAStatusTheStatusValuesAreHiddenAndAPickShowsThem();
    void aRoleThatIsFilledByItselfIsShown();

    // Tasks
    void anotherProjectRelationForgetsTheClientAndLoadsAnew();
    void anotherProjectRelationIsWrittenFirstThenTheClientThenTheSchemaGoes();
    void pickingSelectForTheProjectRelationEmptiesBothAndLoadsNothing();
    void pickingTheSameProjectRelationChangesNothing();
    void aRelationThatLeadsNowhereTellsSoInTheExtendedFields();
    void loadFieldsOfTasksDoesNotLoadProjects();

    // General
    void intervalsAreWritten();
    void anIntervalThatIsNotOfferedShowsNoSelectionAndStays();
    void launchAtLoginReachesTheDesktop();
    void theDockIsToldAfterTheSettingIsWritten();
    void remindAfterIsThereWhileTheReminderIsOnAndKeepsItsValue();
    void withoutANotchItsSectionIsMissingAndTheSettingStays();
    void withANotchItsSectionIsThereAndOnlyWritesTheSetting();
    void theNotchIsLookedForOnTheFirstScreen_data();
    void theNotchIsLookedForOnTheFirstScreen();
    void theSectionOfTheNotchFollowsTheScreens();
    void clearWritesZeroToBothAndRegistersAgain();
    void aRecordedShortcutRegistersTwice();
    void settingsThatChangeElsewhereAreFollowed();

private:
    SettingsView &view() { return *m_world->view; }
    AppSettings &store() { return m_world->store(); }
    BusyButton *button(const QString &name) { return m_world->child<BusyButton>(name); }
    QCheckBox *toggle(const QString &label)
    {
        for (auto *box : visibleIn<QCheckBox>(view())) {
            if (box->text().remove(u'&') == label)
                return box;
        }
        return nullptr;
    }
    bool textOfNote(const QString &text)
    {
        const auto notes = visibleIn<FormText>(view());
        return std::any_of(notes.begin(), notes.end(), [&](const FormText *note) { return note->text() == text; });
    }
    void press(quint16 keyCode, Qt::KeyboardModifiers modifiers)
    {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, modifiers, keyCode + 8U, 0, 0);
        QCoreApplication::sendEvent(view().windowHandle(), &event);
    }

    std::unique_ptr<SettingsWorld> m_world;
};

void SettingsViewTest::theSidebarListsTheTabsInOrder()
{
    m_world->show();
    const auto *sidebar = view().findChild<SettingsSidebar *>();
    QStringList titles;
    for (int i = 0; i < sidebar->count(); ++i)
        titles.append(sidebar->item(i)->text());
    QCOMPARE(titles, (QStringList{u"Connection"_s, u"Time Tracker"_s, u"Tasks"_s, u"General"_s}));
    QStringList icons;
    for (const auto tab : allSettingsTabs)
        icons.append(symbolName(iconOf(tab)));
    QCOMPARE(icons, (QStringList{u"network"_s, u"clock"_s, u"checklist"_s, u"gearshape"_s}));
}

void SettingsViewTest::aNewViewStartsAtConnection()
{
    m_world->show();
    QCOMPARE(view().selectedTab(), SettingsTab::connection);
    QVERIFY(m_world->child(u"connectionContent"_s));
    QVERIFY(!m_world->child(u"generalContent"_s));
}

void SettingsViewTest::eachTabShowsItsForm_data()
{
    QTest::addColumn<SettingsTab>("tab");
    QTest::addColumn<QStringList>("sections");
    QTest::newRow("Connection") << SettingsTab::connection << QStringList{u"API Key"_s, u""_s};
    QTest::newRow("Time Tracker") << SettingsTab::timeTracker
                                  << QStringList{u"Database"_s, u"Field Mapping"_s, u"Status Values"_s};
    QTest::newRow("Tasks") << SettingsTab::tasks
                           << QStringList{u"Database"_s, u"Field Mapping"_s, u"Status Values"_s, u"Extended Fields"_s};
    QTest::newRow("General") << SettingsTab::general
                             << QStringList{u"Polling"_s, u"System"_s, u"Notifications"_s, u"Shortcuts"_s};
}

void SettingsViewTest::eachTabShowsItsForm()
{
    QFETCH(const SettingsTab, tab);
    m_world->show();
    view().setSelectedTab(tab);
    settleLayout();
    QList<std::pair<int, QString>> found;
    for (const auto *one : visibleIn<QWidget>(view())) {
        if (one->inherits("korvo::FormSection"))
            found.append({placeIn(view(), one).top(), one->accessibleName()});
    }
    std::sort(found.begin(), found.end());
    QStringList sections;
    for (const auto &one : found)
        sections.append(one.second);
    QTEST(sections, "sections");
}

void SettingsViewTest::aFinishedConfigurationLoadsOneDatabaseAfterTheOther()
{
    m_world->notion.isHolding = true;
    m_world->appear(SettingsTab::tasks);
    QTRY_COMPARE(m_world->notion.calls(), QStringList(trackerCall));
    QVERIFY(view().settingsVM().isLoadingTTSchema());
    QVERIFY(!view().settingsVM().isLoadingTasksSchema());
    m_world->notion.release();
    QTRY_COMPARE(m_world->notion.calls(), (QStringList{trackerCall, tasksCall}));
    QVERIFY(!view().settingsVM().isLoadingTTSchema());
    QVERIFY(!view().settingsVM().isLoadingProjectsSchema());
    m_world->notion.release();
    QTRY_COMPARE(m_world->notion.calls(), (QStringList{trackerCall, tasksCall, projectsCall}));
    m_world->settle();
    QCOMPARE(m_world->picker(u"Client Relation"_s)->currentText(), u"Client"_s);
}

void SettingsViewTest::withoutAnyIdThereIsNoRequest()
{
    store().setTimeTrackerDBId({});
    store().setTasksDBId({});
    m_world->show();
    QVERIFY(m_world->notion.asked.isEmpty());
}

void SettingsViewTest::withoutAProjectRelationTheProjectsDatabaseIsNotAskedFor()
{
    m_world->change(&FieldMapping::taskProjectRelation, {});
    m_world->show();
    QCOMPARE(m_world->notion.calls(), (QStringList{trackerCall, tasksCall}));
}

void SettingsViewTest::aFailedLoadOfTasksAtOpeningLeavesProjectsAloneAndSaysNothingOfThem()
{
    m_world->refuse(u"tasks"_s);
    m_world->show(SettingsTab::tasks);
    QCOMPARE(m_world->notion.calls(), (QStringList{trackerCall, tasksCall}));
    QCOMPARE(m_world->child<FormText>(u"error"_s)->text(), u"Resource not found"_s);
    QVERIFY(!view().settingsVM().projectsSchemaError());
    QVERIFY(!m_world->sectionTitled(u"Extended Fields"_s));
}

void SettingsViewTest::appearingAgainReloadsNothing()
{
    m_world->show();
    store().setApiKey({}); // So that the end asks for nothing either.
    m_world->notion.asked.clear();
    view().hide();
    view().show();
    m_world->settle();
    QVERIFY(m_world->notion.asked.isEmpty());
}

void SettingsViewTest::aWindowThatIsOnlyMinimisedNeitherLoadsNorPolls()
{
    m_world->show();
    m_world->notion.asked.clear();
    view().showMinimized();
    view().showNormal();
    m_world->settle();
    QVERIFY(m_world->notion.asked.isEmpty());
}

void SettingsViewTest::disappearingStartsThePolls()
{
    m_world->show();
    m_world->notion.asked.clear();
    view().close();
    QTRY_VERIFY(m_world->clock.sleeperCount() == 1);
    QCOMPARE(m_world->notion.calls().value(0), ViewWorld::trackerQuery());
}

void SettingsViewTest::disappearingRestartsARunningLoopWithAPollAtOnce()
{
    m_world->poll();
    m_world->show();
    m_world->notion.asked.clear();
    view().close();
    QTRY_VERIFY(m_world->notion.calls().contains(ViewWorld::trackerQuery()));
    QTRY_COMPARE(m_world->clock.sleeperCount(), 1); // There is one loop still.
}

void SettingsViewTest::closingUnconfiguredSettingsLeavesNoPolling()
{
    m_world->poll();
    m_world->show();
    store().setApiKey({});
    m_world->notion.asked.clear();
    view().close();
    QTRY_COMPARE(spawnedCount(), 0);
    QCOMPARE(m_world->clock.sleeperCount(), 0);
    QVERIFY(m_world->notion.asked.isEmpty());
}

void SettingsViewTest::withoutAKeyTestConnectionIsDisabled()
{
    store().setApiKey({});
    m_world->show();
    QVERIFY(!button(u"testConnection"_s)->isEnabled());
    auto *key = m_world->child<SettingField>(u"apiKey"_s);
    QCOMPARE(key->placeholderText(), u"Secret key (ntn_...)"_s);
    QVERIFY(key->hasFocus());
    QTest::keyClicks(key, u"n"_s);
    QVERIFY(button(u"testConnection"_s)->isEnabled());
    QTest::keyClick(key, Qt::Key_Backspace);
    QVERIFY(!button(u"testConnection"_s)->isEnabled());
}

void SettingsViewTest::aKeystrokeIsSavedAtOnce()
{
    store().setApiKey({});
    m_world->show();
    m_world->settings.defaults.writes.clear();
    auto *key = m_world->child<SettingField>(u"apiKey"_s);
    QTest::keyClicks(key, u"ntn"_s);
    QCOMPARE(store().apiKey(), u"ntn"_s);
    QCOMPARE(m_world->settings.defaults.writes.size(), 3);
    QCOMPARE(m_world->settings.defaults.string(u"apiKey"_s), u"ntn"_s);
    QVERIFY(m_world->notion.calls().filter(u"users"_s).isEmpty()); // Nothing is tested or loaded by it.
}

void SettingsViewTest::theButtonIsBusyWhileTheConnectionIsTested()
{
    m_world->show();
    m_world->notion.isHolding = true;
    m_world->notion.answer(u"GET /users/me"_s, {});
    auto *test = button(u"testConnection"_s);
    QCOMPARE(test->text().remove(u'&'), u"Test Connection"_s);
    test->setFocus();
    QTest::keyClick(test, Qt::Key_Space);
    QVERIFY(test->isBusy());
    QVERIFY(!test->icon().isNull());
    QVERIFY(!test->isEnabled());
    QVERIFY(!m_world->child(u"connected"_s));
    m_world->settle();
    QVERIFY(!test->isBusy());
    QVERIFY(test->icon().isNull());
    QVERIFY(test->isEnabled());
    QVERIFY(test->hasFocus()); // Where the keyboard was, it is again.
}

void SettingsViewTest::aGoodConnectionIsShownInGreen()
{
    m_world->show();
    m_world->notion.answer(u"GET /users/me"_s, {});
    button(u"testConnection"_s)->click();
    m_world->settle();
    const auto *label = m_world->child(u"connected"_s);
    QVERIFY(label);
    QCOMPARE(visibleIn<FormText>(*label).first()->text(), u"Connected"_s);
    QCOMPARE(visibleIn<SymbolIcon>(*label).first()->symbol(), Symbol::checkmarkCircleFill);
    QCOMPARE(visibleIn<FormText>(*label).first()->ink(), theme::greenTextOn(view().palette()));
    QCOMPARE(inkOf(visibleIn<SymbolIcon>(*label).first()), theme::greenTextOn(view().palette()));
    QVERIFY(!m_world->child(u"failed"_s));
}

void SettingsViewTest::aFailedConnectionTellsWhyInRed()
{
    m_world->show();
    m_world->notion.answer(u"GET /users/me"_s, {}, 401);
    button(u"testConnection"_s)->click();
    m_world->settle();
    const auto *label = m_world->child(u"failed"_s);
    QVERIFY(label);
    const auto *text = visibleIn<FormText>(*label).first();
    QCOMPARE(text->shownLines(), QStringList(u"Invalid API key"_s));
    QCOMPARE(text->ink(), theme::redTextOn(view().palette()));
    QCOMPARE(visibleIn<SymbolIcon>(*label).first()->symbol(), Symbol::xmarkCircleFill);
    QVERIFY(!m_world->child(u"connected"_s));
}

void SettingsViewTest::theResultStaysWhenTheKeyChanges()
{
    m_world->show();
    m_world->notion.answer(u"GET /users/me"_s, {});
    button(u"testConnection"_s)->click();
    m_world->settle();
    QTest::keyClicks(m_world->child<SettingField>(u"apiKey"_s), u"x"_s);
    QVERIFY(m_world->child(u"connected"_s));
}

void SettingsViewTest::resultsAndErrorsAreReadOut()
{
    m_world->show();
    QStringList heard;
    for (const auto *text : view().findChildren<FormText *>())
        connect(text, &FormText::announced, this, [&heard](const QString &words) { heard.append(words); });
    m_world->notion.answer(u"GET /users/me"_s, {});
    button(u"testConnection"_s)->click();
    m_world->settle();
    m_world->notion.forget(u"GET /users/me"_s);
    button(u"testConnection"_s)->click();
    m_world->settle();
    m_world->refuse(u"tracker"_s, 401);
    view().settingsVM().loadTimeTrackerSchema();
    m_world->settle();
    view().settingsVM().loadTimeTrackerSchema(); // The same again is told again.
    m_world->settle();
    for (const auto *text : view().findChildren<FormText *>())
        text->disconnect(this);
    QCOMPARE(heard,
             (QStringList{u"Connected"_s, u"Failed"_s, u"Resource not found"_s, u"Invalid API key"_s,
                          u"Invalid API key"_s}));
}

void SettingsViewTest::theHintOpensNotionsIntegrationsPage()
{
    const UrlCatcher browser;
    m_world->show();
    auto *hint = m_world->child<LinkText>(u"hint"_s);
    QVERIFY(hint->text().contains(u"API key"_s));
    hint->setFocus(Qt::TabFocusReason); // Which chooses its link.
    QTest::keyClick(hint, Qt::Key_Return);
    QCOMPARE(browser.opened, QList<QUrl>{QUrl(u"https://www.notion.so/my-integrations"_s)});
    emit hint->linkActivated(u"file:///etc/passwd"_s);
    QCOMPARE(browser.opened.size(), 1);
}

void SettingsViewTest::withoutAnIdLoadFieldsIsDisabled()
{
    QFETCH(const SettingsTab, tab);
    store().setTimeTrackerDBId({});
    store().setTasksDBId({});
    m_world->show(tab);
    QVERIFY(!button(u"loadFields"_s)->isEnabled());
    auto *id = m_world->child<SettingField>(u"databaseId"_s);
    QCOMPARE(id->placeholderText(), u"Database ID (32 characters)"_s);
    QTest::keyClicks(id, u"7"_s);
    QVERIFY(button(u"loadFields"_s)->isEnabled());
    QCOMPARE(tab == SettingsTab::tasks ? store().tasksDBId() : store().timeTrackerDBId(), u"7"_s);
    QVERIFY(m_world->notion.asked.isEmpty());
}

void SettingsViewTest::loadFieldsLoadsAndShowsTheMapping()
{
    QFETCH(const SettingsTab, tab);
    const bool isTasks = tab == SettingsTab::tasks;
    store().setTimeTrackerDBId({});
    store().setTasksDBId({});
    m_world->show(tab);
    QVERIFY(!m_world->sectionTitled(u"Field Mapping"_s));
    isTasks ? store().setTasksDBId(u"tasks"_s) : store().setTimeTrackerDBId(u"tracker"_s);
    m_world->notion.isHolding = true;
    auto *load = button(u"loadFields"_s);
    QCOMPARE(load->text().remove(u'&'), u"Load Fields"_s);
    load->click();
    QVERIFY(load->isBusy());
    QVERIFY(!load->isEnabled());
    QTRY_COMPARE(m_world->notion.calls(), QStringList(isTasks ? tasksCall : trackerCall));
    m_world->settle();
    QVERIFY(!load->isBusy());
    QVERIFY(load->isEnabled());
    QVERIFY(m_world->sectionTitled(u"Field Mapping"_s));
    const auto date = isTasks ? u"Task Date"_s : u"Start Time"_s;
    QCOMPARE(m_world->picker(date)->currentText(), isTasks ? u"Date"_s : u"Start"_s);
}

void SettingsViewTest::aFailedLoadTellsWhyAndKeepsThePickers()
{
    m_world->show(SettingsTab::timeTracker);
    m_world->refuse(u"tracker"_s, 400, u"no"_s);
    button(u"loadFields"_s)->click();
    m_world->settle();
    const auto *error = m_world->child<FormText>(u"error"_s);
    QCOMPARE(error->text(), uR"(Server error 400: {"message":"no"})"_s);
    QCOMPARE(error->ink(), theme::redTextOn(view().palette()));
    QCOMPARE(m_world->picker(u"Start Time"_s)->currentText(), u"Start"_s);
    m_world->answer(u"tracker"_s, SettingsWorld::trackerProperties());
    button(u"loadFields"_s)->click();
    QVERIFY(!m_world->child(u"error"_s));
    m_world->settle();
}

void SettingsViewTest::pickersOfferSelectAndThePropertiesOfTheirKind()
{
    m_world->show(SettingsTab::timeTracker);
    const auto select = u"Select..."_s;
    QCOMPARE(m_world->offered(u"Task Relation"_s), (QStringList{select, u"Task"_s}));
    QCOMPARE(m_world->offered(u"Start Time"_s), (QStringList{select, u"End"_s, u"Start"_s}));
    QCOMPARE(m_world->offered(u"End Time"_s), (QStringList{select, u"End"_s, u"Start"_s}));
    QCOMPARE(m_world->offered(u"Timer Status"_s), (QStringList{select, u"Mood"_s, u"Status"_s}));
    QCOMPARE(m_world->offered(u"\"Running\" value"_s), (QStringList{select, u"Running"_s, u"Stopped"_s}));
    QCOMPARE(m_world->offered(u"\"Stopped\" value"_s), (QStringList{select, u"Running"_s, u"Stopped"_s}));
    view().setSelectedTab(SettingsTab::tasks);
    settleLayout();
    QCOMPARE(m_world->offered(u"Task Name"_s), (QStringList{select, u"Name"_s}));
    QCOMPARE(m_world->offered(u"Task Date"_s), (QStringList{select, u"Date"_s}));
    QCOMPARE(m_world->offered(u"Timer Status"_s), (QStringList{select, u"Phase"_s, u"Timer"_s}));
    QCOMPARE(m_world->offered(u"\"Running\" value"_s), (QStringList{select, u"Tracking"_s, u"Idle"_s}));
    QCOMPARE(m_world->offered(u"\"Stopped\" value"_s), (QStringList{select, u"Tracking"_s, u"Idle"_s}));
    QCOMPARE(m_world->offered(u"Project Relation"_s), (QStringList{select, u"Project"_s, u"Team"_s}));
    QCOMPARE(m_world->offered(u"Client Relation"_s), (QStringList{select, u"Client"_s}));
    QCOMPARE(m_world->offered(u"Total Time Rollup"_s), (QStringList{select, u"Total minutes"_s}));
}

void SettingsViewTest::aPickWritesItsRole_data()
{
    QTest::addColumn<SettingsTab>("tab");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString FieldMapping::*>("role");
    const auto row = [](SettingsTab tab, const char *label, QString FieldMapping::*role) {
        QTest::newRow(qPrintable(rawValue(tab) + u": "_s + QString::fromLatin1(label)))
            << tab << QString::fromLatin1(label) << role;
    };
    using enum SettingsTab;
    row(timeTracker, "Task Relation", &FieldMapping::ttTaskRelation);
    row(timeTracker, "Start Time", &FieldMapping::ttStartTime);
    row(timeTracker, "End Time", &FieldMapping::ttEndTime);
    row(timeTracker, "Timer Status", &FieldMapping::ttStatus);
    row(timeTracker, "\"Running\" value", &FieldMapping::ttStatusRunning);
    row(timeTracker, "\"Stopped\" value", &FieldMapping::ttStatusStopped);
    row(tasks, "Task Name", &FieldMapping::taskName);
    row(tasks, "Task Date", &FieldMapping::taskDate);
    row(tasks, "Timer Status", &FieldMapping::taskTimerStatus);
    row(tasks, "\"Running\" value", &FieldMapping::taskTimerStatusRunning);
    row(tasks, "\"Stopped\" value", &FieldMapping::taskTimerStatusStopped);
    row(tasks, "Client Relation", &FieldMapping::projectClientRelation);
    row(tasks, "Total Time Rollup", &FieldMapping::taskTotalTimeRollup);
}

void SettingsViewTest::aPickWritesItsRole()
{
    QFETCH(const SettingsTab, tab);
    QFETCH(const QString, label);
    using Role = QString FieldMapping::*;
    QFETCH(const Role, role);
    m_world->show(tab);
    m_world->change(role, u"something that is gone"_s);
    const auto entry = m_world->offered(label).at(1);
    auto expected = store().fieldMapping();
    expected.*role = entry;
    m_world->settings.defaults.writes.clear();
    m_world->choose(label, entry);
    QVERIFY(store().fieldMapping() == expected);
    QCOMPARE(m_world->settings.defaults.writes.size(), 1);
    QCOMPARE(m_world->picker(label)->currentText(), entry);
}

void SettingsViewTest::pickingSelectClearsTheRole()
{
    m_world->show(SettingsTab::timeTracker);
    m_world->choose(u"End Time"_s, u"Select..."_s);
    QCOMPARE(store().fieldMapping().ttEndTime, QString());
    QCOMPARE(m_world->picker(u"End Time"_s)->currentText(), u"Select..."_s);
}

void SettingsViewTest::aValueThatIsNotOfferedShowsNoSelectionAndStays()
{
    m_world->change(&FieldMapping::ttEndTime, u"Until"_s);
    m_world->change(&FieldMapping::ttStatusRunning, u"running"_s); // Another case is another option.
    m_world->show(SettingsTab::timeTracker);
    QCOMPARE(m_world->picker(u"End Time"_s)->currentIndex(), -1);
    QCOMPARE(m_world->picker(u"\"Running\" value"_s)->currentIndex(), -1);
    button(u"loadFields"_s)->click();
    m_world->settle();
    QCOMPARE(m_world->picker(u"End Time"_s)->currentIndex(), -1);
    QCOMPARE(store().fieldMapping().ttEndTime, u"Until"_s);
    QCOMPARE(store().fieldMapping().ttStatusRunning, u"running"_s);
}

void SettingsViewTest::withoutAStatusTheStatusValuesAreHiddenAndAPickShowsThem_data()
{
    using Role = QString FieldMapping::*;
    QTest::addColumn<SettingsTab>("tab");
    QTest::addColumn<Role>("status");
    QTest::addColumn<Role>("running");
    QTest::addColumn<Role>("stopped");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("otherProperty");
    QTest::addColumn<QStringList>("otherOptions");
    QTest::newRow("Time Tracker") << SettingsTab::timeTracker << &FieldMapping::ttStatus
                                  << &FieldMapping::ttStatusRunning << &FieldMapping::ttStatusStopped << u"Status"_s
                                  << QStringList{u"Running"_s, u"Stopped"_s} << u"Mood"_s << QStringList(u"Good"_s);
    QTest::newRow("Tasks") << SettingsTab::tasks << &FieldMapping::taskTimerStatus
                           << &FieldMapping::taskTimerStatusRunning << &FieldMapping::taskTimerStatusStopped
                           << u"Timer"_s << QStringList{u"Tracking"_s, u"Idle"_s} << u"Phase"_s
                           << QStringList(u"Draft"_s);
}

void SettingsViewTest::withoutAStatusTheStatusValuesAreHiddenAndAPickShowsThem()
{
    using Role = QString FieldMapping::*;
    QFETCH(const SettingsTab, tab);
    QFETCH(const Role, status);
    QFETCH(const Role, running);
    QFETCH(const Role, stopped);
    QFETCH(const QString, property);
    QFETCH(const QStringList, options);
    QFETCH(const QString, otherProperty);
    QFETCH(const QStringList, otherOptions);
    m_world->change(status, {});
    m_world->change(running, {});
    m_world->change(stopped, options.last());
    m_world->show(tab);
    QVERIFY(m_world->sectionTitled(u"Field Mapping"_s));
    QVERIFY(!m_world->sectionTitled(u"Status Values"_s));
    m_world->choose(u"Timer Status"_s, property);
    QVERIFY(m_world->sectionTitled(u"Status Values"_s));
    QCOMPARE(m_world->offered(u"\"Running\" value"_s), QStringList(u"Select..."_s) + options);
    QCOMPARE(m_world->offered(u"\"Stopped\" value"_s), QStringList(u"Select..."_s) + options);
    m_world->choose(u"Timer Status"_s, otherProperty);
    QCOMPARE(m_world->offered(u"\"Running\" value"_s), QStringList(u"Select..."_s) + otherOptions);
    QCOMPARE(m_world->picker(u"\"Stopped\" value"_s)->currentIndex(), -1);
    QCOMPARE(store().fieldMapping().*stopped, options.last());
}

void SettingsViewTest::aRoleThatIsFilledByItselfIsShown()
{
    m_world->change(&FieldMapping::ttTaskRelation, {});
    m_world->show(SettingsTab::timeTracker);
    QCOMPARE(m_world->picker(u"Task Relation"_s)->currentText(), u"Task"_s);
}

void SettingsViewTest::anotherProjectRelationForgetsTheClientAndLoadsAnew()
{
    m_world->answer(u"teams"_s, {{u"Owner"_s, relation(u"people"_s)}});
    m_world->show(SettingsTab::tasks);
    QVERIFY(m_world->picker(u"Client Relation"_s));
    m_world->notion.isHolding = true;
    m_world->notion.asked.clear();
    m_world->choose(u"Project Relation"_s, u"Team"_s);
    QCOMPARE(store().fieldMapping().taskProjectRelation, u"Team"_s);
    QCOMPARE(store().fieldMapping().projectClientRelation, QString());
    QVERIFY(!m_world->picker(u"Client Relation"_s));
    const auto *extended = m_world->sectionTitled(u"Extended Fields"_s);
    QCOMPARE(visibleIn<BusyIndicator>(*extended).size(), 1);
    QTRY_COMPARE(m_world->notion.calls(), QStringList(u"GET /databases/teams"_s));
    m_world->settle();
    QVERIFY(visibleIn<BusyIndicator>(*extended).isEmpty());
    QCOMPARE(m_world->offered(u"Client Relation"_s), (QStringList{u"Select..."_s, u"Owner"_s}));
    QCOMPARE(m_world->picker(u"Client Relation"_s)->currentText(), u"Select..."_s);
}

void SettingsViewTest::anotherProjectRelationIsWrittenFirstThenTheClientThenTheSchemaGoes()
{
    m_world->show(SettingsTab::tasks);
    m_world->notion.isHolding = true;
    QList<QStringList> steps;
    const auto note = [&] {
        const auto mapping = store().fieldMapping();
        const bool hasSchema = view().settingsVM().projectsSchema().has_value();
        const bool isLoading = view().settingsVM().isLoadingProjectsSchema();
        steps.append({mapping.taskProjectRelation, mapping.projectClientRelation, hasSchema ? u"schema"_s : QString(),
                      isLoading ? u"loading"_s : QString()});
    };
    const auto writes = store().bindableFieldMapping().addNotifier(note);
    const auto schemas = view().settingsVM().bindableProjectsSchema().addNotifier(note);
    m_world->choose(u"Project Relation"_s, u"Team"_s);
    QCOMPARE(steps,
             (QList<QStringList>{{u"Team"_s, u"Client"_s, u"schema"_s, {}},
                                 {u"Team"_s, {}, u"schema"_s, {}},
                                 {u"Team"_s, {}, {}, {}}}));
    QVERIFY(view().settingsVM().isLoadingProjectsSchema());
}

void SettingsViewTest::pickingSelectForTheProjectRelationEmptiesBothAndLoadsNothing()
{
    m_world->show(SettingsTab::tasks);
    m_world->notion.asked.clear();
    m_world->choose(u"Project Relation"_s, u"Select..."_s);
    m_world->settle();
    QCOMPARE(store().fieldMapping().taskProjectRelation, QString());
    QCOMPARE(store().fieldMapping().projectClientRelation, QString());
    QVERIFY(!view().settingsVM().projectsSchema());
    QVERIFY(!m_world->picker(u"Client Relation"_s));
    QVERIFY(m_world->notion.asked.isEmpty());
}

void SettingsViewTest::pickingTheSameProjectRelationChangesNothing()
{
    m_world->show(SettingsTab::tasks);
    m_world->notion.asked.clear();
    m_world->choose(u"Project Relation"_s, u"Project"_s);
    m_world->settle();
    QCOMPARE(store().fieldMapping().projectClientRelation, u"Client"_s);
    QVERIFY(m_world->notion.asked.isEmpty());
}

void SettingsViewTest::aRelationThatLeadsNowhereTellsSoInTheExtendedFields()
{
    auto properties = SettingsWorld::tasksProperties();
    properties.insert(u"Loose"_s, column(u"relation"_s));
    m_world->answer(u"tasks"_s, properties);
    m_world->show(SettingsTab::tasks);
    m_world->choose(u"Project Relation"_s, u"Loose"_s);
    const auto *extended = m_world->sectionTitled(u"Extended Fields"_s);
    const auto *error = childIn<FormText>(*extended, u"error"_s);
    QVERIFY(error);
    QCOMPARE(error->text(), u"Could not determine Projects database ID"_s);
    QVERIFY(visibleIn<BusyIndicator>(*extended).isEmpty());
    m_world->choose(u"Project Relation"_s, u"Project"_s);
    m_world->settle();
    QVERIFY(!childIn<FormText>(*extended, u"error"_s));
}

void SettingsViewTest::loadFieldsOfTasksDoesNotLoadProjects()
{
    m_world->show(SettingsTab::tasks);
    m_world->notion.asked.clear();
    button(u"loadFields"_s)->click();
    m_world->settle();
    QCOMPARE(m_world->notion.calls(), QStringList(tasksCall));
}

void SettingsViewTest::intervalsAreWritten()
{
    m_world->show(SettingsTab::general);
    QCOMPARE(m_world->offered(u"Active timer interval"_s), (QStringList{u"15s"_s, u"30s"_s, u"60s"_s, u"120s"_s}));
    QCOMPARE(m_world->offered(u"Idle interval"_s), (QStringList{u"30s"_s, u"60s"_s, u"120s"_s, u"300s"_s}));
    QCOMPARE(m_world->picker(u"Active timer interval"_s)->currentText(), u"30s"_s);
    QCOMPARE(m_world->picker(u"Idle interval"_s)->currentText(), u"60s"_s);
    m_world->choose(u"Active timer interval"_s, u"15s"_s);
    m_world->choose(u"Idle interval"_s, u"300s"_s);
    QCOMPARE(store().pollIntervalActive(), 15.0);
    QCOMPARE(store().pollIntervalIdle(), 300.0);
}

void SettingsViewTest::anIntervalThatIsNotOfferedShowsNoSelectionAndStays()
{
    store().setPollIntervalActive(45);
    m_world->show(SettingsTab::general);
    QCOMPARE(m_world->picker(u"Active timer interval"_s)->currentIndex(), -1);
    view().close();
    QCOMPARE(store().pollIntervalActive(), 45.0);
}

void SettingsViewTest::launchAtLoginReachesTheDesktop()
{
    m_world->show(SettingsTab::general);
    toggle(u"Launch at Login"_s)->click();
    QVERIFY(store().launchAtLogin());
    QCOMPARE(m_world->loginItem.calls, QStringList(u"register"_s));
    toggle(u"Launch at Login"_s)->click();
    QCOMPARE(m_world->loginItem.calls, (QStringList{u"register"_s, u"unregister"_s}));
}

void SettingsViewTest::theDockIsToldAfterTheSettingIsWritten()
{
    m_world->show(SettingsTab::general);
    QVERIFY(toggle(u"Show app icon in Dock"_s)->isChecked());
    toggle(u"Show app icon in Dock"_s)->click();
    QVERIFY(!store().showDockIcon());
    QCOMPARE(m_world->dockChanges, 1);
    QVERIFY(textOfNote(u"When enabled, the Dock icon shows elapsed time while a timer is running."_s));
}

void SettingsViewTest::remindAfterIsThereWhileTheReminderIsOnAndKeepsItsValue()
{
    store().setReminderHours(4);
    m_world->show(SettingsTab::general);
    QVERIFY(!m_world->picker(u"Remind after"_s));
    toggle(u"Notify when timer runs too long"_s)->click();
    QVERIFY(store().reminderEnabled());
    settleLayout();
    QCOMPARE(m_world->offered(u"Remind after"_s),
             (QStringList{u"2 hours"_s, u"4 hours"_s, u"6 hours"_s, u"8 hours"_s, u"10 hours"_s}));
    QCOMPARE(m_world->picker(u"Remind after"_s)->currentText(), u"4 hours"_s);
    m_world->choose(u"Remind after"_s, u"10 hours"_s);
    QCOMPARE(store().reminderHours(), 10.0);
    toggle(u"Notify when timer runs too long"_s)->click();
    QVERIFY(!m_world->picker(u"Remind after"_s));
    QCOMPARE(store().reminderHours(), 10.0);
}

void SettingsViewTest::withoutANotchItsSectionIsMissingAndTheSettingStays()
{
    store().setUseNotchUI(true);
    m_world->show(SettingsTab::general);
    QVERIFY(!m_world->sectionTitled(u"Notch Interface"_s));
    view().close();
    QVERIFY(store().useNotchUI());
}

void SettingsViewTest::withANotchItsSectionIsThereAndOnlyWritesTheSetting()
{
    m_world->screens.setSingle(QRectF(0, 0, 1512, 982), 38);
    m_world->show(SettingsTab::general);
    QVERIFY(m_world->sectionTitled(u"Notch Interface"_s));
    toggle(u"Use notch interface"_s)->click();
    QVERIFY(store().useNotchUI());
    QCOMPARE(m_world->dockChanges, 0);
    QVERIFY(m_world->hotkeys.isEmpty());
    QVERIFY(textOfNote(u"Shows timer around the MacBook notch. Menu bar will show icon only."_s));
}

void SettingsViewTest::theNotchIsLookedForOnTheFirstScreen_data()
{
    QTest::addColumn<QList<Screen>>("screens");
    QTest::addColumn<bool>("isThere");
    const Screen plain{QRectF(0, 0, 1280, 800)};
    const Screen notched{QRectF(0, 0, 1512, 982), 38};
    QTest::newRow("there is no screen") << QList<Screen>() << false;
    QTest::newRow("only the second has one") << QList<Screen>{plain, notched} << false;
    QTest::newRow("the first has one") << QList<Screen>{notched, plain} << true;
}

void SettingsViewTest::theNotchIsLookedForOnTheFirstScreen()
{
    QFETCH(const QList<Screen>, screens);
    m_world->show(); // The screens may change afterwards.
    m_world->screens.all = screens;
    view().setSelectedTab(SettingsTab::general);
    settleLayout();
    QTEST(m_world->sectionTitled(u"Notch Interface"_s) != nullptr, "isThere");
}

void SettingsViewTest::theSectionOfTheNotchFollowsTheScreens()
{
    m_world->show(SettingsTab::general);
    m_world->screens.setSingle(QRectF(0, 0, 1512, 982), 38);
    m_world->screens.change();
    settleLayout();
    QVERIFY(m_world->sectionTitled(u"Notch Interface"_s));
    m_world->screens.setSingle(QRectF(0, 0, 1280, 800));
    m_world->screens.change();
    settleLayout();
    QVERIFY(!m_world->sectionTitled(u"Notch Interface"_s));
}

void SettingsViewTest::clearWritesZeroToBothAndRegistersAgain()
{
    m_world->show(SettingsTab::general);
    m_world->child<QAbstractButton>(u"clear"_s)->click();
    QCOMPARE(store().quickAddKeyCode(), 0U);
    QCOMPARE(store().quickAddModifiers(), 0U);
    QCOMPARE(m_world->hotkeys, (QList<std::pair<quint32, quint32>>{{0, 768}, {0, 0}}));
    QCOMPARE(m_world->settings.defaults.integer(u"quickAddKeyCode"_s), qint64(0));
    const auto nextStart = TestSettings::load(m_world->settings.defaults);
    QCOMPARE(nextStart->quickAddKeyCode(), 45U);
    QCOMPARE(nextStart->quickAddModifiers(), 768U);
}

void SettingsViewTest::aRecordedShortcutRegistersTwice()
{
    m_world->show(SettingsTab::general);
    m_world->child<QAbstractButton>(u"record"_s)->click();
    press(40, Qt::ControlModifier);
    QCOMPARE(m_world->hotkeys, (QList<std::pair<quint32, quint32>>{{40, 768}, {40, 0x1000}}));
}

void SettingsViewTest::settingsThatChangeElsewhereAreFollowed()
{
    m_world->show(SettingsTab::general);
    store().setShowDockIcon(false);
    store().setPollIntervalIdle(120);
    QVERIFY(!toggle(u"Show app icon in Dock"_s)->isChecked());
    QCOMPARE(m_world->picker(u"Idle interval"_s)->currentText(), u"120s"_s);
    QCOMPARE(m_world->dockChanges, 0); // Only the user's own change is told.
    view().setSelectedTab(SettingsTab::timeTracker);
    settleLayout();
    store().setTimeTrackerDBId(u"elsewhere"_s);
    QCOMPARE(m_world->child<SettingField>(u"databaseId"_s)->text(), u"elsewhere"_s);
    m_world->change(&FieldMapping::ttStartTime, u"End"_s);
    QCOMPARE(m_world->picker(u"Start Time"_s)->currentText(), u"End"_s);
}

QTEST_MAIN(SettingsViewTest)
#include "SettingsViewTest.moc"
