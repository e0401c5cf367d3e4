// korvo-campaign: the program against the sample workspace for a simulated month, with whatever goes wrong.

#include "BrokenPromise.h"
#include "Campaign.h"
#include "Platform/PrivateBus.h"
#include "ProcessFigures.h"
#include "Warnings.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QHashSeed>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;
using namespace korvo;
using namespace korvo::campaign;

namespace {

struct Outcome {
    QString words;
    bool isGood = false;
};

Outcome runCampaign(const Campaign::Options &options, const QString &folder)
{
    QElapsedTimer elapsed;
    elapsed.start();
    try {
        Campaign campaign(options, folder);
        try {
            campaign.run();
            return {campaign.summary(double(elapsed.elapsed()) / 1000.0), true};
        } catch (const BrokenPromise &broken) {
            return {u"Broken in step %1 of seed %2: %3\n%4"_s.arg(campaign.stepCount())
                        .arg(options.seed)
                        .arg(broken.words, campaign.lastSteps().join(u'\n'))};
        }
    } catch (const BrokenPromise &broken) {
        return {u"Broken before the first step of seed %1: %2"_s.arg(options.seed).arg(broken.words)};
    }
}

} // namespace

int main(int argc, char **argv)
{
    // Before anything reads them. All that the program keeps stands in a folder of its own.
    const QTemporaryDir folder;
    PrivateBus bus;
    QHashSeed::setDeterministicGlobalSeed();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    for (const auto &[variable, name] :
         {std::pair("XDG_STATE_HOME", u"state"_s), {"XDG_CONFIG_HOME", u"config"_s}, {"XDG_RUNTIME_DIR", u"run"_s}}) {
        const auto path = folder.filePath(name);
        QDir().mkpath(path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(variable, QFile::encodeName(path));
    }
    if (!folder.isValid() || !bus.start()) {
        std::fputs("No folder or no bus\n", stderr);
        return 2;
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());

    QApplication app(argc, argv);
    QApplication::setApplicationName(u"Korvo"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Runs Korvo against a sample workspace, with all that may go wrong."_s);
    parser.addHelpOption();
    parser.addOptions({{u"seed"_s, u"What the dice begin with; a new one if none is given."_s, u"number"_s},
                       {u"days"_s, u"Simulated days, 30 if not given."_s, u"days"_s, u"30"_s},
                       {u"steps"_s, u"Steps at most."_s, u"steps"_s, u"0"_s},
                       {u"verbose"_s, u"Tells each step."_s}});
    parser.process(app);
    const Campaign::Options options{.seed = parser.isSet(u"seed"_s) ? parser.value(u"seed"_s).toUInt()
                                                                    : QRandomGenerator::global()->generate(),
                                    .days = parser.value(u"days"_s).toDouble(),
                                    .mostSteps = parser.value(u"steps"_s).toInt(),
                                    .isVerbose = parser.isSet(u"verbose"_s)};
    // Where the day is not UTC's, and in some seasons has an hour more or less.
    const QList<QByteArray> zones{"Europe/Berlin",
                                  "America/New_York",
                                  "America/Havana",
                                  "Atlantic/Azores",
                                  "Asia/Kolkata",
                                  "Pacific/Auckland",
                                  "UTC"};
    qputenv("TZ", zones[qsizetype(options.seed % quint32(zones.size()))]);
    ::tzset();
    QTextStream out(stdout);
    out << "korvo-campaign --seed " << options.seed << " --days " << options.days << Qt::endl;

    keepWarnings();
    auto outcome = runCampaign(options, folder.path());
    if (outcome.isGood && childCount() != 1) // The bus.
        outcome = {u"Broken at the end of seed %1: a process is left"_s.arg(options.seed), false};
    out << outcome.words << Qt::endl;
    bus.kill();
    return outcome.isGood ? 0 : 1;
}
