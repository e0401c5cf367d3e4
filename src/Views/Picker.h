#pragma once

#include "Views/Binding.h"

#include <QComboBox>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>

namespace korvo {

/// A choice of one entry out of a list. It shows no entry for a value that is not offered, and leaves that value alone
/// until the user chooses.
class Picker : public QComboBox {
    Q_OBJECT
public:
    /// Offers "Select..." for the empty string, then each option, which is its own value. Follows what both read.
    Picker(const Binding<QString> &selection, std::function<QStringList()> options, QWidget *parent = nullptr);

    /// One number of a fixed list.
    struct Entry {
        QString text;
        double value;
    };
    Picker(const Binding<double> &selection, const QList<Entry> &entries, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    void showPopup() override;

protected:
    void wheelEvent(QWheelEvent *event) override;

private:
    explicit Picker(QWidget *parent);
    void offer(const QStringList &options);

    QStringList m_options;
};

} // namespace korvo
