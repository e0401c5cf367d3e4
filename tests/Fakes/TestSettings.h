#pragma once

#include "Fakes/FakeUserDefaults.h"
#include "Models/AppSettings.h"

#include <memory>
#include <utility>

namespace korvo {

/// Settings of one test, over a store in memory.
class TestSettings {
public:
    /// Settings of a start that finds these values in the store.
    explicit TestSettings(QMap<QString, UserDefaults::Value> stored = {}) : defaults(std::move(stored)) { }

    /// Settings of a start with a store of another kind, which must outlive them.
    static std::unique_ptr<AppSettings> load(UserDefaults &defaults)
    {
        return std::unique_ptr<AppSettings>(new AppSettings(defaults));
    }

    /// Settings as a user has them who has set up everything for the sample workspace's property names.
    static void configure(AppSettings &settings)
    {
        settings.setApiKey(QStringLiteral("ntn_test"));
        settings.setTimeTrackerDBId(QStringLiteral("tracker"));
        settings.setTasksDBId(QStringLiteral("tasks"));
        settings.setFieldMapping({.ttTaskRelation = QStringLiteral("Task"),
                                  .ttStartTime = QStringLiteral("Start"),
                                  .ttEndTime = QStringLiteral("End"),
                                  .ttStatus = QStringLiteral("Status"),
                                  .ttStatusRunning = QStringLiteral("Running"),
                                  .ttStatusStopped = QStringLiteral("Stopped"),
                                  .taskName = QStringLiteral("Name"),
                                  .taskDate = QStringLiteral("Date"),
                                  .taskTimerStatus = QStringLiteral("Timer"),
                                  .taskTimerStatusRunning = QStringLiteral("Running"),
                                  .taskTimerStatusStopped = QStringLiteral("Stopped"),
                                  .taskProjectRelation = QStringLiteral("Project"),
                                  .projectClientRelation = QStringLiteral("Client"),
                                  .taskTotalTimeRollup = QStringLiteral("Total minutes")});
    }

    FakeUserDefaults defaults;
    AppSettings settings{defaults};
};

} // namespace korvo
