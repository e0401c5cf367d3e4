#include "TrayOnScreen.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

bool xdotool(const QStringList &arguments)
{
    return QProcess::execute(u"xdotool"_s, arguments) == 0;
}

QList<QByteArray> readStrings(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    auto strings = file.readAll().split('\0');
    strings.removeLast(); // What follows the last terminator.
    return strings;
}

} // namespace

StatusImage coloredImage(const QColor &color)
{
    return {color.name(), u"A colour"_s, QSizeF(18, 18),
            [color](QPainter &painter, const QSizeF &size) { painter.fillRect(QRectF(QPointF(), size), color); }};
}

QRect findOnScreen(const QColor &color)
{
    const QImage screen = QGuiApplication::primaryScreen()->grabWindow().toImage();
    QRect place;
    for (int y = 0; y < screen.height(); ++y) {
        for (int x = 0; x < screen.width(); ++x) {
            if (screen.pixel(x, y) == color.rgb())
                place |= QRect(x, y, 1, 1);
        }
    }
    return place;
}

bool hasTextBeside(const QRect &place)
{
    const QImage screen = QGuiApplication::primaryScreen()->grabWindow().toImage();
    const QRect beside = QRect(place.right() + 4, place.top(), 50, place.height()) & screen.rect();
    int darkCount = 0;
    int lightCount = 0;
    for (int y = beside.top(); y <= beside.bottom(); ++y) {
        for (int x = beside.left(); x <= beside.right(); ++x)
            ++(qGray(screen.pixel(x, y)) < 128 ? darkCount : lightCount);
    }
    return qMin(darkCount, lightCount) > 20;
}

bool clickAt(const QPoint &place, int button)
{
    return xdotool(
        {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()), u"click"_s, QString::number(button)});
}

bool clickMeanwhile(const QPoint &place, int button)
{
    QProcess process;
    process.start(
        u"xdotool"_s,
        {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()), u"click"_s, QString::number(button)});
    const bool isDone = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; });
    QCoreApplication::processEvents(); // What the click has led to.
    return isDone && process.exitCode() == 0;
}

bool pressKeys(const QStringList &keys)
{
    return xdotool(QStringList(u"key"_s) + keys);
}

DesktopProgram::DesktopProgram(const QString &name)
{
    const QByteArray mark = "DISPLAY=" + qgetenv("DISPLAY");
    for (const QString &id : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        QFile comm(u"/proc/%1/comm"_s.arg(id));
        if (!comm.open(QIODevice::ReadOnly) || QString::fromUtf8(comm.readAll()).trimmed() != name)
            continue;
        const auto environment = readStrings(u"/proc/%1/environ"_s.arg(id));
        if (!environment.contains(mark))
            continue;
        m_id = id.toLongLong();
        for (const QByteArray &variable : environment) {
            const auto end = variable.indexOf('=');
            m_environment.insert(QString::fromUtf8(variable.first(end)), QString::fromUtf8(variable.mid(end + 1)));
        }
        for (const QByteArray &word : readStrings(u"/proc/%1/cmdline"_s.arg(id)))
            m_command.append(QString::fromUtf8(word));
    }
}

DesktopProgram::~DesktopProgram()
{
    m_process.terminate();
    m_process.waitForFinished();
}

bool DesktopProgram::end()
{
    return isFound() && ::kill(pid_t(m_id), SIGTERM) == 0
        && QTest::qWaitFor([this] { return !QFile::exists(u"/proc/%1/cmdline"_s.arg(m_id)); }, 10000);
}

bool DesktopProgram::startAnew()
{
    m_process.setProcessEnvironment(m_environment);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(m_command.first(), m_command.mid(1));
    return m_process.waitForStarted();
}

} // namespace korvo
