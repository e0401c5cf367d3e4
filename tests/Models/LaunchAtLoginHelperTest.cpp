#include "Models/LaunchAtLoginHelper.h"

#include "Fakes/FakeLoginItem.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/OutputOf.h"
#include "Fakes/TestSettings.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

using Status = LoginItem::Status;

Q_DECLARE_METATYPE(korvo::LoginItem::Status)

namespace {

/// Notes what the store holds at the moment it is asked.
class StoreWatchingLoginItem final : public LoginItem {
public:
    explicit StoreWatchingLoginItem(const UserDefaults &defaults) : m_defaults(defaults) { }

    std::optional<QString> registerItem() override
    {
        storedAtRegister = m_defaults.boolean(u"launchAtLogin"_s);
        return std::nullopt;
    }
    std::optional<QString> unregisterItem() override { return std::nullopt; }
    Status status() const override { return Status::notRegistered; }

    std::optional<bool> storedAtRegister;

private:
    const UserDefaults &m_defaults;
};

} // namespace

class LaunchAtLoginHelperTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void turningTheSettingOnRegistersAndOffUnregisters();
    void settingThePresentValueCallsOnceMore_data();
    void settingThePresentValueCallsOnceMore();
    void turningItOnTwiceRegistersTwiceAndAFailureOfTheSecondShowsOnlyOnStandardOutput();
    void aRefusingServiceLeavesTheSettingOnAlsoAfterARestart();
    void aRefusalToUnregisterIsPrintedToo();
    void successSaysNothing();
    void theSettingIsStoredBeforeTheItemIsAsked();
    void anObserverThatTurnsItBackHasTheLastWord();
    void loadingDoesNotTouchTheLoginItem();
    void otherSettingsDoNotTouchTheLoginItem();
    void withoutALoginItemNothingHappens();
    void isEnabledOnlyIfTheDesktopSaysSo_data();
    void isEnabledOnlyIfTheDesktopSaysSo();

private:
    AppSettings &settings() { return m_settings->settings; }

    std::unique_ptr<FakeLoginItem> m_item;
    std::unique_ptr<FakeSystemLog> m_log;
    std::unique_ptr<TestSettings> m_settings;
};

void LaunchAtLoginHelperTest::init()
{
    m_item = std::make_unique<FakeLoginItem>();
    m_log = std::make_unique<FakeSystemLog>();
    m_settings = std::make_unique<TestSettings>();
    LoginItem::setShared(m_item.get());
}

void LaunchAtLoginHelperTest::cleanup()
{
    LoginItem::setShared(nullptr);
    m_settings.reset();
    m_log.reset();
    m_item.reset();
}

void LaunchAtLoginHelperTest::turningTheSettingOnRegistersAndOffUnregisters()
{
    settings().setLaunchAtLogin(true);
    QCOMPARE(m_item->calls, QStringList({u"register"_s}));
    settings().setLaunchAtLogin(false);
    QCOMPARE(m_item->calls, QStringList({u"register"_s, u"unregister"_s}));
}

void LaunchAtLoginHelperTest::settingThePresentValueCallsOnceMore_data()
{
    QTest::addColumn<bool>("value");
    QTest::addColumn<QString>("call");
    QTest::newRow("on") << true << u"register"_s;
    QTest::newRow("off") << false << u"unregister"_s;
}

void LaunchAtLoginHelperTest::settingThePresentValueCallsOnceMore()
{
    QFETCH(bool, value);
    QFETCH(QString, call);
    settings().setLaunchAtLogin(value);
    m_item->calls.clear();
    settings().setLaunchAtLogin(value);
    QCOMPARE(m_item->calls, QStringList({call}));
}

void LaunchAtLoginHelperTest::turningItOnTwiceRegistersTwiceAndAFailureOfTheSecondShowsOnlyOnStandardOutput()
{
    const auto first = outputOf([this] { settings().setLaunchAtLogin(true); });
    m_item->refusal = u"Operation not permitted: Käfer"_s;
    const auto second = outputOf([this] { settings().setLaunchAtLogin(true); });
    QCOMPARE(first, QByteArray());
    QCOMPARE(second, "Launch at login error: Operation not permitted: Käfer\n"_ba);
    QCOMPARE(m_item->calls, QStringList({u"register"_s, u"register"_s}));
    QCOMPARE(m_log->lines, QStringList());
    QVERIFY(settings().launchAtLogin());
}

