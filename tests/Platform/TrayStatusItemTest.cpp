#include "Platform/Freedesktop/TrayStatusItem.h"

#include "FakeTray.h"
#include "Fakes/FakeStatusItem.h"

#include <QPainter>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

class TrayStatusItemTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void withoutAWatcherItFallsBack();
    void withAWatcherItDoesNotFallBack();
    void aWatcherWithoutAHostIsNone();
    void aWatcherThatRefusesKeepsItWaiting();
    void theFallBackGetsWhatWasSet();
    void theFallBackGetsChangesOnly();
    void clicksComeFromEither();
    void aWatcherThatComesTakesOver();
    void aWatcherThatGoesGivesWay();
    void aTrayThatIsStartedAnewIsWaitedFor();
    void itIsShownWhereverATrayIs();

private:
    void make()
    {
        m_item = std::make_unique<TrayStatusItem>([this] {
            auto fallback = std::make_unique<FakeStatusItem>();
            fallback->setShown(m_isOtherTrayThere);
            m_fallback = fallback.get();
            ++m_fallbackCount;
            return fallback;
        });
    }

    std::unique_ptr<FakeTray> m_tray;
    std::unique_ptr<TrayStatusItem> m_item;
    QPointer<FakeStatusItem> m_fallback;
    int m_fallbackCount = 0;
    bool m_isOtherTrayThere = true;
};

void TrayStatusItemTest::init()
{
    m_fallbackCount = 0;
    m_isOtherTrayThere = true;
}

void TrayStatusItemTest::cleanup()
{
    m_item.reset();
    m_tray.reset();
}

void TrayStatusItemTest::withoutAWatcherItFallsBack()
{
    make();
    QTRY_VERIFY(m_fallback);
    QVERIFY(m_item->isShown());
}

void TrayStatusItemTest::withAWatcherItDoesNotFallBack()
{
    m_tray = std::make_unique<FakeTray>();
    make();
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(m_fallbackCount, 0);
}

void TrayStatusItemTest::aWatcherWithoutAHostIsNone()
{
    m_tray = std::make_unique<FakeTray>();
    m_tray->hasHost = false;
    make();
    QTRY_VERIFY(m_fallback);
    m_tray->setHost(true);
    QTRY_VERIFY(!m_fallback);
    QVERIFY(m_item->isShown());
}

void TrayStatusItemTest::aWatcherThatRefusesKeepsItWaiting()
{
    m_tray = std::make_unique<FakeTray>();
    m_tray->isRefusing = true;
    make();
    QTRY_COMPARE(m_tray->registered.size(), 1);
    m_tray->releaseWatcherName();
    QTRY_VERIFY(m_fallback); // It was never shown there, so there is nothing to wait for.
}

void TrayStatusItemTest::theFallBackGetsWhatWasSet()
{
    make();
    m_item->setImage({u"a"_s, u"A"_s, QSizeF(18, 18), {}});
    m_item->setTitle(u" 0:00:01"_s);
    m_item->setToolTip(u"Write"_s, u"Project"_s);
    m_item->setMenu({{u"Open"_s, true, {}}});
    QTRY_VERIFY(m_fallback);
    QCOMPARE(m_fallback->image.key, u"a"_s);
    QCOMPARE(m_fallback->title, u" 0:00:01"_s);
    QCOMPARE(m_fallback->headline, u"Write"_s);
    QCOMPARE(m_fallback->text, u"Project"_s);
    QCOMPARE(m_fallback->menu.size(), 1);
}

void TrayStatusItemTest::theFallBackGetsChangesOnly()
{
    make();
    QTRY_VERIFY(m_fallback);
    m_fallback->imageKeys.clear();
    m_fallback->titles.clear();
    for (const QString &key : {u"a"_s, u"a"_s, u"b"_s, u"b"_s}) {
        m_item->setImage({key, u""_s, QSizeF(18, 18), {}});
        m_item->setTitle(key);
    }
    QCOMPARE(m_fallback->imageKeys, (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(m_fallback->titles, (QStringList{u"a"_s, u"b"_s}));
}

void TrayStatusItemTest::clicksComeFromEither()
{
    make();
    QTRY_VERIFY(m_fallback);
    QSignalSpy activated(m_item.get(), &StatusItem::activated);
    m_fallback->place = QRect(1, 2, 3, 4);
    m_fallback->click();
    QCOMPARE(activated.count(), 1);
    QCOMPARE(activated[0][0].toRect(), QRect(1, 2, 3, 4));

    m_tray = std::make_unique<FakeTray>();
    QTRY_VERIFY(!m_fallback);
    m_tray->call(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s, {1, 1});
    QTRY_COMPARE(activated.count(), 2);
}

void TrayStatusItemTest::aWatcherThatComesTakesOver()
{
    make();
    m_item->setTitle(u" 0:00:01"_s);
    QTRY_VERIFY(m_fallback);
    const QSignalSpy shown(m_item.get(), &StatusItem::isShownChanged);
    m_tray = std::make_unique<FakeTray>();
    QTRY_VERIFY(!m_fallback);
    QVERIFY(m_item->isShown());
    QCOMPARE(shown.count(), 0); // Never out of sight.
    QCOMPARE(m_tray->itemProperty(u"XAyatanaLabel"_s).toString(), u" 0:00:01"_s);
}

void TrayStatusItemTest::aWatcherThatGoesGivesWay()
{
    withAWatcherItDoesNotFallBack();
    m_tray->releaseWatcherName();
    QTRY_VERIFY(!m_item->isShown());
    QTRY_VERIFY(m_fallback);
    QVERIFY(m_item->isShown());
}

void TrayStatusItemTest::aTrayThatIsStartedAnewIsWaitedFor()
{
    withAWatcherItDoesNotFallBack();
    m_tray->releaseWatcherName();
    QTRY_VERIFY(!m_item->isShown());
    m_tray->ownWatcherName();
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(m_fallbackCount, 0);
}

void TrayStatusItemTest::itIsShownWhereverATrayIs()
{
    m_isOtherTrayThere = false;
    make();
    QTRY_VERIFY(m_fallback);
    QVERIFY(!m_item->isShown());
    const QSignalSpy shown(m_item.get(), &StatusItem::isShownChanged);
    m_fallback->setShown(true);
    QVERIFY(m_item->isShown());
    m_fallback->setShown(false);
    QVERIFY(!m_item->isShown());
    m_tray = std::make_unique<FakeTray>();
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(shown.count(), 3);
}

QTEST_MAIN(TrayStatusItemTest)
#include "TrayStatusItemTest.moc"
