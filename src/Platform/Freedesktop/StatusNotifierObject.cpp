#include "Platform/Freedesktop/StatusNotifierObject.h"

#include "Platform/Freedesktop/ScreenSample.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace korvo {

struct StatusToolTip { // (sa(iiay)ss)
    QString iconName;
    QList<StatusPixmap> iconPixmap;
    QString title;
    QString text;
};

QDBusArgument &operator<<(QDBusArgument &argument, const StatusPixmap &pixmap)
{
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.bytes;
    argument.endStructure();
    return argument;
}
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusPixmap &pixmap)
{
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.bytes;
    argument.endStructure();
    return argument;
}
QDBusArgument &operator<<(QDBusArgument &argument, const StatusToolTip &toolTip)
{
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.iconPixmap << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusToolTip &toolTip)
{
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.iconPixmap >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

namespace {

constexpr auto itemInterface = "org.kde.StatusNotifierItem"_L1;
constexpr auto standardInterface = "org.freedesktop.StatusNotifierItem"_L1; // Its name in the draft of a standard.
constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties"_L1;

constexpr int looksAfterRegistration = 3; // A bar that has just started may paint itself only after it has read items.

constexpr auto introspection = R"xml(
  <interface name="org.kde.StatusNotifierItem">
    <property name="Category" type="s" access="read"/>
    <property name="Id" type="s" access="read"/>
    <property name="Title" type="s" access="read"/>
    <property name="Status" type="s" access="read"/>
    <property name="WindowId" type="i" access="read"/>
    <property name="IconThemePath" type="s" access="read"/>
    <property name="IconName" type="s" access="read"/>
    <property name="IconPixmap" type="a(iiay)" access="read"/>
    <property name="IconAccessibleDesc" type="s" access="read"/>
    <property name="OverlayIconName" type="s" access="read"/>
    <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
    <property name="AttentionIconName" type="s" access="read"/>
    <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
    <property name="AttentionAccessibleDesc" type="s" access="read"/>
    <property name="AttentionMovieName" type="s" access="read"/>
    <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
    <property name="ItemIsMenu" type="b" access="read"/>
    <property name="Menu" type="o" access="read"/>
    <property name="XAyatanaLabel" type="s" access="read"/>
    <property name="XAyatanaLabelGuide" type="s" access="read"/>
    <property name="XAyatanaOrderingIndex" type="u" access="read"/>
    <method name="Activate">
      <arg type="i" name="x" direction="in"/>
      <arg type="i" name="y" direction="in"/>
    </method>
    <method name="SecondaryActivate">
      <arg type="i" name="x" direction="in"/>
      <arg type="i" name="y" direction="in"/>
    </method>
    <method name="XAyatanaSecondaryActivate">
      <arg type="u" name="timestamp" direction="in"/>
    </method>
    <method name="ContextMenu">
      <arg type="i" name="x" direction="in"/>
      <arg type="i" name="y" direction="in"/>
    </method>
    <method name="Scroll">
      <arg type="i" name="delta" direction="in"/>
      <arg type="s" name="orientation" direction="in"/>
    </method>
    <signal name="NewTitle"/>
    <signal name="NewIcon"/>
    <signal name="NewAttentionIcon"/>
    <signal name="NewOverlayIcon"/>
    <signal name="NewToolTip"/>
    <signal name="NewStatus">
      <arg type="s" name="status"/>
    </signal>
    <signal name="NewIconThemePath">
      <arg type="s" name="path"/>
    </signal>
    <signal name="XAyatanaNewLabel">
      <arg type="s" name="label"/>
      <arg type="s" name="guide"/>
    </signal>
  </interface>
)xml"_L1;

const QStringList &propertyNames()
{
    static const QStringList names{
        u"Category"_s,
        u"Id"_s,
        u"Title"_s,
        u"Status"_s,
        u"WindowId"_s,
        u"IconThemePath"_s,
        u"IconName"_s,
        u"IconPixmap"_s,
        u"IconAccessibleDesc"_s,
        u"OverlayIconName"_s,
        u"OverlayIconPixmap"_s,
        u"AttentionIconName"_s,
        u"AttentionIconPixmap"_s,
        u"AttentionAccessibleDesc"_s,
        u"AttentionMovieName"_s,
        u"ToolTip"_s,
        u"ItemIsMenu"_s,
        u"Menu"_s,
        u"XAyatanaLabel"_s,
        u"XAyatanaLabelGuide"_s,
        u"XAyatanaOrderingIndex"_s,
    };
    return names;
}

StatusPixmap toStatusPixmap(const QImage &picture)
{
    const QImage plain = picture.convertToFormat(QImage::Format_ARGB32);
    StatusPixmap pixmap{plain.width(), plain.height(), {}};
    pixmap.bytes.reserve(qsizetype(plain.width()) * plain.height() * 4);
    for (int y = 0; y < plain.height(); ++y) {
        for (int x = 0; x < plain.width(); ++x) {
            const QRgb pixel = plain.pixel(x, y);
            for (const int channel : {qAlpha(pixel), qRed(pixel), qGreen(pixel), qBlue(pixel)})
                pixmap.bytes.append(char(channel));
        }
    }
    return pixmap;
}

/// The text of a tool tip is markup for all trays. Its title is markup for some, and shown as it stands by others, so
/// what cannot be both is left to the text.
StatusToolTip toolTipOf(const QString &headline, const QString &text)
{
    const QString escapedHeadline = headline.toHtmlEscaped();
    const QString escapedText = text.toHtmlEscaped();
    if (headline == escapedHeadline)
        return {{}, {}, headline, escapedText};
    const QString bold = u"<b>%1</b>"_s.arg(escapedHeadline);
    return {{}, {}, u"Korvo"_s, text.isEmpty() ? bold : bold + u'\n' + escapedText};
}

/// The widest text that the label may grow to, so that the bar keeps the room and nothing in it jumps at each second.
QString labelGuide(const QString &label)
{
    static const QString usual = u" 00:00:00"_s;
    if (label.isEmpty() || label.size() > usual.size()) {
        QString guide = label;
        for (QChar &character : guide) {
            if (character.isDigit())
                character = u'0';
        }
        return guide;
    }
    return usual;
}

} // namespace

