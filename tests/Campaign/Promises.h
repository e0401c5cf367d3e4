#pragma once

#include "Campaign/ProcessFigures.h"
#include "Campaign/World.h"

#include <QSet>

namespace korvo::campaign {

/// A running entry as the workspace holds it.
struct RunningEntry {
    QString id;
    QDateTime start;
    QString taskId;
};
QList<RunningEntry> runningEntries(World &world);
QSet<QString> pageIds(World &world, const QString &databaseId);

/// Whether the names and the key in the settings are those of the workspace, as far as a poll succeeds only then.
bool canPoll(World &world);
/// The same for all that a press writes.
bool canWrite(World &world);

/// The state after a poll to which nothing happened.
void checkShownTimer(World &world);
/// The item in the tray, after a tick.
void checkStatusItem(World &world);
/// The account of one poll. One to which nothing happens sends nothing twice.
void checkPollRequests(World &world, bool isUndisturbed);
/// Nothing went out since the account was begun.
void checkSilence(World &world, qint64 requestsBefore);
/// The stored file holds the settings, and stands alone in its folder. Others' values are where they were put.
void checkStoredSettings(World &world, const QMap<QString, double> &foreignNumbers);
void checkLog(World &world);

/// What the process holds over the campaign.
class Footprint {
public:
    void sample();
    /// Compares the medians of the first and the last third of the samples after the warm-up.
    void check() const;
    QString words() const;

private:
    struct Thirds {
        double first = 0;
        double last = 0;
    };
    template <typename Figure> Thirds thirds(Figure figure) const;

    QList<ProcessFigures> m_samples;
};

} // namespace korvo::campaign
