#include "Platform/Freedesktop/XEmbedStatusItem.h"

#include "TrayOnScreen.h"

#include <QApplication>
#include <QPainter>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

const QColor green(0x10, 0xd0, 0x20);
constexpr int patience = 10000;

} // namespace

class XEmbedStatusItemTest : public QObject {
    Q_OBJECT
private slots:
    void theTitleStandsBesideThePicture();
    void equalValuesPaintNothing();
    void aPictureIsPaintedOnceAChange();
    void theToolTipHasAllOfIt();
    void toolTipReadsAsItStands();
    void aTemplateReadsOnTheBar();
    void twoQuickClicksAreTwo();
    void theMenuOpensAndRuns();
    void anEmptyItemShowsNothing();
};

/// The icon's own window.
static QWidget *iconWindow()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "QSystemTrayIconSys"_L1)
            return window;
    }
    return nullptr;
}

void XEmbedStatusItemTest::theTitleStandsBesideThePicture()
{
    XEmbedStatusItem item;
    item.setImage(coloredImage(green));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    const QRect alone = findOnScreen(green);
    item.setTitle(u" 0:12:34"_s);
    QTRY_VERIFY_WITH_TIMEOUT(findOnScreen(green).left() < alone.left() - 30, patience);
    item.setTitle({});
    QTRY_COMPARE_WITH_TIMEOUT(findOnScreen(green), alone, patience);
}

void XEmbedStatusItemTest::equalValuesPaintNothing()
{
    int drawings = 0;
    const StatusImage image{u"a"_s, u""_s, QSizeF(18, 18), [&drawings](QPainter &painter, const QSizeF &) {
                                ++drawings;
                                painter.fillRect(0, 0, 18, 18, green);
                            }};
    XEmbedStatusItem item;
    item.setImage(image);
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    QTest::qWait(600); // Until the tray has settled and the item looked what is behind it.
    drawings = 0;
    for (int second = 0; second < 5; ++second) {
        item.setImage(image);
        item.setTitle({});
        item.setToolTip(u"Write"_s, u"Project"_s);
        QCoreApplication::processEvents();
    }
    QCOMPARE(drawings, 0);
}

void XEmbedStatusItemTest::aPictureIsPaintedOnceAChange()
{
    const QColor blue(0x10, 0x20, 0xd0);
    XEmbedStatusItem item;
    item.setImage(coloredImage(green));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    item.setImage(coloredImage(blue));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(blue).isEmpty(), patience);
    QVERIFY(findOnScreen(green).isEmpty());
}

void XEmbedStatusItemTest::theToolTipHasAllOfIt()
{
    XEmbedStatusItem item;
    item.setImage(coloredImage(green));
    item.setToolTip(u"Write"_s, u"Project"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    QVERIFY(iconWindow());
    QVERIFY(iconWindow()->toolTip().contains(u"<b>Write</b><br>Project"_s));
}

void XEmbedStatusItemTest::toolTipReadsAsItStands()
{
    XEmbedStatusItem item;
    item.setImage(coloredImage(green));
    item.setToolTip(u"R & <D>"_s, u"<i>"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    QVERIFY(iconWindow()->toolTip().contains(u"<b>R &amp; &lt;D&gt;</b><br>&lt;i&gt;"_s));
    item.setToolTip({}, {});
    QCOMPARE(iconWindow()->toolTip(), QString());
}

void XEmbedStatusItemTest::aTemplateReadsOnTheBar()
{
    StatusImage image = coloredImage(green);
    image.isTemplate = true;
    XEmbedStatusItem item;
    item.setImage(image);
    QTRY_VERIFY_WITH_TIMEOUT(item.isShown(), patience);
    // The tray of this desktop is light, so the ink is dark.
    QTRY_VERIFY_WITH_TIMEOUT(findOnScreen(QColor(0x30, 0x30, 0x30)).width() > 10, patience);
}

void XEmbedStatusItemTest::twoQuickClicksAreTwo()
{
    XEmbedStatusItem item;
    item.setImage(coloredImage(green));
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    QSignalSpy activated(&item, &StatusItem::activated);
    const QPoint place = findOnScreen(green).center();
    QVERIFY(clickAt(place));
    QVERIFY(clickAt(place));
    QTRY_COMPARE_WITH_TIMEOUT(activated.count(), 2, patience);
    QVERIFY(activated[0][0].toRect().contains(place));
}

void XEmbedStatusItemTest::theMenuOpensAndRuns()
{
    bool hasRun = false;
    XEmbedStatusItem item;
    item.setImage(coloredImage(green));
    item.setMenu({{u"Open"_s, true, [&] { hasRun = true; }}, {}, {u"Stop"_s, false, {}}});
    QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
    QVERIFY(clickAt(findOnScreen(green).center(), 3));
    QTRY_VERIFY_WITH_TIMEOUT(QApplication::activePopupWidget(), patience);
    QVERIFY(pressKeys({u"Down"_s, u"Return"_s}));
    QTRY_VERIFY_WITH_TIMEOUT(hasRun, patience);
}

void XEmbedStatusItemTest::anEmptyItemShowsNothing()
{
    XEmbedStatusItem item;
    QTRY_VERIFY_WITH_TIMEOUT(item.isShown(), patience);
    QTRY_VERIFY_WITH_TIMEOUT(iconWindow() && iconWindow()->isVisible(), patience);
}

QTEST_MAIN(XEmbedStatusItemTest)
#include "XEmbedStatusItemTest.moc"
