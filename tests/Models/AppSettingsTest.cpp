#include "Models/AppSettings.h"

#include "Fakes/TestSettings.h"
#include "Platform/Linux/JsonUserDefaults.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/resource.h>

using namespace korvo;
using namespace Qt::StringLiterals;
using Stored = QMap<QString, UserDefaults::Value>;

class AppSettingsTest : public QObject {
    Q_OBJECT
private slots:
    void aFirstRunHasTheDefaults();
    void storedValuesAreLoaded();
    void loadingSavesNothing();
    void aValueOfAWrongTypeFallsBackAlone_data();
    void aValueOfAWrongTypeFallsBackAlone();
    void aStoredIntervalOfZeroStays();
    void aStoredWholeNumberIsAnInterval();
    void aStoredFalseIsNotAbsent();
    void aShortcutOfZeroIsBackAtTheNextStart();
    void keyCodeAndModifiersFallBackEachOnItsOwn();
    void theLargestKeyCodeFits();
    void aStoredShortcutOutsideOf32BitsIsFatal_data();
    void aStoredShortcutOutsideOf32BitsIsFatal();
    void aBrokenMappingIsReplacedAsAWhole_data();
    void aBrokenMappingIsReplacedAsAWhole();
    void aFallBackBecomesPermanentWithTheNextWrite();
    void eachWriteSavesAllValuesInOrder();
    void eachSetterSetsTellsAndSaves_data();
    void eachSetterSetsTellsAndSaves();
    void theSameValueTwiceTellsOnceAndSavesTwice();
    void observersSeeTheNewValueBeforeTheWriteReturns();
    void observersOfOtherSettingsHearNothing();
    void aWriteFromAnObserverEndsWithItsValue();
    void changingAMappingInPlaceAlwaysTellsAndSaves();
    void changingAMappingFromAnObserverComesToAnEnd();
    void sixTextsMakeItConfigured();
    void withoutAnyOneOfSixItIsNotConfigured_data();
    void withoutAnyOneOfSixItIsNotConfigured();
    void isConfiguredTellsOfChangesOnly();
    void settingsSurviveARestart();
    void whatIsLoadedIsRegisteredAsDefaults();
    void twoProcessesThatBeginTogetherKeepEachOthersSettings_data();
    void twoProcessesThatBeginTogetherKeepEachOthersSettings();
    void thereIsOneSharedObject();
};

namespace {

/// A mapping that has what makes the settings configured, and no more.
const FieldMapping smallestMapping{.ttTaskRelation = u"Task"_s, .ttStartTime = u"Start"_s, .ttStatus = u"Status"_s};

Stored allStored()
{
    return {{u"apiKey"_s, u"ntn_1"_s},
            {u"timeTrackerDBId"_s, u"tracker"_s},
            {u"tasksDBId"_s, u"tasks"_s},
            {u"pollIntervalActive"_s, 12.5},
            {u"pollIntervalIdle"_s, 90.0},
            {u"launchAtLogin"_s, true},
            {u"reminderHours"_s, 1.5},
            {u"reminderEnabled"_s, true},
            {u"useNotchUI"_s, true},
            {u"quickAddKeyCode"_s, qint64{17}},
            {u"quickAddModifiers"_s, qint64{0x1800}},
            {u"showDockIcon"_s, false},
            {u"fieldMapping"_s, smallestMapping.toJson()}};
}

/// The values of settings as `save` hands them to the store, by key.
Stored valuesOf(const AppSettings &settings)
{
    return {{u"apiKey"_s, settings.apiKey()},
            {u"timeTrackerDBId"_s, settings.timeTrackerDBId()},
            {u"tasksDBId"_s, settings.tasksDBId()},
            {u"pollIntervalActive"_s, settings.pollIntervalActive()},
            {u"pollIntervalIdle"_s, settings.pollIntervalIdle()},
            {u"launchAtLogin"_s, settings.launchAtLogin()},
            {u"reminderHours"_s, settings.reminderHours()},
            {u"reminderEnabled"_s, settings.reminderEnabled()},
            {u"useNotchUI"_s, settings.useNotchUI()},
            {u"quickAddKeyCode"_s, qint64{settings.quickAddKeyCode()}},
            {u"quickAddModifiers"_s, qint64{settings.quickAddModifiers()}},
            {u"showDockIcon"_s, settings.showDockIcon()},
            {u"fieldMapping"_s, settings.fieldMapping().toJson()}};
}

/// In a child process: loads one integer, which may be the end of it.
int loadInteger(const QString &key, qint64 value)
{
    const rlimit noCoreFile = {0, 0};
    ::setrlimit(RLIMIT_CORE, &noCoreFile);
    const TestSettings test(Stored{{key, value}});
    return 0;
}

} // namespace

