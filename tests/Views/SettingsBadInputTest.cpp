#include "Views/SettingsView.h"

#include "SettingsWorld.h"
#include "Views/BusyButton.h"
#include "Views/FormText.h"
#include "Views/SettingField.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QScrollArea>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;
using namespace korvo::databases;

namespace {

const QString trackerCall = u"GET /databases/tracker"_s;

} // namespace

/// What users paste and what Notion may answer.
class SettingsBadInputTest : public QObject {
    Q_OBJECT
private slots:
    void init() { m_world = std::make_unique<SettingsWorld>(); }
    void cleanup();

    void whatIsPastedIsStoredAsItIs_data();
    void whatIsPastedIsStoredAsItIs();
    void aStoredTextIsNotTouchedByShowingIt_data();
    void aStoredTextIsNotTouchedByShowingIt();
    void theKeyIsHidden();
    void theKeyCannotBeCopiedDraggedOrUndone();
    void theKeyIsNeitherLoggedNorInAnErrorText();
    void aDatabaseWithoutProperties();
    void aDatabaseOfFiveHundredProperties();
    void optionsOfTwoHundredCharactersLeaveTheWidthAlone();
    void namesWithMarksAreShownAsTheyAre();
    void aLongErrorIsNotCutAndLeavesTheWidthAlone_data();
    void aLongErrorIsNotCutAndLeavesTheWidthAlone();
    void aLongConnectionErrorIsCutToOneLine();
    void aLoadThatHangsLeavesTheRestUsable();
    void anAnswerAfterTheWindowHasClosedIsTaken();
    void anAnswerAfterTheViewHasGoneIsDropped_data();
    void anAnswerAfterTheViewHasGoneIsDropped();
    void twoLoadsAtOnceEndInAnEnabledButton();
    void optionsThatChangeUnderAnOpenPopupCloseIt();

private:
    SettingsView &view() { return *m_world->view; }
    AppSettings &store() { return m_world->store(); }
    void nothingIsWiderThanItsPage();

    std::unique_ptr<SettingsWorld> m_world;
};

void SettingsBadInputTest::cleanup()
{
    m_world.reset();
    QCOMPARE(spawnedCount(), 0);
}

void SettingsBadInputTest::nothingIsWiderThanItsPage()
{
    settleLayout();
    QVERIFY(view().minimumSizeHint().width() <= 640);
    for (const auto *area : visibleIn<QScrollArea>(view())) {
        QVERIFY(area->widget()->minimumSizeHint().width() <= area->viewport()->width());
        for (const auto *part : visibleIn<QWidget>(*area->widget())) {
            const auto place = placeIn(*area->widget(), part);
            QVERIFY2(place.right() < area->viewport()->width(), part->metaObject()->className());
        }
    }
}

void SettingsBadInputTest::whatIsPastedIsStoredAsItIs_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("blanks around it") << u"  ntn_abc  "_s;
    QTest::newRow("a line break after it") << u"ntn_abc\n"_s;
    QTest::newRow("two lines") << u"ntn_abc\r\nsecond"_s;
    QTest::newRow("a whole page link")
        << u"https://www.notion.so/team/Tasks-0123456789abcdef0123456789abcdef?v=1&pvs=4#top"_s;
    QTest::newRow("letters beyond ASCII") << u"ключ 🔑 ñ"_s;
    QTest::newRow("as long as a book") << QString(100000, u'x');
}

void SettingsBadInputTest::whatIsPastedIsStoredAsItIs()
{
    QFETCH(const QString, text);
    store().setApiKey({});
    store().setTimeTrackerDBId({});
    store().setTasksDBId({});
    m_world->show();
    QGuiApplication::clipboard()->setText(text);
    m_world->child<SettingField>(u"apiKey"_s)->paste();
    QCOMPARE(store().apiKey(), text);
    for (const auto tab : {SettingsTab::timeTracker, SettingsTab::tasks}) {
        view().setSelectedTab(tab);
        settleLayout();
        m_world->child<SettingField>(u"databaseId"_s)->paste();
        nothingIsWiderThanItsPage();
    }
    QCOMPARE(store().timeTrackerDBId(), text);
    QCOMPARE(store().tasksDBId(), text);
    QCOMPARE(m_world->settings.defaults.string(u"tasksDBId"_s), text);
}

