// korvo-demo [--poll SECONDS] [--fresh] [--notch] - Korvo on a sample workspace inside the same process, with settings of
// its own.
// Prints the line by which others reach the workspace, as korvo-sandbox does, and reads commands: see DemoCommands.
// Tells a person whether there is a tray. With --fresh nothing is set up yet, as at a user's first start.

#include "DemoCommands.h"
#include "KorvoApp.h"
#include "Platform/Platform.h"
#include "SimulatedNotch.h"
#include "WorkspaceSettings.h"
#include "sandbox/ControlRouter.h"
#include "sandbox/SandboxServer.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QSystemTrayIcon>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QCommandLineParser parser;
    parser.addOption({u"poll"_s, u"Seconds between polls."_s, u"seconds"_s, u"5"_s});
    parser.addOption({u"fresh"_s, u"Sets nothing up."_s});
    parser.addOption({u"notch"_s, u"As on a screen with a camera notch."_s});
    parser.parse(arguments);

    const QTemporaryDir folder;
    auto platform = korvo::Platform::create(folder.filePath(u"defaults.json"_s));
    if (parser.isSet(u"notch"_s))
        platform = korvo::demo::withSimulatedNotch(std::move(platform));
    auto sandbox = std::make_unique<korvo::sandbox::SandboxServer>();
    // The ids and the key are the same at each start; the port isn't known yet, but no setting holds it.
    if (!parser.isSet(u"fresh"_s)) {
        korvo::demo::storeSettings(platform->userDefaults(), korvo::sandbox::serverInfo(*sandbox),
                                   parser.value(u"poll"_s).toDouble());
    }

    korvo::KorvoApp app(argc, argv, *platform);
    if (!sandbox->listen()) {
        std::fprintf(stderr, "korvo-demo: %s\n", qPrintable(sandbox->errorString()));
        return 1;
    }
    const auto workspace = korvo::sandbox::serverInfo(*sandbox);
    korvo::demo::redirectRequests(workspace);
    std::puts(QJsonDocument(workspace).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);

    std::fputs(QSystemTrayIcon::isSystemTrayAvailable() ? "Korvo is in your tray.\n"
                                                        : "There is no tray here; Korvo waits for one.\n",
               stderr);

    const korvo::demo::DemoCommands commands(app.delegate().timerViewModel(), korvo::AppSettings::shared());
    const int status = app.exec();
    sandbox.reset(); // Its sockets end before the application does.
    return status;
}
