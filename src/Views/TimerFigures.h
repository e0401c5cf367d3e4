#pragma once

#include <QColor>
#include <QDateTime>
#include <QString>
#include <QUrl>

#include <optional>

namespace korvo {

class TimerViewModel;
struct NotionTask;

/// Seconds from the start of an entry to a date, negative if it begins later.
double elapsedSeconds(const QDateTime &startTime, const QDateTime &date);

/// The part of the present hour that has passed, from 0 to below 1. Of the sign of `elapsed`.
double hourProgress(double elapsed);

/// The colour of a ring by all the seconds that have elapsed: it changes at 1, 2 and 4 hours.
QColor ringColor(double elapsed);

/// Tracked seconds as "2h 5m", or "5m" below an hour; "—" for none. A number that is not finite or beyond 64 bits ends
/// the program.
QString formatTotalTime(std::optional<double> seconds);

/// Whether the active timer is that of a task. An entry without a task is that of none.
bool isTiming(const TimerViewModel &timerVM, const NotionTask &task);

/// The address of a task's page in Notion's web application; invalid if the id makes none.
QUrl notionPageUrl(const QString &taskId);

/// Opens the page of the running task with the desktop's handler. Without a task, or with an id that makes no address,
/// it does nothing.
void openInNotion(const TimerViewModel &timerVM);

} // namespace korvo