void SettingsBadInputTest::aStoredTextIsNotTouchedByShowingIt_data()
{
    whatIsPastedIsStoredAsItIs_data();
}

void SettingsBadInputTest::aStoredTextIsNotTouchedByShowingIt()
{
    QFETCH(const QString, text);
    store().setApiKey(text);
    store().setTasksDBId(text);
    m_world->settings.defaults.writes.clear();
    m_world->show();
    QCOMPARE(m_world->child<SettingField>(u"apiKey"_s)->text(), text);
    for (const auto tab : allSettingsTabs)
        view().setSelectedTab(tab);
    view().close();
    QCOMPARE(store().apiKey(), text);
    QCOMPARE(store().tasksDBId(), text);
    QVERIFY(m_world->settings.defaults.writes.isEmpty());
}

void SettingsBadInputTest::theKeyIsHidden()
{
    store().setApiKey(u"ntn_secret"_s);
    m_world->show();
    auto *key = m_world->child<SettingField>(u"apiKey"_s);
    QCOMPARE(key->echoMode(), QLineEdit::Password);
    QVERIFY(!key->displayText().contains(u"secret"_s));
    QVERIFY(key->inputMethodHints() & Qt::ImhHiddenText);
    auto *accessible = QAccessible::queryAccessibleInterface(key);
    QCOMPARE(accessible->text(QAccessible::Name), u"API Key"_s);
    QVERIFY(!accessible->text(QAccessible::Value).contains(u"secret"_s));
    QVERIFY(!accessible->textInterface()->text(0, 100).contains(u"secret"_s));
    QVERIFY(accessible->state().passwordEdit);
}

