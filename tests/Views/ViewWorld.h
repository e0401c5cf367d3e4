#pragma once

#include "Fakes/FakeClock.h"
#include "Fakes/FakeKeyboardLayout.h"
#include "Fakes/FakeNotificationCenter.h"
#include "Fakes/FakeNotion.h"
#include "Fakes/FakeSystemLog.h"
#include "Fakes/NotionPages.h"
#include "Fakes/TestSettings.h"
#include "Utilities/Spawn.h"
#include "ViewModels/TimerViewModel.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <memory>
#include <optional>

namespace korvo {

/// A view model whose state comes, as ever, from polls, of a workspace that a test describes.
class ViewWorld {
public:
    /// The running entry of the workspace.
    struct Timer {
        QString taskName = QStringLiteral("Home page layout");
        std::optional<QString> taskId = QStringLiteral("t1");
        double elapsed = 5025; ///< Seconds since its start.
        QString status = QStringLiteral("Running");
        std::optional<QString> project = QStringLiteral("Website");
        std::optional<QString> client = QStringLiteral("Northwind");
        std::optional<double> totalMinutes = 750;
    };

    ViewWorld()
    {
        TestSettings::configure(settings.settings);
        clock.arePausesInstant = true; // Of the client between its tries.
        showNothing();
    }
    ~ViewWorld()
    {
        viewModel.reset();
        finishSpawned(2000);
    }
    Q_DISABLE_COPY_MOVE(ViewWorld)

    void showNothing()
    {
        notion.answerRows(trackerQuery(), {});
        notion.answerRows(tasksQuery(), {});
    }

    /// An entry that the next poll will find.
    void showTimer(const Timer &timer)
    {
        using namespace pages;
        const auto start = clock.now().addMSecs(qint64(-timer.elapsed * 1000)).toUTC();
        auto entry = runningEntry(QStringLiteral("e1"), timer.taskId ? QStringList{*timer.taskId} : QStringList());
        auto properties = entry[QStringLiteral("properties")].toObject();
        properties[QStringLiteral("Start")] = date(start.toString(Qt::ISODateWithMs));
        properties[QStringLiteral("Status")] = select(timer.status);
        entry[QStringLiteral("properties")] = properties;
        notion.answerRows(trackerQuery(), {entry});
        if (!timer.taskId)
            return;
        QJsonObject task{{QStringLiteral("Name"), title({timer.taskName})}};
        if (timer.project) {
            task[QStringLiteral("Project")] = relation({QStringLiteral("p1")});
            QJsonObject project{{QStringLiteral("Name"), title({*timer.project})}};
            if (timer.client)
                project[QStringLiteral("Client")] = relation({QStringLiteral("c1")});
            setPage(QStringLiteral("p1"), project);
        }
        if (timer.client)
            setPage(QStringLiteral("c1"), {{QStringLiteral("Name"), title({*timer.client})}});
        if (timer.totalMinutes)
            task[QStringLiteral("Total minutes")] = rollup(*timer.totalMinutes);
        setPage(*timer.taskId, task);
    }

    /// Tasks "t1", "t2" and so on of these names.
    void showTasks(const QStringList &names)
    {
        QList<QJsonObject> rows;
        for (const auto &name : names)
            rows.append(pages::task(QStringLiteral("t%1").arg(rows.size() + 1), name));
        notion.answerRows(tasksQuery(), rows);
    }
    void showTasks(int count)
    {
        QStringList names;
        for (int i = 1; i <= count; ++i)
            names.append(QStringLiteral("Task number %1").arg(i));
        showTasks(names);
    }

    /// Polls, if the settings are complete, and waits until the loop sleeps again.
    void poll()
    {
        viewModel->startPollingIfConfigured();
        if (!settings.settings.isConfigured())
            return;
        spinUntil([this] { return clock.sleeperCount() > 0; });
    }

    template <typename Condition> static void spinUntil(Condition condition)
    {
        QElapsedTimer watch;
        watch.start();
        while (!condition()) {
            if (watch.hasExpired(20000))
                qFatal("What was waited for does not happen");
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        }
    }

    static QString trackerQuery() { return QStringLiteral("POST /databases/tracker/query"); }
    static QString tasksQuery() { return QStringLiteral("POST /databases/tasks/query"); }

    FakeNotion notion;
    FakeClock clock;
    FakeKeyboardLayout keyboard;
    FakeNotificationCenter notifications;
    FakeSystemLog log;
    TestSettings settings;
    std::unique_ptr<TimerViewModel> viewModel
        = std::make_unique<TimerViewModel>(notifications, notion, settings.settings, clock);

private:
    void setPage(const QString &id, const QJsonObject &properties)
    {
        const auto call = QStringLiteral("GET /pages/") + id;
        notion.forget(call);
        notion.answer(call, pages::page(id, properties));
    }
};

} // namespace korvo
