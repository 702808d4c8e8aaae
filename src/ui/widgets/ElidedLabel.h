#pragma once

#include <QLabel>

namespace larkspur::ui {

/// One line of plain text that ends in an ellipsis where there is no room for it, instead of making the
/// window wider. The tool tip then tells the whole.
class ElidedLabel : public QLabel {
    Q_OBJECT
  public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

  private:
    QString shownText() const;
};

} // namespace larkspur::ui