void SettingsBadInputTest::theKeyCannotBeCopiedDraggedOrUndone()
{
    store().setApiKey(u"ntn_secret"_s);
    m_world->show();
    auto *key = m_world->child<SettingField>(u"apiKey"_s);
    QGuiApplication::clipboard()->setText(u"before"_s);
    key->selectAll();
    key->copy();
    QTest::keyClick(key, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
    key->cut();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"before"_s);
    QVERIFY(store().apiKey().isEmpty() || store().apiKey() == u"ntn_secret"_s);
    store().setApiKey({});
    QTest::keyClicks(key, u"ntn_other"_s);
    key->selectAll();
    QTest::keyClick(key, Qt::Key_Delete);
    QTest::keyClick(key, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(store().apiKey(), QString());
}

void SettingsBadInputTest::theKeyIsNeitherLoggedNorInAnErrorText()
{
    store().setApiKey(u"ntn_secret\nkey"_s);
    m_world->show();
    m_world->notion.answer(u"GET /users/me"_s, {}, 401);
    m_world->child<BusyButton>(u"testConnection"_s)->click();
    m_world->settle();
    for (const auto *text : view().findChildren<QLabel *>())
        QVERIFY(!text->text().contains(u"secret"_s));
    for (const auto &line : m_world->log.lines)
        QVERIFY(!line.contains(u"secret"_s));
}

void SettingsBadInputTest::aDatabaseWithoutProperties()
{
    m_world->answer(u"tracker"_s, {});
    m_world->answer(u"tasks"_s, {});
    m_world->show(SettingsTab::timeTracker);
    QCOMPARE(m_world->offered(u"Start Time"_s), QStringList(u"Select..."_s));
    QCOMPARE(m_world->picker(u"Start Time"_s)->currentIndex(), -1); // "Start" is kept.
    QCOMPARE(m_world->offered(u"\"Running\" value"_s), QStringList(u"Select..."_s));
    view().setSelectedTab(SettingsTab::tasks);
    settleLayout();
    QCOMPARE(m_world->offered(u"Project Relation"_s), QStringList(u"Select..."_s));
    QCOMPARE(childIn<FormText>(*m_world->sectionTitled(u"Extended Fields"_s), u"error"_s)->text(),
             u"Could not determine Projects database ID"_s);
    QCOMPARE(store().fieldMapping().taskProjectRelation, u"Project"_s);
}

void SettingsBadInputTest::aDatabaseOfFiveHundredProperties()
{
    QJsonObject properties;
    for (int i = 0; i < 500; ++i)
        properties.insert(u"Date number %1"_s.arg(i), column(u"date"_s));
    m_world->answer(u"tracker"_s, properties);
    m_world->show(SettingsTab::timeTracker);
    QCOMPARE(m_world->picker(u"Start Time"_s)->count(), 501);
    m_world->choose(u"Start Time"_s, u"Date number 499"_s);
    QCOMPARE(store().fieldMapping().ttStartTime, u"Date number 499"_s);
    nothingIsWiderThanItsPage();
}

void SettingsBadInputTest::optionsOfTwoHundredCharactersLeaveTheWidthAlone()
{
    const QString option(200, u'w');
    const QString name = QString(199, u'm') + u'n';
    m_world->answer(u"tracker"_s,
                    {{name, choice(u"select"_s, {option, u"Short"_s})}, {u"Mood"_s, column(u"status"_s)}});
    m_world->show(SettingsTab::timeTracker);
    m_world->choose(u"Timer Status"_s, name);
    m_world->choose(u"\"Running\" value"_s, option);
    QCOMPARE(store().fieldMapping().ttStatusRunning, option);
    nothingIsWiderThanItsPage();
    auto *picker = m_world->picker(u"\"Running\" value"_s);
    picker->showPopup();
    QCOMPARE(picker->view()->window()->width(), picker->width());
    QVERIFY(picker->itemData(1, Qt::ToolTipRole).toString().contains(option)); // The whole of it.
    picker->hidePopup();
}

void SettingsBadInputTest::namesWithMarksAreShownAsTheyAre()
{
    const auto name = u"<b>Start</b> & \"end\""_s;
    m_world->answer(u"tracker"_s, {{name, column(u"date"_s)}});
    m_world->show(SettingsTab::timeTracker);
    m_world->choose(u"Start Time"_s, name);
    QCOMPARE(m_world->picker(u"Start Time"_s)->currentText(), name);
    QCOMPARE(store().fieldMapping().ttStartTime, name);
    QVERIFY(m_world->picker(u"Start Time"_s)->itemData(1, Qt::ToolTipRole).toString().contains(u"&lt;b&gt;"_s));
}

void SettingsBadInputTest::aLongErrorIsNotCutAndLeavesTheWidthAlone_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("words") << u"The bear went over the mountain. "_s.repeated(40).trimmed();
    QTest::newRow("one word without a blank") << QString(1500, u'x');
}

void SettingsBadInputTest::aLongErrorIsNotCutAndLeavesTheWidthAlone()
{
    QFETCH(const QString, message);
    m_world->refuse(u"tracker"_s, 400, message);
    m_world->refuse(u"projects"_s, 400, message);
    m_world->show(SettingsTab::timeTracker);
    for (const auto tab : {SettingsTab::timeTracker, SettingsTab::tasks}) {
        view().setSelectedTab(tab);
        nothingIsWiderThanItsPage();
        const auto *error = m_world->child<FormText>(u"error"_s);
        QVERIFY(error->text().contains(message));
        QCOMPARE(error->shownLines().join(u' ').remove(u' '), error->text().remove(u' '));
        QVERIFY(error->height() >= error->heightForWidth(error->width()));
    }
}

void SettingsBadInputTest::aLongConnectionErrorIsCutToOneLine()
{
    m_world->show();
    m_world->notion.answer(u"GET /users/me"_s, {{u"message"_s, QString(1500, u'x')}}, 400);
    m_world->child<BusyButton>(u"testConnection"_s)->click();
    m_world->settle();
    const auto *text = visibleIn<FormText>(*m_world->child(u"failed"_s)).first();
    QCOMPARE(text->shownLines().size(), 1);
    QVERIFY(text->isElided());
    QVERIFY(text->width() > 150); // As much of it as there is room for.
    nothingIsWiderThanItsPage();
}

