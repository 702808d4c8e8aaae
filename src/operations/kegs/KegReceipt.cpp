#include "operations/kegs/KegReceipt.h"

#include "core/files/AtomicFile.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace larkspur {

namespace {

const QString key = QStringLiteral("installed_on_request");

QString receiptOf(const QString &keg) {
    return keg + QStringLiteral("/INSTALL_RECEIPT.json");
}

QJsonObject readReceipt(const QString &keg) {
    QFile file(receiptOf(keg));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

} // namespace

std::optional<bool> installedOnRequest(const QString &keg) {
    const QJsonValue mark = readReceipt(keg).value(key);
    return mark.isBool() ? std::optional(mark.toBool()) : std::nullopt;
}

void setInstalledOnRequest(const QString &keg, bool isOnRequest) {
    QJsonObject receipt = readReceipt(keg);
    if (receipt.isEmpty() || receipt.value(key).toBool() == isOnRequest)
        return;
    receipt.insert(key, isOnRequest);
    // Permission bits stay as they were; a receipt that cannot be written stays as a whole.
    const auto permissions = QFile::permissions(receiptOf(keg));
    (void)writeFileAtomically(receiptOf(keg), QJsonDocument(receipt).toJson(), permissions);
}

} // namespace larkspur
