#pragma once

#include <QLabel>

namespace larkspur::ui {

/// The one kind of label that draws markup. It makes the markup itself: what it is given are names and
/// addresses, which stay text whatever stands in them.
class LinkLabel : public QLabel {
    Q_OBJECT
  public:
    explicit LinkLabel(QWidget *parent = nullptr);

    /// Names in a row, each of which is a link; linkActivated tells which one was chosen.
    void showNames(const QStringList &names);

    /// An address that the browser opens if it is one of the web's. What a recipe names may be anything, and
    /// nothing else is opened.
    void showAddress(const QString &address);
};

} // namespace larkspur::ui