void AppSettingsTest::aFirstRunHasTheDefaults()
{
    const TestSettings test;
    QCOMPARE(test.settings.apiKey(), u""_s);
    QCOMPARE(test.settings.timeTrackerDBId(), u""_s);
    QCOMPARE(test.settings.tasksDBId(), u""_s);
    QCOMPARE(test.settings.fieldMapping(), FieldMapping());
    QCOMPARE(test.settings.pollIntervalActive(), 30.0);
    QCOMPARE(test.settings.pollIntervalIdle(), 60.0);
    QCOMPARE(test.settings.launchAtLogin(), false);
    QCOMPARE(test.settings.reminderHours(), 8.0);
    QCOMPARE(test.settings.reminderEnabled(), false);
    QCOMPARE(test.settings.useNotchUI(), false);
    QCOMPARE(test.settings.quickAddKeyCode(), 45u);
    QCOMPARE(test.settings.quickAddModifiers(), 768u);
    QCOMPARE(test.settings.showDockIcon(), true);
    QCOMPARE(test.settings.isConfigured(), false);
}

void AppSettingsTest::storedValuesAreLoaded()
{
    const TestSettings test(allStored());
    QVERIFY(valuesOf(test.settings) == allStored());
    QCOMPARE(test.settings.isConfigured(), true);
}

void AppSettingsTest::loadingSavesNothing()
{
    const TestSettings empty;
    QVERIFY(empty.defaults.writes.isEmpty());
    const TestSettings full(allStored());
    QVERIFY(full.defaults.writes.isEmpty());
}

void AppSettingsTest::aValueOfAWrongTypeFallsBackAlone_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<UserDefaults::Value>("stored");
    using Value = UserDefaults::Value;
    QTest::newRow("a number as key") << u"apiKey"_s << Value(1.0);
    QTest::newRow("a number as first database") << u"timeTrackerDBId"_s << Value(qint64{1});
    QTest::newRow("a boolean as second database") << u"tasksDBId"_s << Value(true);
    QTest::newRow("a text as interval of a running timer") << u"pollIntervalActive"_s << Value(u"15"_s);
    QTest::newRow("a boolean as interval") << u"pollIntervalIdle"_s << Value(true);
    QTest::newRow("a text as boolean") << u"launchAtLogin"_s << Value(u"true"_s);
    QTest::newRow("bytes as hours") << u"reminderHours"_s << Value("8"_ba);
    QTest::newRow("one is not true") << u"reminderEnabled"_s << Value(qint64{1});
    QTest::newRow("a text as switch") << u"useNotchUI"_s << Value(u"YES"_s);
    QTest::newRow("a text as key code") << u"quickAddKeyCode"_s << Value(u"17"_s);
    QTest::newRow("bytes as modifiers") << u"quickAddModifiers"_s << Value("1"_ba);
    QTest::newRow("zero does not hide the Dock icon") << u"showDockIcon"_s << Value(qint64{0});
    QTest::newRow("a text as mapping") << u"fieldMapping"_s << Value(QString::fromUtf8(smallestMapping.toJson()));
}

