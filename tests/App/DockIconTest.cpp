#include "LaunchedApp.h"

#include "Fakes/ProportionalFont.h"
#include "Views/DockIcon.h"
#include "Views/Theme.h"

#include <QImage>
#include <QPainter>

#include <numbers>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

/// The tile at 128 by 128 pixels.
QImage render(const DockTileContent &tile)
{
    QImage picture(tile.size.toSize(), QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    tile.draw(painter, tile.size);
    return picture;
}

/// The colour on the ring, `degrees` clockwise from twelve o'clock.
QColor ringColor(const QImage &picture, double degrees)
{
    const double radians = degrees * std::numbers::pi / 180;
    return picture.pixelColor(int(64 + 38 * std::sin(radians)), int(64 - 38 * std::cos(radians)));
}

} // namespace

class DockIconTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_app.reset(); }

    void tileTellsTheTime_data();
    void tileTellsTheTime();
    void theTileIsDrawnOnceAMinute();
    void stoppingPutsThePlainIconBackOnce();
    void anEntryThatDoesNotRunLeavesThePlainIcon();
    void withoutADockIconNothingIsDoneAtAll();
    void switchingItOnWithATimerRunningShowsThePlainIconUntilTheMinuteChanges();
    void switchingItOffTakesTheTileAway();
    void switchedOffAndOnAgainTheTileIsDrawnAnew();
    void aMinuteInTheFutureShowsNoChangeFromThePlainState();
    void theEndPutsThePlainIconBack();
    void tileLooksAsItShould();
    void theTextIsBoldAndWhite();
    void anArcOfNoTimeIsAShortStroke();
    void theTextFitsIntoTheRing_data();
    void theTextFitsIntoTheRing();
    void allDigitsTakeTheSameRoom();
    void aClickInTheDockOpensThePanel();

private:
    LaunchedApp &app() { return *m_app; }
    FakeDockTile &dock() { return app().dock(); }
    /// What the picture of such a text looks like.
    static QImage tileWith(const QString &text, double elapsed, const QColor &color);

    std::unique_ptr<LaunchedApp> m_app;
};

void DockIconTest::init()
{
    m_app = std::make_unique<LaunchedApp>();
    app().settings.settings.setShowDockIcon(true);
}

QImage DockIconTest::tileWith(const QString &text, double elapsed, const QColor &color)
{
    return render({.size = dockIconSize, .draw = [&](QPainter &painter, const QSizeF &size) {
                       drawDockIcon(painter, size, text, color, elapsed);
                   }});
}

void DockIconTest::tileTellsTheTime_data()
{
    QTest::addColumn<double>("elapsed");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("count");
    QTest::newRow("59.9 seconds are 00") << 59.9 << u"00"_s << theme::systemGreen << 0;
    QTest::newRow("60 seconds are 01") << 60.0 << u"01"_s << theme::systemGreen << 1;
    QTest::newRow("7 minutes are 07") << 420.0 << u"07"_s << theme::systemGreen << 7;
    QTest::newRow("99 minutes are 99") << 5940.0 << u"99"_s << theme::systemCyan << 99;
    QTest::newRow("100 minutes are 1h") << 6000.0 << u"1h"_s << theme::systemCyan << 100;
    QTest::newRow("119 minutes are 1h") << 7140.0 << u"1h"_s << theme::systemCyan << 119;
    QTest::newRow("120 minutes are 2h") << 7200.0 << u"2h"_s << theme::systemOrange << 120;
    QTest::newRow("a day is 24h") << 86400.0 << u"24h"_s << theme::systemRed << 1440;
    QTest::newRow("less than a minute in the future is 00") << -30.0 << u"00"_s << theme::systemGreen << 0;
    QTest::newRow("a start in the year 9999") << -251606961000.0 << u"-4193449350"_s << theme::systemGreen << 0;
    QTest::newRow("two minutes in the future are printed with their sign")
        << -120.0 << u"-2"_s << theme::systemGreen << 0;
}

void DockIconTest::tileTellsTheTime()
{
    QFETCH(const double, elapsed);
    QFETCH(const QString, text);
    QFETCH(const QColor, color);
    app().launchWithTimer(elapsed);
    QTRY_VERIFY(dock().content);
    QCOMPARE(render(*dock().content), tileWith(text, elapsed, color));
    QTEST(dock().content->minutes, "count");
}

