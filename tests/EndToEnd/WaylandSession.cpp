#include "EndToEnd/WaylandSession.h"

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

/// Released, though it was never pressed: the first key of a keyboard that is made to type stands in the place of Esc.
const auto keyOfNoUse = u"F13"_s;

QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    return process.waitForFinished() && process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

void appendWindows(const QJsonObject &node, qint64 pid, QList<WaylandWindow> &windows)
{
    if (node["pid"_L1].toInteger() == pid) {
        const auto rect = node["rect"_L1];
        windows.append(
            {node["name"_L1].toString(), node["app_id"_L1].toString(),
             QRect(rect["x"_L1].toInt(), rect["y"_L1].toInt(), rect["width"_L1].toInt(), rect["height"_L1].toInt())});
    }
    for (const auto &list : {u"nodes"_s, u"floating_nodes"_s}) {
        for (const auto &child : node[list].toArray())
            appendWindows(child.toObject(), pid, windows);
    }
}

} // namespace

QList<WaylandWindow> waylandWindows(qint64 pid)
{
    const auto tree = outputOf(u"swaymsg"_s, {u"--raw"_s, u"--type"_s, u"get_tree"_s});
    QList<WaylandWindow> windows;
    appendWindows(QJsonDocument::fromJson(tree).object(), pid, windows);
    return windows;
}

QRect findOnOutput(const QColor &color)
{
    const auto screen = QImage::fromData(outputOf(u"grim"_s, {u"-t"_s, u"ppm"_s, u"-"_s}), "PPM");
    QRect place;
    for (int y = 0; y < screen.height(); ++y) {
        for (int x = 0; x < screen.width(); ++x) {
            if (screen.pixel(x, y) == color.rgb())
                place |= QRect(x, y, 1, 1);
        }
    }
    return place;
}

bool tellCompositor(const QStringList &command)
{
    return !outputOf(u"swaymsg"_s, QStringList(u"--raw"_s) + command).isEmpty();
}

WaylandKeyboard::~WaylandKeyboard()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool WaylandKeyboard::plugIn()
{
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    constexpr int wholeDay = 86400000;
    m_process.start(u"wtype"_s, {u"-s"_s, QString::number(wholeDay), u"-p"_s, keyOfNoUse});
    return m_process.waitForStarted();
}

bool WaylandKeyboard::enter(const QString &text)
{
    return QProcess::execute(u"wtype"_s, {u"-d"_s, u"20"_s, u"-p"_s, keyOfNoUse, text, u"-k"_s, u"Return"_s}) == 0;
}

} // namespace korvo