void AppSettingsTest::aValueOfAWrongTypeFallsBackAlone()
{
    QFETCH(QString, key);
    QFETCH(UserDefaults::Value, stored);
    const Stored defaults = valuesOf(TestSettings().settings);

    Stored expected = allStored();
    expected.insert(key, defaults.value(key));
    Stored found = allStored();
    found.insert(key, stored);
    const TestSettings test(found);
    QVERIFY(valuesOf(test.settings) == expected);
}

void AppSettingsTest::aStoredIntervalOfZeroStays()
{
    const TestSettings test({{u"pollIntervalActive"_s, 0.0}, {u"pollIntervalIdle"_s, 0.0}, {u"reminderHours"_s, 0.0}});
    QCOMPARE(test.settings.pollIntervalActive(), 0.0);
    QCOMPARE(test.settings.pollIntervalIdle(), 0.0);
    QCOMPARE(test.settings.reminderHours(), 0.0);
}

void AppSettingsTest::aStoredWholeNumberIsAnInterval()
{
    const TestSettings test({{u"pollIntervalActive"_s, qint64{15}}});
    QCOMPARE(test.settings.pollIntervalActive(), 15.0);
}

void AppSettingsTest::aStoredFalseIsNotAbsent()
{
    const TestSettings test({{u"showDockIcon"_s, false}});
    QCOMPARE(test.settings.showDockIcon(), false);
}

void AppSettingsTest::aShortcutOfZeroIsBackAtTheNextStart()
{
    TestSettings first;
    first.settings.setQuickAddKeyCode(0);
    first.settings.setQuickAddModifiers(0);
    QCOMPARE(first.settings.quickAddKeyCode(), 0u);
    QCOMPARE(first.settings.quickAddModifiers(), 0u);

    const TestSettings next(first.defaults.values);
    QCOMPARE(next.settings.quickAddKeyCode(), 45u);
    QCOMPARE(next.settings.quickAddModifiers(), 768u);
}

void AppSettingsTest::keyCodeAndModifiersFallBackEachOnItsOwn()
{
    const TestSettings noKey({{u"quickAddKeyCode"_s, qint64{0}}, {u"quickAddModifiers"_s, qint64{0x1000}}});
    QCOMPARE(noKey.settings.quickAddKeyCode(), 45u);
    QCOMPARE(noKey.settings.quickAddModifiers(), 0x1000u);

    const TestSettings noModifiers({{u"quickAddKeyCode"_s, qint64{96}}, {u"quickAddModifiers"_s, qint64{0}}});
    QCOMPARE(noModifiers.settings.quickAddKeyCode(), 96u);
    QCOMPARE(noModifiers.settings.quickAddModifiers(), 768u);
}

void AppSettingsTest::theLargestKeyCodeFits()
{
    TestSettings first;
    first.settings.setQuickAddKeyCode(0xffffffff);
    const TestSettings next(first.defaults.values);
    QCOMPARE(next.settings.quickAddKeyCode(), 0xffffffff);
}

void AppSettingsTest::aStoredShortcutOutsideOf32BitsIsFatal_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<qint64>("value");
    QTest::addColumn<bool>("isFatal");
    QTest::newRow("a negative key code") << u"quickAddKeyCode"_s << qint64{-1} << true;
    QTest::newRow("a key code of 33 bits") << u"quickAddKeyCode"_s << qint64{0x100000000} << true;
    QTest::newRow("negative modifiers") << u"quickAddModifiers"_s << std::numeric_limits<qint64>::min() << true;
    QTest::newRow("modifiers of 63 bits") << u"quickAddModifiers"_s << std::numeric_limits<qint64>::max() << true;
    QTest::newRow("modifiers of 32 bits") << u"quickAddModifiers"_s << qint64{0xffffffff} << false;
}

void AppSettingsTest::aStoredShortcutOutsideOf32BitsIsFatal()
{
    QFETCH(QString, key);
    QFETCH(qint64, value);
    QFETCH(bool, isFatal);
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {u"--load-integer"_s, key, QString::number(value)});
    QVERIFY(child.waitForFinished(60000));
    if (isFatal) {
        QVERIFY(child.exitStatus() == QProcess::CrashExit || child.exitCode() != 0);
        QVERIFY2(child.readAllStandardError().contains(key.toUtf8()), "The message names the key");
    } else {
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
    }
}

