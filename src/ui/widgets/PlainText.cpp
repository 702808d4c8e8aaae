#include "ui/widgets/PlainText.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QPointer>

#include <algorithm>

namespace larkspur::ui {

namespace {

/// Every label is polished once, before it is measured or shown; a tool tip's before it gets its text.
class PlainTextGuard final : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::Polish)
            if (auto *label = qobject_cast<QLabel *>(watched); label && label->textFormat() == Qt::AutoText)
                label->setTextFormat(Qt::PlainText);
        return false;
    }
};

} // namespace

void keepTextPlain() {
    static QPointer<QObject> guard;
    if (guard)
        return;
    guard = new PlainTextGuard(qApp);
    qApp->installEventFilter(guard);
}

QString inCaption(const QString &text) {
    QString caption = text;
    const auto breaks = [](QChar character) { return character.unicode() < 0x20; };
    std::replace_if(caption.begin(), caption.end(), breaks, QChar(QLatin1Char(' ')));
    return caption.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace larkspur::ui
