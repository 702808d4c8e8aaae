#pragma once

#include "core/output/OutputChange.h"

#include <QPlainTextEdit>
#include <QTimer>

namespace larkspur {
class OperationRun;
}

namespace larkspur::ui {

/// An operation's output, live. Follows the end unless the person has scrolled away; keeps the last lines
/// only, the transcript keeps more.
class OutputView : public QPlainTextEdit {
    Q_OBJECT
  public:
    explicit OutputView(QWidget *parent = nullptr);

    void follow(OperationRun *run);

  private:
    void take(const OutputChange &change);
    void flush();
    void takeBack(QTextCursor &cursor);
    QTextCharFormat formatFor(const QString &line) const;

    QMetaObject::Connection m_source;
    QTimer m_flushTimer;
    int m_replaces = 0;    ///< lines already shown that the pending ones replace
    QStringList m_pending; ///< lines that are not shown yet
    bool m_startsAnew = false;
};

} // namespace larkspur::ui