void AppSettingsTest::aBrokenMappingIsReplacedAsAWhole_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("no JSON") << "Task, Start, Status"_ba;
    QTest::newRow("nothing") << ""_ba;
    QTest::newRow("a key is missing") << smallestMapping.toJson().replace("\"taskDate\"", "\"dateOfTask\"");
    QTest::newRow("a null") << smallestMapping.toJson().replace("\"taskDate\":\"\"", "\"taskDate\":null");
}

void AppSettingsTest::aBrokenMappingIsReplacedAsAWhole()
{
    QFETCH(QByteArray, stored);
    Stored values = allStored();
    values.insert(u"fieldMapping"_s, stored);
    const TestSettings test(values);
    QCOMPARE(test.settings.fieldMapping(), FieldMapping());
    QCOMPARE(test.settings.isConfigured(), false);
    QCOMPARE(test.settings.apiKey(), u"ntn_1"_s);
}

void AppSettingsTest::aFallBackBecomesPermanentWithTheNextWrite()
{
    TestSettings test({{u"pollIntervalActive"_s, u"soon"_s}});
    test.settings.setReminderEnabled(true);
    QCOMPARE(test.defaults.number(u"pollIntervalActive"_s), std::optional(30.0));
    QCOMPARE(test.defaults.integer(u"quickAddKeyCode"_s), std::optional(qint64{45}));
}

void AppSettingsTest::eachWriteSavesAllValuesInOrder()
{
    TestSettings test;
    test.settings.setTasksDBId(u"tasks"_s);
    QCOMPARE(test.defaults.writes.size(), 1);
    QStringList keys;
    Stored written;
    for (const auto &[key, value] : std::as_const(test.defaults.writes.first())) {
        keys.append(key);
        written.insert(key, value);
    }
    const QStringList expected{
        u"apiKey"_s,           u"timeTrackerDBId"_s, u"tasksDBId"_s,         u"pollIntervalActive"_s,
        u"pollIntervalIdle"_s, u"launchAtLogin"_s,   u"reminderHours"_s,     u"reminderEnabled"_s,
        u"useNotchUI"_s,       u"quickAddKeyCode"_s, u"quickAddModifiers"_s, u"showDockIcon"_s,
        u"fieldMapping"_s};
    QCOMPARE(keys, expected);
    QVERIFY(written == valuesOf(test.settings));
}

namespace {

/// One setting, as a row of a test: what sets it, what tells of it, and the value that is then stored.
struct Setting {
    void (*set)(AppSettings &);
    void (AppSettings::*changed)();
    UserDefaults::Value stored;
};

} // namespace

void AppSettingsTest::eachSetterSetsTellsAndSaves_data()
{
    QTest::addColumn<Setting>("setting");
    using A = AppSettings;
    const auto addRow = [](const char *key, const Setting &setting) { QTest::newRow(key) << setting; };
    addRow("apiKey", {[](A &s) { s.setApiKey(u"ntn"_s); }, &A::apiKeyChanged, u"ntn"_s});
    addRow("timeTrackerDBId", {[](A &s) { s.setTimeTrackerDBId(u"a"_s); }, &A::timeTrackerDBIdChanged, u"a"_s});
    addRow("tasksDBId", {[](A &s) { s.setTasksDBId(u"b"_s); }, &A::tasksDBIdChanged, u"b"_s});
    addRow("pollIntervalActive", {[](A &s) { s.setPollIntervalActive(5); }, &A::pollIntervalActiveChanged, 5.0});
    addRow("pollIntervalIdle", {[](A &s) { s.setPollIntervalIdle(5); }, &A::pollIntervalIdleChanged, 5.0});
    addRow("launchAtLogin", {[](A &s) { s.setLaunchAtLogin(true); }, &A::launchAtLoginChanged, true});
    addRow("reminderHours", {[](A &s) { s.setReminderHours(0.5); }, &A::reminderHoursChanged, 0.5});
    addRow("reminderEnabled", {[](A &s) { s.setReminderEnabled(true); }, &A::reminderEnabledChanged, true});
    addRow("useNotchUI", {[](A &s) { s.setUseNotchUI(true); }, &A::useNotchUIChanged, true});
    addRow("quickAddKeyCode", {[](A &s) { s.setQuickAddKeyCode(17); }, &A::quickAddKeyCodeChanged, qint64{17}});
    addRow("quickAddModifiers",
           {[](A &s) { s.setQuickAddModifiers(0x100); }, &A::quickAddModifiersChanged, qint64{256}});
    addRow("showDockIcon", {[](A &s) { s.setShowDockIcon(false); }, &A::showDockIconChanged, false});
    addRow("fieldMapping",
           {[](A &s) { s.setFieldMapping(smallestMapping); }, &A::fieldMappingChanged, smallestMapping.toJson()});
}

