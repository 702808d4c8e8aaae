#pragma once

#include "ui/widgets/ElidedLabel.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QWidget>

namespace larkspur::ui {

/// The top of a screen: title, a line about its content, a filter field and the screen's buttons.
class ScreenHeader : public QWidget {
    Q_OBJECT
  public:
    ScreenHeader(const QString &title, const QString &filterHint, QWidget *parent = nullptr);

    void setSubtitle(const QString &text) { m_subtitle->setText(text); }
    QLineEdit *filter() const { return m_filter; }
    /// Widgets are added at the right, in the order of the calls.
    void addControl(QWidget *control);

  private:
    ElidedLabel *m_subtitle;
    QLineEdit *m_filter;
    QHBoxLayout *m_controls;
};

} // namespace larkspur::ui
