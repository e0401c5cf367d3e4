#include "sandbox/ControlRouter.h"
#include "sandbox/JsonText.h"
#include "sandbox/SandboxServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <cstdio>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

std::array<int, 2> quitPipe{-1, -1};

extern "C" void askToQuit(int)
{
    // Nothing else is allowed in a signal handler; the event loop reads the byte and quits.
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(quitPipe[1], &byte, 1);
}

bool quitOnSignals(QCoreApplication &app)
{
    if (pipe(quitPipe.data()) != 0)
        return false;
    auto *notifier = new QSocketNotifier(quitPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, &QCoreApplication::quit);
    struct sigaction action { };
    action.sa_handler = &askToQuit;
    return sigaction(SIGTERM, &action, nullptr) == 0 && sigaction(SIGINT, &action, nullptr) == 0;
}

void printLine(FILE *stream, const QByteArray &line)
{
    std::fputs(line.constData(), stream);
    std::fputc('\n', stream);
    std::fflush(stream);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"korvo-sandbox"_s);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Serves a sample workspace on 127.0.0.1 as the Notion REST API, version 2022-06-28, does. Prints one line of "
        "JSON (port, authority's certificate, key, ids, field mapping), then serves until SIGTERM or SIGINT."_s);
    const QCommandLineOption help({u"h"_s, u"help"_s}, u"Show this help."_s);
    const QCommandLineOption port(u"port"_s, u"The port; any free one if left out."_s, u"number"_s, u"0"_s);
    const QCommandLineOption http(u"http"_s, u"Plain HTTP in place of HTTPS."_s);
    const QCommandLineOption key(u"key"_s, u"The API key to accept."_s, u"key"_s, u"ntn_sandbox"_s);
    parser.addOptions({help, port, http, key});
    parser.process(app);
    if (parser.isSet(help)) {
        printLine(stdout, parser.helpText().toUtf8() + '\n' + korvo::sandbox::controlHelp());
        return 0;
    }
    bool isPort = false;
    const quint16 portNumber = parser.value(port).toUShort(&isPort);
    if (!isPort) {
        printLine(stderr, "korvo-sandbox: --port wants a number up to 65535");
        return 2;
    }
    korvo::sandbox::SandboxServer server;
    server.setApiKey(parser.value(key));
    if (!quitOnSignals(app) || !server.listen(portNumber, !parser.isSet(http))) {
        printLine(stderr, "korvo-sandbox: cannot listen: " + server.errorString().toUtf8());
        return 1;
    }
    printLine(stdout, korvo::sandbox::jsonText(korvo::sandbox::serverInfo(server)));
    return QCoreApplication::exec();
}
