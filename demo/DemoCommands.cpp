#include "DemoCommands.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace korvo::demo {

using namespace Qt::StringLiterals;

DemoCommands::DemoCommands(TimerViewModel &timerVM, AppSettings &settings, QObject *parent) :
    QObject(parent),
    m_timerVM(timerVM),
    m_settings(settings),
    m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_input, &QSocketNotifier::activated, this, &DemoCommands::readLines);
}

void DemoCommands::readLines()
{
    std::array<char, 4096> bytes{};
    const auto count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return; // It asks again.
    if (count <= 0) {
        m_input.setEnabled(false); // Nobody is there any more: the demonstration goes on by itself.
        return;
    }
    m_rest.append(bytes.data(), count);
    for (auto end = m_rest.indexOf('\n'); end >= 0; end = m_rest.indexOf('\n')) {
        const auto line = QString::fromUtf8(m_rest.left(end));
        m_rest.remove(0, end + 1);
        run(line);
    }
}

void DemoCommands::run(const QString &line)
{
    const auto command = line.section(u' ', 0, 0);
    const auto name = line.section(u' ', 1);
    if (command == u"start"_s) {
        const auto tasks = m_timerVM.todayTasks(); // A copy: the list changes while the action runs.
        for (const auto &task : tasks) {
            if (task.name == name)
                return m_timerVM.startTimer(task);
        }
        std::fprintf(stderr, "korvo-demo: no task of today is called %s\n", qPrintable(name));
    } else if (command == u"stop"_s) {
        m_timerVM.stopTimer();
    } else if (command == u"quick-add"_s) {
        m_timerVM.quickAddTask(name);
    } else if (command == u"login"_s) {
        m_settings.setLaunchAtLogin(name == u"on"_s);
    } else if (command == u"remind"_s) {
        m_settings.setReminderHours(0);
        m_settings.setReminderEnabled(true);
    } else {
        std::fprintf(stderr, "korvo-demo: what is %s?\n", qPrintable(line));
    }
}

} // namespace korvo::demo