void SettingsBadInputTest::aLoadThatHangsLeavesTheRestUsable()
{
    m_world->notion.isHolding = true;
    m_world->appear(SettingsTab::timeTracker);
    QTRY_COMPARE(m_world->notion.heldCount(), 1);
    QVERIFY(m_world->child<BusyButton>(u"loadFields"_s)->isBusy());
    auto *id = m_world->child<SettingField>(u"databaseId"_s);
    id->setText(u"another"_s);
    QCOMPARE(store().timeTrackerDBId(), u"another"_s);
    view().setSelectedTab(SettingsTab::general);
    settleLayout();
    m_world->choose(u"Idle interval"_s, u"30s"_s);
    QCOMPARE(store().pollIntervalIdle(), 30.0);
    view().setSelectedTab(SettingsTab::connection);
    settleLayout();
    m_world->child<BusyButton>(u"testConnection"_s)->click();
    QTRY_COMPARE(m_world->notion.heldCount(), 2); // Side by side with the load.
}

void SettingsBadInputTest::anAnswerAfterTheWindowHasClosedIsTaken()
{
    m_world->change(&FieldMapping::ttStatus, {});
    auto tracker = SettingsWorld::trackerProperties();
    tracker.remove(u"Mood"_s);
    m_world->answer(u"tracker"_s, tracker);
    m_world->notion.isHolding = true;
    m_world->appear();
    QTRY_COMPARE(m_world->notion.heldCount(), 1);
    view().close();
    m_world->notion.isHolding = false;
    m_world->notion.release();
    QTRY_COMPARE(store().fieldMapping().ttStatus, u"Status"_s);
    QTRY_COMPARE(spawnedCount(), m_world->pollCount());
}

void SettingsBadInputTest::anAnswerAfterTheViewHasGoneIsDropped_data()
{
    QTest::addColumn<int>("answered");
    QTest::newRow("while Time Tracker loads") << 0;
    QTest::newRow("while Tasks loads") << 1;
    QTest::newRow("while Projects loads") << 2;
}

void SettingsBadInputTest::anAnswerAfterTheViewHasGoneIsDropped()
{
    QFETCH(const int, answered);
    m_world->notion.isHolding = true;
    m_world->appear();
    for (int i = 0; i <= answered; ++i) {
        if (i > 0)
            m_world->notion.release();
        QTRY_COMPARE(m_world->notion.asked.size(), i + 1);
    }
    m_world->view.reset();
    m_world->notion.release();
    QTRY_COMPARE(spawnedCount(), 0);
    auto asked = m_world->notion.calls();
    asked.removeDuplicates(); // The client's tries that the stop ends.
    QCOMPARE(asked.size(), answered + 1);
}

void SettingsBadInputTest::twoLoadsAtOnceEndInAnEnabledButton()
{
    m_world->show(SettingsTab::timeTracker);
    m_world->notion.isHolding = true;
    m_world->notion.asked.clear();
    view().settingsVM().loadTimeTrackerSchema();
    view().settingsVM().loadTimeTrackerSchema();
    QTRY_COMPARE(m_world->notion.calls(), (QStringList{trackerCall, trackerCall}));
    QVERIFY(m_world->child<BusyButton>(u"loadFields"_s)->isBusy());
    m_world->settle();
    QVERIFY(!m_world->child<BusyButton>(u"loadFields"_s)->isBusy());
    QVERIFY(m_world->child<BusyButton>(u"loadFields"_s)->isEnabled());
    QCOMPARE(m_world->picker(u"Start Time"_s)->currentText(), u"Start"_s);
}

void SettingsBadInputTest::optionsThatChangeUnderAnOpenPopupCloseIt()
{
    m_world->show(SettingsTab::timeTracker);
    auto *picker = m_world->picker(u"Start Time"_s);
    picker->showPopup();
    QVERIFY(picker->view()->isVisible());
    m_world->answer(u"tracker"_s, {{u"From"_s, column(u"date"_s)}});
    view().settingsVM().loadTimeTrackerSchema();
    m_world->settle();
    QTRY_VERIFY(!picker->view()->isVisible());
    QCOMPARE(m_world->offered(u"Start Time"_s), (QStringList{u"Select..."_s, u"From"_s}));
    QCOMPARE(store().fieldMapping().ttStartTime, u"Start"_s);
}

QTEST_MAIN(SettingsBadInputTest)
#include "SettingsBadInputTest.moc"
