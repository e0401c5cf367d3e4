#include "XSettings.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <QSysInfo>

#include <cstdlib>
#include <memory>

namespace korvo {

XSettings::XSettings() : m_connection(xcb_connect(nullptr, nullptr))
{
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, root, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    setDpi(96);
    xcb_set_selection_owner(m_connection, m_window, atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
    atom("MANAGER"); // Waits for the server.
}

XSettings::~XSettings()
{
    xcb_disconnect(m_connection);
}

void XSettings::setDpi(int dpi)
{
    constexpr quint8 integer = 0;
    const QByteArray name = "Xft/DPI";
    constexpr int unit = 1024;
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    const bool isBigEndian = QSysInfo::ByteOrder == QSysInfo::BigEndian;
    stream.setByteOrder(isBigEndian ? QDataStream::BigEndian : QDataStream::LittleEndian);
    stream << quint8(isBigEndian) << quint8(0) << quint16(0) << ++m_serial << quint32(1);
    stream << integer << quint8(0) << quint16(name.size());
    stream.writeRawData(name.constData(), int(name.size()) + 1); // To a multiple of four.
    stream << m_serial << qint32(dpi * unit);
    const xcb_atom_t settings = atom("_XSETTINGS_SETTINGS");
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, m_window, settings, settings, 8, quint32(bytes.size()),
                        bytes.constData());
    xcb_flush(m_connection);
}

xcb_atom_t XSettings::atom(const char *name) const
{
    const auto cookie = xcb_intern_atom(m_connection, false, quint16(qstrlen(name)), name);
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(m_connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

} // namespace korvo
