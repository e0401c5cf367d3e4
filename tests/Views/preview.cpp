// korvo-views FOLDER - draws the views with sample content into PNG files, for a person to look at.

#include "ViewWorld.h"
#include "Views/ActiveTimerView.h"
#include "Views/MenuBarView.h"
#include "Views/Stack.h"
#include "Views/TodayTasksView.h"

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QTest>

#include <cstdio>
#include <functional>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

const QStringList sampleTasks{u"Home page layout"_s, u"Answer the printer"_s, u"Invoice for October"_s};

struct Sample {
    QString name;
    std::function<void(ViewWorld &)> prepare;
};

const QList<Sample> samples{
    {u"running"_s,
     [](ViewWorld &world) {
         world.showTimer({});
         world.showTasks(sampleTasks);
     }},
    {u"idle"_s, [](ViewWorld &world) { world.showTasks(sampleTasks); }},
    {u"empty"_s, [](ViewWorld &) {}},
    {u"setup"_s, [](ViewWorld &world) { world.settings.settings.setApiKey({}); }},
    {u"long"_s,
     [](ViewWorld &world) {
         world.showTimer({.taskName = u"Rewrite the quarterly report on the migration of the booking system for the "
                                      "northern branches"_s,
                          .elapsed = 45296,
                          .project = u"Booking system of the northern branches"_s,
                          .client = u"Northwind Traders International"_s,
                          .totalMinutes = 123456});
         QStringList names{u"Rewrite the quarterly report on the migration of the booking system"_s};
         for (int i = 2; i <= 20; ++i)
             names.append(u"Task number %1 with <b>marks</b> & a name that goes on and on and on"_s.arg(i));
         world.showTasks(names);
     }},
    {u"banner"_s,
     [](ViewWorld &world) {
         world.showTimer({.elapsed = 1500});
         world.showTasks(20);
         world.poll();
         world.notion.isOffline = true;
     }},
    {u"busy"_s,
     [](ViewWorld &world) {
         world.showTimer({.elapsed = 9000});
         world.showTasks(sampleTasks);
         world.poll();
         world.notion.isHolding = true;
         world.viewModel->stopTimer();
     }},
};

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (app.arguments().size() != 2) {
        std::fputs("usage: korvo-views FOLDER\n", stderr);
        return 2;
    }
    const QDir folder(app.arguments().at(1));
    folder.mkpath(u"."_s);
    const auto save = [&](QWidget &view, const QString &name) {
        view.show();
        QCoreApplication::processEvents();
        const auto path = folder.filePath(u"%1@%2x.png"_s.arg(name).arg(view.devicePixelRatioF()));
        if (!view.grab().save(path))
            std::fprintf(stderr, "korvo-views: cannot write %s\n", qPrintable(path));
    };
    for (const auto &sample : samples) {
        ViewWorld world;
        sample.prepare(world);
        if (!world.notion.isHolding)
            world.poll();
        MenuBarView view(
            *world.viewModel, [] {}, world.settings.settings, world.clock);
        view.setMaximumRoom(420);
        view.resize(view.sizeHint());
        save(view, sample.name);
        view.activateWindow();
        QCoreApplication::processEvents();
        for (int i = 0; i < 2 && view.focusWidget(); ++i)
            QTest::keyClick(view.focusWidget(), Qt::Key_Tab);
        save(view, sample.name + u"-keyboard"_s);

        for (const bool isDark : {false, true}) {
            QWidget host;
            host.setPalette(isDark ? QPalette(QColor(50, 50, 50)) : QPalette(QColor(240, 240, 240)));
            auto *active = new ActiveTimerView(*world.viewModel, world.clock);
            host.setLayout(vstack({.spacing = 12, .padding = padding(0, 12)},
                                  vstack({.padding = padding(16, 0)}, active), new TodayTasksView(*world.viewModel)));
            host.setFixedSize(300,
                              host.layout()->hasHeightForWidth() ? host.layout()->heightForWidth(300)
                                                                 : host.sizeHint().height());
            save(host, sample.name + (isDark ? u"-system-dark"_s : u"-system-light"_s));
        }
    }
    return 0;
}
