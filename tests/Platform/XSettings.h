#pragma once

#include <QtGlobal>

#include <xcb/xcb.h>

namespace korvo {

/// The desktop's settings daemon, as far as the scale of the screens goes. Must be there before a toolkit that is to
/// follow it.
class XSettings {
public:
    XSettings();
    ~XSettings();
    XSettings(const XSettings &) = delete;
    XSettings &operator=(const XSettings &) = delete;

    /// How many pixels an inch of text takes; 96 at the scale of 1.
    void setDpi(int dpi);

private:
    xcb_atom_t atom(const char *name) const;

    xcb_connection_t *m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    quint32 m_serial = 0;
};

} // namespace korvo
