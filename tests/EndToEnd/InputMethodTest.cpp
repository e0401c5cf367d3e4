#include "EndToEnd/AttachedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Platform/XDesktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = AttachedKorvo::patience;
constexpr auto busName = "input method";

} // namespace

/// The quick-add line of a user whose keys go through an input method: each key is answered a little later, by another
/// program.
class InputMethodTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void aTypedNameBecomesTheRunningTask();
    void keysStruckRightBehindTheShortcutAreNotLost();
    void aDeadKeyAndItsLetterMakeOneCharacter();
    void escapeClosesThePanel();

private:
    bool startInputMethod();
    bool openPanel()
    {
        return typeKeys(u"super+shift+n"_s) && QTest::qWaitFor([this] { return !m_other->hasFocus(); }, patience);
    }
    /// Whether the keys of the field that has the keyboard go through the input method.
    static bool isInUse()
    {
        auto call = QDBusMessage::createMethodCall(u"org.freedesktop.IBus"_s, u"/org/freedesktop/IBus"_s,
                                                   u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
        call << u"org.freedesktop.IBus"_s << u"CurrentInputContext"_s;
        const QDBusReply<QVariant> reply = QDBusConnection(QString::fromLatin1(busName)).call(call);
        const auto field = reply.value().value<QDBusObjectPath>().path();
        return field.contains(u"InputContext_"_s) && !field.endsWith(u"_1"_s); // The first one stands for no program.
    }

    std::unique_ptr<AttachedKorvo> m_world;
    std::unique_ptr<XClient> m_other;
    QProcess m_inputMethod;
};

void InputMethodTest::init()
{
    m_world = std::make_unique<AttachedKorvo>();
    m_other = std::make_unique<XClient>();
    QVERIFY(m_world->startWorkspace());
    QVERIFY(startInputMethod());
    qputenv("QT_IM_MODULE", "ibus");
    QVERIFY(m_world->startKorvo());
    QTRY_VERIFY_WITH_TIMEOUT(m_world->seconds() > 0, patience); // The sample workspace begins with a running timer.
    QVERIFY(m_other->showFocusedWindow({60, 500, 300, 200}));
}

void InputMethodTest::cleanup()
{
    const auto item = m_world->item();
    m_other.reset();
    QDBusConnection::disconnectFromBus(QString::fromLatin1(busName));
    m_inputMethod.terminate();
    m_inputMethod.waitForFinished();
    m_world.reset();
    QTRY_VERIFY(trayItemProperty(item, u"Id"_s).isEmpty()); // The tray has seen it go.
}

/// With an engine that composes characters and leaves all other keys as they are.
bool InputMethodTest::startInputMethod()
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, m_world->filePath({})); // Where Korvo looks for its address.
    m_inputMethod.setProcessEnvironment(environment);
    m_inputMethod.setProcessChannelMode(QProcess::ForwardedChannels);
    m_inputMethod.start(u"ibus-daemon"_s,
                        {u"--panel"_s, u"disable"_s, u"--emoji-extension"_s, u"disable"_s, u"--config"_s, u"disable"_s,
                         u"--cache"_s, u"none"_s});
    const auto address = [this] {
        const QDir folder(m_world->filePath(u"ibus/bus"_s));
        for (const auto &name : folder.entryList(QDir::Files)) {
            QFile file(folder.filePath(name));
            if (!file.open(QIODevice::ReadOnly))
                continue;
            for (const auto &line : file.readAll().split('\n')) {
                if (line.startsWith("IBUS_ADDRESS="))
                    return QString::fromUtf8(line.mid(13));
            }
        }
        return QString();
    };
    if (!QTest::qWaitFor([&] { return !address().isEmpty(); }, patience))
        return false;
    const auto bus = QDBusConnection::connectToBus(address(), QString::fromLatin1(busName));
    auto call = QDBusMessage::createMethodCall(u"org.freedesktop.IBus"_s, u"/org/freedesktop/IBus"_s,
                                               u"org.freedesktop.IBus"_s, u"SetGlobalEngine"_s);
    call << u"xkb:us::eng"_s;
    return bus.call(call).type() == QDBusMessage::ReplyMessage;
}

void InputMethodTest::aTypedNameBecomesTheRunningTask()
{
    QVERIFY(openPanel());
    QTRY_VERIFY(isInUse());
    QVERIFY(run(u"xdotool"_s, {u"type"_s, u"--delay"_s, u"20"_s, u" Call the framer "_s}));
    QVERIFY(typeKeys(u"Return"_s));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"Call the framer"_s, patience);
    QTRY_VERIFY(m_other->hasFocus());
}

void InputMethodTest::keysStruckRightBehindTheShortcutAreNotLost()
{
    QVERIFY(openPanel());
    QVERIFY(run(u"xdotool"_s, {u"key"_s, u"k"_s, u"a"_s, u"p"_s, u"u"_s, u"t"_s, u"Return"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"kaput"_s, patience);
}

void InputMethodTest::aDeadKeyAndItsLetterMakeOneCharacter()
{
    QVERIFY(setLayout(u"fr"_s));
    QVERIFY(openPanel());
    QTRY_VERIFY(isInUse());
    QVERIFY(run(u"xdotool"_s, {u"key"_s, u"f"_s, u"dead_circumflex"_s, u"e"_s, u"t"_s, u"e"_s, u"Return"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->runningTask(), u"fête"_s, patience);
    QVERIFY(setLayout(u"us"_s));
}

void InputMethodTest::escapeClosesThePanel()
{
    const auto before = m_world->runningTask();
    QVERIFY(openPanel());
    QTRY_VERIFY(isInUse());
    QVERIFY(run(u"xdotool"_s, {u"key"_s, u"k"_s, u"Escape"_s}));
    QTRY_VERIFY(m_other->hasFocus());
    QCOMPARE(m_world->runningTask(), before);
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    InputMethodTest test;
    return runWithSystemClock(test, argc, argv);
}

#include "InputMethodTest.moc"