void AppSettingsTest::eachSetterSetsTellsAndSaves()
{
    QFETCH(Setting, setting);
    const QString key = QString::fromLatin1(QTest::currentDataTag());
    TestSettings test;
    const QSignalSpy changed(&test.settings, setting.changed);
    setting.set(test.settings);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(test.defaults.writes.size(), 1);
    QVERIFY(test.defaults.values.value(key) == setting.stored);

    setting.set(test.settings);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(test.defaults.writes.size(), 2);

    const TestSettings next(test.defaults.values);
    QVERIFY(valuesOf(next.settings) == valuesOf(test.settings));
}

void AppSettingsTest::theSameValueTwiceTellsOnceAndSavesTwice()
{
    TestSettings test;
    int notices = 0;
    const auto notifier = test.settings.bindableReminderHours().addNotifier([&notices] { ++notices; });
    test.settings.setReminderHours(4);
    test.settings.setReminderHours(4);
    QCOMPARE(notices, 1);
    QCOMPARE(test.defaults.writes.size(), 2);
    QVERIFY(test.defaults.writes.first() == test.defaults.writes.last());
}

void AppSettingsTest::observersSeeTheNewValueBeforeTheWriteReturns()
{
    TestSettings test;
    QString seen;
    qsizetype writes = -1;
    const auto notifier = test.settings.bindableApiKey().addNotifier([&] {
        seen = test.settings.apiKey();
        writes = test.defaults.writes.size();
    });
    test.settings.setApiKey(u"ntn"_s);
    QCOMPARE(seen, u"ntn"_s);
    QCOMPARE(writes, 0); // Told first, saved then.
}

void AppSettingsTest::observersOfOtherSettingsHearNothing()
{
    TestSettings test;
    const QSignalSpy other(&test.settings, &AppSettings::timeTrackerDBIdChanged);
    const QSignalSpy mapping(&test.settings, &AppSettings::fieldMappingChanged);
    test.settings.setTasksDBId(u"tasks"_s);
    QCOMPARE(other.count(), 0);
    QCOMPARE(mapping.count(), 0);
}

void AppSettingsTest::aWriteFromAnObserverEndsWithItsValue()
{
    TestSettings test;
    QStringList seen;
    const auto watching = test.settings.bindableApiKey().addNotifier([&] { seen.append(test.settings.apiKey()); });
    const auto trimming = test.settings.bindableApiKey().addNotifier(
        [&] { test.settings.setApiKey(test.settings.apiKey().trimmed()); });
    connect(&test.settings, &AppSettings::apiKeyChanged,
            [&] { test.settings.setApiKey(test.settings.apiKey().toLower()); });
    test.settings.setApiKey(u" NTN "_s);
    QCOMPARE(test.settings.apiKey(), u"ntn"_s);
    QCOMPARE(test.defaults.string(u"apiKey"_s), std::optional(u"ntn"_s));
    QCOMPARE(seen.last(), u"ntn"_s);
}

