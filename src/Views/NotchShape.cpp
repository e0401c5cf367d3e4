#include "Views/NotchShape.h"

namespace korvo {

QPainterPath NotchShape::path(const QRectF &rect) const
{
    const double r = cornerRadius;
    const double e = earRadius;
    const double o = overflow;
    const double width = rect.right();
    const double height = rect.bottom();

    QPainterPath path;
    path.moveTo(0, 0);
    path.lineTo(width, 0);
    path.lineTo(width, o);
    path.quadTo(width - e, o, width - e, o + e);
    path.lineTo(width - e, height - r);
    path.quadTo(width - e, height, width - e - r, height);
    path.lineTo(e + r, height);
    path.quadTo(e, height, e, height - r);
    path.lineTo(e, o + e);
    path.quadTo(e, o, 0, o);
    path.lineTo(0, 0);
    path.closeSubpath();
    return path;
}

} // namespace korvo
