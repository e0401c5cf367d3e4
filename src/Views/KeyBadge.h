#pragma once

#include "Views/RoundedBox.h"

#include <QString>

namespace korvo {

/// The picture of a key beside what it does. It is no button.
class KeyBadge : public RoundedBox {
    Q_OBJECT
public:
    explicit KeyBadge(const QString &key, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace korvo