void LaunchAtLoginHelperTest::aRefusingServiceLeavesTheSettingOnAlsoAfterARestart()
{
    m_item->refusal = u"No"_s;
    outputOf([this] { settings().setLaunchAtLogin(true); });
    QVERIFY(settings().launchAtLogin());
    QVERIFY(!LaunchAtLoginHelper::isEnabled());
    QVERIFY(TestSettings::load(m_settings->defaults)->launchAtLogin());
}

void LaunchAtLoginHelperTest::aRefusalToUnregisterIsPrintedToo()
{
    m_item->refusal = u"No"_s;
    const auto output = outputOf([this] { settings().setLaunchAtLogin(false); });
    QCOMPARE(output, "Launch at login error: No\n"_ba);
    QVERIFY(!settings().launchAtLogin());
}

void LaunchAtLoginHelperTest::successSaysNothing()
{
    const auto output = outputOf([this] {
        settings().setLaunchAtLogin(true);
        settings().setLaunchAtLogin(false);
    });
    QCOMPARE(output, QByteArray());
    QCOMPARE(m_log->lines, QStringList());
}

void LaunchAtLoginHelperTest::theSettingIsStoredBeforeTheItemIsAsked()
{
    StoreWatchingLoginItem item(m_settings->defaults);
    LoginItem::setShared(&item);
    settings().setLaunchAtLogin(true);
    QCOMPARE(item.storedAtRegister, std::optional(true));
}

void LaunchAtLoginHelperTest::anObserverThatTurnsItBackHasTheLastWord()
{
    connect(&settings(), &AppSettings::launchAtLoginChanged, this, [this] {
        if (settings().launchAtLogin())
            settings().setLaunchAtLogin(false);
    });
    settings().setLaunchAtLogin(true);
    QVERIFY(!settings().launchAtLogin());
    QCOMPARE(m_item->calls.last(), u"unregister"_s);
}

void LaunchAtLoginHelperTest::loadingDoesNotTouchTheLoginItem()
{
    const TestSettings loaded({{u"launchAtLogin"_s, true}});
    QVERIFY(loaded.settings.launchAtLogin());
    QCOMPARE(m_item->calls, QStringList());
}

void LaunchAtLoginHelperTest::otherSettingsDoNotTouchTheLoginItem()
{
    TestSettings::configure(settings());
    settings().setShowDockIcon(false);
    QCOMPARE(m_item->calls, QStringList());
}

void LaunchAtLoginHelperTest::withoutALoginItemNothingHappens()
{
    LoginItem::setShared(nullptr);
    const auto output = outputOf([this] { settings().setLaunchAtLogin(true); });
    QCOMPARE(output, QByteArray());
    QVERIFY(settings().launchAtLogin());
    QVERIFY(!LaunchAtLoginHelper::isEnabled());
}

void LaunchAtLoginHelperTest::isEnabledOnlyIfTheDesktopSaysSo_data()
{
    QTest::addColumn<Status>("status");
    QTest::addColumn<bool>("isEnabled");
    QTest::newRow("enabled") << Status::enabled << true;
    QTest::newRow("not registered") << Status::notRegistered << false;
    QTest::newRow("switched off by the user") << Status::disabled << false;
    QTest::newRow("of a program that isn't there") << Status::notFound << false;
}

void LaunchAtLoginHelperTest::isEnabledOnlyIfTheDesktopSaysSo()
{
    QFETCH(Status, status);
    m_item->itemStatus = status;
    QTEST(LaunchAtLoginHelper::isEnabled(), "isEnabled");
}

QTEST_GUILESS_MAIN(LaunchAtLoginHelperTest)
#include "LaunchAtLoginHelperTest.moc"
