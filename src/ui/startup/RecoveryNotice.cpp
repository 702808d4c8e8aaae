#include "ui/startup/RecoveryNotice.h"

#include <QCoreApplication>
#include <QMessageBox>

namespace larkspur::ui {

namespace {

QString tr(const char *text) {
    return QCoreApplication::translate("RecoveryNotice", text);
}

} // namespace

void RecoveryNotice::show(QWidget *parent) const {
    const QStringList lines = m_transcript.lines();
    if (lines.isEmpty())
        return;
    const bool isWhole = lines.filter(QStringLiteral("==> Warning:")).isEmpty();
    auto *message = new QMessageBox(
        isWhole ? QMessageBox::Information : QMessageBox::Warning, tr("An Operation Was Interrupted"),
        isWhole
            ? tr("Larkspur ended in the middle of an operation. What it left has been put right.")
            : tr("Larkspur ended in the middle of an operation. Not all that it left could be put right."),
        QMessageBox::Ok, parent);
    message->setAttribute(Qt::WA_DeleteOnClose);
    constexpr qsizetype shown = 12; // more is in the log
    message->setInformativeText(lines.last(std::min(shown, lines.size())).join(QLatin1Char('\n')));
    message->open();
}

} // namespace larkspur::ui