void AppSettingsTest::changingAMappingInPlaceAlwaysTellsAndSaves()
{
    TestSettings test;
    int notices = 0;
    const auto notifier = test.settings.bindableFieldMapping().addNotifier([&notices] { ++notices; });
    const QSignalSpy changed(&test.settings, &AppSettings::fieldMappingChanged);

    test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.taskName = u"Name"_s; });
    QCOMPARE(test.settings.fieldMapping(), FieldMapping{.taskName = u"Name"_s});
    test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.taskName = u"Name"_s; });
    QCOMPARE(notices, 2);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(test.defaults.writes.size(), 2);
    QCOMPARE(test.defaults.data(u"fieldMapping"_s), std::optional(FieldMapping{.taskName = u"Name"_s}.toJson()));

    test.settings.setFieldMapping(test.settings.fieldMapping());
    QCOMPARE(notices, 2);
    QCOMPARE(test.defaults.writes.size(), 3);
}

void AppSettingsTest::changingAMappingFromAnObserverComesToAnEnd()
{
    TestSettings test;
    connect(&test.settings, &AppSettings::fieldMappingChanged, [&] {
        test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.taskName = mapping.taskName.trimmed(); });
    });
    test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.taskName = u" Name"_s; });
    QCOMPARE(test.settings.fieldMapping().taskName, u"Name"_s);
    QCOMPARE(test.defaults.data(u"fieldMapping"_s), std::optional(FieldMapping{.taskName = u"Name"_s}.toJson()));
}

void AppSettingsTest::sixTextsMakeItConfigured()
{
    TestSettings test;
    test.settings.setApiKey(u"ntn"_s);
    test.settings.setTimeTrackerDBId(u"tracker"_s);
    test.settings.setTasksDBId(u"tasks"_s);
    QCOMPARE(test.settings.isConfigured(), false);
    test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.ttStatus = u"Status"_s; });
    test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.ttStartTime = u"Start"_s; });
    QCOMPARE(test.settings.isConfigured(), false);
    test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.ttTaskRelation = u"Task"_s; });
    QCOMPARE(test.settings.isConfigured(), true);
    QCOMPARE(test.settings.fieldMapping(), smallestMapping); // With no end time and no field of a task.
}

void AppSettingsTest::withoutAnyOneOfSixItIsNotConfigured_data()
{
    using A = AppSettings;
    QTest::addColumn<std::function<void(AppSettings &)>>("empty");
    const auto addRow = [](const char *name, const std::function<void(A &)> &empty) { QTest::newRow(name) << empty; };
    addRow("no key", [](A &s) { s.setApiKey({}); });
    addRow("no Time Tracker database", [](A &s) { s.setTimeTrackerDBId({}); });
    addRow("no Tasks database", [](A &s) { s.setTasksDBId(u""_s); });
    addRow("no status", [](A &s) { s.changeFieldMapping([](FieldMapping &mapping) { mapping.ttStatus.clear(); }); });
    addRow("no start", [](A &s) { s.changeFieldMapping([](FieldMapping &mapping) { mapping.ttStartTime.clear(); }); });
    addRow("no task relation",
           [](A &s) { s.changeFieldMapping([](FieldMapping &mapping) { mapping.ttTaskRelation.clear(); }); });
    addRow("another mapping", [](A &s) { s.setFieldMapping({}); });
}

void AppSettingsTest::withoutAnyOneOfSixItIsNotConfigured()
{
    QFETCH(std::function<void(AppSettings &)>, empty);
    TestSettings test(allStored());
    QCOMPARE(test.settings.isConfigured(), true);
    int notices = 0;
    const auto notifier = test.settings.bindableIsConfigured().addNotifier([&notices] { ++notices; });
    empty(test.settings);
    QCOMPARE(test.settings.isConfigured(), false);
    QCOMPARE(notices, 1);
}