void DockIconTest::theTileIsDrawnOnceAMinute()
{
    app().launchWithTimer(600);
    QTRY_VERIFY(dock().content);
    dock().calls.clear();
    const int ticks = app().item().titles.size();
    QTRY_VERIFY(app().item().titles.size() >= ticks + 2);
    QCOMPARE(dock().calls, QStringList());
    app().clock().setNow(app().clock().now().addSecs(60));
    QTRY_COMPARE(dock().calls, QStringList(u"content"_s));
    QCOMPARE(dock().content->minutes, 11);
}

void DockIconTest::stoppingPutsThePlainIconBackOnce()
{
    app().launchWithTimer(600);
    QTRY_VERIFY(dock().content);
    dock().calls.clear();
    app().setNoEntry();
    app().pass(60);
    QTRY_COMPARE(dock().calls, QStringList(u"no content"_s));
    const int ticks = app().item().titles.size();
    QTRY_VERIFY(app().item().titles.size() >= ticks + 2);
    QCOMPARE(dock().calls, QStringList(u"no content"_s));
}

void DockIconTest::anEntryThatDoesNotRunLeavesThePlainIcon()
{
    app().setEntry(600, u"Stopped"_s);
    app().launch();
    const int ticks = app().item().titles.size();
    QTRY_VERIFY(app().item().titles.size() >= ticks + 1);
    QCOMPARE(dock().calls, QStringList(u"present"_s));
}

void DockIconTest::withoutADockIconNothingIsDoneAtAll()
{
    app().settings.settings.setShowDockIcon(false);
    app().launchWithTimer(600);
    QCOMPARE(dock().calls, (QStringList{u"no content"_s, u"absent"_s}));
    dock().calls.clear();
    const int ticks = app().item().titles.size();
    QTRY_VERIFY(app().item().titles.size() >= ticks + 1);
    QCOMPARE(dock().calls, QStringList());
}

void DockIconTest::switchingItOnWithATimerRunningShowsThePlainIconUntilTheMinuteChanges()
{
    app().launchWithTimer(600);
    QTRY_VERIFY(dock().content);
    // Off and on within the same minute, and the tile that stood there counts as drawn still.
    dock().content.reset();
    dock().calls.clear();
    app().delegate->updateDockIconVisibility();
    const int ticks = app().item().titles.size();
    QTRY_VERIFY(app().item().titles.size() >= ticks + 1);
    QCOMPARE(dock().calls, QStringList(u"present"_s));
    app().clock().setNow(app().clock().now().addSecs(60));
    QTRY_VERIFY(dock().content);
}

void DockIconTest::switchingItOffTakesTheTileAway()
{
    app().launchWithTimer(600);
    QTRY_VERIFY(dock().content);
    dock().calls.clear();
    app().settings.settings.setShowDockIcon(false);
    app().delegate->updateDockIconVisibility();
    QCOMPARE(dock().calls, (QStringList{u"no content"_s, u"absent"_s}));
    QVERIFY(!dock().isPresent);
}

void DockIconTest::switchedOffAndOnAgainTheTileIsDrawnAnew()
{
    switchingItOffTakesTheTileAway();
    app().settings.settings.setShowDockIcon(true);
    app().delegate->updateDockIconVisibility();
    QVERIFY(dock().isPresent);
    QTRY_VERIFY(dock().content);
}

void DockIconTest::aMinuteInTheFutureShowsNoChangeFromThePlainState()
{
    app().launchWithTimer(-60);
    const int ticks = app().item().titles.size();
    QTRY_VERIFY(app().item().titles.size() >= ticks + 1);
    QCOMPARE(dock().calls, QStringList(u"present"_s));
}

void DockIconTest::theEndPutsThePlainIconBack()
{
    app().launchWithTimer(600);
    QTRY_VERIFY(dock().content);
    app().delegate->applicationWillTerminate();
    QVERIFY(!dock().content);
}

void DockIconTest::tileLooksAsItShould()
{
    const auto tile = tileWith(u""_s, 1800, theme::systemGreen);
    const QColor ground = QColor::fromRgbF(0.08f, 0.08f, 0.08f);
    QCOMPARE(tile.size(), QSize(128, 128));
    QCOMPARE(tile.pixelColor(11, 64).alpha(), 0);
    QCOMPARE(tile.pixelColor(12, 64).rgb(), ground.rgb());
    QCOMPARE(tile.pixelColor(115, 64).rgb(), ground.rgb());
    QCOMPARE(tile.pixelColor(116, 64).alpha(), 0);
    QCOMPARE(tile.pixelColor(13, 13).alpha(), 0); // A corner of radius 22.
    QCOMPARE(tile.pixelColor(64, 64).rgb(), ground.rgb());
    // Half an hour: the right half at full alpha, the left one faint.
    QCOMPARE(ringColor(tile, 90), QColor(theme::systemGreen));
    QVERIFY(ringColor(tile, 270).green() < 90);
    QVERIFY(ringColor(tile, 270).green() > ground.green() + 20);
    double line = 0; // The pixels that it covers on the way from the centre to three o'clock.
    for (int x = 64; x < 116; ++x)
        line += double(tile.pixelColor(x, 64).green() - ground.green())
            / (QColor(theme::systemGreen).green() - ground.green());
    QVERIFY2(qAbs(line - 5) < 0.2, qPrintable(QString::number(line)));
}

