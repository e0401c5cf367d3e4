#pragma once

#include "AppDelegate.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakePlatform.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"

#include <QTest>

#include <memory>

namespace korvo {

/// The program's delegate on a desktop and a workspace made of fakes.
class LaunchedApp {
public:
    LaunchedApp()
    {
        TestSettings::configure(settings.settings);
        delegate = std::make_unique<AppDelegate>(platform, notion, settings.settings);
        notion.answerRows(trackerQuery, {});
        notion.answerRows(tasksQuery, {});
    }
    ~LaunchedApp()
    {
        delegate.reset();
        finishSpawned(2000);
    }
    Q_DISABLE_COPY_MOVE(LaunchedApp)

    /// Launches, and waits until the first poll is over.
    void launch()
    {
        delegate->applicationDidFinishLaunching();
        settle();
    }

    /// The same in a workspace whose running entry began so many seconds ago.
    void launchWithTimer(double elapsed)
    {
        setEntry(elapsed, QStringLiteral("Running"));
        launch();
    }

    /// What the next poll sees: an entry that began so many seconds ago.
    void setEntry(double elapsed, const QString &status)
    {
        const auto start = clock().now().addMSecs(qint64(-elapsed * 1000)).toUTC();
        notion.answerRows(trackerQuery,
                          {pages::page(QStringLiteral("e1"),
                                       {{QStringLiteral("Start"), pages::date(start.toString(Qt::ISODateWithMs))},
                                        {QStringLiteral("Status"), pages::select(status)},
                                        {QStringLiteral("Task"), pages::relation({QStringLiteral("t1")})}})});
        notion.answer(QStringLiteral("GET /pages/t1"),
                      pages::task(QStringLiteral("t1"), QStringLiteral("Write the letter")));
    }

    void setNoEntry() { notion.answerRows(trackerQuery, {}); }

    /// Lets so much time pass; polls that are due meanwhile are over afterwards.
    void pass(double seconds)
    {
        clock().advance(seconds);
        settle();
    }

    /// Waits until the poll loop sleeps.
    void settle() { QTRY_VERIFY(clock().sleeperCount() > 0); }

    FakeClock &clock() { return platform.fakeClock; }
    FakeStatusItem &item() { return *platform.statusItem; }
    FakeDockTile &dock() { return platform.fakeDockTile; }

    const QString trackerQuery = QStringLiteral("POST /databases/tracker/query");
    const QString tasksQuery = QStringLiteral("POST /databases/tasks/query");
    FakeNotion notion;
    FakePlatform platform;
    TestSettings settings;
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace korvo
