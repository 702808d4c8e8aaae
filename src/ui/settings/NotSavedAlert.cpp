#include "ui/settings/NotSavedAlert.h"

#include <QApplication>
#include <QMessageBox>

namespace larkspur::ui {

void tellNotSaved(const QString &reason, QWidget *window) {
    const auto name = QStringLiteral("notSaved");
    if (auto *shown = window->findChild<QMessageBox *>(name)) {
        shown->setInformativeText(reason);
        return;
    }
    QWidget *front = QApplication::activeModalWidget();
    auto *alert =
        new QMessageBox(QMessageBox::Warning, QMessageBox::tr("Not Saved"),
                        QMessageBox::tr("This choice could not be saved. It holds until Larkspur is closed."),
                        QMessageBox::Ok, front && window->isAncestorOf(front) ? front : window);
    alert->setObjectName(name);
    alert->setInformativeText(reason);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->open();
}

void tellDamaged(const QStringList &damage, QWidget *window) {
    auto *alert = new QMessageBox(QMessageBox::Warning, QMessageBox::tr("Damaged Files"),
                                  QMessageBox::tr("Not everything that Larkspur keeps could be read."),
                                  QMessageBox::Ok, window);
    alert->setObjectName(QStringLiteral("damaged"));
    alert->setInformativeText(damage.join(QStringLiteral("\n\n")));
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->open();
}

} // namespace larkspur::ui