void DockIconTest::theTextIsBoldAndWhite()
{
    const auto drawn = tileWith(u"07"_s, 420, theme::systemGreen);
    const auto ground = tileWith(u""_s, 420, theme::systemGreen);
    const auto inkOf = [&ground](const QImage &picture) { // The middle alone: what the text adds to it.
        double ink = 0;
        for (int y = 44; y < 84; ++y) {
            for (int x = 36; x < 92; ++x)
                ink += picture.pixelColor(x, y).red() - ground.pixelColor(x, y).red();
        }
        return ink;
    };
    QImage expected = ground;
    QPainter painter(&expected);
    QFont font = painter.font();
    font.setPixelSize(22);
    font.setBold(true);
    font.setHintingPreference(QFont::PreferNoHinting); // It would make the strokes a little thicker.
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(expected.rect(), Qt::AlignCenter, u"07"_s);
    painter.end();
    QVERIFY(qAbs(inkOf(drawn) / inkOf(expected) - 1) < 0.03);
}

void DockIconTest::anArcOfNoTimeIsAShortStroke()
{
    const auto tile = tileWith(u""_s, 3600, theme::systemCyan);
    QCOMPARE(ringColor(tile, 1), QColor(theme::systemCyan));
    QVERIFY(ringColor(tile, 20).blue() < 120);
}

void DockIconTest::theTextFitsIntoTheRing_data()
{
    QTest::addColumn<QString>("text");
    for (const auto *text : {"00", "99", "1h", "24h", "100h", "-10"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void DockIconTest::theTextFitsIntoTheRing()
{
    QFETCH(const QString, text);
    const auto without = tileWith(u""_s, 1800, theme::systemGreen);
    const auto with = tileWith(text, 1800, theme::systemGreen);
    QRect changed;
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 128; ++x) {
            if (with.pixel(x, y) != without.pixel(x, y))
                changed |= QRect(x, y, 1, 1);
        }
    }
    QVERIFY(changed.height() >= 14); // The capitals of a text of 22 points.
    QVERIFY2(QRect(64 - 34, 64 - 20, 68, 40).contains(changed), qPrintable(QString::number(changed.width())));
    QVERIFY(qAbs(changed.center().x() - 64) <= 2);
    QVERIFY(qAbs(changed.center().y() - 64) <= 3);
}

void DockIconTest::allDigitsTakeTheSameRoom()
{
    // In this font a 1 is half as wide as a 0, and each stands in the middle of its room.
    const auto inkOf = [](const QString &text) {
        QImage picture(dockIconSize.toSize(), QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setFont(proportionalFont(22));
        drawDockIcon(painter, dockIconSize, text, Qt::black, 0);
        QRect ink;
        for (int y = 50; y < 78; ++y) {
            for (int x = 30; x < 98; ++x) {
                if (qGray(picture.pixel(x, y)) > 128)
                    ink |= QRect(x, y, 1, 1);
            }
        }
        return ink;
    };
    const auto zeros = inkOf(u"00"_s);
    const auto ones = inkOf(u"11"_s);
    const auto mixed = inkOf(u"01"_s);
    QVERIFY(!zeros.isEmpty());
    QVERIFY(ones.width() < zeros.width()); // The strokes alone.
    QVERIFY(qAbs(zeros.center().x() - ones.center().x()) <= 1);
    QVERIFY(qAbs(mixed.left() - zeros.left()) <= 1); // The first digit stays in its place.
    QVERIFY(qAbs(mixed.right() - ones.right()) <= 1);
}

void DockIconTest::aClickInTheDockOpensThePanel()
{
    app().launch();
    dock().click();
    QVERIFY(app().platform.panel);
    QVERIFY(app().platform.panel->isVisible());
}

QTEST_MAIN(DockIconTest)
#include "DockIconTest.moc"