StatusNotifierObject::StatusNotifierObject(QDBusConnection connection, QString path, QString menuPath,
                                           QObject *parent) :
    QDBusVirtualObject(parent),
    m_connection(std::move(connection)),
    m_path(std::move(path)),
    m_menuPath(std::move(menuPath))
{
    qDBusRegisterMetaType<StatusPixmap>();
    qDBusRegisterMetaType<QList<StatusPixmap>>();
    qDBusRegisterMetaType<StatusToolTip>();
    m_connection.registerVirtualObject(m_path, this);
}

StatusNotifierObject::~StatusNotifierObject()
{
    m_connection.unregisterObject(m_path);
}

void StatusNotifierObject::setImage(const StatusImage &image)
{
    if (m_image.key == image.key && m_image.description == image.description) {
        lookAgain();
        return;
    }
    m_image = image;
    announceChanges();
}

void StatusNotifierObject::setLabel(const QString &label)
{
    if (m_label == label)
        return;
    m_label = label;
    announceChanges();
}

void StatusNotifierObject::setToolTip(const QString &headline, const QString &text)
{
    if (m_headline == headline && m_text == text)
        return;
    m_headline = headline;
    m_text = text;
    announceChanges();
}

void StatusNotifierObject::setAnnouncing(bool isAnnouncing)
{
    if (isAnnouncing && !m_isAnnouncing)
        m_looksLeft = looksAfterRegistration;
    m_isAnnouncing = isAnnouncing;
    announceChanges();
}

/// Tells a tray that read a template before its bar was painted that the ink is another one now.
void StatusNotifierObject::lookAgain()
{
    if (!m_isAnnouncing || !m_image.isTemplate || !m_told.picture || m_looksLeft == 0)
        return;
    --m_looksLeft;
    const Backdrop seen = backdropOfBar();
    if (seen == Backdrop::unknown)
        return; // Nothing is learnt from a screen that shows nothing.
    m_backdrop = seen;
    announceChanges();
}

void StatusNotifierObject::announceChanges()
{
    if (!m_isAnnouncing)
        return;
    announce(m_told.picture, pictureId(), u"NewIcon"_s);
    announce(m_told.label, m_label, u"XAyatanaNewLabel"_s, {m_label, labelGuide(m_label)});
    announce(m_told.title, title(), u"NewTitle"_s);
    announce(m_told.toolTip, toolTipId(), u"NewToolTip"_s);
}

void StatusNotifierObject::announce(std::optional<QString> &told, const QString &now, const QString &signal,
                                    const QVariantList &arguments)
{
    if (!told || *told == now)
        return;
    told = now;
    auto message = QDBusMessage::createSignal(m_path, itemInterface, signal);
    message.setArguments(arguments);
    m_connection.send(message);
}

/// Names what a reader of the picture gets; a change of it is news for readers.
QString StatusNotifierObject::pictureId() const
{
    const int ink = int(m_image.isTemplate ? m_backdrop : Backdrop::unknown);
    return m_image.key + u'\n' + m_image.description + u'\n' + QString::number(ink);
}

/// What the item is called where there is no room for a headline, as by screen readers.
QString StatusNotifierObject::title() const
{
    if (m_headline.isEmpty() || m_text.isEmpty())
        return m_headline + m_text;
    return m_headline + u", "_s + m_text;
}

QString StatusNotifierObject::toolTipId() const
{
    return m_headline + u'\n' + m_text;
}

/// What the picture is to be drawn for, asked anew for each reader: people change the colours of their desktop.
Backdrop StatusNotifierObject::look()
{
    if (!m_image.isTemplate)
        return Backdrop::unknown;
    m_backdrop = backdropOfBar();
    return m_backdrop;
}

