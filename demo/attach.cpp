// korvo-attach WORKSPACE.json [--poll SECONDS] [--notch] - Korvo on a sample workspace that already runs, with settings of
// its own, around a simulated notch if wanted.
// The file holds the line that korvo-sandbox prints when it starts. For the benchmark and the end-to-end tests.

#include "KorvoApp.h"
#include "Platform/Platform.h"
#include "SimulatedNotch.h"
#include "WorkspaceSettings.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTextStream>

#include <utility>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    QCommandLineParser parser;
    parser.addOption({u"poll"_s, u"Seconds between polls."_s, u"seconds"_s, u"30"_s});
    parser.addPositionalArgument(u"workspace"_s, u"The line that korvo-sandbox printed, in a file."_s);
    parser.addOption({u"notch"_s, u"As on a screen with a camera notch."_s});
    parser.parse(arguments);

    QFile file(parser.positionalArguments().value(0));
    const auto workspace
        = file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
    if (workspace.isEmpty()) {
        QTextStream(stderr) << "korvo-attach: " << file.fileName() << " describes no workspace\n";
        return 1;
    }

    const QTemporaryDir folder;
    auto platform = korvo::Platform::create(folder.filePath(u"defaults.json"_s));
    if (parser.isSet(u"notch"_s))
        platform = korvo::demo::withSimulatedNotch(std::move(platform));
    korvo::demo::storeSettings(platform->userDefaults(), workspace, parser.value(u"poll"_s).toDouble());
    korvo::demo::redirectRequests(workspace);
    korvo::KorvoApp app(argc, argv, *platform);
    return app.exec();
}
