#include "Platform/Freedesktop/TrayStatusItem.h"

#include "TrayOnScreen.h"

#include <QCursor>
#include <QSignalSpy>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

const QColor green(0x10, 0xd0, 0x20);
const QColor blue(0x10, 0x20, 0xd0);
constexpr int patience = 15000;

/// How the tray of this session behaves.
struct Kind {
    bool hasLabel = true;
    bool hasClick = true; ///< Else a click opens the menu.
    QString program;      ///< What to end and start anew.
};

Kind kindOfTray()
{
    const QString tray = qEnvironmentVariable("DESKTOP_TRAY");
    if (tray == "mate"_L1)
        return {true, true, u"mate-panel"_s};
    if (tray == "xfce"_L1)
        return {false, true, u"xfce4-panel"_s};
    if (tray == "ayatana"_L1)
        return {true, false, u"ayatana-indicat"_s};
    return {true, true, u"trayer"_s};
}

} // namespace

class RealTrayTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void thePictureIsOnTheBar();
    void aNewPictureReplacesIt();
    void theLabelStandsBesideIt();
    void aClickOpensWhatItShould();
    void theTrayGoesAndComesBack();

private:
    const Kind m_kind = kindOfTray();
    std::unique_ptr<TrayStatusItem> m_item;
    bool m_hasOpened = false;
};

void RealTrayTest::init()
{
    QCursor::setPos(400, 400); // Under the pointer some bars show pictures in other colours.
    m_hasOpened = false;
    m_item = std::make_unique<TrayStatusItem>();
    m_item->setImage(coloredImage(green));
    m_item->setToolTip(u"Write"_s, u"Project"_s);
    m_item->setMenu({{u"Open Korvo"_s, true, [this] { m_hasOpened = true; }}, {}, {u"Stop"_s, false, {}}});
    QTRY_VERIFY_WITH_TIMEOUT(m_item->isShown(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
}

void RealTrayTest::cleanup()
{
    m_item.reset();
    QTRY_VERIFY_WITH_TIMEOUT(findOnScreen(green).isEmpty(), patience);
}

void RealTrayTest::thePictureIsOnTheBar()
{
    const QRect place = findOnScreen(green);
    QVERIFY(place.width() >= 16 && place.width() <= 32);
    QVERIFY(place.height() >= 16 && place.height() <= 32);
    QVERIFY(place.bottom() < 32);
}

void RealTrayTest::aNewPictureReplacesIt()
{
    for (const QColor &color : {blue, green, blue}) {
        m_item->setImage(coloredImage(color));
        QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(color).isEmpty(), patience);
    }
    QVERIFY(findOnScreen(green).isEmpty());
}

void RealTrayTest::theLabelStandsBesideIt()
{
    QVERIFY(!hasTextBeside(findOnScreen(green)));
    m_item->setTitle(u" 0:12:34"_s);
    m_item->setImage(coloredImage(blue));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(blue).isEmpty(), patience);
    if (m_kind.hasLabel)
        QTRY_VERIFY_WITH_TIMEOUT(hasTextBeside(findOnScreen(blue)), patience);
    else
        QVERIFY(!hasTextBeside(findOnScreen(blue)));
}

void RealTrayTest::aClickOpensWhatItShould()
{
    QSignalSpy activated(m_item.get(), &StatusItem::activated);
    const QRect place = findOnScreen(green);
    QVERIFY(clickAt(place.center()));
    if (m_kind.hasClick) {
        QTRY_COMPARE_WITH_TIMEOUT(activated.count(), 1, patience);
        const QRect button = activated[0][0].toRect();
        QVERIFY(button.contains(place.center()));
        QVERIFY(button.top() <= 1); // The tray of older kind leaves a line.
        QVERIFY(button.height() >= place.height() && button.height() <= 32);
        QVERIFY(!m_hasOpened);
    } else {
        // The desktop's menu has the keyboard once it is open.
        QTRY_VERIFY_WITH_TIMEOUT(
            pressKeys({u"Down"_s, u"Return"_s}) && QTest::qWaitFor([this] { return m_hasOpened; }, 500), patience);
        QCOMPARE(activated.count(), 0);
    }
}

void RealTrayTest::theTrayGoesAndComesBack()
{
    DesktopProgram panel(m_kind.program);
    QVERIFY(panel.isFound());
    QVERIFY(panel.end());
    QTRY_VERIFY_WITH_TIMEOUT(!m_item->isShown(), patience);
    m_item->setImage(coloredImage(blue));
    QVERIFY(panel.startAnew());
    QTRY_VERIFY_WITH_TIMEOUT(m_item->isShown(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(blue).isEmpty(), patience);
}

QTEST_MAIN(RealTrayTest)
#include "RealTrayTest.moc"
