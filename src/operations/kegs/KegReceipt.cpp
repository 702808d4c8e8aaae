#include "operations/kegs/KegReceipt.h"

#include "core/files/AtomicFile.h"
#include "core/files/WholeFile.h"

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
    constexpr qint64 largest = 16 * 1024 * 1024; // bytes
    return QJsonDocument::fromJson(readWholeFile(receiptOf(keg), largest).value_or(QByteArray())).object();
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

QString qualifiedName(const QString &keg, const PackageName &formula) {
    const QString tap =
        readReceipt(keg).value(QLatin1String("source")).toObject().value(QLatin1String("tap")).toString();
    const auto name = PackageName::parse(tap + QLatin1Char('/') + formula.shortName());
    return TapName::parse(tap) && name && tap != QLatin1String("homebrew/core") ? name->text() : QString();
}

} // namespace larkspur