const QList<StatusPixmap> &StatusNotifierObject::pixmaps(Backdrop backdrop)
{
    if (m_pixmapsKey != m_image.key || m_pixmapsBackdrop != backdrop) {
        m_pixmaps.clear();
        if (m_image.draw) {
            for (const int side : statusPictureSizes)
                m_pixmaps.append(toStatusPixmap(renderStatusImage(m_image, side, backdrop)));
        }
        m_pixmapsKey = m_image.key;
        m_pixmapsBackdrop = backdrop;
    }
    return m_pixmaps;
}

QVariant StatusNotifierObject::valueOf(const QString &name, const QString &reader)
{
    if (name == "Category"_L1)
        return u"ApplicationStatus"_s;
    if (name == "Id"_L1)
        return u"com.korvo.app"_s;
    if (name == "Status"_L1)
        return u"Active"_s;
    if (name == "WindowId"_L1)
        return 0;
    if (name == "ItemIsMenu"_L1)
        return false;
    if (name == "Menu"_L1)
        return QVariant::fromValue(QDBusObjectPath(m_menuPath));
    if (name == "XAyatanaOrderingIndex"_L1)
        return 0U;
    if (name == "Title"_L1) {
        m_told.title = title();
        return title();
    }
    if (name == "ToolTip"_L1) {
        m_told.toolTip = toolTipId();
        return QVariant::fromValue(toolTipOf(m_headline, m_text));
    }
    if (name == "IconName"_L1) {
        const Backdrop backdrop = m_fileReaders.contains(reader) ? look() : m_backdrop;
        m_told.picture = pictureId();
        return m_fileReaders.contains(reader) ? m_iconFile.pathFor(m_image, backdrop) : QString();
    }
    if (name == "IconPixmap"_L1) {
        const Backdrop backdrop = m_fileReaders.contains(reader) ? m_backdrop : look();
        m_told.picture = pictureId();
        return QVariant::fromValue(m_fileReaders.contains(reader) ? QList<StatusPixmap>() : pixmaps(backdrop));
    }
    if (name == "IconAccessibleDesc"_L1) {
        m_told.picture = pictureId();
        return m_image.description.isEmpty() ? title() : m_image.description;
    }
    if (name == "XAyatanaLabel"_L1) {
        m_told.label = m_label;
        return m_label;
    }
    if (name == "XAyatanaLabelGuide"_L1)
        return labelGuide(m_label);
    if (name == "OverlayIconPixmap"_L1 || name == "AttentionIconPixmap"_L1)
        return QVariant::fromValue(QList<StatusPixmap>());
    if (propertyNames().contains(name))
        return QString(); // The rest are names of pictures and folders that the item does without.
    return {};
}

QString StatusNotifierObject::introspect(const QString &) const
{
    return introspection;
}

bool StatusNotifierObject::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.type() != QDBusMessage::MethodCallMessage || message.path() != m_path)
        return false;
    const QString interface = message.interface();
    QDBusMessage reply;
    if (interface == propertiesInterface)
        reply = property(message);
    else if (interface == itemInterface || interface == standardInterface || interface.isEmpty())
        reply = answer(message);
    else
        return false;
    if (reply.type() == QDBusMessage::InvalidMessage)
        return false;
    if (message.isReplyRequired())
        m_connection.send(reply);
    return true;
}

QDBusMessage StatusNotifierObject::property(const QDBusMessage &call)
{
    const QVariantList arguments = call.arguments();
    if (call.member() == "Get"_L1 && call.signature() == "ss"_L1) {
        const QString name = arguments[1].toString();
        const QVariant value = valueOf(name, call.service());
        if (value.isValid())
            return call.createReply(QVariant::fromValue(QDBusVariant(value)));
        return call.createErrorReply(QDBusError::UnknownProperty, name);
    }
    if (call.member() == "GetAll"_L1 && call.signature() == "s"_L1) {
        QVariantMap all;
        for (const QString &name : propertyNames())
            all.insert(name, valueOf(name, call.service()));
        return call.createReply(all);
    }
    if (call.member() == "Set"_L1)
        return call.createErrorReply(QDBusError::PropertyReadOnly, u"The item is read only"_s);
    return {};
}

QDBusMessage StatusNotifierObject::answer(const QDBusMessage &call)
{
    const QString member = call.member();
    const QVariantList arguments = call.arguments();
    if (call.signature() == "ii"_L1) {
        const QPoint hint(arguments[0].toInt(), arguments[1].toInt());
        // The tray has its answer before anything opens: some wait for it with the pointer held.
        if (member == "Activate"_L1) {
            QMetaObject::invokeMethod(
                this, [this, hint] { emit activateRequested(hint); }, Qt::QueuedConnection);
            return call.createReply();
        }
        if (member == "ContextMenu"_L1) {
            QMetaObject::invokeMethod(
                this, [this, hint] { emit contextMenuRequested(hint); }, Qt::QueuedConnection);
            return call.createReply();
        }
        if (member == "SecondaryActivate"_L1)
            return call.createReply();
    }
    if (member == "XAyatanaSecondaryActivate"_L1 || member == "Scroll"_L1)
        return call.createReply(); // The middle button and the wheel mean nothing here.
    return {};
}

} // namespace korvo
