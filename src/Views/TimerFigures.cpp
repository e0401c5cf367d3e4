#include "Views/TimerFigures.h"

#include "ViewModels/TimerViewModel.h"
#include "Views/Theme.h"

#include <QDesktopServices>

#include <cmath>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr double secondsPerHour = 3600.0;

} // namespace

double elapsedSeconds(const QDateTime &startTime, const QDateTime &date)
{
    return double(startTime.msecsTo(date)) / 1000.0;
}

double hourProgress(double elapsed)
{
    return std::fmod(elapsed, secondsPerHour) / secondsPerHour;
}

QColor ringColor(double elapsed)
{
    const double hours = elapsed / secondsPerHour;
    if (hours < 1)
        return theme::systemGreen;
    if (hours < 2)
        return theme::systemCyan;
    if (hours < 4)
        return theme::systemOrange;
    return theme::systemRed;
}

QString formatTotalTime(std::optional<double> seconds)
{
    if (!seconds)
        return u"—"_s;
    constexpr double limit = 9223372036854775808.0; // 2 to the 63rd.
    if (!(*seconds >= -limit && *seconds < limit))  // Also false of what is not a number.
        qFatal("formatTotalTime: no number of seconds: %g", *seconds);
    const auto total = qint64(*seconds);
    const auto hours = total / 3600;
    const auto minutes = total % 3600 / 60;
    return hours > 0 ? u"%1h %2m"_s.arg(hours).arg(minutes) : u"%1m"_s.arg(minutes);
}

bool isTiming(const TimerViewModel &timerVM, const NotionTask &task)
{
    const auto &timer = timerVM.activeTimer();
    return timer && timer->taskId == task.id;
}

QUrl notionPageUrl(const QString &taskId)
{
    return QUrl(u"https://www.notion.so/"_s + QString(taskId).remove(u'-'), QUrl::StrictMode);
}

void openInNotion(const TimerViewModel &timerVM)
{
    const auto &timer = timerVM.activeTimer();
    if (!timer || !timer->taskId)
        return;
    const auto url = notionPageUrl(*timer->taskId);
    if (url.isValid())
        QDesktopServices::openUrl(url);
}

} // namespace korvo
