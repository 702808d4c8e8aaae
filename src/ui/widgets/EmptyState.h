#pragma once

#include <QLabel>
#include <QPushButton>
#include <QWidget>

namespace larkspur::ui {

/// What a list shows instead of rows: a picture, what is (not) here, and what to do next.
class EmptyState : public QWidget {
    Q_OBJECT
  public:
    explicit EmptyState(QWidget *parent = nullptr);

    /// An empty `action` hides the button.
    void show(const QString &iconName, const QString &title, const QString &text, const QString &action = {});

  Q_SIGNALS:
    void actionRequested();

  private:
    QLabel *m_picture;
    QLabel *m_title;
    QLabel *m_text;
    QPushButton *m_action;
};

} // namespace larkspur::ui
