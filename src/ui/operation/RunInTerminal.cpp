#include "ui/operation/RunInTerminal.h"

#include "operations/packages/TerminalCommand.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QUrl>

namespace larkspur::ui {

namespace {

QString text(const char *words) {
    return QCoreApplication::translate("RunInTerminal", words);
}

QString instructions(bool isOpen, bool lacksName) {
    if (!isOpen)
        return lacksName
                   ? text(
                         "Paste it into a terminal, add the package name, then press Enter.\n\nHomebrew will "
                         "prompt for your password when needed.\n\nCommand:")
                   : text("Paste it into a terminal, then press Enter.\n\nHomebrew will prompt for your "
                          "password if needed.\n\nCommand:");
    return lacksName ? text("Terminal has been opened. Press ⌘V to paste, add the package name, then press "
                            "Enter.\n\nHomebrew will prompt for your password when needed.\n\nCommand:")
                     : text("Terminal has been opened. Press ⌘V to paste the command, then press "
                            "Enter.\n\nHomebrew will prompt for your password if needed.\n\nCommand:");
}

} // namespace

void runInTerminal(const QString &command, QWidget *window) {
    QGuiApplication::clipboard()->setText(command);
    const QString terminal = QStringLiteral("/System/Applications/Utilities/Terminal.app");
    const bool isOpen =
        QFileInfo::exists(terminal) && QDesktopServices::openUrl(QUrl::fromLocalFile(terminal));
    auto *alert = new QMessageBox(QMessageBox::Information, text("Command Copied to Clipboard"),
                                  text("Command Copied to Clipboard"), QMessageBox::Ok, window);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setInformativeText(instructions(isOpen, lacksPackageName(command)) + QLatin1Char(' ') + command);
    alert->open();
}

} // namespace larkspur::ui
