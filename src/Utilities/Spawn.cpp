#include "Utilities/Spawn.h"

#include "Utilities/DiagnosticLogger.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>

#include <exception>

namespace korvo {

namespace {

int running = 0;

QCoro::Task<> counted(QCoro::Task<> task)
{
    try {
        co_await std::move(task);
    } catch (const std::exception &exception) {
        Log::error(QStringLiteral("A task ended by an exception: ") + QString::fromUtf8(exception.what()));
    } catch (...) {
        Log::error(QStringLiteral("A task ended by an exception of unknown kind"));
    }
    --running;
}

} // namespace

void spawn(QCoro::Task<> task)
{
    ++running;
    counted(std::move(task));
}

int spawnedCount()
{
    return running;
}

bool finishSpawned(int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (running > 0 && !deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (running > 0)
            QThread::msleep(1);
    }
    return running == 0;
}

} // namespace korvo