void AppSettingsTest::isConfiguredTellsOfChangesOnly()
{
    TestSettings test(allStored());
    int notices = 0;
    const auto notifier = test.settings.bindableIsConfigured().addNotifier([&notices] { ++notices; });
    test.settings.setApiKey(u"another"_s);
    test.settings.changeFieldMapping([](FieldMapping &mapping) { mapping.ttEndTime = u"End"_s; });
    QCOMPARE(notices, 0);

    QList<bool> seen; // One who hears of the key finds the derived value up to date.
    const auto keyNotifier
        = test.settings.bindableApiKey().addNotifier([&] { seen.append(test.settings.isConfigured()); });
    test.settings.setApiKey({});
    test.settings.setApiKey(u"ntn"_s);
    QCOMPARE(seen, (QList<bool>{false, true}));
    QCOMPARE(notices, 2);
}

void AppSettingsTest::settingsSurviveARestart()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"Korvo/defaults.json"_s);
    Stored before;
    {
        JsonUserDefaults defaults(path);
        const auto settings = TestSettings::load(defaults);
        TestSettings::configure(*settings);
        settings->setPollIntervalActive(0);
        settings->setPollIntervalIdle(0.1);
        settings->setShowDockIcon(false);
        settings->setReminderEnabled(true);
        settings->setQuickAddModifiers(0xffffffff);
        before = valuesOf(*settings);
    }
    JsonUserDefaults defaults(path);
    const auto settings = TestSettings::load(defaults);
    QVERIFY(valuesOf(*settings) == before);
    QCOMPARE(settings->isConfigured(), true);
}

void AppSettingsTest::whatIsLoadedIsRegisteredAsDefaults()
{
    const TestSettings empty;
    QVERIFY(empty.defaults.registered == valuesOf(empty.settings));
    QVERIFY(empty.defaults.values.isEmpty());
    const TestSettings full(allStored());
    QVERIFY(full.defaults.registered == allStored());
}

void AppSettingsTest::twoProcessesThatBeginTogetherKeepEachOthersSettings_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no file") << QByteArray();
    QTest::newRow("a file without these") << R"({"showDockIcon": false})"_ba;
    QTest::newRow("a file with one of a wrong type") << R"({"apiKey": 1, "reminderHours": "8"})"_ba;
}

void AppSettingsTest::twoProcessesThatBeginTogetherKeepEachOthersSettings()
{
    QFETCH(QByteArray, content);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"defaults.json"_s);
    if (!content.isNull()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    JsonUserDefaults oneDefaults(path);
    JsonUserDefaults otherDefaults(path);
    const auto one = TestSettings::load(oneDefaults);
    const auto other = TestSettings::load(otherDefaults);
    one->setApiKey(u"ntn"_s);
    other->setReminderHours(4);
    other->setTasksDBId(u"tasks"_s);
    one->setTimeTrackerDBId(u"tracker"_s);

    JsonUserDefaults nextDefaults(path);
    const auto next = TestSettings::load(nextDefaults);
    QCOMPARE(next->apiKey(), u"ntn"_s);
    QCOMPARE(next->reminderHours(), 4.0);
    QCOMPARE(next->tasksDBId(), u"tasks"_s);
    QCOMPARE(next->timeTrackerDBId(), u"tracker"_s);
    const auto expected = valuesOf(*next);
    for (auto it = expected.begin(); it != expected.end(); ++it)
        QVERIFY2(nextDefaults.contains(it.key()), qPrintable(it.key())); // Each save writes all that is not there.
}

void AppSettingsTest::thereIsOneSharedObject()
{
    static FakeUserDefaults defaults({{u"apiKey"_s, u"ntn_shared"_s}}); // As long as the process.
    UserDefaults::setStandard(&defaults);
    QCOMPARE(AppSettings::shared().apiKey(), u"ntn_shared"_s);
    AppSettings::shared().setTasksDBId(u"tasks"_s);
    QCOMPARE(AppSettings::shared().tasksDBId(), u"tasks"_s);
    QCOMPARE(defaults.string(u"tasksDBId"_s), std::optional(u"tasks"_s));
}

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments.at(1) == "--load-integer"_L1)
        return loadInteger(arguments.at(2), arguments.at(3).toLongLong());
    AppSettingsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "AppSettingsTest.moc"
